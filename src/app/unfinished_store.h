#pragma once

#include <chrono>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "app/unfinished.h"
#include "app/unfinished_offer.h"
#include "app/unfinished_shelf.h"
#include "sources/async.h"

namespace marlet {

/// Keeps what a person has begun, so that it outlives the program: looks at what was touched a
/// moment after it was, hands it to a worker that writes it, and holds what an earlier run left
/// until the person has said what is to become of it. Until it is opened it only takes notes. Main
/// context only.
class UnfinishedStore {
public:
    using Path = std::filesystem::path;

    /// What is to be kept, as the model tells it.
    struct Teller {
        /// What a person did to the file; nothing when there is nothing to keep of it.
        std::function<std::optional<UnfinishedFile>(const Path&)> file;
        std::function<std::vector<Path>()> queue;  ///< files of the jobs that haven't ended
        std::function<std::vector<UnfinishedRestore>()> restores;
    };

    explicit UnfinishedStore(Teller teller) : teller_(std::move(teller)) {}
    /// Lets go whoever waits here; nothing is written.
    ~UnfinishedStore();
    UnfinishedStore(const UnfinishedStore&) = delete;
    UnfinishedStore& operator=(const UnfinishedStore&) = delete;

    /// Reads what an earlier run left, keeps this one's from then on, and makes the offer once the
    /// films were looked at.
    Task<> open();
    /// A person may have changed something about the file; written within seconds.
    void touch(const Path& file);
    /// A job came, went, began or ended; written at once, and every few seconds while a run is on.
    void queueChanged(bool isRunning);
    /// Writes what isn't written yet before it returns, and waits for no film's disk.
    void keepNow();
    bool isQueued(const Path& file) const { return queue_.contains(file.native()); }

    const std::optional<UnfinishedOffer>& offer() const { return offer_; }
    /// Ends the offer and gives what of it is still as it was. What isn't on its way back then is
    /// the taker's to keep.
    /// `look` is called by the worker that looks at the films, with the restores that are offered.
    using LookAtRestores = std::function<void(const std::vector<UnfinishedRestore>&)>;
    Task<UnfinishedWork> take(LookAtRestores look = {});
    /// What was taken and can't come back now is offered again.
    void handBack(UnfinishedWork work);
    /// Ends the offer for good.
    void discard();
    /// A file on its way back into Review or the queue: kept as it was until it is forgotten here.
    void expect(const UnfinishedFile& file);
    const UnfinishedFile* expected(const Path& file) const;
    /// The person is done with the file, offered or not.
    void forget(const Path& file) { forget(std::vector<Path>{file}); }
    void forget(const std::vector<Path>& files);

    /// How long after a change it is written, and how long after one in a run.
    std::chrono::milliseconds pause{2000};
    std::chrono::milliseconds runPause{5000};
    /// Between one write and the next that isn't urgent.
    std::chrono::milliseconds leastRest{0};

private:
    using Clock = std::chrono::steady_clock;

    void keepWithin(std::chrono::milliseconds time);
    Task<> keep();
    Task<> keepChanges();
    Task<> untilDue();
    UnfinishedShelf::Delta changes();
    UnfinishedWork handOver(const std::vector<Path>& files, const UnfinishedShelf::Looked& looked);
    void makeOffer();
    bool isOffered(const Path& file) const;
    void dropOffered(const std::vector<Path>& files);
    void noteTouched(const Path& file);

    Teller teller_;
    /// Shared with workers, which may outlive the store.
    std::shared_ptr<UnfinishedShelf> shelf_ = std::make_shared<UnfinishedShelf>();
    bool isOpen_ = false;
    bool isLooking_ = false;  ///< what was left isn't offered yet
    bool isKeeping_ = false;  ///< keep() is on its way
    bool hasChanges_ = false;
    bool isTaking_ = false;
    Clock::time_point due_ = Clock::time_point::max();     ///< of what has changed
    Clock::time_point urgent_ = Clock::time_point::max();  ///< the same of what lets nothing rest
    Clock::time_point restsUntil_ = Clock::time_point::min();
    CancelToken hurry_;                          ///< ends the pause before the next write
    std::vector<Path> touched_;                  ///< in order, each once
    std::unordered_set<std::string> isTouched_;  ///< their locations
    std::vector<Path> unclear_;                  ///< touched before we knew what is offered
    std::unordered_set<std::string> queue_;      ///< locations, as last told
    UnfinishedWork offered_;
    std::unordered_set<std::string> offeredAt_;  ///< locations of offered_
    std::optional<UnfinishedOffer> offer_;
    std::vector<UnfinishedRestore> away_;  ///< were offered, but their disk has gone since
    std::unordered_map<std::string, UnfinishedFile> expected_;  ///< by location
    CancelToken life_;
};

}  // namespace marlet
