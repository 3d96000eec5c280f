#pragma once

#include <cstdint>
#include <string>

#include "matroska/element_walk.h"

namespace marlet {

/// Reads what the headers of a file say: everything but its clusters. Lengths that lie can't fill
/// the memory: there is a limit for one text or one array of bytes, and one for all of them.
class HeaderReader {
public:
    explicit HeaderReader(ByteWindow window) : window_(std::move(window)) {}

    ElementWalk children(const Element& parent) { return {window_, parent}; }
    ElementWalk walk(std::uint64_t from, std::uint64_t to) { return {window_, from, to}; }

    std::uint64_t number(const Element& element) { return numberIn(window_, element); }
    /// As a signed number; what has no place in one is its greatest.
    int integer(const Element& element);
    bool flag(const Element& element) { return number(element) != 0; }
    /// 0 for any length but 4 and 8, and for what is no finite number.
    double real(const Element& element);
    /// UTF-8 up to the first NUL (RFC 8794, 7.4), bad sequences repaired.
    std::string text(const Element& element);
    Bytes bytes(const Element& element);

private:
    Bytes payload(const Element& element, std::uint64_t most);

    ByteWindow window_;
    std::uint64_t left_ = std::uint64_t{128} * 1024 * 1024;
};

}  // namespace marlet
