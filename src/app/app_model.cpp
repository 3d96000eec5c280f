#include "app/app_model.h"

#include <algorithm>

#include "app/settings.h"
#include "foundation/paths.h"
#include "foundation/run_mode.h"
#include "foundation/text.h"
#include "identify/scanner.h"
#include "sources/details_loader.h"
#include "sources/key_store.h"

namespace marlet {

namespace {

using namespace std::chrono_literals;
constexpr auto toastTime = 3500ms;
constexpr std::size_t draftsAtOnce = 4;

/// This build has no converter; the plan of every file says so.
std::optional<ConvertPlan> noConversion(const std::filesystem::path&, const std::string&) {
    return ConvertPlan{"this version of Marlet can't convert MKV files yet"};
}

std::string alreadyThere(std::size_t known, std::size_t fresh, const std::filesystem::path& first) {
    const std::string count = std::to_string(known);
    if (fresh > 0)
        return count + " of those " + (known == 1 ? "was" : "were") + " already in Review";
    if (known == 1) return first.stem().string() + " is already in Review";
    return "These " + count + " files are already in Review";
}

}  // namespace

std::optional<AppModel::Path> AppModel::outputOverride;

AppModel::AppModel(Parts parts)
    : history_(parts.history == nullptr ? HistoryStore::shared() : *parts.history),
      queue_(history_, std::move(parts.worker)),
      plans_(parts.planBuilder ? std::move(parts.planBuilder) : PlanStore::Builder(noConversion)) {
    queue_.onDone = [this](const Path& file) { finishQueued(file); };
    queue_.onRemoved = [this](const std::vector<Path>& files) { returnToReview(files); };
    queue_.onChanged = [this] { changed(); };
    history_.onChanged = [this] { changed(); };
    HistoryPosters::prune();
}

void AppModel::changed() {
    if (onChanged) onChanged();
}

void AppModel::setPhase(Phase phase) {
    phase_ = std::move(phase);
    changed();
}

namespace {

template <typename Test>
int countOf(const std::vector<ResolvedFile>& files, const Test& test) {
    return static_cast<int>(std::count_if(files.begin(), files.end(), test));
}

}  // namespace

int AppModel::fileCount() const {
    return static_cast<int>(allFiles().size());
}

int AppModel::readyCount() const {
    return countOf(allFiles(), [&](const auto& file) { return review_.isReady(file); });
}

int AppModel::readyItemCount() const {
    return static_cast<int>(std::count_if(items().begin(), items().end(), [&](const auto& item) {
        return std::any_of(item.files.begin(), item.files.end(), [&](const auto& file) {
            return review_.isReady(file) && !isLocked(file);
        });
    }));
}

int AppModel::needsCheckingCount() const {
    return countOf(allFiles(), [&](const auto& file) { return !isConfirmed(file); });
}

int AppModel::lockedCount() const {
    return countOf(allFiles(),
                   [&](const auto& file) { return review_.isReady(file) && isLocked(file); });
}

void AppModel::say(const std::string& text) {
    toast_ = text;
    changed();
    const int number = ++toastNumber_;
    const std::weak_ptr<AppModel*> alive = self_;
    const auto clear = [](std::weak_ptr<AppModel*> model, int mine) -> Task<> {
        auto waiting = Async::sleep(toastTime);
        co_await waiting;
        const auto still = model.lock();
        if (!still || (*still)->toastNumber_ != mine) co_return;
        (*still)->toast_.reset();
        (*still)->changed();
    };
    clear(alive, number);
}

void AppModel::add(std::vector<Path> urls) {
    scanCancel_.cancel();
    scanCancel_ = CancelToken();
    setPhase({Phase::Kind::working, 0, 0, "Looking through your files"});
    addNow(std::move(urls), scanCancel_);
}

Task<> AppModel::addNow(std::vector<Path> urls, CancelToken cancel) {
    const std::weak_ptr<AppModel*> alive = self_;
    std::function<std::vector<Path>()> look = [urls] { return Scanner::videoFiles(urls); };
    auto looking = Async::onWorker(std::move(look));
    const std::vector<Path> found = co_await looking;
    if (alive.expired() || cancel.isCancelled()) co_return;

    std::set<Path> inReview;
    for (const ResolvedFile& file : allFiles()) inReview.insert(Paths::standardised(file.file.url));
    std::vector<Path> fresh;
    std::vector<Path> known;
    for (const Path& file : found)
        (inReview.contains(Paths::standardised(file)) ? known : fresh).push_back(file);

    if (found.empty()) say("No movies or episodes found there.");
    if (!known.empty()) say(alreadyThere(known.size(), fresh.size(), known.front()));
    if (fresh.empty())
        setPhase({});
    else
        scan(fresh);
}

void AppModel::scan(std::vector<Path> urls) {
    scanCancel_.cancel();
    scanCancel_ = CancelToken();
    setPhase({Phase::Kind::working, 0, 0, "Looking through your files"});
    scanNow(std::move(urls), scanCancel_);
}

void AppModel::cancelScan() {
    scanCancel_.cancel();
    if (isWorking()) setPhase({});
}

std::shared_ptr<Matcher> AppModel::matcherFor(std::shared_ptr<TMDBClient> tmdb) const {
    auto matcher = std::make_shared<Matcher>();
    matcher->tmdb = std::move(tmdb);
    matcher->ignoreTags = RunMode::hasArgument("--ignore-tags");
    return matcher;
}

Task<> AppModel::scanNow(std::vector<Path> urls, CancelToken cancel) {
    const std::weak_ptr<AppModel*> alive = self_;
    auto client = TMDBClient::make(KeyStore::builtIn(), TMDBClient::Refresh::No, cancel);
    const std::shared_ptr<Matcher> matcher = matcherFor(std::move(client));
    matcher->cancel = cancel;
    matcher->progress = [this, alive, cancel](int done, int total, const std::string& text) {
        if (alive.expired() || cancel.isCancelled() || !isWorking()) return;
        setPhase({Phase::Kind::working, done, total, text});
    };
    std::set<Path> inReview;
    for (const ResolvedFile& file : allFiles()) inReview.insert(file.file.url);

    std::vector<ResolvedFile> fresh;
    try {
        auto resolving = matcher->resolve(urls, inReview);
        fresh = co_await resolving;
    } catch (const CancelError&) {
        co_return;
    }
    if (alive.expired() || cancel.isCancelled()) co_return;
    review_.add(fresh);
    setPhase({});
    analyseAll();
}

void AppModel::analyseAll() {
    for (const ResolvedFile& file : allFiles()) plans_.analyse(file.file.url);
}

void AppModel::confirm(const Path& file) {
    review_.confirm(file);
    changed();
}

bool AppModel::isLocked(const ResolvedFile& file) const {
    if (RunMode::automated() || Settings::allowLibraryWrites()) return false;
    const std::string extension = Scanner::extensionOf(file.file.url);
    const bool inPlace = extension == "mp4" || extension == "m4v";
    Path lands = file.file.url;
    if (!inPlace && !Settings::outputSameFolder()) lands = outputFolder();
    return std::any_of(lands.begin(), lands.end(),
                       [](const Path& component) { return component == "Media Library"; });
}

AppModel::Path AppModel::outputFolder() {
    return outputOverride.value_or(Settings::outputFolder());
}

void AppModel::forget(const Path& file) {
    plans_.forget(file);
    drafts_.forget(file);
    review_.forgetConfirmation(file);
}

void AppModel::removeFromReview(const std::vector<Path>& files) {
    for (const Path& file : files) forget(file);
    review_.remove({files.begin(), files.end()});
    changed();
}

void AppModel::removeItem(const std::string& id) {
    const LibraryItem* item = review_.item(id);
    if (item == nullptr) return;
    std::vector<Path> files;
    for (const ResolvedFile& file : item->files) files.push_back(file.file.url);
    removeFromReview(files);
}

Task<> AppModel::loadDrafts(LibraryItem item) {
    const auto tmdb = TMDBClient::make(KeyStore::builtIn());
    std::vector<ResolvedFile> wanted;
    for (const ResolvedFile& file : item.files)
        if (file.match && drafts_.find(file.file.url) == nullptr &&
            !drafts_.isLoading(file.file.url))
            wanted.push_back(file);
    for (const ResolvedFile& file : wanted) drafts_.setLoading(file.file.url);
    changed();
    std::function<Task<>(std::size_t)> load = [this, &wanted, &tmdb](std::size_t i) {
        return loadDraft(wanted[i], tmdb);
    };
    auto loading = Async::forEach(wanted.size(), draftsAtOnce, std::move(load));
    co_await loading;
}

Task<> AppModel::loadDraft(ResolvedFile file, std::shared_ptr<TMDBClient> tmdb) {
    const Path url = file.file.url;
    try {
        auto loading = DetailsLoader::load(*file.match, file.file, tmdb);
        FileDraft draft = co_await loading;
        // The person may have chosen another match, or taken the file away, meanwhile.
        const ResolvedFile* now = review_.find(url);
        if (now != nullptr && now->match == file.match) drafts_.put(url, std::move(draft));
    } catch (const std::exception&) {
        // No draft: queueing says so for the file, and opening the row tries again.
    }
    drafts_.endLoading(url);
    changed();
}

void AppModel::pickArtwork(const ArtworkOption& option, const Path& file) {
    drafts_.pickArtwork(option, file);
    changed();
}

void AppModel::setShareSeason(bool on, const std::string& key, const Path& file) {
    drafts_.setShareSeason(on, key, file);
    changed();
}

}  // namespace marlet
