#pragma once

// Between UTF-8 and ICU's UTF-16. For .cpp files only: it brings ICU in.

#include <unicode/locid.h>
#include <unicode/unistr.h>

#include <algorithm>
#include <string>
#include <string_view>

namespace marlet::IcuText {

/// Pure ASCII means one byte, one UTF-16 unit, one code point: the ways of both worlds agree, and
/// nearly every file name takes the short one.
inline bool isAscii(std::string_view text) {
    unsigned char all = 0;
    for (const char c : text) all |= static_cast<unsigned char>(c);
    return all < 0x80;
}

/// Bad sequences become U+FFFD.
inline icu::UnicodeString utf16(std::string_view text) {
    return icu::UnicodeString::fromUTF8(
        icu::StringPiece(text.data(), static_cast<std::int32_t>(text.size())));
}

inline std::string utf8(const icu::UnicodeString& text) {
    std::string out;
    text.toUTF8String(out);
    return out;
}

/// The person's locale; English where there is none, for the POSIX one orders by code point.
inline icu::Locale localeOfPerson() {
    const icu::Locale locale = icu::Locale::getDefault();
    const std::string_view name = locale.getName();
    const bool posix = name.empty() || name == "c" || name.find("POSIX") != std::string_view::npos;
    return posix ? icu::Locale::getUS() : locale;
}

}  // namespace marlet::IcuText
