#pragma once

#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "app/draft_store.h"
#include "app/history.h"
#include "app/plan_store.h"
#include "app/review_list.h"
#include "app/write_queue.h"
#include "foundation/records.h"
#include "identify/matcher.h"
#include "sources/async.h"

namespace marlet {

/// What a person typed in the hand form, or the record of an external source.
struct HandTag {
    MediaKind kind = MediaKind::movie;
    std::string show;  ///< for tv
    std::optional<int> year;
    std::optional<int> season;
    std::optional<int> episode;
    ManualDetails details;
};

/// The one object that the screens and the command line talk to: what is in Review, the drafts
/// and plans, the queue, History and the messages. A thin front over small classes of its own.
/// Main context only.
class AppModel {
public:
    using Path = std::filesystem::path;

    struct Phase {
        enum class Kind { idle, working, done };
        Kind kind = Kind::idle;
        int done = 0;
        int total = 0;
        std::string message;
    };
    enum class Tab { review, queue, history };

    struct Parts {
        WriteQueue::Worker worker;        ///< empty: the real one
        PlanStore::Builder planBuilder;   ///< empty: the real one
        HistoryStore* history = nullptr;  ///< null: the shared one
    };
    AppModel() : AppModel(Parts{}) {}
    explicit AppModel(Parts parts);
    AppModel(const AppModel&) = delete;
    AppModel& operator=(const AppModel&) = delete;

    // Review.
    const Phase& phase() const { return phase_; }
    bool isWorking() const { return phase_.kind == Phase::Kind::working; }
    const std::vector<LibraryItem>& items() const { return review_.items(); }
    std::vector<ResolvedFile> allFiles() const { return review_.files(); }
    int fileCount() const;
    int readyCount() const;
    int readyItemCount() const;
    int needsCheckingCount() const;
    int lockedCount() const;

    /// Files and folders handed over; looks through them on a worker, then scans what is new.
    void add(std::vector<Path> urls);
    void scan(std::vector<Path> urls);
    void cancelScan();
    bool isConfirmed(const ResolvedFile& file) const { return review_.isConfirmed(file); }
    void confirm(const Path& file);
    /// Whether the Media Library lock forbids writing this file.
    bool isLocked(const ResolvedFile& file) const;
    void removeItem(const std::string& id);
    void removeFromReview(const std::vector<Path>& files);
    /// A person's choice: it needs no further yes. The selection follows the file.
    void replace(const Path& file, ResolvedFile resolved);
    Task<> refreshFromTMDB(std::string itemID);
    Task<> rematchShow(Path file, std::int64_t showID, int season, int episode);
    Task<> rematchMovie(Path file, std::int64_t movieID);
    Task<> rematchExternal(Path file, ExternalSource* via, ExtShow show, int season, int episode);
    Task<> rematchExternal(Path file, ExternalSource* via, ExtMovie movie);
    void manualTag(const Path& file, const HandTag& typed);

    // Drafts and artwork.
    DraftStore& drafts() { return drafts_; }
    const DraftStore& drafts() const { return drafts_; }
    /// Loads what has a match and no draft, four at a time.
    Task<> loadDrafts(LibraryItem item);
    void pickArtwork(const ArtworkOption& option, const Path& file);
    void setShareSeason(bool on, const std::string& key, const Path& file);

    // Plans of conversions.
    PlanStore& plans() { return plans_; }
    void analyseAll();

    // Queueing and restoring.
    WriteQueue& queue() { return queue_; }
    const WriteQueue& queue() const { return queue_; }
    HistoryStore& history() { return history_; }
    void addToQueue(std::vector<LibraryItem> items);
    Task<> addToQueueNow(std::vector<LibraryItem> items);
    bool isAdding() const { return adding_; }
    void restoreOriginal(const Path& file);
    void restoreBatch(const std::vector<HistoryEntry>& entries);
    const std::map<Path, ResolvedFile>& queuedFiles() const { return queuedFiles_; }
    static std::string label(const Details& details, const Path& file);
    /// The folder for new files: the run's own, else the setting.
    static Path outputFolder();
    /// Set for the run by "--output-dir".
    static std::optional<Path> outputOverride;

    // Messages and what is shown.
    const std::optional<std::string>& toast() const { return toast_; }
    void say(const std::string& text);
    std::optional<std::string> notice;
    Tab tab = Tab::review;
    std::optional<std::string> reviewID;
    std::optional<Path> inspectorFile;
    int inspectorPage = 0;  ///< 0 details, 1 tracks, 2 artwork
    bool inspectorShown = false;
    int historyFilter = 0;
    std::string historyQuery;
    bool askClearHistory = false;
    int openSettingsTick = 0;
    bool forceEmptyHistory = false;
    std::set<std::string> historyOpen;
    std::optional<Path> matchPickerURL;

    /// Told after each change that a screen would show.
    std::function<void()> onChanged;

private:
    Task<> addNow(std::vector<Path> urls, CancelToken cancel);
    Task<> scanNow(std::vector<Path> urls, CancelToken cancel);
    void setPhase(Phase phase);
    void changed();
    void forget(const Path& file);

    Task<> loadDraft(ResolvedFile file, std::shared_ptr<TMDBClient> tmdb);
    void choose(const Path& file, Match match);
    std::shared_ptr<Matcher> matcherFor(std::shared_ptr<TMDBClient> tmdb) const;

    struct Prepared {
        std::optional<WriteQueue::Job> job;
        std::string reason;  ///< why there is no job
    };
    Task<Prepared> prepare(ResolvedFile file, std::shared_ptr<TMDBClient> tmdb, bool fixLayout);
    void tellAdded(std::size_t added, const std::vector<std::string>& reasons);
    void moveToQueue(const std::vector<Path>& files);
    void returnToReview(const std::vector<Path>& files);
    void finishQueued(const Path& file);
    WriteQueue::Job restoreJob(const Path& file, const std::string& name) const;
    void queueRestores(std::vector<WriteQueue::Job> jobs);

    HistoryStore& history_;
    WriteQueue queue_;
    ReviewList review_;
    DraftStore drafts_;
    PlanStore plans_;
    std::map<Path, ResolvedFile> queuedFiles_;
    Phase phase_;
    CancelToken scanCancel_;
    std::optional<std::string> toast_;
    int toastNumber_ = 0;
    bool adding_ = false;
    /// Tasks that outlast the model find it gone.
    std::shared_ptr<AppModel*> self_ = std::make_shared<AppModel*>(this);
};

}  // namespace marlet
