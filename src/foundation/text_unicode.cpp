// The part of Text that needs the Unicode character tables.
#include <unicode/brkiter.h>
#include <unicode/normalizer2.h>
#include <unicode/uchar.h>
#include <unicode/utext.h>
#include <unicode/utf8.h>

#include <cstdint>
#include <memory>

#include "foundation/icu_text.h"
#include "foundation/text.h"

namespace marlet::Text {
namespace {

using IcuText::isAscii;
using IcuText::utf16;
using IcuText::utf8;

constexpr std::string_view replacement = "\xEF\xBF\xBD";

/// The white space of ASCII that Unicode counts as such (the property White_Space).
bool isAsciiSpace(char c) {
    return c == ' ' || (c >= '\t' && c <= '\r');
}

bool isSpace(UChar32 c) {
    return c >= 0 && u_isUWhiteSpace(c);
}

/// The code point at `at`, which moves behind it; negative for a bad sequence.
UChar32 next(std::string_view text, std::int64_t& at) {
    const auto* const bytes = reinterpret_cast<const std::uint8_t*>(text.data());
    UChar32 c = 0;
    U8_NEXT(bytes, at, static_cast<std::int64_t>(text.size()), c);
    return c;
}

/// The code point before `at`, which moves to its front; negative for a bad sequence.
UChar32 previous(std::string_view text, std::int64_t& at) {
    constexpr std::int64_t longest = 4;
    std::int64_t front = at - 1;
    while (front > 0 && at - front < longest &&
           U8_IS_TRAIL(text[static_cast<std::size_t>(front)])) {
        --front;
    }
    std::int64_t end = front;
    const UChar32 c = next(text, end);
    const bool whole = end == at;
    at = whole ? front : at - 1;
    return whole ? c : -1;
}

std::string asciiLower(std::string_view text) {
    std::string out(text);
    for (char& c : out) {
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    }
    return out;
}

using OneToOne = UChar32(UChar32);

std::string mapFirst(std::string_view text, OneToOne* map) {
    std::int64_t at = 0;
    if (text.empty()) return {};
    const UChar32 first = next(text, at);
    if (first < 0) return std::string(text);
    std::string out;
    icu::UnicodeString(map(first)).toUTF8String(out);
    return out.append(text.substr(static_cast<std::size_t>(at)));
}

icu::UnicodeString withoutMarks(const icu::UnicodeString& decomposed) {
    icu::UnicodeString out;
    for (std::int32_t at = 0; at < decomposed.length(); at = decomposed.moveIndex32(at, 1)) {
        const UChar32 c = decomposed.char32At(at);
        if (u_charType(c) != U_NON_SPACING_MARK) out.append(c);
    }
    return out;
}

/// The byte offset of the end of each character (grapheme cluster), in order, until `visit` says
/// false.
template <class Visit>
void eachCharacterEnd(std::string_view text, Visit visit) {
    // "\r\n" is the one cluster of more than one ASCII character.
    if (isAscii(text) && text.find('\r') == std::string_view::npos) {
        for (std::size_t end = 1; end <= text.size(); ++end) {
            if (!visit(end)) return;
        }
        return;
    }
    UErrorCode status = U_ZERO_ERROR;
    thread_local const std::unique_ptr<icu::BreakIterator> breaks(
        icu::BreakIterator::createCharacterInstance(icu::Locale::getRoot(), status));
    const std::unique_ptr<UText, decltype(&utext_close)> reader(
        utext_openUTF8(nullptr, text.data(), static_cast<std::int64_t>(text.size()), &status),
        &utext_close);
    if (!breaks || U_FAILURE(status)) return;
    breaks->setText(reader.get(), status);
    if (U_FAILURE(status)) return;
    for (std::int32_t end = breaks->next(); end != icu::BreakIterator::DONE; end = breaks->next()) {
        if (!visit(static_cast<std::size_t>(end))) return;
    }
}

bool endsSentence(std::string_view character) {
    return character == "." || character == "!" || character == "?";
}

}  // namespace

std::string repairUtf8(ByteView bytes) {
    const std::string_view text(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    if (isAscii(text)) return std::string(text);
    std::string out;
    out.reserve(text.size());
    for (std::int64_t at = 0; at < static_cast<std::int64_t>(text.size());) {
        const std::int64_t from = at;
        if (next(text, at) < 0) {
            out += replacement;
        } else {
            out += text.substr(static_cast<std::size_t>(from), static_cast<std::size_t>(at - from));
        }
    }
    return out;
}

std::string trim(std::string_view text) {
    return trim(text, {});
}

std::string trim(std::string_view text, std::string_view alsoAscii) {
    const auto goes = [&](UChar32 c) {
        return isSpace(c) || (c >= 0 && c < 0x80 &&
                              alsoAscii.find(static_cast<char>(c)) != std::string_view::npos);
    };
    while (!text.empty()) {
        std::int64_t at = 0;
        if (!goes(next(text, at))) break;
        text.remove_prefix(static_cast<std::size_t>(at));
    }
    while (!text.empty()) {
        auto at = static_cast<std::int64_t>(text.size());
        if (!goes(previous(text, at))) break;
        text = text.substr(0, static_cast<std::size_t>(at));
    }
    return std::string(text);
}

std::string collapseSpace(std::string_view text) {
    std::string out;
    out.reserve(text.size());
    bool inSpace = false;
    for (std::int64_t at = 0; at < static_cast<std::int64_t>(text.size());) {
        const std::int64_t from = at;
        const char byte = text[static_cast<std::size_t>(at)];
        const bool space =
            (byte & 0x80) == 0 ? (++at, isAsciiSpace(byte)) : isSpace(next(text, at));
        if (!space) {
            out += text.substr(static_cast<std::size_t>(from), static_cast<std::size_t>(at - from));
        } else if (!inSpace) {
            out += ' ';
        }
        inSpace = space;
    }
    return out;
}

std::string lower(std::string_view text) {
    if (isAscii(text)) return asciiLower(text);
    return utf8(utf16(text).toLower(icu::Locale::getRoot()));
}

std::string upperFirst(std::string_view text) {
    return mapFirst(text, &u_totitle);
}

std::string lowerFirst(std::string_view text) {
    return mapFirst(text, &u_tolower);
}

std::string compose(std::string_view text) {
    if (isAscii(text)) return std::string(text);
    UErrorCode status = U_ZERO_ERROR;
    const icu::Normalizer2* const nfc = icu::Normalizer2::getNFCInstance(status);
    const icu::UnicodeString composed =
        U_SUCCESS(status) ? nfc->normalize(utf16(text), status) : icu::UnicodeString();
    return U_SUCCESS(status) ? utf8(composed) : std::string(text);
}

std::string fold(std::string_view text) {
    if (isAscii(text)) return asciiLower(text);
    // Canonical decomposition only: a compatibility one would turn "³" into "3", and who compares
    // titles wants to see the difference. Folding comes first because it may bring marks of its
    // own ("İ" becomes "i" and a dot).
    UErrorCode status = U_ZERO_ERROR;
    const icu::Normalizer2* const decompose = icu::Normalizer2::getNFDInstance(status);
    const icu::Normalizer2* const compose = icu::Normalizer2::getNFCInstance(status);
    icu::UnicodeString folded = utf16(text).foldCase();
    if (U_SUCCESS(status)) folded = decompose->normalize(folded, status);
    if (U_SUCCESS(status)) folded = compose->normalize(withoutMarks(folded), status);
    return utf8(folded.toLower(icu::Locale::getRoot()));
}

std::size_t characterCount(std::string_view text) {
    std::size_t count = 0;
    eachCharacterEnd(text, [&](std::size_t) {
        ++count;
        return true;
    });
    return count;
}

std::string firstCharacters(std::string_view text, std::size_t count) {
    std::size_t seen = 0;
    std::size_t kept = 0;
    eachCharacterEnd(text, [&](std::size_t end) {
        if (seen == count) return false;
        ++seen;
        kept = end;
        return true;
    });
    return std::string(text.substr(0, kept));
}

std::string shorten(std::string_view text, std::size_t limit) {
    std::size_t count = 0;
    std::size_t start = 0;
    std::size_t cut = 0;       // end of the first limit - 1 characters
    std::size_t sentence = 0;  // end of the last whole sentence among them
    std::size_t sentenceCount = 0;
    eachCharacterEnd(text, [&](std::size_t end) {
        ++count;
        if (count < limit) {
            cut = end;
            if (endsSentence(text.substr(start, end - start))) {
                sentence = end;
                sentenceCount = count;
            }
        }
        start = end;
        return count <= limit;
    });
    if (count <= limit) return std::string(text);
    if (limit == 0) return {};
    if (sentenceCount * 2 > limit) return std::string(text.substr(0, sentence));
    return std::string(text.substr(0, cut)) + "…";
}

}  // namespace marlet::Text
