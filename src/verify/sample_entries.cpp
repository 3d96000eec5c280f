#include "verify/sample_entries.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "mp4/box_cursor.h"
#include "mp4/sample_entry.h"
#include "verify/sample_descriptions.h"

namespace marlet::ConvertVerify {

namespace {

std::optional<ByteView> childOf(ByteView stsd, const SampleEntries& entries, const BoxSpan& entry,
                                BoxCode type) {
    const auto fixed = fixedFieldsLength(stsd, entries.version(), entry);
    if (!fixed) return std::nullopt;
    const auto box = findSpan(stsd, entry.start + *fixed, entry.end, type);
    if (!box) return std::nullopt;
    return slice(stsd, box->start, box->end);
}

std::optional<ByteView> firstChild(ByteView stsd, BoxCode type) {
    const SampleEntries entries = sampleEntries(stsd);
    if (entries.entries.empty()) return std::nullopt;
    return childOf(stsd, entries, entries.entries.front(), type);
}

BoxCode recordType(NALFormat::Codec codec) {
    return codec == NALFormat::Codec::hevc ? boxCode("hvcC") : boxCode("avcC");
}

/// acmod and lfeon of ETSI TS 102 366, F.4.
std::optional<int> dolbyChannels(ByteView stsd) {
    constexpr std::array channelsOfMode = {2, 1, 2, 3, 3, 4, 4, 5};
    const auto dac3 = firstChild(stsd, boxCode("dac3"));
    if (!dac3 || dac3->size() < 2) return std::nullopt;
    const std::uint8_t byte = (*dac3)[1];
    return channelsOfMode[byte >> 3 & 7] + (byte >> 2 & 1);
}

/// Object type, sampling frequency and channel configuration in 13 bits, where they stand in their
/// short forms.
struct AACConfig {
    int objectType = 0;
    int rate = 0;
    int channels = 0;
    bool operator==(const AACConfig&) const = default;
};

std::optional<AACConfig> readAAC(ByteView config) {
    constexpr int longForm = 31;
    constexpr int rateInFull = 15;
    if (config.size() < 2) return std::nullopt;
    const AACConfig read{config[0] >> 3, (config[0] & 7) << 1 | config[1] >> 7,
                         config[1] >> 3 & 15};
    if (read.objectType == longForm || read.rate == rateInFull) return std::nullopt;
    return read;
}

std::optional<AACConfig> builtAAC(ByteView stsd) {
    const auto box = firstChild(stsd, boxCode("esds"));
    if (!box) return std::nullopt;
    const auto esds = parseESDS(*box);
    constexpr int aac = 0x40;
    if (!esds || esds->objectType != aac) return std::nullopt;
    return readAAC(esds->decoderSpecific);
}

/// ISO/IEC 14496-3, table 1.19; 0 for what isn't told there.
int aacChannels(const AACConfig& config) {
    constexpr std::array channels = {0, 1, 2, 3, 4, 5, 6, 8};
    const auto index = static_cast<std::size_t>(config.channels);
    return index < channels.size() ? channels[index] : 0;
}

struct Holder {
    std::string_view codec;  ///< what the id begins with
    std::array<std::string_view, 8> types;
};
constexpr std::array holders = {
    Holder{"V_MPEG4/ISO/AVC", {"avc1", "avc2", "avc3", "avc4", "dva1", "dvav"}},
    Holder{"V_MPEGH/ISO/HEVC", {"hvc1", "hev1", "hvc2", "hev2", "dvh1", "dvhe"}},
    Holder{"A_AAC", {"mp4a"}},
    Holder{"A_EAC3", {"ec-3", "ac-3"}},
    Holder{"A_AC3", {"ac-3", "ec-3"}},
};

}  // namespace

std::size_t builtLengthSize(NALFormat::Codec codec, ByteView stsd) {
    const auto record = firstChild(stsd, recordType(codec));
    return record ? recordLengthSize(codec, *record) : 0;
}

std::optional<ParameterSets> builtParameterSets(NALFormat::Codec codec, ByteView stsd) {
    const SampleEntries entries = sampleEntries(stsd);
    if (entries.entries.empty()) return std::nullopt;
    ParameterSets all;
    for (const BoxSpan& entry : entries.entries) {
        const auto record = childOf(stsd, entries, entry, recordType(codec));
        if (!record) return std::nullopt;
        auto sets = parameterSetsOf(codec, *record);
        if (!sets) return std::nullopt;
        all.merge(*sets);
    }
    return all;
}

std::optional<int> builtChannels(ByteView stsd) {
    constexpr std::int64_t field = 16;  // behind the entry's box header
    const SampleEntries entries = sampleEntries(stsd);
    if (entries.entries.empty() || entries.entries.front().end < entries.entries.front().start + 28)
        return std::nullopt;
    if (const auto channels = dolbyChannels(stsd)) return channels;
    if (const auto aac = builtAAC(stsd))
        if (const int channels = aacChannels(*aac)) return channels;
    return BigEndian::u16(stsd, entries.entries.front().start + field);
}

bool canHold(const std::string& codecID, const std::string& entryType) {
    for (const Holder& holder : holders)
        if (codecID.starts_with(holder.codec))
            return std::ranges::find(holder.types, entryType) != holder.types.end();
    return true;
}

bool isSameAAC(ByteView codecPrivate, ByteView stsd) {
    const auto wanted = readAAC(codecPrivate);
    const auto told = builtAAC(stsd);
    return !wanted || !told || *wanted == *told;
}

}  // namespace marlet::ConvertVerify
