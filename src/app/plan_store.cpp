#include "app/plan_store.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "app/settings.h"
#include "convert/plan_builder.h"
#include "foundation/languages.h"
#include "identify/asking.h"
#include "identify/scanner.h"

namespace marlet {

namespace {

bool hasPictures(const MKVFile& mkv) {
    return std::ranges::find(mkv.tracks(), "S_HDMV/PGS", &MKVTrack::codecID) != mkv.tracks().end();
}

/// The progress of one walk of several.
MKVFile::WalkProgress partOf(const MKVFile::WalkProgress& whole, double begin, double end) {
    return [&whole, begin, end](double fraction) {
        return !whole || whole(begin + fraction * (end - begin));
    };
}

}  // namespace

PlanStore::PlanStore(Builder builder) : builder_(std::move(builder)) {}

PlanStore::~PlanStore() {
    onChanged = nullptr;
    endAll();
    // Those at work come back now and hand their places on, until nobody is left in line.
    life_.cancel();
}

std::optional<ConvertPlan> PlanStore::build(const Order& order) {
    const std::unique_ptr<MKVFile> mkv = MKVFile::open(order.file);
    if (!mkv) return std::nullopt;
    const bool isDeep = order.depth == Order::Depth::Frames;
    // Both walks pass the whole file and take about as long.
    const double share = hasPictures(*mkv) ? 0.5 : 1;
    TrackStats stats;
    if (isDeep) stats = mkv->blockStats(partOf(order.progress, 0, share));
    ConvertPlan plan = PlanBuilder::make(order.file, *mkv, Lang::parseList(order.languages),
                                         PlanBuilder::findSidecars(order.file), stats);
    if (isDeep) PlanBuilder::applyPGS(plan, *mkv, partOf(order.progress, share, 1));
    return plan;
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
    run(file, analysis);
}

Task<> PlanStore::run(Path file, Analysis analysis) {
    co_await gate_.enter();
    const AnalysisGate::Place place(gate_);
    for (const auto depth : {Order::Depth::Tracks, Order::Depth::Frames}) {
        if (analysis.cancel.isCancelled()) co_return;
        auto planning = planOf(file, depth, analysis);
        std::optional<ConvertPlan> plan = co_await planning;
        // Stopped meanwhile: the file may be analysed anew, and this one is not to be taken for it.
        if (analysis.cancel.isCancelled()) co_return;
        // Frames that can't be counted are no reason to go without the plan of the first stage.
        if (!plan) break;
        put(file, *std::move(plan));
        if (depth == Order::Depth::Tracks && onChanged) onChanged();
        if (analysis.cancel.isCancelled()) co_return;
    }
    tasks_.erase(file);
    tell(analysis);
    if (onChanged) onChanged();
}

Task<std::optional<ConvertPlan>> PlanStore::planOf(Path file, Order::Depth depth,
                                                   Analysis analysis) {
    Order order{std::move(file), Settings::keepLanguages(), depth, follower(analysis)};
    std::function<std::optional<ConvertPlan>()> work = [builder = builder_, order] {
        return builder(order);
    };
    try {
        auto working = Asking::orCancelled(Async::onWorker(std::move(work)), life_);
        std::optional<ConvertPlan> plan = co_await working;
        co_return plan;
    } catch (const std::exception&) {
        // A file whose analysis fails is one that can't be read.
        co_return std::nullopt;
    }
}

/// Called on the worker; screens are told on the main context, and not more often than they can
/// show it.
std::function<bool(double)> PlanStore::follower(const Analysis& analysis) {
    const auto stopped = std::make_shared<std::atomic<bool>>(false);
    const auto registration = std::make_shared<CancelToken::Registration>(
        analysis.cancel.onCancel([stopped] { *stopped = true; }));
    return [this, stopped, registration, analysis](double fraction) {
        const bool isStep =
            std::floor(fraction * 100) > std::floor(analysis.progress->exchange(fraction) * 100);
        if (isStep && !*stopped)
            Async::post([this, analysis] {
                // Without a cancel the store still lives.
                if (!analysis.cancel.isCancelled() && onChanged) onChanged();
            });
        return !*stopped;
    };
}

void PlanStore::put(const Path& file, ConvertPlan plan) {
    if (const ConvertPlan* const before = find(file)) PlanBuilder::merge(*before, plan);
    plans_.insert_or_assign(file, std::move(plan));
    grant(file);
}

/// The second stage may bring subtitles that the first didn't know.
void PlanStore::grant(const Path& file) {
    const auto found = wishes_.find(file);
    if (found == wishes_.end()) return;
    PlanTicks& wished = found->second;
    std::erase_if(wished.sounds,
                  [&](const auto& tick) { return tickSound(file, tick.first, tick.second); });
    std::erase_if(wished.subtitles,
                  [&](const auto& tick) { return tickSubtitle(file, tick.first, tick.second); });
    if (wished.empty()) wishes_.erase(found);
}

void PlanStore::wish(const Path& file, const PlanTicks& ticks) {
    if (ticks.empty()) return;
    wishes_.insert_or_assign(file, ticks);
    if (plans_.contains(file)) grant(file);
}

PlanTicks PlanStore::ticks(const Path& file) const {
    const auto wished = wishes_.find(file);
    PlanTicks ticks = wished == wishes_.end() ? PlanTicks() : wished->second;
    const ConvertPlan* plan = find(file);
    if (plan == nullptr) return ticks;
    for (const AudioChoice& choice : plan->audio)
        if (choice.touched) ticks.sounds[choice.track.number] = choice.keep;
    for (const SubChoice& choice : plan->subs)
        if (choice.touched) ticks.subtitles[choice.id] = choice.keep;
    return ticks;
}

std::optional<double> PlanStore::analysisProgress(const Path& file) const {
    const auto task = tasks_.find(file);
    if (task == tasks_.end()) return std::nullopt;
    return task->second.progress->load();
}

bool PlanStore::setKeepSound(const Path& file, int track, bool keep) {
    const bool isSet = tickSound(file, track, keep);
    if (isSet && onTouched) onTouched(file);
    return isSet;
}

bool PlanStore::setKeepSubtitle(const Path& file, const std::string& id, bool keep) {
    const bool isSet = tickSubtitle(file, id, keep);
    if (isSet && onTouched) onTouched(file);
    return isSet;
}

bool PlanStore::tickSound(const Path& file, int track, bool keep) {
    const auto plan = plans_.find(file);
    if (plan == plans_.end()) return false;
    const auto choice = std::ranges::find_if(
        plan->second.audio, [&](const AudioChoice& each) { return each.track.number == track; });
    if (choice == plan->second.audio.end() || choice->unsupportedReason) return false;
    choice->keep = keep;
    choice->touched = true;
    PlanBuilder::refresh(plan->second);
    return true;
}

bool PlanStore::tickSubtitle(const Path& file, const std::string& id, bool keep) {
    const auto plan = plans_.find(file);
    if (plan == plans_.end()) return false;
    const auto choice = std::ranges::find(plan->second.subs, id, &SubChoice::id);
    if (choice == plan->second.subs.end() || choice->unsupportedReason) return false;
    choice->keep = keep;
    choice->touched = true;
    return true;
}

Task<std::optional<ConvertPlan>> PlanStore::planFor(Path file) {
    const CancelToken life = life_;
    analyse(file);
    auto finishing = finish(file);
    co_await finishing;
    life.check();
    const ConvertPlan* const plan = find(file);
    co_return plan == nullptr ? std::nullopt : std::optional(*plan);
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
    wishes_.erase(file);
}

}  // namespace marlet
