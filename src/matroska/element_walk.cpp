#include "matroska/element_walk.h"

#include <algorithm>

#include "matroska/ebml.h"

namespace marlet {

namespace {

/// An id of 4 bytes and a size of 8.
constexpr std::size_t widestHead = 12;

}  // namespace

std::optional<Element> ElementWalk::next() {
    if (at_ >= to_) return std::nullopt;
    const ByteView head = window_.at(at_, widestHead);
    const auto id = EBML::readID(head, 0);
    if (!id) return std::nullopt;
    const auto size = EBML::readSize(head, id->width);
    if (!size) return std::nullopt;

    Element element;
    element.id = id->value;
    element.start = at_;
    element.payload = at_ + id->width + size->width;
    element.isUnknown = size->isUnknown;
    if (!size->isUnknown) element.size = size->value;
    // Sizes have 56 bits and files 63: no sum of the two overflows.
    element.end = std::max(element.payload, std::min(element.payload + element.size, to_));
    at_ = element.isUnknown ? to_ : element.payload + element.size;
    return element;
}

std::uint64_t numberIn(ByteWindow& window, const Element& element) {
    constexpr std::uint64_t widestNumber = 8;
    const auto length = static_cast<std::size_t>(std::min(element.length(), widestNumber));
    std::uint64_t value = 0;
    for (const std::uint8_t byte : window.at(element.payload, length)) value = value << 8 | byte;
    return value;
}

}  // namespace marlet
