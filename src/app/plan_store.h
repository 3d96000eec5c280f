#pragma once

#include <filesystem>
#include <functional>
#include <map>
#include <optional>
#include <string>

#include "app/analysis_gate.h"
#include "sources/async.h"

namespace marlet {

/// What a conversion would do with a file, or why it can't be done.
struct ConvertPlan {
    std::optional<std::string> refusal;  ///< in words; absent when the file can be converted
};

/// Builds and keeps the plans of the files that become a new one. Two are built at a time.
/// Main context only.
class PlanStore {
public:
    using Path = std::filesystem::path;
    /// Reads the whole file; runs on a worker. Nothing when the file can't be read.
    using Builder =
        std::function<std::optional<ConvertPlan>(const Path&, const std::string& languages)>;

    explicit PlanStore(Builder builder);
    /// Lets go whoever waits here.
    ~PlanStore();
    PlanStore(const PlanStore&) = delete;
    PlanStore& operator=(const PlanStore&) = delete;

    static bool needsPlan(const Path& file);
    const ConvertPlan* find(const Path& file) const;
    bool isLoading(const Path& file) const { return tasks_.contains(file); }
    /// Ignored for a file that has a plan, is being analysed, or needs none.
    void analyse(const Path& file);
    void stop(const Path& file);
    /// Stops all; whoever waits is let go at once.
    void endAll();
    /// Ends when the file's analysis has ended or was stopped.
    Task<> finish(Path file);
    void forget(const Path& file);
    int freePlaces() const { return gate_.free(); }

    /// Told when an analysis has ended.
    std::function<void()> onChanged;

private:
    struct Analysis {
        CancelToken cancel;
        Gate ended;
    };
    Task<> build(Path file, Analysis analysis);
    static void tell(const Analysis& analysis);
    Task<std::optional<ConvertPlan>> planOf(Path file);

    Builder builder_;
    AnalysisGate gate_;
    std::map<Path, ConvertPlan> plans_;
    std::map<Path, Analysis> tasks_;
    CancelToken life_;
};

}  // namespace marlet
