// Asking the sources again about an item that is in Review.

#include <algorithm>
#include <map>

#include "app/app_model.h"
#include "identify/catalogue_words.h"
#include "sources/key_store.h"
#include "sources/source_cache.h"

namespace marlet {

namespace {

/// The files whose matches one source gave; those without a match are for all sources.
std::map<std::optional<SourceID>, std::vector<ResolvedFile>> bySource(const LibraryItem& item) {
    std::map<std::optional<SourceID>, std::vector<ResolvedFile>> groups;
    for (const ResolvedFile& file : item.files) {
        if (!file.guess) continue;
        // What a person typed by hand is no source's to judge anew.
        if (file.match && file.match->byHand()) continue;
        std::optional<SourceID> source;
        if (file.match) source = file.match->sourceID();
        groups[source].push_back(file);
    }
    return groups;
}

/// A source that stays silent looks like one that knows nothing; so does a match that is no more.
bool wasReached(const ResolvedFile& fresh, const std::optional<SourceID>& source) {
    if (fresh.match) return true;
    if (source && *source != SourceID::tmdb) return false;
    const auto& reasons = fresh.verdict.reasons();
    return std::none_of(reasons.begin(), reasons.end(), [](const std::string& reason) {
        return reason == VerdictWords::unreachable || reason == VerdictWords::noKey;
    });
}

}  // namespace

Task<std::vector<ResolvedFile>> AppModel::askAgain(LibraryItem item,
                                                   std::shared_ptr<TMDBClient> tmdb) {
    std::vector<ResolvedFile> reached;
    const auto groups = bySource(item);
    for (const auto& [source, files] : groups) {
        const std::shared_ptr<Matcher> matcher = matcherFor(tmdb, life_);
        if (source) matcher->order = std::vector<SourceID>{*source};
        std::vector<ScannedFile> scanned;
        std::vector<Guess> guesses;
        for (const ResolvedFile& file : files) {
            scanned.push_back(file.file);
            guesses.push_back(*file.guess);
        }
        std::vector<ResolvedFile> fresh;
        if (item.kind == MediaKind::tv) {
            auto resolving = matcher->resolveSeason(scanned, guesses);
            fresh = co_await resolving;
        } else {
            auto resolving = matcher->resolveMovie(scanned.front(), guesses.front());
            ResolvedFile one = co_await resolving;
            fresh.push_back(std::move(one));
        }
        for (ResolvedFile& file : fresh)
            if (wasReached(file, source)) reached.push_back(std::move(file));
    }
    co_return reached;
}

Task<> AppModel::refreshFromTMDB(std::string itemID) {
    const LibraryItem* found = review_.item(itemID);
    if (found == nullptr) co_return;
    const LibraryItem item = *found;
    const auto tmdb = TMDBClient::make(KeyStore::builtIn(), TMDBClient::Refresh::Yes);
    SourceCache::refresh();
    auto asking = askAgain(item, tmdb);
    const std::vector<ResolvedFile> fresh = co_await asking;
    if (fresh.empty() && !bySource(item).empty()) {
        say("Couldn't reach the database.");
        co_return;
    }
    takeRefreshed(item, fresh);

    std::vector<ResolvedFile> toLoad;
    for (const ResolvedFile& file : item.files) {
        const ResolvedFile* now = review_.find(file.file.url);
        if (now != nullptr && now->match) toLoad.push_back(*now);
    }
    auto loading = loadAll(std::move(toLoad), tmdb);
    co_await loading;
    say("Refreshed from the sources.");
}

void AppModel::takeRefreshed(const LibraryItem& item, const std::vector<ResolvedFile>& fresh) {
    const bool wasSelected = reviewID == item.id;
    std::vector<ResolvedFile> changes;
    for (const ResolvedFile& file : fresh) {
        const ResolvedFile* old = review_.find(file.file.url);
        if (old == nullptr) continue;
        // The person chose another match while the sources were asked.
        const auto before =
            std::find_if(item.files.begin(), item.files.end(),
                         [&](const auto& each) { return each.file.url == file.file.url; });
        if (old->match != before->match) continue;
        // What a person has accepted is not undone by a refresh.
        const bool isOther = !file.match || old->match->tmdbID != file.match->tmdbID ||
                             old->match->season != file.match->season ||
                             old->match->episode != file.match->episode;
        if (old->match && review_.isAccepted(file.file.url) && isOther) continue;
        changes.push_back(file);
    }
    review_.replace(changes);
    for (const ResolvedFile& file : item.files) drafts_.forget(file.file.url);
    if (wasSelected && review_.item(item.id) == nullptr) {
        const LibraryItem* now = review_.itemOf(item.files.front().file.url);
        reviewID = now == nullptr ? std::nullopt : std::optional(now->id);
    }
    changed();
}

}  // namespace marlet
