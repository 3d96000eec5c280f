#include "convert/code_points.h"

#include <unicode/utf8.h>

#include <cstdint>

namespace marlet {

std::u32string codePointsOf(std::string_view text) {
    std::u32string points;
    const auto length = static_cast<std::int32_t>(text.size());
    for (std::int32_t at = 0; at < length;) {
        const std::int32_t start = at;
        UChar32 point = 0;
        U8_NEXT(text.data(), at, length, point);
        points += static_cast<char32_t>(
            point >= 0 ? point : static_cast<unsigned char>(text[static_cast<std::size_t>(start)]));
    }
    return points;
}

std::string utf8Of(std::u32string_view points) {
    std::string text;
    for (const char32_t point : points) {
        char bytes[U8_MAX_LENGTH];
        std::int32_t length = 0;
        U8_APPEND_UNSAFE(bytes, length, static_cast<UChar32>(point));
        text.append(bytes, static_cast<std::size_t>(length));
    }
    return text;
}

}  // namespace marlet
