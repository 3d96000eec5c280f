#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "foundation/records.h"
#include "identify/catalogue_words.h"

namespace marlet {

/// Files that seem to belong to one season of one show, each with its guess.
struct SeasonFiles {
    std::vector<ScannedFile> files;
    std::vector<Guess> guesses;

    std::size_t size() const { return files.size(); }
    bool empty() const { return files.empty(); }
    void add(ScannedFile file, Guess guess) {
        files.push_back(std::move(file));
        guesses.push_back(std::move(guess));
    }
    /// The first guess speaks for all.
    const std::string& title() const { return guesses.front().title; }
    std::optional<int> year() const { return guesses.front().year; }
    int season() const { return guesses.front().season.value_or(1); }
    /// Every file without a match, for one reason.
    std::vector<ResolvedFile> missed(const std::string& reason) const;
};

/// Which episode a file is, and what speaks against it. Pure.
namespace SeasonJudging {

/// What is known of an episode, whatever the catalogue.
struct Episode {
    std::string title;
    std::optional<int> minutes;
};
using Episodes = std::map<int, Episode>;
/// How many files claim each episode number.
using Claims = std::map<int, int>;

/// A show is liked by its title from here on.
inline constexpr double likeTitle = 0.8;

/// A season as one catalogue tells it.
struct Season {
    int number = 1;
    Episodes episodes;
    Claims claims;
    CatalogueWords words;
    /// Whether one file may hold two episodes of half its length.
    bool allowsDoubles = false;
};

struct Judgement {
    std::optional<int> episode;  ///< absent: no match
    std::optional<int> episodeEnd;
    std::string title;
    std::optional<int> minutes;  ///< of the first episode
    Verdict verdict;
};

Claims claims(const std::vector<Guess>& guesses);
/// How well the season's episodes bear the files out: by number, by title and by length.
double fit(const SeasonFiles& files, const Episodes& episodes);
Judgement judge(const ScannedFile& file, const Guess& guess, const Season& season);

/// Of the shows found, those whose title is like the wanted one; of these only the shows of the
/// wanted year, when there is one. `title` and `year` read a show.
template <typename Show, typename Title, typename Year>
std::vector<Show> candidates(const std::vector<Show>& found, const SeasonFiles& files, Title title,
                             Year year);

}  // namespace SeasonJudging
}  // namespace marlet

#include "identify/season_candidates.h"
