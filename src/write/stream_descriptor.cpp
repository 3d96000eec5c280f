#include "write/stream_descriptor.h"

#include "mp4/sample_entry.h"

namespace marlet {

namespace {

constexpr std::int64_t versionAndFlags = 4;
constexpr std::uint8_t descriptorTag = 3;
constexpr int longestSize = 4;  // bytes of seven bits
constexpr std::int64_t idLength = 2;

std::optional<std::uint8_t> byteAt(ByteView data, std::int64_t at, std::int64_t end) {
    if (at >= end) return std::nullopt;
    const ByteView one = slice(data, at, at + 1);
    if (one.empty()) return std::nullopt;
    return one[0];
}

}  // namespace

std::optional<BoxSpan> descriptorOf(ByteView stsd, int stsdVersion, const BoxSpan& entry) {
    const auto fields = fixedFieldsLength(stsd, stsdVersion, entry);
    if (!fields) return std::nullopt;
    const std::int64_t children = entry.start + *fields;
    if (const auto direct = findSpan(stsd, children, entry.end, boxCode("esds"))) return direct;
    return findSpan(stsd, children, entry.end, {boxCode("wave"), boxCode("esds")});
}

std::optional<std::int64_t> streamIDPlace(ByteView stsd, const BoxSpan& esds) {
    std::int64_t at = esds.start + versionAndFlags;
    if (byteAt(stsd, at, esds.end) != descriptorTag) return std::nullopt;
    at++;
    for (int i = 0; i < longestSize; i++) {
        const auto size = byteAt(stsd, at++, esds.end);
        if (!size) return std::nullopt;
        if ((*size & 0x80) == 0) {
            if (esds.end - at < idLength) return std::nullopt;
            return at;
        }
    }
    return std::nullopt;
}

}  // namespace marlet
