#include "app/plan_store.h"

#include <utility>

#include "app/settings.h"
#include "identify/scanner.h"

namespace marlet {

PlanStore::PlanStore(Builder builder) : builder_(std::move(builder)) {}

bool PlanStore::needsPlan(const Path& file) {
    return Scanner::extensionOf(file) == "mkv";
}

const ConvertPlan* PlanStore::find(const Path& file) const {
    const auto found = plans_.find(file);
    return found == plans_.end() ? nullptr : &found->second;
}

void PlanStore::analyse(const Path& file) {
    if (!needsPlan(file) || plans_.contains(file) || tasks_.contains(file)) return;
    const CancelToken cancel;
    tasks_.emplace(file, cancel);
    build(file, cancel);
}

Task<> PlanStore::build(Path file, CancelToken cancel) {
    co_await gate_.enter();
    if (!cancel.isCancelled()) {
        const std::string languages = Settings::keepLanguages();
        const Builder builder = builder_;
        std::function<std::optional<ConvertPlan>()> work = [=] { return builder(file, languages); };
        auto working = Async::onWorker(std::move(work));
        std::optional<ConvertPlan> plan = co_await working;
        if (!cancel.isCancelled()) {
            if (plan) plans_.insert_or_assign(file, *plan);
            tasks_.erase(file);
        }
    }
    gate_.leave();
}

void PlanStore::stop(const Path& file) {
    const auto task = tasks_.find(file);
    if (task == tasks_.end()) return;
    task->second.cancel();
    tasks_.erase(task);
}

Task<> PlanStore::finish(Path file) {
    while (tasks_.contains(file)) {
        auto waiting = Async::sleep(std::chrono::milliseconds(20));
        co_await waiting;
    }
}

void PlanStore::forget(const Path& file) {
    stop(file);
    plans_.erase(file);
}

}  // namespace marlet
