#pragma once

#include <cstdint>
#include <optional>

#include "matroska/byte_window.h"

namespace marlet {

/// One element of a file (RFC 8794, 3), found but not read.
struct Element {
    std::uint32_t id = 0;
    std::uint64_t start = 0;    ///< of its id
    std::uint64_t payload = 0;  ///< offset
    std::uint64_t size = 0;     ///< of the payload as it is told; 0 when it is unknown
    std::uint64_t end = 0;      ///< of the payload, never past the range it was found in
    bool isUnknown = false;     ///< its size

    /// Bytes of the payload that lie in the range it was found in.
    std::uint64_t length() const { return end - payload; }
    bool isMaster(std::uint32_t which) const { return id == which && !isUnknown; }
};

/// Walks the elements of a range one by one, stepping over their payloads. It ends at the end of
/// the range, where no element can be read, and behind an element of unknown size.
///
/// Children never reach past their parents: otherwise elements that overlap could make a small
/// file into an endless one.
class ElementWalk {
public:
    ElementWalk(ByteWindow& window, std::uint64_t from, std::uint64_t to)
        : window_(window), at_(from), to_(to) {}
    ElementWalk(ByteWindow& window, const Element& parent)
        : ElementWalk(window, parent.payload, parent.end) {}

    std::optional<Element> next();

private:
    ByteWindow& window_;
    std::uint64_t at_;
    std::uint64_t to_;
};

/// Big-endian, of the first 8 bytes of the payload; 0 when there are none.
std::uint64_t numberIn(ByteWindow& window, const Element& element);

}  // namespace marlet
