#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>

#include "foundation/bytes.h"
#include "mp4/box.h"

namespace marlet {

/// A box type as the number its four bytes make: boxCode("moov").
using BoxCode = std::uint32_t;

constexpr BoxCode boxCode(const char (&type)[5]) {
    BoxCode code = 0;
    for (int i = 0; i < 4; i++) code = code << 8 | static_cast<std::uint8_t>(type[i]);
    return code;
}

/// A Box without its text, for walks that only compare types.
struct BoxSpan {
    BoxCode code = 0;
    bool hasType = false;  ///< false when the type lies past the buffer
    std::int64_t boxStart = 0;
    std::int64_t start = 0;
    std::int64_t end = 0;
};

/// Walks the boxes of a range one by one (ISO/IEC 14496-12, 4.2), allocating nothing.
class BoxCursor {
public:
    /// Siblings that one walk gives at most. The fullest folder of boxes in real files, a tag
    /// block, holds some hundreds; a hostile index could hold a hundred million.
    static constexpr std::size_t mostSiblings = 262'144;

    BoxCursor(ByteView data, std::int64_t from, std::int64_t to);
    /// Nothing at the end of the range, and where the walk goes bad.
    std::optional<BoxSpan> next();

private:
    ByteView data_;
    std::int64_t pos_;
    std::int64_t to_;
    std::size_t given_ = 0;
};

/// The first box of that type among the children of a range, of a box, or at the end of a path.
std::optional<BoxSpan> findSpan(ByteView data, std::int64_t from, std::int64_t to, BoxCode type);
std::optional<BoxSpan> findSpan(ByteView data, const BoxSpan& parent,
                                std::initializer_list<BoxCode> path);
std::optional<BoxSpan> findSpan(ByteView data, std::int64_t from, std::int64_t to,
                                std::initializer_list<BoxCode> path);

Box toBox(ByteView data, const BoxSpan& span);

}  // namespace marlet
