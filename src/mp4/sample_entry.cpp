#include "mp4/sample_entry.h"

#include <algorithm>
#include <array>

namespace marlet {

namespace {

/// Lengths from the end of the box header, the 8 bytes that every entry has included.
constexpr std::int64_t commonFields = 8;
constexpr std::int64_t visualFields = 78;     // ISO/IEC 14496-12, 12.1.3
constexpr std::int64_t audioFields = 28;      // ISO/IEC 14496-12, 12.2.3
constexpr std::int64_t timedTextFields = 38;  // 3GPP TS 26.245, 5.16

constexpr std::array visualTypes = {
    boxCode("avc1"), boxCode("avc2"), boxCode("avc3"), boxCode("avc4"), boxCode("hvc1"),
    boxCode("hev1"), boxCode("dvh1"), boxCode("dvhe"), boxCode("dva1"), boxCode("dvav"),
    boxCode("vvc1"), boxCode("vvi1"), boxCode("av01"), boxCode("vp08"), boxCode("vp09"),
    boxCode("mp4v"), boxCode("s263"), boxCode("h263"), boxCode("jpeg"), boxCode("mjpa"),
    boxCode("mjpb"), boxCode("mjp2"), boxCode("png "), boxCode("apco"), boxCode("apcs"),
    boxCode("apcn"), boxCode("apch"), boxCode("ap4h"), boxCode("ap4x"), boxCode("encv"),
    boxCode("drmi")};
constexpr std::array audioTypes = {
    boxCode("mp4a"), boxCode("ac-3"), boxCode("ec-3"), boxCode("ac-4"), boxCode("alac"),
    boxCode("fLaC"), boxCode("Opus"), boxCode("mlpa"), boxCode("dtsc"), boxCode("dtsh"),
    boxCode("dtsl"), boxCode("dtse"), boxCode("dtsx"), boxCode("samr"), boxCode("sawb"),
    boxCode(".mp3"), boxCode("mha1"), boxCode("mhm1"), boxCode("lpcm"), boxCode("ipcm"),
    boxCode("fpcm"), boxCode("sowt"), boxCode("twos"), boxCode("in24"), boxCode("in32"),
    boxCode("fl32"), boxCode("fl64"), boxCode("ulaw"), boxCode("alaw"), boxCode("ima4"),
    boxCode("enca"), boxCode("drms")};
/// MPEG-4 systems streams (subtitle pictures among them), WebVTT, closed captions.
constexpr std::array plainTypes = {boxCode("mp4s"), boxCode("wvtt"), boxCode("c608"),
                                   boxCode("c708")};

/// What QuickTime's sound of that version has behind the common fields.
std::optional<std::int64_t> moreQuickTimeFields(int version) {
    constexpr std::array<std::int64_t, 3> more = {0, 16, 36};
    if (version >= static_cast<int>(more.size())) return std::nullopt;
    return more[static_cast<std::size_t>(version)];
}

std::optional<std::int64_t> audioLength(ByteView stsd, int stsdVersion, const BoxSpan& entry) {
    if (stsdVersion == 1) return audioFields;
    const auto more = moreQuickTimeFields(BigEndian::u16(stsd, entry.start + commonFields));
    if (!more) return std::nullopt;
    return audioFields + *more;
}

std::optional<std::int64_t> layoutLength(ByteView stsd, int stsdVersion, const BoxSpan& entry) {
    const auto isOneOf = [&](const auto& types) {
        return std::ranges::find(types, entry.code) != types.end();
    };
    if (isOneOf(visualTypes)) return visualFields;
    if (isOneOf(audioTypes)) return audioLength(stsd, stsdVersion, entry);
    if (isOneOf(plainTypes)) return commonFields;
    if (entry.code == boxCode("tx3g")) return timedTextFields;
    return std::nullopt;
}

}  // namespace

SampleEntries sampleEntries(ByteView stsd) {
    constexpr std::int64_t headerLength = 8;
    const auto end = static_cast<std::int64_t>(stsd.size());
    SampleEntries parts;
    parts.header = slice(stsd, 0, headerLength);
    std::int64_t walked = std::min(headerLength, end);
    BoxCursor cursor(stsd, headerLength, end);
    while (const auto entry = cursor.next()) {
        parts.entries.push_back(*entry);
        walked = entry->end;
    }
    parts.tail = slice(stsd, walked, end);
    return parts;
}

std::optional<std::int64_t> fixedFieldsLength(ByteView stsd, int stsdVersion,
                                              const BoxSpan& entry) {
    const auto length = layoutLength(stsd, stsdVersion, entry);
    if (!length || entry.end - entry.start < *length) return std::nullopt;
    return length;
}

}  // namespace marlet
