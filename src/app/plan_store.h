#pragma once

#include <atomic>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>

#include "app/analysis_gate.h"
#include "app/plan_ticks.h"
#include "convert/plan.h"
#include "sources/async.h"

namespace marlet {

/// Builds and keeps the plans of the files that become a new one. Two are built at a time, each in
/// two stages: from what the file says of its tracks, so that the row appears at once, and then
/// from all its frames and from what its picture subtitles show without being asked for. Main
/// context only.
class PlanStore {
public:
    using Path = std::filesystem::path;

    struct Order {
        Path file;
        std::string languages;  ///< as the person typed them
        enum class Depth { Tracks, Frames };
        Depth depth = Depth::Tracks;
        /// Fraction of the reading done; false: nobody waits for the plan any more. Called on the
        /// worker.
        std::function<bool(double)> progress;
    };
    /// Runs on a worker. Nothing when the file can't be read.
    using Builder = std::function<std::optional<ConvertPlan>(const Order&)>;
    /// Reads the file and what lies beside it.
    static std::optional<ConvertPlan> build(const Order& order);

    explicit PlanStore(Builder builder);
    /// Lets go whoever waits here.
    ~PlanStore();
    PlanStore(const PlanStore&) = delete;
    PlanStore& operator=(const PlanStore&) = delete;

    static bool needsPlan(const Path& file);
    const ConvertPlan* find(const Path& file) const;
    bool isLoading(const Path& file) const { return tasks_.contains(file); }
    /// How far the second stage is; nothing for a file that isn't being analysed.
    std::optional<double> analysisProgress(const Path& file) const;
    /// A person's ticks, which stay when the plan is made anew. False when the plan has no such
    /// track or the track can't be kept.
    bool setKeepSound(const Path& file, int track, bool keep);
    bool setKeepSubtitle(const Path& file, const std::string& id, bool keep);
    /// What a person ticked, and what is wished for tracks that no plan has yet.
    PlanTicks ticks(const Path& file) const;
    /// Ticks to be set as soon as a plan has such tracks.
    void wish(const Path& file, const PlanTicks& ticks);
    /// Ignored for a file that has a plan, is being analysed, or needs none.
    void analyse(const Path& file);
    void stop(const Path& file);
    /// Stops all; whoever waits is let go at once.
    void endAll();
    /// Ends when the file's analysis has ended or was stopped.
    Task<> finish(Path file);
    /// The finished plan, built on demand; nothing for a file that needs none or can't be read.
    Task<std::optional<ConvertPlan>> planFor(Path file);
    void forget(const Path& file);
    int freePlaces() const { return gate_.free(); }

    /// Told when a plan is there or has got on.
    std::function<void()> onChanged;
    /// Told of each file whose ticks a person changed.
    std::function<void(const Path&)> onTouched;

private:
    struct Analysis {
        CancelToken cancel;
        Gate ended;
        std::shared_ptr<std::atomic<double>> progress = std::make_shared<std::atomic<double>>(0.0);
    };
    Task<> run(Path file, Analysis analysis);
    static void tell(const Analysis& analysis);
    Task<std::optional<ConvertPlan>> planOf(Path file, Order::Depth depth, Analysis analysis);
    std::function<bool(double)> follower(const Analysis& analysis);
    void put(const Path& file, ConvertPlan plan);
    void grant(const Path& file);
    bool tickSound(const Path& file, int track, bool keep);
    bool tickSubtitle(const Path& file, const std::string& id, bool keep);

    Builder builder_;
    AnalysisGate gate_;
    std::map<Path, ConvertPlan> plans_;
    std::map<Path, PlanTicks> wishes_;
    std::map<Path, Analysis> tasks_;
    CancelToken life_;
};

}  // namespace marlet
