// Text files of people: what says its encoding is believed, what can be UTF-8 is.
#include <unicode/ucnv.h>
#include <unicode/utf8.h>

#include <cstdint>
#include <limits>

#include "foundation/icu_text.h"
#include "foundation/text.h"

namespace marlet::Text {

namespace {

constexpr std::string_view utf8Mark = "\xEF\xBB\xBF";

bool isUtf8(std::string_view text) {
    const auto* const bytes = reinterpret_cast<const std::uint8_t*>(text.data());
    const auto size = static_cast<std::int64_t>(text.size());
    for (std::int64_t at = 0; at < size;) {
        UChar32 c = 0;
        U8_NEXT(bytes, at, size, c);
        if (c < 0) return false;
    }
    return true;
}

bool hasUtf16Mark(std::string_view text) {
    return text.starts_with("\xFF\xFE") || text.starts_with("\xFE\xFF");
}

}  // namespace

std::string decodeFile(ByteView bytes) {
    std::string_view text(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    if (text.starts_with(utf8Mark)) text.remove_prefix(utf8Mark.size());
    if (isUtf8(text)) return std::string(text);
    const char* const encoding = hasUtf16Mark(text) ? "UTF-16" : "windows-1252";
    // ICU counts in 32 bits, and may need three units for one byte.
    constexpr std::size_t most = std::numeric_limits<std::int32_t>::max() / 4;
    text = text.substr(0, most);
    const icu::UnicodeString decoded(text.data(), static_cast<std::int32_t>(text.size()), encoding);
    return IcuText::utf8(decoded);
}

}  // namespace marlet::Text
