#pragma once

#include <filesystem>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>

#include "app/analysis_gate.h"
#include "sources/async.h"

namespace marlet {

/// What a conversion would do with a file, or why it can't be done.
struct ConvertPlan {
    std::optional<std::string> refusal;  ///< in words; absent when the file can be converted
};

/// Builds and keeps the plans of the files that become a new one. Two are built at a time.
class PlanStore {
public:
    using Path = std::filesystem::path;
    /// Reads the whole file; runs on a worker. Nothing when the file can't be read.
    using Builder =
        std::function<std::optional<ConvertPlan>(const Path&, const std::string& languages)>;

    explicit PlanStore(Builder builder);
    PlanStore(const PlanStore&) = delete;
    PlanStore& operator=(const PlanStore&) = delete;

    static bool needsPlan(const Path& file);
    const ConvertPlan* find(const Path& file) const;
    bool isLoading(const Path& file) const { return tasks_.contains(file); }
    /// Ignored for a file that has a plan, is being analysed, or needs none.
    void analyse(const Path& file);
    void stop(const Path& file);
    /// Ends when the file's analysis has ended.
    Task<> finish(Path file);
    void forget(const Path& file);

private:
    Task<> build(Path file, CancelToken cancel);

    Builder builder_;
    AnalysisGate gate_;
    std::map<Path, ConvertPlan> plans_;
    std::map<Path, CancelToken> tasks_;
};

}  // namespace marlet
