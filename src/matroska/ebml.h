#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>

#include "foundation/bytes.h"

namespace marlet {

/// The two numbers that every element begins with (RFC 8794, 4 to 6).
namespace EBML {

struct ID {
    std::uint32_t value = 0;  ///< with its marker bit
    std::size_t width = 0;    ///< bytes, 1 to 4
    bool operator==(const ID&) const = default;
};

struct Size {
    std::uint64_t value = 0;  ///< without its marker bit
    std::size_t width = 0;    ///< bytes, 1 to 8
    bool isUnknown = false;   ///< all bits of the value are 1
    bool operator==(const Size&) const = default;
};

/// Nothing for an id of more than 4 bytes, and where the bytes end too early.
std::optional<ID> readID(ByteView bytes, std::size_t at);
/// Nothing for a size of more than 8 bytes, and where the bytes end too early.
std::optional<Size> readSize(ByteView bytes, std::size_t at);

}  // namespace EBML
}  // namespace marlet
