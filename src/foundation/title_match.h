#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace marlet {

/// The one comparison of titles in the program.
namespace TitleMatch {

/// The comparison form: folded, without punctuation and a leading article, single blanks.
std::string normalise(std::string_view title);
/// 0 to 1: equal forms give 1, otherwise the Dice coefficient of the distinct words.
double similarity(std::string_view a, std::string_view b);
/// Whether `a` is a whole-word beginning of `b` (and shorter).
bool isPrefix(std::string_view a, std::string_view b);
/// similarity, raised to 0.85 when `wanted` is a prefix of `found`.
double score(std::string_view wanted, std::string_view found);

}  // namespace TitleMatch

/// Titles of two-part episodes.
namespace EpisodeTitles {

struct PartStem {
    std::string stem;  ///< normalised
    int part = 0;      ///< 1 or 2
    bool operator==(const PartStem&) const = default;
};

/// "Goodnight, Seattle (1)" gives ("goodnight seattle", 1).
std::optional<PartStem> partStem(std::string_view title);
/// The same stem as printed: "Goodnight, Seattle".
std::optional<std::string> displayStem(std::string_view title);

}  // namespace EpisodeTitles
}  // namespace marlet
