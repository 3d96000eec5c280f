// Drafts: what would be written to a file, loaded from its match and edited by the person.

#include "app/app_model.h"
#include "identify/asking.h"
#include "sources/details_loader.h"
#include "sources/key_store.h"

namespace marlet {

namespace {
constexpr std::size_t draftsAtOnce = 4;
}

Task<> AppModel::loadDrafts(LibraryItem item) {
    std::vector<ResolvedFile> wanted;
    for (const ResolvedFile& file : item.files) {
        const Path& url = file.file.url;
        if (file.match && drafts_.find(url) == nullptr && !drafts_.isLoading(url))
            wanted.push_back(file);
    }
    auto loading = loadAll(std::move(wanted), TMDBClient::make(KeyStore::builtIn()));
    co_await loading;
    const CancelToken life = life_;
    // The others may be loading for somebody else, who opened the row a moment ago.
    for (const ResolvedFile& file : item.files) {
        for (auto other = drafts_.loadingOf(file.file.url); other;
             other = drafts_.loadingOf(file.file.url)) {
            const Gate ended = *other;
            co_await ended;
            life.check();
        }
    }
}

Task<> AppModel::loadAll(std::vector<ResolvedFile> files, std::shared_ptr<TMDBClient> tmdb) {
    std::vector<int> numbers;
    for (const ResolvedFile& file : files) numbers.push_back(drafts_.beginLoading(file.file.url));
    changed();
    std::function<Task<>(std::size_t)> load = [this, &files, &numbers, &tmdb](std::size_t i) {
        return loadDraft(files[i], numbers[i], tmdb);
    };
    auto loading = Async::forEach(files.size(), draftsAtOnce, std::move(load));
    co_await loading;
}

Task<> AppModel::loadDraft(ResolvedFile file, int number, std::shared_ptr<TMDBClient> tmdb) {
    life_.check();
    const Path url = file.file.url;
    std::optional<FileDraft> draft;
    // No draft is no failure of the whole: queueing says so for the file, and opening the row
    // tries again.
    if (drafts_.isCurrent(url, number)) {
        auto loading = Asking::answer(DetailsLoader::load(*file.match, file.file, tmdb), life_);
        draft = co_await loading;
    }
    // The person may have chosen another match, or taken the file away, meanwhile.
    const ResolvedFile* now = review_.find(url);
    const bool isWanted = drafts_.isCurrent(url, number) && now && now->match == file.match;
    if (draft && isWanted) drafts_.put(url, std::move(*draft));
    drafts_.endLoading(url, number);
    changed();
}

}  // namespace marlet
