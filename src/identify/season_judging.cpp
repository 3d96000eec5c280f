#include "identify/season_judging.h"

#include <limits>

#include "foundation/title_match.h"
#include "identify/lengths.h"

namespace marlet {

std::vector<ResolvedFile> SeasonFiles::missed(const std::string& reason) const {
    std::vector<ResolvedFile> results;
    for (std::size_t i = 0; i < size(); i++) {
        results.push_back(unmatched(files[i], guesses[i], reason));
    }
    return results;
}

namespace SeasonJudging {
namespace {

/// A title in the file's name that bears the episode's out.
constexpr double sameTitle = 0.6;
/// The same for the title of two episodes in one.
constexpr double sameStem = 0.8;

const Episode* find(const Episodes& episodes, std::optional<int> number) {
    if (!number) return nullptr;
    const auto found = episodes.find(*number);
    return found == episodes.end() ? nullptr : &found->second;
}

int claimsOn(int episode, const Claims& claims) {
    const auto found = claims.find(episode);
    return found == claims.end() ? 0 : found->second;
}

double fitOf(const ScannedFile& file, const Guess& guess, const Episodes& episodes) {
    const Episode* const episode = find(episodes, guess.episode);
    if (episode == nullptr) return 0.0;
    double score = 1.0;
    if (guess.episodeTitle) score += TitleMatch::similarity(*guess.episodeTitle, episode->title);
    if (Lengths::fits(Lengths::minutes(file), episode->minutes, Lengths::episode) == true) {
        score += 0.5;
    }
    return score;
}

Judgement missing(const Guess& guess, const Season& season) {
    Judgement result;
    result.verdict = Verdict::needsLook({"Episode " + std::to_string(guess.episode.value_or(0)) +
                                         " isn't in season " + std::to_string(season.number) + " " +
                                         season.words.where});
    return result;
}

/// The common stem of "X (1)" and "X (2)"; nothing when the titles are no such pair.
std::optional<std::string> pairStem(const Episode& first, const Episode& second) {
    const auto one = EpisodeTitles::partStem(first.title);
    const auto two = EpisodeTitles::partStem(second.title);
    if (!one || !two || one->part != 1 || two->part != 2 || one->stem != two->stem) {
        return std::nullopt;
    }
    return one->stem;
}

bool bearsStemOut(const std::string& episodeTitle, const std::string& stem) {
    const auto part = EpisodeTitles::partStem(episodeTitle);
    return TitleMatch::similarity(part ? part->stem : episodeTitle, stem) >= sameStem;
}

bool fitsTogether(double minutes, const Episode& first, const Episode& second) {
    const double half = first.minutes.value_or(0);
    const double both = half + second.minutes.value_or(first.minutes.value_or(0));
    return both >= 1 && Lengths::within(minutes, both, Lengths::doubleEpisode);
}

/// The file as two episodes in one, when everything speaks for it.
std::optional<Judgement> asDouble(double minutes, const Guess& guess, const Season& season) {
    const int number = *guess.episode;
    if (number == std::numeric_limits<int>::max()) return std::nullopt;
    const Episode* const first = find(season.episodes, number);
    const Episode* const second = find(season.episodes, number + 1);
    if (second == nullptr || claimsOn(number + 1, season.claims) > 0 ||
        claimsOn(number, season.claims) != 1 || !fitsTogether(minutes, *first, *second)) {
        return std::nullopt;
    }
    const auto stem = pairStem(*first, *second);
    if (!stem || (guess.episodeTitle && !bearsStemOut(*guess.episodeTitle, *stem))) {
        return std::nullopt;
    }
    const std::string shown = EpisodeTitles::displayStem(first->title).value_or(first->title);
    return Judgement{
        number, number + 1, shown + " (Parts 1 & 2)", first->minutes,
        guess.episodeTitle ? Verdict::certain() : Verdict::needsLook({VerdictWords::onlyNumber})};
}

/// What was found for and against one file being one episode.
struct Evidence {
    bool supported = false;
    std::vector<std::string> reasons;
};

void weighTitle(Evidence& evidence, const Guess& guess, const Episode& episode,
                const Season& season) {
    if (!guess.episodeTitle) return;
    if (TitleMatch::similarity(*guess.episodeTitle, episode.title) >= sameTitle) {
        evidence.supported = true;
        return;
    }
    evidence.reasons.push_back("File says " + VerdictWords::quoted(*guess.episodeTitle) + ", " +
                               season.words.name + " says " + VerdictWords::quoted(episode.title));
}

Verdict verdictOf(const Evidence& evidence) {
    return evidence.reasons.empty() ? Verdict::certain() : Verdict::needsLook(evidence.reasons);
}

}  // namespace

Claims claims(const std::vector<Guess>& guesses) {
    Claims counts;
    for (const Guess& guess : guesses) {
        if (guess.episode) counts[*guess.episode]++;
    }
    return counts;
}

double fit(const SeasonFiles& files, const Episodes& episodes) {
    double score = 0.0;
    for (std::size_t i = 0; i < files.size(); i++) {
        score += fitOf(files.files[i], files.guesses[i], episodes);
    }
    return score;
}

Judgement judge(const ScannedFile& file, const Guess& guess, const Season& season) {
    const Episode* const episode = find(season.episodes, guess.episode);
    if (episode == nullptr) return missing(guess, season);

    Evidence evidence;
    weighTitle(evidence, guess, *episode, season);
    const auto minutes = Lengths::minutes(file);
    const auto lengthFits = Lengths::fits(minutes, episode->minutes, Lengths::episode);
    if (lengthFits == true) evidence.supported = true;
    if (lengthFits == false) {
        if (season.allowsDoubles) {
            if (auto both = asDouble(*minutes, guess, season)) return *both;
        }
        evidence.reasons.push_back(
            Lengths::difference(*minutes, season.words.name, *episode->minutes));
    }
    if (claimsOn(*guess.episode, season.claims) > 1) {
        evidence.reasons.push_back("Another file is also episode " +
                                   std::to_string(*guess.episode));
    }
    if (evidence.reasons.empty() && !evidence.supported) {
        evidence.reasons.push_back(VerdictWords::onlyNumber);
    }
    return {*guess.episode, std::nullopt, episode->title, episode->minutes, verdictOf(evidence)};
}

}  // namespace SeasonJudging
}  // namespace marlet
