#include "matroska/ebml.h"

#include <bit>

namespace marlet::EBML {

namespace {

constexpr std::uint8_t leastIDByte = 0x10;  // wider ids don't exist

std::uint64_t bigEndian(ByteView bytes) {
    std::uint64_t value = 0;
    for (const std::uint8_t byte : bytes) value = value << 8 | byte;
    return value;
}

/// The width told by the marker bit, when that many bytes are there.
std::optional<std::size_t> widthAt(ByteView bytes, std::size_t at, std::uint8_t least) {
    if (at >= bytes.size() || bytes[at] < least) return std::nullopt;
    const auto width = static_cast<std::size_t>(std::countl_zero(bytes[at])) + 1;
    if (width > bytes.size() - at) return std::nullopt;
    return width;
}

}  // namespace

std::optional<ID> readID(ByteView bytes, std::size_t at) {
    const auto width = widthAt(bytes, at, leastIDByte);
    if (!width) return std::nullopt;
    return ID{static_cast<std::uint32_t>(bigEndian(bytes.subspan(at, *width))), *width};
}

std::optional<Size> readSize(ByteView bytes, std::size_t at) {
    const auto width = widthAt(bytes, at, 1);
    if (!width) return std::nullopt;
    const std::uint64_t valueBits = (std::uint64_t{1} << (7 * *width)) - 1;
    const std::uint64_t value = bigEndian(bytes.subspan(at, *width)) & valueBits;
    return Size{value, *width, value == valueBits};
}

}  // namespace marlet::EBML
