#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "foundation/records.h"
#include "sources/tmdb_records.h"

namespace marlet {

/// Which film a file is, and what speaks against it. Pure.
namespace MovieJudging {

/// A found title that counts as the wanted one.
inline constexpr double exactTitle = 0.9;
/// A found title worth a closer look.
inline constexpr double likeTitle = 0.75;

/// What is known of the film before any catalogue is asked.
struct Wanted {
    std::string title;
    std::optional<int> year;
    std::optional<double> minutes;
    std::string fileName;

    static Wanted of(const ScannedFile& file, const Guess& guess);
};

/// A film of the database with its real length and date.
struct Candidate {
    TMDBMovie movie;
    double titleScore = 0.0;
    bool yearOK = false;
    std::optional<bool> runtimeOK;  ///< absent when the length can't be compared
    double score = 0.0;
    double popularity = 0.0;
};

/// Both known and less than two years apart: releases straddle the turn of a year.
bool closeYears(std::optional<int> a, std::optional<int> b);
/// Whether a film's year speaks for it; with no year wanted, any does.
bool yearFits(const Wanted& wanted, std::optional<int> year);

/// What to search for, in order: services differ in how they take a colon or a year.
std::vector<std::string> queries(const Wanted& wanted);
/// The hits worth a look, each film once, the likeliest first.
std::vector<TMDBSearchHit> ranked(const std::vector<TMDBSearchHit>& hits, const Wanted& wanted);
bool hasExactTitle(const std::vector<TMDBSearchHit>& hits, const Wanted& wanted);

/// `position` is that of its hit, from 0.
Candidate candidate(TMDBMovie movie, double popularity, std::size_t position, const Wanted& wanted);
/// A candidate whose title is a beginning of the wanted one.
Candidate shorterCandidate(TMDBMovie movie, double popularity, const Wanted& wanted);
/// Beginnings of the wanted title, from one word less down to one word.
std::vector<std::string> shorterTitles(const std::string& title);
/// Whether a found title is, word for word, a beginning of the wanted one.
bool isBeginning(const std::string& found, const std::string& title);

struct Pick {
    std::size_t index = 0;
    /// Set when several films bear the title and nothing tells which: the reason to look.
    std::optional<std::string> ambiguity;
};

/// Of at least one candidate.
Pick pick(const std::vector<Candidate>& candidates, const Wanted& wanted);
/// The edition's name when the file is a longer cut of the film.
std::optional<std::string> longerCut(const Candidate& chosen, const Wanted& wanted);
std::vector<std::string> reasons(const Candidate& chosen, const Wanted& wanted, bool isCut);

}  // namespace MovieJudging
}  // namespace marlet
