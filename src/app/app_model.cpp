#include "app/app_model.h"

#include <algorithm>

#include "app/settings.h"
#include "foundation/durable.h"
#include "foundation/paths.h"
#include "foundation/preferences.h"
#include "foundation/run_mode.h"
#include "identify/scanner.h"

namespace marlet {

namespace {

/// Longer than any write of a small file takes.
constexpr std::chrono::minutes leftoverAge(30);

/// Nobody waits for it.
Task<bool> tidy() {
    std::function<bool()> work = [] {
        HistoryPosters::prune();
        const FileTime limit = std::chrono::system_clock::now() - leftoverAge;
        for (const auto& folder : {Paths::documentsDir(), HistoryPosters::dir()})
            Durable::removeLeftovers(folder, limit);
        return true;
    };
    return Async::onWorker(std::move(work));
}

bool isInLibrary(const std::filesystem::path& path) {
    constexpr const char* name = "Media Library";
    return path.native().find(name) != std::string::npos &&
           std::any_of(path.begin(), path.end(), [&](const auto& part) { return part == name; });
}

}  // namespace

std::optional<AppModel::Path> AppModel::outputOverride;

AppModel::AppModel(Parts parts)
    : history_(parts.history == nullptr ? HistoryStore::shared() : *parts.history),
      queue_(history_, std::move(parts.worker)),
      plans_(parts.planBuilder ? std::move(parts.planBuilder) : PlanStore::build),
      externals_(std::move(parts.externals)),
      unfinished_(unfinishedTeller()),
      toastTime_(parts.toastTime) {
    queue_.onDone = [this](const Path& file) { finishQueued(file); };
    queue_.onRemoved = [this](const std::vector<Path>& files) { returnToReview(files); };
    queue_.onChanged = [this] { changed(); };
    unfinished_.pause = parts.unfinishedPause;
    unfinished_.runPause = parts.unfinishedRunPause;
    plans_.onChanged = [this] { changed(); };
    history_.onChanged = [this] { changed(); };
    tidy();
}

AppModel::~AppModel() {
    onChanged = nullptr;
    queue_.onJobs = nullptr;
    history_.onChanged = nullptr;
    life_.cancel();
    scanCancel_.cancel();
    lookCancel_.cancel();
    plans_.endAll();
    drafts_.endAll();
}

void AppModel::changed() {
    if (onChanged) onChanged();
}

void AppModel::setPhase(Phase phase) {
    phase_ = std::move(phase);
    changed();
}

int AppModel::fileCount() const {
    return static_cast<int>(review_.fileCount());
}

int AppModel::readyCount() const {
    return review_.counts().ready;
}

int AppModel::readyItemCount() const {
    const Lock lock = lockNow();
    return static_cast<int>(std::count_if(items().begin(), items().end(), [&](const auto& item) {
        return std::any_of(item.files.begin(), item.files.end(), [&](const auto& file) {
            return review_.isReady(file) && !isLocked(file, lock);
        });
    }));
}

int AppModel::needsCheckingCount() const {
    return review_.counts().needsLook;
}

int AppModel::lockedCount() const {
    const Lock lock = lockNow();
    if (lock.isOff) return 0;
    int count = 0;
    review_.forEach([&](const ResolvedFile& file) {
        count += review_.isReady(file) && isLocked(file, lock) ? 1 : 0;
    });
    return count;
}

void AppModel::say(const std::string& text) {
    toast_ = text;
    changed();
    clearToast(++toastNumber_);
}

Task<> AppModel::clearToast(int number) {
    auto waiting = Async::sleep(toastTime_, life_);
    co_await waiting;
    // A later toast has its own time.
    if (toastNumber_ != number) co_return;
    toast_.reset();
    changed();
}

void AppModel::confirm(const Path& file) {
    review_.confirm(file);
    unfinished_.touch(file);
    changed();
}

bool AppModel::isLocked(const ResolvedFile& file) const {
    return isLocked(file, lockNow());
}

AppModel::Lock AppModel::lockNow() const {
    if (RunMode::automated() || Settings::allowLibraryWrites()) return {.isOff = true};
    return {.besideSource = Settings::outputSameFolder(), .newFiles = isInLibrary(outputFolder())};
}

bool AppModel::isLocked(const ResolvedFile& file, const Lock& lock) const {
    if (lock.isOff) return false;
    const std::string extension = Scanner::extensionOf(file.file.url);
    const bool isMP4 = extension == "mp4" || extension == "m4v";
    const bool inPlace = isMP4 && !tracks_.dropsAny(file.file.url);
    return inPlace || lock.besideSource ? isInLibrary(file.file.url) : lock.newFiles;
}

AppModel::Path AppModel::outputFolder() {
    return outputOverride.value_or(Settings::outputFolder());
}

void AppModel::forget(const std::vector<Path>& files) {
    for (const Path& file : files) {
        plans_.forget(file);
        drafts_.forget(file);
        tracks_.forget(file);
        review_.forgetConfirmation(file);
    }
    unfinished_.forget(files);
    for (const Path& file : files) unfinished_.touch(file);
}

void AppModel::dropGoneSelection() {
    if (reviewID && review_.item(*reviewID) == nullptr) reviewID.reset();
    if (inspectorFile && review_.find(*inspectorFile) == nullptr) inspectorFile.reset();
}

void AppModel::removeFromReview(const std::vector<Path>& files) {
    forget(files);
    review_.remove({files.begin(), files.end()});
    dropGoneSelection();
    changed();
}

void AppModel::removeItem(const std::string& id) {
    const LibraryItem* item = review_.item(id);
    if (item == nullptr) return;
    std::vector<Path> files;
    for (const ResolvedFile& file : item->files) files.push_back(file.file.url);
    removeFromReview(files);
}

void AppModel::editDraft(const Path& file, const std::function<void(FileDraft&)>& edit) {
    FileDraft* draft = drafts_.find(file);
    if (draft == nullptr) return;
    edit(*draft);
    changed();
}

void AppModel::keepTrack(const Path& file, int index, bool keep) {
    if (tracks_.setKeep(file, index, keep)) changed();
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
