#pragma once

#include <optional>
#include <string>

#include "foundation/records.h"

namespace marlet {

/// The command line's front end over the same model that the screens use.
namespace Headless {

/// What a file of a library in good order is, as its place and its name tell. Below the folder
/// "TV Shows" lie episodes, "TV Shows/SHOW/Season N/...", everywhere else films,
/// "TITLE (YEAR).m4v".
struct Truth {
    MediaKind kind = MediaKind::movie;
    std::string title;  ///< the film or the show
    std::optional<int> year;
    std::optional<int> season;
    std::optional<int> episode;
    std::optional<std::string> episodeTitle;

    /// "Alien (1979)"; "Frasier S2E5 Duke's, We Hardly Knew Ye". What is missing prints 0.
    std::string words() const;
    /// A title of nearly the same words, and a year no more than one away; an episode's numbers,
    /// and a title of much the same words. What the truth itself doesn't tell is not asked for.
    bool isMetBy(const Match& match) const;
    bool isMetBy(const Guess& guess) const;
    /// Whether a guess says just this and nothing else.
    bool isSameAs(const Guess& guess) const;
};

/// `realRel`: the path below the library's root.
Truth truthOf(const std::string& realRel, const ExistingTags& tags);

struct AnswerKey {
    std::string expected;
    bool right = false;  ///< whether the match is
};
AnswerKey answerKey(const std::string& realRel, const ResolvedFile& resolved);

/// "Alien (1979) id348"; "Frasier (1993) id3452 S2E5 Duke's, We Hardly Knew Ye".
std::string describe(const Match& match);
/// As Truth::words.
std::string describe(const Guess& guess);

}  // namespace Headless
}  // namespace marlet
