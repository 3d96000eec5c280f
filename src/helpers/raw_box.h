#pragma once

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <optional>
#include <string>

#include "foundation/bytes.h"
#include "mp4/box_cursor.h"

namespace marlet {

/// A box whose stated size is true: it lies whole inside what it was found in
/// (ISO/IEC 14496-12, 4.2). Offsets count from the start of the array.
struct RawBox {
    BoxCode code = 0;
    std::size_t at = 0;     ///< of the size field
    std::size_t start = 0;  ///< of the payload
    std::size_t end = 0;    ///< just past the box
    bool operator==(const RawBox&) const = default;
};

/// Walks the boxes of a range and fails on one that lies. What is to be written again must be
/// understood whole, so this walk forgives nothing. Up to seven bytes behind the last box
/// (QuickTime ends some lists with four zeros) belong to no box; rest() tells where they start.
class StrictBoxes {
public:
    StrictBoxes(ByteView data, std::size_t from, std::size_t to);
    StrictBoxes(ByteView data, const RawBox& parent)
        : StrictBoxes(data, parent.start, parent.end) {}

    /// Nothing at the end; "a box of the index runs past its end" where one does.
    std::optional<RawBox> next();
    std::size_t rest() const { return pos_; }

private:
    ByteView data_;
    std::size_t pos_;
    std::size_t to_;
};

namespace RawBoxes {

/// The only child of that type; nothing without one, a failure when there are two: readers
/// disagree about which of them counts.
std::optional<RawBox> only(ByteView data, const RawBox& parent, BoxCode type);
/// The same down a path.
std::optional<RawBox> only(ByteView data, const RawBox& parent,
                           std::initializer_list<BoxCode> path);
/// Four characters for people; what is not printable is a dot.
std::string name(BoxCode code);

}  // namespace RawBoxes
}  // namespace marlet
