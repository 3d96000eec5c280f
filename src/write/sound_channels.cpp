#include "write/sound_channels.h"

#include <algorithm>
#include <array>
#include <optional>

#include "mp4/bit_reader.h"
#include "mp4/sample_entry.h"
#include "verify/sample_descriptions.h"
#include "write/stream_descriptor.h"

namespace marlet {

namespace {

/// ETSI TS 102 366, 4.4.2.3: full-range channels by `acmod`, and the low-frequency one.
int dolbyChannels(std::uint32_t acmod, std::uint32_t lfe) {
    constexpr std::array fullRange = {2, 1, 2, 3, 3, 4, 4, 5};
    return fullRange[acmod] + static_cast<int>(lfe);
}

/// AC3SpecificBox (ETSI TS 102 366, F.4).
int ac3Channels(ByteView payload) {
    BitReader bits(payload);
    bits.skip(2 + 5 + 3);  // fscod, bsid, bsmod
    const std::uint32_t acmod = bits.bits(3);
    return dolbyChannels(acmod, bits.bits(1));
}

/// EC3SpecificBox (ETSI TS 102 366, F.6), its first independent substream.
int eac3Channels(ByteView payload) {
    BitReader bits(payload);
    bits.skip(13 + 3);             // data_rate, num_ind_sub
    bits.skip(2 + 5 + 1 + 1 + 3);  // fscod, bsid, reserved, asvc, bsmod
    const std::uint32_t acmod = bits.bits(3);
    const std::uint32_t lfe = bits.bits(1);
    bits.skip(3);
    const std::uint32_t dependent = bits.bits(4);
    // A substream that adds places to 5.1 makes 7.1: no other use of it is found in films.
    const int more = dependent > 0 && bits.bits(9) != 0 ? 2 : 0;
    return dolbyChannels(acmod, lfe) + more;
}

/// AudioSpecificConfig (ISO/IEC 14496-3, 1.6.2.1). 0 when the count is told elsewhere.
int aacChannels(ByteView config) {
    constexpr std::uint32_t typeEscape = 31;
    constexpr std::uint32_t rateEscape = 15;
    constexpr std::array channels = {0, 1, 2, 3, 4, 5, 6, 8, 0, 0, 0, 7, 8, 24, 8, 0};
    constexpr std::uint32_t parametricStereo = 29;
    BitReader bits(config);
    const std::uint32_t type = bits.bits(5);
    if (type == typeEscape) bits.skip(6);
    if (bits.bits(4) == rateEscape) bits.skip(24);
    const int count = channels[bits.bits(4)];
    return type == parametricStereo ? std::max(count, 2) : count;
}

bool isMPEG4Sound(const ESDS& descriptor) {
    constexpr int mpeg4Audio = 0x40;  // objectTypeIndication
    return descriptor.objectType == mpeg4Audio;
}

int configuredChannels(ByteView stsd) {
    const SampleEntries parts = sampleEntries(stsd);
    if (parts.entries.empty()) return 0;
    const BoxSpan& entry = parts.entries.front();
    const auto fields = fixedFieldsLength(stsd, parts.version(), entry);
    if (!fields) return 0;
    const std::int64_t children = entry.start + *fields;
    if (const auto dac3 = findSpan(stsd, children, entry.end, boxCode("dac3")))
        return ac3Channels(slice(stsd, dac3->start, dac3->end));
    if (const auto dec3 = findSpan(stsd, children, entry.end, boxCode("dec3")))
        return eac3Channels(slice(stsd, dec3->start, dec3->end));
    const auto esds = descriptorOf(stsd, parts.version(), entry);
    if (!esds) return 0;
    const auto descriptor = parseESDS(slice(stsd, esds->start, esds->end));
    if (!descriptor || !isMPEG4Sound(*descriptor)) return 0;
    return aacChannels(descriptor->decoderSpecific);
}

}  // namespace

int soundChannels(ByteView stsd) {
    if (const int channels = configuredChannels(stsd); channels > 0) return channels;
    // The first entry's own field.
    constexpr std::int64_t channelsAt = 32;
    constexpr std::size_t shortest = 34;
    return stsd.size() >= shortest ? BigEndian::u16(stsd, channelsAt) : 0;
}

}  // namespace marlet
