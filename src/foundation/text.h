#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "foundation/bytes.h"

namespace marlet {

/// Text is UTF-8 everywhere; "characters" are what a reader counts as one (grapheme clusters).
namespace Text {

/// Bytes as UTF-8, each bad sequence replaced by U+FFFD.
std::string repairUtf8(ByteView bytes);
/// Unicode white space and line ends off both ends.
std::string trim(std::string_view text);
/// White space and any of the given ASCII characters off both ends.
std::string trim(std::string_view text, std::string_view alsoAscii);
/// Every run of Unicode white space as one blank: "\s+" replaced by " ".
std::string collapseSpace(std::string_view text);
std::string lower(std::string_view text);
/// Letters and their marks in one piece where Unicode has one (NFC): some systems store file names
/// in pieces.
std::string compose(std::string_view text);
/// The bytes of a text file whose encoding nobody knows: UTF-8, else UTF-16 when a byte order mark
/// says so, else Windows-1252. A leading mark is dropped.
std::string decodeFile(ByteView bytes);
/// First letter in upper / lower case, the rest as it is.
std::string upperFirst(std::string_view text);
std::string lowerFirst(std::string_view text);
/// Case and diacritics folded away, lower case: "Amélie" and "AMELIE" are the same.
std::string fold(std::string_view text);
/// Plain text, every occurrence.
std::string replaceAll(std::string text, std::string_view what, std::string_view with);
/// Pieces between the separators; empty pieces are dropped.
std::vector<std::string> words(std::string_view text, char separator = ' ');
/// Pieces between the separators, empty ones included.
std::vector<std::string> split(std::string_view text, char separator);
std::string join(const std::vector<std::string>& pieces, std::string_view between);
bool contains(std::string_view text, std::string_view what);
bool startsWith(std::string_view text, std::string_view what);
bool endsWith(std::string_view text, std::string_view what);
/// A whole text that is a plain decimal number (ASCII digits, optional sign) as an int.
std::optional<int> integer(std::string_view text);

std::size_t characterCount(std::string_view text);
std::string firstCharacters(std::string_view text, std::size_t count);
/// At most `limit` characters: cut behind the last whole sentence when that lies beyond half the
/// limit, else cut with "…".
std::string shorten(std::string_view text, std::size_t limit);

/// The order in which a file manager lists names: by locale, numbers inside names by value.
/// Negative, 0 or positive.
int compareNatural(std::string_view a, std::string_view b);

/// printf for one double, locale-independent: fixed(1.005, 2).
std::string fixed(double value, int decimals);

}  // namespace Text

struct RegexMatch {
    std::size_t start = 0;  ///< byte offset of the whole match
    std::size_t end = 0;    ///< byte offset just past it
    /// Capture groups, group 1 first; a group that took no part is an empty text.
    std::vector<std::string> groups;
};

/// A compiled pattern in ICU's dialect. Matching is bounded in time: a match that takes too long
/// counts as none. One object may be used from many threads.
class Regex {
public:
    enum class Case { Sensitive, Insensitive };
    explicit Regex(std::string_view pattern, Case sensitivity = Case::Sensitive);
    ~Regex();
    Regex(Regex&&) noexcept;
    Regex& operator=(Regex&&) noexcept;

    /// A pattern that doesn't compile matches nothing.
    std::optional<RegexMatch> firstMatch(std::string_view text) const;
    bool matchesIn(std::string_view text) const;
    /// Every match replaced; "$1" in `with` is group 1.
    std::string replaceAll(std::string_view text, std::string_view with) const;
    std::string replaceFirst(std::string_view text, std::string_view with) const;

private:
    struct Pattern;
    std::shared_ptr<const Pattern> pattern_;
};

}  // namespace marlet
