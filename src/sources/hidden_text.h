#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>

namespace marlet {

/// A text that the program carries without its bytes standing in the binary: what is stored is
/// mixed at compile time, and the text comes to exist in memory when reveal() is called. This
/// keeps a key out of plain sight (`strings`), not from somebody with a debugger.
template <std::size_t Size>
class HiddenText {
public:
    consteval explicit HiddenText(const char (&text)[Size]) {
        for (std::size_t i = 0; i + 1 < Size; i++) {
            mixed_[i] = static_cast<std::uint8_t>(static_cast<std::uint8_t>(text[i]) ^ maskAt(i));
        }
    }

    std::string reveal() const {
        std::string text;
        for (std::size_t i = 0; i + 1 < Size; i++) {
            // Volatile, so that the compiler doesn't unmix it for us.
            const volatile std::uint8_t byte = mixed_[i];
            text += static_cast<char>(byte ^ maskAt(i));
        }
        return text;
    }

private:
    static constexpr std::uint8_t maskAt(std::size_t i) {
        return static_cast<std::uint8_t>(0x5B + i * 0x9D + (i >> 3));
    }
    std::array<std::uint8_t, Size> mixed_{};
};

}  // namespace marlet
