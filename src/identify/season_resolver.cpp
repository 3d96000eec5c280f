#include "identify/season_resolver.h"

#include "identify/matcher.h"
#include "sources/source_settings.h"

namespace marlet {
namespace {

/// What the sources have said so far of each file of a season.
struct Answers {
    std::optional<ResolvedFile> found;
    std::optional<ResolvedFile> firstMiss;
};

void keep(Answers& answers, ResolvedFile result) {
    if (result.match) {
        answers.found = std::move(result);
    } else if (!answers.firstMiss || result.ambiguous) {
        answers.firstMiss = std::move(result);
    }
}

/// A file left unmatched shows the words of the first source that failed it.
ResolvedFile settled(Answers answers, ScannedFile file, Guess guess) {
    if (answers.found) return std::move(*answers.found);
    if (answers.firstMiss) return std::move(*answers.firstMiss);
    return unmatched(std::move(file), std::move(guess), VerdictWords::noSource);
}

}  // namespace

Task<std::vector<ResolvedFile>> Matcher::resolveSeason(std::vector<ScannedFile> files,
                                                       std::vector<Guess> guesses) {
    std::vector<Answers> answers(files.size());
    const std::vector<SourceID> asked = sources();
    for (const SourceID id : asked) {
        std::vector<std::size_t> open;
        SeasonFiles missing;
        for (std::size_t i = 0; i < files.size(); i++) {
            if (answers[i].found) continue;
            open.push_back(i);
            missing.add(files[i], guesses[i]);
        }
        if (missing.empty()) break;
        std::vector<ResolvedFile> results;
        if (id == SourceID::tmdb) {
            auto resolving = SeasonResolver::fromTMDB(tmdb, std::move(missing), cancel);
            results = co_await resolving;
        } else if (ExternalSource* const source = external(id)) {
            auto resolving = SeasonResolver::fromExternal(source, std::move(missing), cancel);
            results = co_await resolving;
        }
        for (std::size_t i = 0; i < results.size(); i++) {
            keep(answers[open[i]], std::move(results[i]));
        }
    }
    std::vector<ResolvedFile> settledFiles;
    for (std::size_t i = 0; i < files.size(); i++) {
        settledFiles.push_back(
            settled(std::move(answers[i]), std::move(files[i]), std::move(guesses[i])));
    }
    co_return settledFiles;
}

std::vector<SourceID> Matcher::sources() const {
    return order ? *order : SourceSettings::active();
}

ExternalSource* Matcher::external(SourceID id) const {
    const auto own = externals.find(id);
    return own == externals.end() ? sharedSource(id) : own->second;
}

}  // namespace marlet
