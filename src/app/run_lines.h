#pragma once

#include <memory>
#include <string>
#include <vector>

#include "app/write_queue.h"
#include "foundation/records.h"

namespace marlet {

struct ConvertPlan;

/// What became of a scripted run; the worst of all its parts is the exit status of "--strict-exit".
enum class RunEnd { done = 0, needsLook = 1, failed = 2 };
inline RunEnd worse(RunEnd a, RunEnd b) {
    return a < b ? b : a;
}

/// What a scripted run prints of its work, a line each, on standard output: words, or the same
/// facts as JSON (docs/json-lines.md).
class RunLines {
public:
    static std::unique_ptr<RunLines> inWords();
    static std::unique_ptr<RunLines> inJson();
    virtual ~RunLines() = default;

    /// One file of a scan.
    virtual void found(const ResolvedFile& file) = 0;
    virtual void matched(const ResolvedFile& file) = 0;
    struct Art {
        std::string chosen;  ///< "-" for none
        std::vector<std::string> grid;
    };
    /// Nothing for a file without a draft.
    virtual void art(const ResolvedFile& file, const std::optional<Art>& art) = 0;
    virtual void plan(const ConvertPlan& plan) = 0;
    /// `which`: "first" or "final".
    virtual void planProgress(double fraction, double seconds, const std::string& which) = 0;
    virtual void notice(const std::string& text) = 0;
    /// What is wrong with an option.
    virtual void problem(const std::string& text) = 0;
    virtual void result(const WriteQueue::Job& job) = 0;
    virtual void restored(const WriteQueue::Job& job) = 0;
    virtual void addedAgain(int inReview) = 0;
    virtual void addedOnceMore(int inReview, int waiting) = 0;
};

}  // namespace marlet
