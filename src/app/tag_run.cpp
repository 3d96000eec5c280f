#include <algorithm>
#include <chrono>

#include "app/headless.h"
#include "app/settings.h"
#include "foundation/text.h"

namespace marlet::Headless {

namespace {

using namespace std::chrono_literals;

std::string artWords(const std::optional<ArtworkOption>& option) {
    return option ? option->path : "-";
}

std::optional<RunLines::Art> artOf(const FileDraft* draft) {
    if (draft == nullptr) return std::nullopt;
    const ArtworkStyle style = draft->styleOverride.value_or(Settings::artworkStyle());
    RunLines::Art art{artWords(draft->chosen(Settings::artworkStyle())), {}};
    for (const ArtworkOption& each : style == ArtworkStyle::wide ? draft->wide : draft->tall)
        art.grid.push_back(each.path);
    return art;
}

void applyConfirmations(AppModel& model, const Options& options) {
    for (const ResolvedFile& file : model.allFiles()) {
        bool wanted = options.confirmAll;
        for (const std::string& part : options.confirm)
            wanted = wanted || Text::contains(file.file.url.filename().string(), part);
        if (wanted) model.confirm(file.file.url);
    }
}

/// Nothing, or what is wrong with the option. A track that isn't there must not lead to a write of
/// the whole file in its place.
Task<std::optional<std::string>> applyDrop(AppModel& model, std::string value) {
    const auto drop = parseDrop(value);
    if (!drop) co_return "--drop=" + value + ": not \"PART OF A NAME:TRACK,TRACK\"";
    const std::vector<ResolvedFile> files = model.allFiles();
    const auto found = std::ranges::find_if(files, [&](const ResolvedFile& file) {
        return Text::contains(file.file.url.filename().string(), drop->part);
    });
    if (found == files.end()) co_return "--drop=" + value + ": no file of that name";
    const std::filesystem::path file = found->file.url;
    auto loading = model.tracks().load(file);
    co_await loading;
    for (const int track : drop->tracks)
        if (!model.tracks().setKeep(file, track, false))
            co_return "--drop=" + value + ": " + file.filename().string() +
                " has no sound or subtitle track " + std::to_string(track);
    co_return std::nullopt;
}

Task<bool> applyDrops(AppModel& model, RunLines& lines, std::vector<std::string> values) {
    for (const std::string& each : values) {
        auto applying = applyDrop(model, each);
        const std::optional<std::string> problem = co_await applying;
        if (!problem) continue;
        lines.problem(*problem);
        co_return false;
    }
    co_return true;
}

Task<> loadAllDrafts(AppModel& model) {
    const std::vector<LibraryItem> items = model.items();
    for (const LibraryItem& item : items) {
        auto loading = model.loadDrafts(item);
        co_await loading;
    }
}

Task<> makePlans(AppModel& model) {
    const std::vector<ResolvedFile> files = model.allFiles();
    for (const ResolvedFile& file : files) {
        auto planning = model.planFor(file.file.url);
        co_await planning;
    }
}

/// Ends when there is a plan to show, finished or not.
Task<> waitForFirstPlan(AppModel& model, std::filesystem::path file) {
    model.plans().analyse(file);
    while (model.plans().find(file) == nullptr && model.plans().isLoading(file)) {
        auto waiting = Async::sleep(2ms);
        co_await waiting;
    }
}

Task<> timePlans(AppModel& model, RunLines& lines) {
    const std::vector<ResolvedFile> files = model.allFiles();
    for (const ResolvedFile& each : files) {
        const std::filesystem::path file = each.file.url;
        if (!PlanStore::needsPlan(file)) continue;
        const auto begun = std::chrono::steady_clock::now();
        const auto tell = [&](const char* which) {
            const std::chrono::duration<double> took = std::chrono::steady_clock::now() - begun;
            lines.planProgress(model.plans().analysisProgress(file).value_or(1), took.count(),
                               which);
        };
        auto waiting = waitForFirstPlan(model, file);
        co_await waiting;
        tell("first");
        auto planning = model.planFor(file);
        co_await planning;
        tell("final");
    }
}

/// What the verdicts alone come to.
RunEnd endOfReview(const AppModel& model) {
    return model.needsCheckingCount() > 0 ? RunEnd::needsLook : RunEnd::done;
}

RunEnd printPlans(AppModel& model, RunLines& lines) {
    RunEnd end = endOfReview(model);
    for (const ResolvedFile& file : model.allFiles()) {
        const ConvertPlan* const plan = model.plans().find(file.file.url);
        if (plan == nullptr) continue;
        lines.plan(*plan);
        if (!plan->snapshot()) end = RunEnd::failed;
    }
    return end;
}

/// What became of the files that were not queued: those ready for it should have been.
RunEnd endOfTheRest(const AppModel& model) {
    if (model.readyCount() > 0) return RunEnd::failed;
    return model.fileCount() > 0 ? RunEnd::needsLook : RunEnd::done;
}

/// Adds what is ready and runs the queue, if that gave it anything to do.
Task<RunEnd> write(AppModel& model, RunLines& lines, Shots* shots) {
    auto adding = model.addToQueueNow(model.items());
    co_await adding;
    RunEnd end = endOfTheRest(model);
    const bool hasJobs = model.queue().waitingCount() > 0;
    if (hasJobs) {
        auto showing = takeIfAny(shots, Shots::Moment::queued);
        const bool isShown = co_await showing;
        if (!isShown) end = RunEnd::failed;
    }
    model.queue().start();
    if (hasJobs) {
        auto working = waitForQueue(model);
        co_await working;
        auto showing = takeIfAny(shots, Shots::Moment::written);
        const bool isShown = co_await showing;
        if (!isShown) end = RunEnd::failed;
    }
    if (model.notice) {
        lines.notice(*model.notice);
    } else if (!hasJobs && model.toast()) {
        lines.notice(*model.toast());
        end = RunEnd::failed;
    }
    for (const WriteQueue::Job& job : model.queue().jobs()) lines.result(job);
    co_return worse(end, endOf(model.queue()));
}

Task<RunEnd> restoreOriginals(AppModel& model, RunLines& lines,
                              std::vector<std::filesystem::path> files) {
    RunEnd end = RunEnd::done;
    for (const std::filesystem::path& file : files) {
        auto restoring = model.restoreOriginal(file);
        co_await restoring;
        auto working = waitForQueue(model);
        co_await working;
        for (const WriteQueue::Job& job : model.queue().jobs()) lines.result(job);
        end = worse(end, endOf(model.queue()));
    }
    co_return end;
}

Task<> addAgain(AppModel& model, RunLines& lines, std::vector<std::filesystem::path> files) {
    model.add(files);
    auto scanning = waitForScan(model);
    co_await scanning;
    lines.addedAgain(model.fileCount());
    model.add(files);
    auto scanningAgain = waitForScan(model);
    co_await scanningAgain;
    lines.addedOnceMore(model.fileCount(), model.queue().waitingCount());
}

Task<RunEnd> writeAndWhatFollows(AppModel& model, RunLines& lines, Options options, Shots* shots) {
    std::vector<std::filesystem::path> files;
    for (const ResolvedFile& file : model.allFiles()) files.push_back(file.file.url);
    auto writing = write(model, lines, shots);
    RunEnd end = co_await writing;
    if (options.restoreOriginal) {
        auto restoring = restoreOriginals(model, lines, files);
        const RunEnd restored = co_await restoring;
        end = worse(end, restored);
    }
    if (options.roundtrip) {
        auto adding = addAgain(model, lines, options.tag);
        co_await adding;
    }
    co_return end;
}

}  // namespace

Task<RunEnd> runTagTest(AppModel& model, Options options, Shots* shots) {
    const std::unique_ptr<RunLines> lines = runLines(options);
    auto showing = takeIfAny(shots, Shots::Moment::empty);
    const bool isShown = co_await showing;
    model.add(options.tag);
    auto scanning = waitForScan(model);
    co_await scanning;
    auto dropping = applyDrops(model, *lines, options.drop);
    const bool isClear = co_await dropping;
    if (!isClear) co_return RunEnd::failed;
    applyConfirmations(model, options);
    if (options.planTest) {
        auto planning = timePlans(model, *lines);
        co_await planning;
    }
    if (options.planOnly) {
        auto planning = makePlans(model);
        co_await planning;
        co_return printPlans(model, *lines);
    }
    if (options.artReport) {
        auto loading = loadAllDrafts(model);
        co_await loading;
        for (const ResolvedFile& file : model.allFiles())
            lines->art(file, artOf(model.drafts().find(file.file.url)));
    }
    for (const ResolvedFile& file : model.allFiles()) lines->matched(file);
    if (options.matchOnly) co_return endOfReview(model);
    auto showingAll = takeIfAny(shots, Shots::Moment::reviewed);
    const bool areAllShown = co_await showingAll;
    const RunEnd shown = isShown && areAllShown ? RunEnd::done : RunEnd::failed;
    if (options.shots.shotsOnly) co_return worse(shown, endOfReview(model));
    auto writing = writeAndWhatFollows(model, *lines, options, shots);
    const RunEnd end = co_await writing;
    co_return worse(shown, end);
}

}  // namespace marlet::Headless
