#include "convert/pgs_segments.h"

#include <algorithm>
#include <cmath>

namespace marlet::PGSSegments {

namespace {

std::uint32_t level(double value) {
    return static_cast<std::uint32_t>(std::clamp(std::lround(value), 0L, 255L));
}

/// ITU-R BT.709, from video levels.
std::uint32_t colourOf(ByteView entry) {
    const double y = (entry[1] - 16) * 1.164;
    const double cr = entry[2] - 128;
    const double cb = entry[3] - 128;
    const std::uint32_t red = level(y + 1.793 * cr);
    const std::uint32_t green = level(y - 0.213 * cb - 0.533 * cr);
    const std::uint32_t blue = level(y + 2.112 * cb);
    return red | green << 8 | blue << 16 | std::uint32_t{entry[4]} << 24;
}

}  // namespace

std::optional<Segment> next(ByteView& frame) {
    if (frame.size() < headSize) return std::nullopt;
    const std::size_t size = BigEndian::u16(frame, 1);
    if (size > frame.size() - headSize) return std::nullopt;
    const Segment segment{static_cast<Type>(frame[0]), frame.subspan(headSize, size)};
    frame = frame.subspan(headSize + size);
    return segment;
}

void readPalette(ByteView payload, Palette& palette) {
    constexpr std::size_t head = 2;
    constexpr std::size_t row = 5;
    for (std::size_t at = head; at + row <= payload.size(); at += row)
        palette[payload[at]] = colourOf(payload.subspan(at, row));
}

std::optional<Composition> readComposition(ByteView payload) {
    constexpr std::size_t head = 11;
    constexpr std::size_t row = 8;
    constexpr std::uint8_t epochStart = 0x80;
    constexpr std::uint8_t isCropped = 0x80;
    constexpr std::uint8_t isForced = 0x40;
    if (payload.size() < head) return std::nullopt;
    Composition composition{.startsEpoch = payload[7] == epochStart, .objects = {}};
    ByteView rows = payload.subspan(head);
    for (int left = payload[10]; left > 0 && rows.size() >= row; left--) {
        const std::uint8_t flags = rows[3];
        composition.objects.push_back({.id = BigEndian::u16(rows, 0),
                                       .x = BigEndian::u16(rows, 4),
                                       .y = BigEndian::u16(rows, 6),
                                       .forced = (flags & isForced) != 0});
        const std::size_t size = (flags & isCropped) != 0 ? 2 * row : row;
        rows = rows.subspan(std::min(size, rows.size()));
    }
    return composition;
}

std::optional<ObjectPart> readObject(ByteView payload) {
    constexpr std::size_t head = 4;
    constexpr std::size_t firstHead = 11;
    if (payload.size() < head) return std::nullopt;
    const std::uint8_t flags = payload[3];
    ObjectPart part{.id = BigEndian::u16(payload, 0),
                    .isFirst = (flags & 0x80) != 0,
                    .isLast = (flags & 0x40) != 0,
                    .runs = payload.subspan(head)};
    if (!part.isFirst) return part;
    if (payload.size() < firstHead) return std::nullopt;
    part.width = BigEndian::u16(payload, 7);
    part.height = BigEndian::u16(payload, 9);
    part.runs = payload.subspan(firstHead);
    return part;
}

}  // namespace marlet::PGSSegments
