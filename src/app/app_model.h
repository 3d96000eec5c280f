#pragma once

#include <chrono>
#include <deque>
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
#include "app/track_store.h"
#include "app/unfinished_store.h"
#include "app/write_queue.h"
#include "foundation/records.h"
#include "identify/matcher.h"
#include "sources/async.h"

namespace marlet {

/// What a person typed in the hand form.
struct HandTag {
    MediaKind kind = MediaKind::movie;
    std::int64_t tmdbID = 0;  ///< whose pictures it takes; 0 when the database has no such title
    std::optional<std::string> posterPath;
    std::string show;  ///< for tv
    std::optional<int> year;
    std::optional<int> season;
    std::optional<int> episode;
    ManualDetails details;
};

/// Which episode of a season a file is.
struct EpisodeChoice {
    std::filesystem::path file;
    int episode = 0;
    std::optional<int> episodeEnd;  ///< only for a double episode
};

/// What a person chose for a file.
struct FileChoice {
    std::filesystem::path file;
    Match match;
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
        /// In place of the built-in sources.
        std::map<SourceID, ExternalSource*> externals;
        std::chrono::milliseconds toastTime{3500};
        std::chrono::milliseconds unfinishedPause{2000};     ///< from a change to its being kept
        std::chrono::milliseconds unfinishedRunPause{5000};  ///< the same for the jobs of a run
    };
    AppModel() : AppModel(Parts{}) {}
    explicit AppModel(Parts parts);
    /// Whatever is under way ends here and touches nothing afterwards.
    ~AppModel();
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
    /// Another number after each change of the items and of what is confirmed.
    std::uint64_t reviewRevision() const { return review_.revision(); }
    const LibraryItem* item(const std::string& id) const { return review_.item(id); }

    /// Files and folders handed over; looks through them on a worker, one hand-over after the
    /// other, then scans what is new.
    void add(std::vector<Path> urls);
    /// A scan under way is cancelled and leaves Review as it was.
    void scan(std::vector<Path> urls);
    /// Ends the look through folders and the scan; Review stays as it was.
    void cancelScan();
    /// Puts files that are judged already into Review.
    void place(const std::vector<ResolvedFile>& files);
    bool isConfirmed(const ResolvedFile& file) const { return review_.isConfirmed(file); }
    void confirm(const Path& file);
    /// Whether the Media Library lock forbids writing this file.
    bool isLocked(const ResolvedFile& file) const;
    void removeItem(const std::string& id);
    void removeFromReview(const std::vector<Path>& files);
    /// A person's choice: it needs no further yes. The selection follows the file.
    void replace(const Path& file, ResolvedFile resolved);
    /// Asks the sources of an item's matches again, past everything saved.
    Task<> refreshFromTMDB(std::string itemID);
    // A person's choice in the match picker; true when the file has it. A failure is told, and as
    // a cancelled choice, which is silent, it changes nothing.
    Task<bool> rematchShow(Path file, std::int64_t showID, int season, int episode,
                           CancelToken cancel = {});
    Task<bool> rematchMovie(Path file, std::int64_t movieID, CancelToken cancel = {});
    Task<bool> rematchExternal(Path file, ExternalSource* via, ExtShow show, int season,
                               int episode, CancelToken cancel = {});
    Task<bool> rematchExternal(Path file, ExternalSource* via, ExtMovie movie,
                               CancelToken cancel = {});
    /// The episodes of one season for many files: all of them, or none when the season lacks one.
    Task<bool> rematchSeason(std::vector<EpisodeChoice> files, std::int64_t showID, int season,
                             CancelToken cancel = {});
    Task<bool> rematchSeason(std::vector<EpisodeChoice> files, ExternalSource* via, ExtShow show,
                             int season, CancelToken cancel = {});
    /// The source of that name; null for TMDB, which is asked through its client.
    ExternalSource* external(SourceID id) const;
    void manualTag(const Path& file, const HandTag& typed);

    // Drafts and artwork.
    DraftStore& drafts() { return drafts_; }
    const DraftStore& drafts() const { return drafts_; }
    /// Loads what has a match and no draft, four at a time; ends when none of the item's files is
    /// loading any more.
    Task<> loadDrafts(LibraryItem item);
    /// What a person changes by hand. Ignored without a draft.
    void editDraft(const Path& file, const std::function<void(FileDraft&)>& edit);
    void pickArtwork(const ArtworkOption& option, const Path& file);
    void setShareSeason(bool on, const std::string& key, const Path& file);

    // Plans of conversions.
    PlanStore& plans() { return plans_; }
    void analyseAll();
    Task<std::optional<ConvertPlan>> planFor(Path file) { return plans_.planFor(std::move(file)); }

    // Tracks that may be left out of an MP4.
    TrackStore& tracks() { return tracks_; }
    const TrackStore& tracks() const { return tracks_; }
    /// A person's tick; `index` is InPlaceTrack::index.
    void keepTrack(const Path& file, int index, bool keep);

    // Queueing and restoring.
    WriteQueue& queue() { return queue_; }
    const WriteQueue& queue() const { return queue_; }
    HistoryStore& history() { return history_; }
    void addToQueue(std::vector<LibraryItem> items);
    Task<> addToQueueNow(std::vector<LibraryItem> items);
    bool isAdding() const { return adding_ > 0; }
    Task<> restoreOriginal(Path file);
    /// True when jobs came of it. A notice tells when there is nothing to restore.
    Task<bool> restoreBatch(HistoryList entries);
    const std::map<Path, ResolvedFile>& queuedFiles() const { return queuedFiles_; }
    static std::string label(const Details& details, const Path& file);
    /// The sound and subtitle tracks that a conversion leaves out: "2 sound, 1 subtitle removed".
    /// Empty without any.
    static std::string summary(const ConvertPlan& plan);
    /// The folder for new files: the run's own, else the setting.
    static Path outputFolder();
    /// Set for the run by "--output-dir".
    static std::optional<Path> outputOverride;

    // What an earlier run left unfinished.
    /// Stays until it is taken or declined, and beyond the end of the program.
    const std::optional<UnfinishedOffer>& unfinishedOffer() const { return unfinished_.offer(); }
    /// The files come back into Review with what a person had corrected, and those that waited for
    /// the queue go back to it, which isn't started. Nothing while the queue runs, but a toast.
    Task<> resumeUnfinished();
    void discardUnfinished();
    /// Reads what there is and keeps this run's work from now on, but not in an automated run. For
    /// the start, when nothing of an interrupted write is left.
    Task<> openUnfinished();
    /// Writes at once what of it isn't written yet.
    void keepUnfinished();
    /// The same for all that is to outlive the program: the last thing before it ends.
    void keepNow();

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
    HistoryList::Shared sampleEntry;  ///< shown above History's own, for pictures; may be null
    std::set<std::string> historyOpen;
    std::optional<Path> matchPickerURL;

    /// Told after each change that a screen would show.
    std::function<void()> onChanged;

private:
    void setPhase(Phase phase);
    void changed();
    /// What decides about all files alike whether the Media Library lock forbids writing them.
    struct Lock {
        bool isOff = false;
        bool besideSource = false;  ///< where new files go
        bool newFiles = false;      ///< the one folder of all new files is locked
    };
    Lock lockNow() const;
    bool isLocked(const ResolvedFile& file, const Lock& lock) const;
    Task<> clearToast(int number);
    std::shared_ptr<Matcher> matcherFor(std::shared_ptr<TMDBClient> tmdb, CancelToken cancel) const;

    // Scanning.
    Task<> lookThrough();
    void take(const std::vector<Path>& found);
    Task<> scanNow(std::vector<Path> urls, CancelToken cancel);
    void endPhase();

    // Drafts.
    Task<> loadAll(std::vector<ResolvedFile> files, std::shared_ptr<TMDBClient> tmdb);
    Task<> loadDraft(ResolvedFile file, int number, std::shared_ptr<TMDBClient> tmdb);

    // Rematching.
    Task<bool> chooseFrom(Task<std::vector<FileChoice>> fetching, CancelToken cancel);
    void choose(const Path& file, Match match);
    Task<std::vector<ResolvedFile>> askAgain(LibraryItem item, std::shared_ptr<TMDBClient> tmdb);
    void takeRefreshed(const LibraryItem& item, const std::vector<ResolvedFile>& fresh);
    void forget(const std::vector<Path>& files);
    void dropGoneSelection();

    // Queueing.
    struct Prepared {
        std::optional<WriteQueue::Job> job;
        std::string reason;  ///< why there is no job
    };
    struct Ready {
        std::vector<ResolvedFile> files;
        std::size_t toLookAt = 0;
    };
    Ready readyOf(const std::vector<LibraryItem>& items) const;
    Task<> addReady(Ready ready, std::shared_ptr<TMDBClient> tmdb);
    Task<Prepared> prepare(ResolvedFile file, std::shared_ptr<TMDBClient> tmdb, bool fixLayout);
    Task<Prepared> prepareOrTell(ResolvedFile file, std::shared_ptr<TMDBClient> tmdb,
                                 bool fixLayout);
    bool isStill(const ResolvedFile& file) const;
    void tellAdded(std::size_t added, const std::vector<std::string>& reasons);
    void moveToQueue(const std::vector<Path>& files);
    void returnToReview(const std::vector<Path>& files);
    void finishQueued(const Path& file);
    /// False when the queue runs.
    bool queueRestores(std::vector<WriteQueue::Job> jobs);

    // Unfinished work.
    UnfinishedStore::Teller unfinishedTeller();
    std::optional<UnfinishedFile> unfinishedOf(const Path& file) const;

    HistoryStore& history_;
    WriteQueue queue_;
    ReviewList review_;
    DraftStore drafts_;
    PlanStore plans_;
    TrackStore tracks_;
    std::map<SourceID, ExternalSource*> externals_;
    std::map<Path, ResolvedFile> queuedFiles_;
    UnfinishedStore unfinished_;
    Phase phase_;
    std::deque<std::vector<Path>> toLookThrough_;
    bool looking_ = false;
    bool scanning_ = false;
    CancelToken scanCancel_;
    CancelToken lookCancel_;
    std::chrono::milliseconds toastTime_;
    std::optional<std::string> toast_;
    int toastNumber_ = 0;
    int adding_ = 0;  ///< queueings under way
    /// Cancelled when the model goes: every wait in here is a wait on this token, too.
    CancelToken life_;
};

}  // namespace marlet
