#include "app/answer_key.h"

#include <algorithm>
#include <set>
#include <vector>

#include "app/headless.h"
#include "foundation/text.h"
#include "foundation/title_match.h"
#include "identify/filename_rules.h"

namespace marlet::Headless {

namespace {

constexpr double sameTitle = 0.9;
constexpr double prefixTitle = 0.95;
constexpr double sameEpisodeTitle = 0.6;

std::string number(const std::optional<int>& value) {
    return std::to_string(value.value_or(0));
}

std::string filmWords(const std::string& title, const std::optional<int>& year) {
    return title + " (" + number(year) + ")";
}

std::string episodeWords(const std::optional<int>& season, const std::optional<int>& episode,
                         const std::optional<std::string>& title) {
    const std::string words = " S" + number(season) + "E" + number(episode);
    return title && !title->empty() ? words + " " + *title : words;
}

/// Of a film and of an episode; the fields bear the same names in all records.
template <typename Record>
std::string wordsOf(const Record& record) {
    return record.kind == MediaKind::movie
               ? filmWords(record.title, record.year)
               : record.title + episodeWords(record.season, record.episode, record.episodeTitle);
}

/// Whether every word of the one title is among those of the other.
bool holdsWords(const std::string& found, const std::string& truth) {
    const std::vector<std::string> wanted = Text::words(TitleMatch::normalise(truth));
    const std::vector<std::string> words = Text::words(TitleMatch::normalise(found));
    const std::set<std::string> known(words.begin(), words.end());
    return !wanted.empty() && std::ranges::all_of(wanted, [&](const std::string& word) {
        return known.contains(word);
    });
}

bool isTitle(const std::string& truth, const std::string& found) {
    double best = TitleMatch::similarity(truth, found);
    if (TitleMatch::isPrefix(truth, found) || TitleMatch::isPrefix(found, truth))
        best = std::max(best, prefixTitle);
    return best >= sameTitle || holdsWords(found, truth);
}

bool isYear(const std::optional<int>& truth, const std::optional<int>& found) {
    return !truth || std::abs(*truth - found.value_or(0)) <= 1;
}

bool isEpisodeTitle(const std::optional<std::string>& truth,
                    const std::optional<std::string>& found) {
    return !truth || TitleMatch::similarity(*truth, found.value_or("")) >= sameEpisodeTitle;
}

template <typename Record>
bool isMet(const Truth& truth, const Record& found) {
    if (truth.kind != found.kind) return false;
    if (truth.kind == MediaKind::movie)
        return isTitle(truth.title, found.title) && isYear(truth.year, found.year);
    return TitleMatch::similarity(truth.title, found.title) >= sameTitle &&
           truth.season == found.season && truth.episode == found.episode &&
           isEpisodeTitle(truth.episodeTitle, found.episodeTitle);
}

Truth filmTruth(const std::string& name) {
    static const Regex lastYear(R"(\((\d{4})\)\s*$)");
    const std::string cleaned = FilenameRules::clean(std::filesystem::path(name).stem().string());
    Truth truth;
    truth.title = FilenameRules::stripYear(cleaned);
    if (const auto match = lastYear.firstMatch(cleaned))
        truth.year = Text::integer(match->groups[0]);
    return truth;
}

Truth episodeTruth(const std::string& realRel, const std::vector<std::string>& parts,
                   const ExistingTags& tags) {
    Truth truth;
    truth.kind = MediaKind::tv;
    // "TV Shows", the show, its season, the file.
    if (parts.size() > 2) truth.title = parts[1];
    if (parts.size() > 3) truth.season = FilenameRules::seasonNumber(parts[2]);
    if (!truth.season) truth.season = tags.season;
    const auto parsed = FilenameRules::parse(std::filesystem::path(libraryRoot()) / realRel, tags);
    if (!parsed.guess || parsed.guess->kind != MediaKind::tv) return truth;
    if (!truth.season) truth.season = parsed.guess->season;
    truth.episode = parsed.guess->episode;
    truth.episodeTitle = parsed.guess->episodeTitle;
    return truth;
}

}  // namespace

std::string Truth::words() const {
    return wordsOf(*this);
}

bool Truth::isMetBy(const Match& match) const {
    return isMet(*this, match);
}

bool Truth::isMetBy(const Guess& guess) const {
    return isMet(*this, guess);
}

bool Truth::isSameAs(const Guess& guess) const {
    if (kind != guess.kind || title != guess.title) return false;
    if (kind == MediaKind::movie) return year == guess.year;
    return season == guess.season && episode == guess.episode && episodeTitle == guess.episodeTitle;
}

Truth truthOf(const std::string& realRel, const ExistingTags& tags) {
    // The root may have been told without its last slash.
    const std::string relative =
        realRel.substr(std::min(realRel.find_first_not_of('/'), realRel.size()));
    if (!Text::startsWith(relative, "TV Shows/"))
        return filmTruth(relative.substr(relative.rfind('/') + 1));
    return episodeTruth(relative, Text::words(relative, '/'), tags);
}

AnswerKey answerKey(const std::string& realRel, const ResolvedFile& resolved) {
    const Truth truth = truthOf(realRel, resolved.file.tags);
    return {truth.words(), resolved.match && truth.isMetBy(*resolved.match)};
}

std::string describe(const Match& match) {
    const std::string words =
        filmWords(match.title, match.year) + " id" + std::to_string(match.tmdbID);
    if (match.kind == MediaKind::movie) return words;
    return words + episodeWords(match.season, match.episode, match.episodeTitle);
}

std::string describe(const Guess& guess) {
    return wordsOf(guess);
}

}  // namespace marlet::Headless
