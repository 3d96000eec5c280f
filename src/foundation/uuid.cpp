#include "foundation/uuid.h"

#include <array>
#include <random>

#include "foundation/bytes.h"

namespace marlet {

namespace {

constexpr std::size_t textLength = 36;

bool isDashAt(std::size_t at) {
    return at == 8 || at == 13 || at == 18 || at == 23;
}

bool isHexDigit(char c) {
    return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
}

}  // namespace

std::string newUUID() {
    std::random_device random;
    std::array<std::uint8_t, 16> bytes{};
    for (std::uint8_t& byte : bytes) byte = static_cast<std::uint8_t>(random());
    bytes[6] = static_cast<std::uint8_t>((bytes[6] & 0x0F) | 0x40);  // version 4
    bytes[8] = static_cast<std::uint8_t>((bytes[8] & 0x3F) | 0x80);  // variant of RFC 9562
    std::string text;
    for (const char digit : toHex(bytes)) {
        if (isDashAt(text.size())) text.push_back('-');
        text.push_back(digit >= 'a' ? static_cast<char>(digit - 'a' + 'A') : digit);
    }
    return text;
}

bool isUUID(const std::string& text) {
    if (text.size() != textLength) return false;
    for (std::size_t at = 0; at < textLength; at++)
        if (isDashAt(at) ? text[at] != '-' : !isHexDigit(text[at])) return false;
    return true;
}

}  // namespace marlet
