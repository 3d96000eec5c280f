#include "app/plan_store.h"

#include <utility>

#include "app/settings.h"
#include "identify/asking.h"
#include "identify/scanner.h"

namespace marlet {

PlanStore::PlanStore(Builder builder) : builder_(std::move(builder)) {}

PlanStore::~PlanStore() {
    onChanged = nullptr;
    endAll();
    // Those at work come back now and hand their places on, until nobody is left in line.
    life_.cancel();
}

bool PlanStore::needsPlan(const Path& file) {
    return Scanner::extensionOf(file) == "mkv";
}

const ConvertPlan* PlanStore::find(const Path& file) const {
    const auto found = plans_.find(file);
    return found == plans_.end() ? nullptr : &found->second;
}

void PlanStore::analyse(const Path& file) {
    if (!needsPlan(file) || plans_.contains(file) || tasks_.contains(file)) return;
    const Analysis analysis;
    tasks_.emplace(file, analysis);
    build(file, analysis);
}

Task<> PlanStore::build(Path file, Analysis analysis) {
    co_await gate_.enter();
    const AnalysisGate::Place place(gate_);
    if (analysis.cancel.isCancelled()) co_return;
    auto planning = planOf(file);
    const std::optional<ConvertPlan> plan = co_await planning;
    // Stopped meanwhile: the file may be analysed anew, and this one is not to be taken for it.
    if (analysis.cancel.isCancelled()) co_return;
    if (plan) plans_.insert_or_assign(file, *plan);
    tasks_.erase(file);
    tell(analysis);
    if (onChanged) onChanged();
}

Task<std::optional<ConvertPlan>> PlanStore::planOf(Path file) {
    const std::string languages = Settings::keepLanguages();
    const Builder builder = builder_;
    std::function<std::optional<ConvertPlan>()> work = [=] { return builder(file, languages); };
    try {
        auto working = Asking::orCancelled(Async::onWorker(std::move(work)), life_);
        std::optional<ConvertPlan> plan = co_await working;
        co_return plan;
    } catch (const std::exception&) {
        // A file whose analysis fails is one that can't be read.
        co_return std::nullopt;
    }
}

void PlanStore::tell(const Analysis& analysis) {
    // Soon and not now: those who wait go on to change the model, in which the caller is at work.
    Async::post([ended = analysis.ended] { ended.open(); });
}

void PlanStore::stop(const Path& file) {
    const auto found = tasks_.find(file);
    if (found == tasks_.end()) return;
    found->second.cancel.cancel();
    tell(found->second);
    tasks_.erase(found);
}

void PlanStore::endAll() {
    for (const auto& [file, analysis] : std::exchange(tasks_, {})) {
        analysis.cancel.cancel();
        analysis.ended.open();
    }
}

Task<> PlanStore::finish(Path file) {
    const CancelToken life = life_;
    while (!life.isCancelled()) {
        const auto task = tasks_.find(file);
        if (task == tasks_.end()) break;
        const Gate ended = task->second.ended;
        co_await ended;
    }
}

void PlanStore::forget(const Path& file) {
    stop(file);
    plans_.erase(file);
}

}  // namespace marlet
