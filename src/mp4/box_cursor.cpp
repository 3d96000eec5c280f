#include "mp4/box_cursor.h"

namespace marlet {

namespace {

constexpr std::int64_t shortHeader = 8;
constexpr std::int64_t longHeader = 16;

struct Extent {
    std::uint64_t size = 0;  ///< as stated, header included
    std::int64_t header = shortHeader;
};

/// Nothing when the box can't be stepped over.
std::optional<Extent> extentAt(ByteView data, std::int64_t pos, std::int64_t to) {
    const std::uint32_t stated = BigEndian::u32(data, pos);
    if (stated == 0) return Extent{static_cast<std::uint64_t>(to - pos), shortHeader};
    if (stated == 1) {
        const std::uint64_t size = BigEndian::u64(data, pos + 8);
        if (size < static_cast<std::uint64_t>(longHeader)) return std::nullopt;
        return Extent{size, longHeader};
    }
    if (stated < static_cast<std::uint32_t>(shortHeader)) return std::nullopt;
    return Extent{stated, shortHeader};
}

}  // namespace

BoxCursor::BoxCursor(ByteView data, std::int64_t from, std::int64_t to)
    : data_(data), pos_(from), to_(to) {
    if (from < 0) pos_ = to_ = 0;
}

std::optional<BoxSpan> BoxCursor::next() {
    // As a difference: `from + 8` could pass the range of the type.
    if (to_ < pos_ || to_ - pos_ < shortHeader || given_ == mostSiblings) return std::nullopt;
    const auto extent = extentAt(data_, pos_, to_);
    if (!extent) return std::nullopt;

    const auto room = static_cast<std::uint64_t>(to_ - pos_);
    const bool isLast = extent->size >= room;
    BoxSpan span;
    span.boxStart = pos_;
    span.start = pos_ + extent->header;
    span.end = isLast ? to_ : pos_ + static_cast<std::int64_t>(extent->size);
    span.hasType = holds(data_, pos_ + 4, 4);
    span.code = BigEndian::u32(data_, pos_ + 4);

    pos_ = span.end;
    given_++;
    return span;
}

std::optional<BoxSpan> findSpan(ByteView data, std::int64_t from, std::int64_t to, BoxCode type) {
    BoxCursor cursor(data, from, to);
    while (const auto span = cursor.next())
        if (span->hasType && span->code == type) return span;
    return std::nullopt;
}

std::optional<BoxSpan> findSpan(ByteView data, std::int64_t from, std::int64_t to,
                                std::initializer_list<BoxCode> path) {
    std::optional<BoxSpan> found;
    for (const BoxCode type : path) {
        found = findSpan(data, from, to, type);
        if (!found) return std::nullopt;
        from = found->start;
        to = found->end;
    }
    return found;
}

std::optional<BoxSpan> findSpan(ByteView data, const BoxSpan& parent,
                                std::initializer_list<BoxCode> path) {
    return findSpan(data, parent.start, parent.end, path);
}

Box toBox(ByteView data, const BoxSpan& span) {
    return {BigEndian::fourCC(data, span.boxStart + 4), span.boxStart, span.start, span.end};
}

}  // namespace marlet
