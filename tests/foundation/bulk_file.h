#pragma once

#include <functional>
#include <string>

#include "foundation/bytes.h"
#include "foundation/errors.h"

namespace marlet::test {

inline constexpr std::size_t mebibyte = 1024 * 1024;
inline constexpr std::size_t chunk = 16 * mebibyte;

/// Bytes that differ from place to place, so that a piece in the wrong place is seen.
inline Bytes patterned(std::size_t size, std::uint32_t seed = 1) {
    Bytes bytes(size);
    std::uint32_t state = seed * 2654435761U + 1;
    // By address: an iterator costs four calls a byte in a test that isn't optimised.
    std::uint8_t* const at = bytes.data();
    for (std::size_t i = 0; i < size; i++) {
        state = state * 1664525U + 1013904223U;
        at[i] = static_cast<std::uint8_t>(state >> 24);
    }
    return bytes;
}

/// The sentence with which the action fails, "" when it does not.
inline std::string failureOf(const std::function<void()>& action) {
    try {
        action();
    } catch (const MFError& error) {
        return error.description();
    }
    return {};
}

}  // namespace marlet::test
