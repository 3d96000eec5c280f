#include "helpers/sample_entries.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "foundation/errors.h"
#include "helpers/boxes.h"
#include "helpers/picture_boxes.h"
#include "mp4/bit_reader.h"

namespace marlet::SampleEntries {

namespace {

using Boxes::u16s;
using Boxes::u32s;

/// Six reserved bytes, and the only data reference.
const Bytes& entryHead() {
    static const Bytes head = {0, 0, 0, 0, 0, 0, 0, 1};
    return head;
}

std::uint16_t pixels(int size) {
    return static_cast<std::uint16_t>(std::clamp(size, 0, 0xFFFF));
}

[[noreturn]] void failConfiguration(const MKVTrack& track) {
    throw MFError("track " + std::to_string(track.number) + " (" + track.codecID +
                  ") has no usable codec configuration");
}

/// With `hvc1` all parameter sets are here, and each array says so in its first bit
/// (ISO/IEC 14496-15, 8.4.3); Matroska doesn't ask for that.
Bytes completeHEVC(const MKVTrack& track) {
    constexpr std::size_t arraysAt = 23;
    Bytes record = track.codecPrivate;
    if (record.size() < arraysAt) failConfiguration(track);
    std::size_t at = arraysAt;
    for (int left = record[arraysAt - 1]; left > 0; left--) {
        if (at + 3 > record.size()) failConfiguration(track);
        record[at] |= 0x80;
        int units = BigEndian::u16(record, static_cast<std::int64_t>(at) + 1);
        at += 3;
        for (; units > 0; units--) at += 2 + BigEndian::u16(record, static_cast<std::int64_t>(at));
        if (at > record.size()) failConfiguration(track);
    }
    return record;
}

Bytes configuration(const MKVTrack& track) {
    constexpr std::size_t shortestAVC = 7;
    const bool isAVC = track.codecID == "V_MPEG4/ISO/AVC";
    if (!isAVC) return Boxes::box(boxCode("hvcC"), {completeHEVC(track)});
    if (track.codecPrivate.size() < shortestAVC || track.codecPrivate[0] != 1)
        failConfiguration(track);
    return Boxes::box(boxCode("avcC"), {track.codecPrivate});
}

/// A descriptor of ISO/IEC 14496-1, 7.2, its size in four bytes.
Bytes descriptor(std::uint8_t tag, std::initializer_list<ByteView> parts) {
    Bytes body;
    for (const ByteView part : parts) append(body, part);
    Bytes bytes{tag};
    for (const int shift : {21, 14, 7})
        bytes.push_back(static_cast<std::uint8_t>(0x80 | (body.size() >> shift & 0x7F)));
    bytes.push_back(static_cast<std::uint8_t>(body.size() & 0x7F));
    append(bytes, body);
    return bytes;
}

/// ISO/IEC 14496-3, 1.6.3.4.
constexpr std::array<std::uint32_t, 13> aacRates = {96'000, 88'200, 64'000, 48'000, 44'100,
                                                    32'000, 24'000, 22'050, 16'000, 12'000,
                                                    11'025, 8'000,  7'350};

/// What the configuration says of the core coder.
struct AACCore {
    std::uint32_t rate = 0;
    std::uint32_t frameLength = 1024;
};

AACCore coreOf(ByteView configuration) {
    constexpr std::uint32_t escape = 31, sbr = 5, parametricStereo = 29;
    AACCore core;
    BitReader bits(configuration);
    const auto objectType = [&bits] {
        const std::uint32_t type = bits.bits(5);
        return type == escape ? 32 + bits.bits(6) : type;
    };
    const auto rate = [&bits]() -> std::uint32_t {
        const std::uint32_t index = bits.bits(4);
        if (index == 15) return bits.bits(24);
        return index < aacRates.size() ? aacRates[index] : 0;
    };
    const std::uint32_t type = objectType();
    core.rate = rate();
    bits.skip(4);  // channels
    if (type == sbr || type == parametricStereo) {
        rate();
        objectType();
    }
    if (bits.flag()) core.frameLength = 960;
    return core;
}

/// Files of old have no CodecPrivate: "A_AAC/MPEG4/LC" and its like tell what it would say.
Bytes configurationByName(const MKVTrack& track) {
    constexpr std::uint32_t main = 1, lowComplexity = 2, scalable = 3;
    const std::string& id = track.codecID;
    const std::uint32_t type = id.ends_with("/MAIN")  ? main
                               : id.ends_with("/SSR") ? scalable
                                                      : lowComplexity;
    const auto wanted = static_cast<std::uint32_t>(std::lround(track.sampleRate));
    const auto* const rate = std::ranges::find(aacRates, wanted);
    if (rate == aacRates.end() || track.channels < 0 || track.channels > 8)
        failConfiguration(track);
    const auto index = static_cast<std::uint32_t>(rate - aacRates.begin());
    const std::uint32_t channels = track.channels == 8 ? 7 : std::max(track.channels, 1);
    return u16s({type << 11 | index << 7 | channels << 3});
}

}  // namespace

Bytes description(ByteView entry) {
    return Boxes::full(boxCode("stsd"), 0, 0, {u32s({1}), entry});
}

Bytes sound(BoxCode type, std::uint32_t channels, std::uint32_t rate, ByteView more) {
    // A rate that doesn't fit into 16 bits is told by the configuration alone.
    const std::uint32_t stated = rate > 0xFFFF ? 0 : rate << 16;
    return Boxes::box(
        type, {entryHead(), u32s({0, 0}), u16s({channels, 16, 0, 0}), u32s({stated}), more});
}

Bytes video(const MKVTrack& track) {
    const bool isAVC = track.codecID == "V_MPEG4/ISO/AVC";
    if (!isAVC && track.codecID != "V_MPEGH/ISO/HEVC")
        throw MFError("track " + std::to_string(track.number) + " is " + track.codecID +
                      ", which this program doesn't copy");
    const BoxCode hevc = PictureBoxes::needsDolbyVision(track) ? boxCode("dvh1") : boxCode("hvc1");
    constexpr std::uint32_t dotsPerInch = 72U << 16;
    const Bytes noName(32);
    return Boxes::box(isAVC ? boxCode("avc1") : hevc,
                      {entryHead(), u32s({0, 0, 0, 0}),
                       u16s({pixels(track.pixelWidth), pixels(track.pixelHeight)}),
                       u32s({dotsPerInch, dotsPerInch, 0}), u16s({1}), noName, u16s({0x18, 0xFFFF}),
                       configuration(track), PictureBoxes::make(track)});
}

AACDescription aac(const MKVTrack& track) {
    constexpr std::size_t longest = 4096;
    const Bytes config =
        track.codecPrivate.empty() ? configurationByName(track) : track.codecPrivate;
    if (config.size() < 2 || config.size() > longest) failConfiguration(track);
    const AACCore core = coreOf(config);
    if (core.rate == 0) failConfiguration(track);
    constexpr std::uint8_t aacObject = 0x40, audioStream = 0x15;
    const Bytes noRates(11);  // size of the decoder's buffer, highest and mean rate: not told
    const Bytes decoder =
        descriptor(4, {Bytes{aacObject, audioStream}, noRates, descriptor(5, {config})});
    const Bytes esds =
        Boxes::full(boxCode("esds"), 0, 0,
                    {descriptor(3, {Bytes{0, 0, 0}, decoder, descriptor(6, {Bytes{2}})})});
    const int channels = track.channels == 0 ? 1 : track.channels;
    return {sound(boxCode("mp4a"), static_cast<std::uint32_t>(channels), core.rate, esds),
            core.rate, core.frameLength};
}

std::uint8_t subtitleSize(std::uint16_t height) {
    return static_cast<std::uint8_t>(std::clamp(height / 20, 12, 200));
}

Bytes subtitle(std::uint32_t flags, std::uint16_t width, std::uint16_t height) {
    constexpr std::uint8_t centre = 1, foot = 0xFF;
    const std::uint8_t size = subtitleSize(height);
    const Bytes font = bytesOf("Helvetica");
    const Bytes fonts = Boxes::box(
        boxCode("ftab"), {u16s({1, 1}), Bytes{static_cast<std::uint8_t>(font.size())}, font});
    // For all of a text: the first font, no face, its size, white.
    Bytes style = u16s({0, 0, 1});
    append(style, Bytes{0, size, 0xFF, 0xFF, 0xFF, 0xFF});
    return Boxes::box(boxCode("tx3g"), {entryHead(), u32s({flags}), Bytes{centre, foot}, u32s({0}),
                                        u16s({0, 0, height, width}), style, fonts});
}

Bytes chapters() {
    // Display flags, justification, background, box, two reserved, font, face, reserved, colour,
    // and an empty font name (QuickTime File Format, "Text Sample Description").
    return Boxes::box(boxCode("text"), {entryHead(), Bytes(43)});
}

}  // namespace marlet::SampleEntries
