#include "identify/matcher.h"

#include <utility>

#include "foundation/title_match.h"
#include "identify/asking.h"
#include "identify/catalogue_words.h"
#include "identify/guess_reading.h"
#include "identify/probe.h"
#include "identify/scanner.h"
#include "identify/season_judging.h"

namespace marlet {
namespace {

constexpr std::size_t probesAtOnce = 6;
constexpr std::size_t filmsAtOnce = 4;

/// Different spellings of a show share one lookup.
std::string seasonKey(const Guess& guess) {
    return TitleMatch::normalise(guess.title) + "|" + std::to_string(guess.season.value_or(0));
}

/// A note on the reading goes first among the reasons, and takes certainty away.
void tellConflict(ResolvedFile& result) {
    if (!result.guess || !result.guess->conflict) return;
    std::vector<std::string> reasons = result.verdict.reasons();
    reasons.insert(reasons.begin(), *result.guess->conflict);
    result.verdict = Verdict::needsLook(std::move(reasons));
}

/// "Dropout 106 Iron Sisters" is episode 6 only when a show bears it out.
bool mayBeFilm(const ResolvedFile& result) {
    return result.guess && result.guess->compact && !result.match && result.guess->movieTitle;
}

Guess asFilm(const Guess& compact) {
    Guess guess;
    guess.kind = MediaKind::movie;
    guess.title = *compact.movieTitle;
    guess.year = compact.movieYear;
    guess.source = Guess::Source::rules;
    return guess;
}

}  // namespace

/// The files of one job by what they seem to be, and what has become of them.
struct Matcher::Work {
    std::map<std::string, SeasonFiles> seasons;
    SeasonFiles films;  // no season, but the same pairs
    std::vector<ScannedFile> unknown;
    std::vector<ResolvedFile> results;
    int done = 0;
    int total = 0;
};

Task<std::vector<LibraryItem>> Matcher::run(std::vector<std::filesystem::path> roots,
                                            std::set<std::filesystem::path> exclude) {
    auto resolving = resolve(std::move(roots), std::move(exclude));
    const std::vector<ResolvedFile> resolved = co_await resolving;
    co_return group(resolved);
}

Task<std::vector<ResolvedFile>> Matcher::resolve(std::vector<std::filesystem::path> roots,
                                                 std::set<std::filesystem::path> exclude) {
    using Paths = std::vector<std::filesystem::path>;
    std::function<Paths()> scan = [roots = std::move(roots), exclude = std::move(exclude)] {
        Paths files = Scanner::videoFiles(roots);
        std::erase_if(files, [&](const auto& file) { return exclude.contains(file); });
        return files;
    };
    auto working = Asking::orCancelled(Async::onWorker(std::move(scan)), cancel);
    Paths paths = co_await working;
    report(0, static_cast<int>(paths.size()), "Reading " + std::to_string(paths.size()) + " files");
    auto probing = probeAll(std::move(paths));
    std::vector<ScannedFile> files = co_await probing;
    emptyTags(files);
    auto judging = process(std::move(files));
    std::vector<ResolvedFile> results = co_await judging;
    co_return results;
}

Task<std::vector<ResolvedFile>> Matcher::run(std::vector<VirtualFile> files) {
    auto scanned = std::make_shared<std::vector<ScannedFile>>(files.size());
    for (std::size_t i = 0; i < files.size(); i++) {
        auto probing = probeOne(files[i].realURL, scanned, i);
        co_await probing;
        (*scanned)[i].url = files[i].fakeURL;
    }
    emptyTags(*scanned);
    auto judging = process(std::move(*scanned));
    std::vector<ResolvedFile> results = co_await judging;
    co_return results;
}

Task<std::vector<ScannedFile>> Matcher::probeAll(std::vector<std::filesystem::path> files) {
    auto scanned = std::make_shared<std::vector<ScannedFile>>(files.size());
    // Named, never a temporary of the awaited expression: g++ 12 destroys the captures twice.
    std::function<Task<>(std::size_t)> probe = [this, &files, scanned](std::size_t i) {
        return probeOne(files[i], scanned, i);
    };
    auto probing = Async::forEach(files.size(), probesAtOnce, std::move(probe));
    co_await probing;
    co_return std::move(*scanned);
}

Task<> Matcher::probeOne(std::filesystem::path file, std::shared_ptr<std::vector<ScannedFile>> into,
                         std::size_t index) {
    cancel.check();
    std::function<ScannedFile()> probe = [file = std::move(file)] { return Probe::read(file); };
    auto working = Asking::orCancelled(Async::onWorker(std::move(probe)), cancel);
    ScannedFile scanned = co_await working;
    (*into)[index] = std::move(scanned);
}

Task<std::vector<ResolvedFile>> Matcher::process(std::vector<ScannedFile> files) {
    auto work = std::make_shared<Work>();
    work->total = static_cast<int>(files.size());
    report(0, work->total, "Working out what they are");
    auto sorting = sortByKind(std::move(files), work);
    co_await sorting;
    auto seasons = resolveSeasons(work);
    co_await seasons;
    std::function<Task<>(std::size_t)> resolve = [this, work](std::size_t i) {
        return resolveFilm(work, i);
    };
    auto resolving = Async::forEach(work->films.size(), filmsAtOnce, std::move(resolve));
    co_await resolving;
    for (ScannedFile& file : work->unknown) {
        work->results.push_back(
            unmatched(std::move(file), std::nullopt, VerdictWords::unknownFile));
    }
    auto retrying = retryAsFilms(work);
    co_await retrying;
    for (ResolvedFile& result : work->results) tellConflict(result);
    co_return std::move(work->results);
}

Task<> Matcher::sortByKind(std::vector<ScannedFile> files, std::shared_ptr<Work> work) {
    auto reading = GuessReading::readAll(files, useAI, cancel);
    std::vector<std::optional<Guess>> guesses = co_await reading;
    for (std::size_t i = 0; i < files.size(); i++) {
        if (!guesses[i]) {
            work->unknown.push_back(std::move(files[i]));
        } else if (guesses[i]->kind == MediaKind::movie) {
            work->films.add(std::move(files[i]), std::move(*guesses[i]));
        } else {
            SeasonFiles& season = work->seasons[seasonKey(*guesses[i])];
            season.add(std::move(files[i]), std::move(*guesses[i]));
        }
    }
}

Task<> Matcher::resolveSeasons(std::shared_ptr<Work> work) {
    for (const auto& [key, season] : work->seasons) {
        cancel.check();
        auto resolving = resolveSeason(season.files, season.guesses);
        std::vector<ResolvedFile> resolved = co_await resolving;
        work->done += static_cast<int>(resolved.size());
        for (ResolvedFile& result : resolved) work->results.push_back(std::move(result));
        report(work->done, work->total, "Checking " + season.title());
    }
}

Task<> Matcher::resolveFilm(std::shared_ptr<Work> work, std::size_t index) {
    cancel.check();
    const Guess guess = work->films.guesses[index];
    auto resolving = resolveMovie(work->films.files[index], guess);
    ResolvedFile result = co_await resolving;
    work->results.push_back(std::move(result));
    work->done++;
    report(work->done, work->total, "Checking " + guess.title);
}

Task<> Matcher::retryAsFilms(std::shared_ptr<Work> work) {
    for (std::size_t i = 0; i < work->results.size(); i++) {
        const ResolvedFile& result = work->results[i];
        if (!mayBeFilm(result)) continue;
        cancel.check();
        auto resolving = resolveMovie(result.file, asFilm(*result.guess));
        ResolvedFile film = co_await resolving;
        work->results[i] = std::move(film);
    }
}

void Matcher::emptyTags(std::vector<ScannedFile>& files) const {
    if (!ignoreTags) return;
    for (ScannedFile& file : files) file.tags = {};
}

void Matcher::report(int done, int total, const std::string& text) const {
    if (progress) progress(done, total, text);
}

}  // namespace marlet
