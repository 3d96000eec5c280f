#include <algorithm>
#include <chrono>
#include <cstdio>

#include "app/headless.h"
#include "app/settings.h"
#include "foundation/text.h"
#include "write/result_line.h"

namespace marlet::Headless {

namespace {

using namespace std::chrono_literals;

void print(const std::string& line) {
    std::fputs((Text::repairUtf8(viewOf(line)) + "\n").c_str(), stdout);
    std::fflush(stdout);
}

Task<> waitForQueue(AppModel& model) {
    while (model.queue().active() || !model.queue().finished()) {
        auto waiting = Async::sleep(20ms);
        co_await waiting;
    }
}

std::string sourceWords(const ResolvedFile& file) {
    if (!file.match) return "no source";
    return file.match->byHand() ? "by hand" : displayName(file.match->sourceID());
}

void printMatches(const AppModel& model) {
    for (const ResolvedFile& file : model.allFiles()) {
        const std::string verdict = file.verdict.isCertain()
                                        ? "CERTAIN"
                                        : "LOOK: " + Text::join(file.verdict.reasons(), "; ");
        const std::string layout =
            file.file.interleave ? Text::fixed(*file.file.interleave, 2) + " s" : "-";
        print("matched: " + file.file.url.filename().string() + " -> " +
              (file.match ? file.match->title : "-") + " " + sourceWords(file) + " " + verdict +
              " layout " + layout);
    }
}

std::string artWords(const std::optional<ArtworkOption>& option) {
    return option ? option->path : "-";
}

void printArt(const AppModel& model) {
    for (const ResolvedFile& file : model.allFiles()) {
        const std::string name = file.file.url.filename().string();
        const FileDraft* draft = model.drafts().find(file.file.url);
        if (draft == nullptr) {
            print("ART " + name + ": no draft");
            continue;
        }
        const ArtworkStyle style = draft->styleOverride.value_or(Settings::artworkStyle());
        std::vector<std::string> grid;
        for (const ArtworkOption& each : style == ArtworkStyle::wide ? draft->wide : draft->tall)
            grid.push_back(each.path);
        print("ART " + name + " " + artWords(draft->chosen(Settings::artworkStyle())) +
              "; grid order = " + Text::join(grid, " "));
    }
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

Task<bool> applyDrops(AppModel& model, std::vector<std::string> values) {
    for (const std::string& each : values) {
        auto applying = applyDrop(model, each);
        const std::optional<std::string> problem = co_await applying;
        if (!problem) continue;
        print(*problem);
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

void printResults(const WriteQueue& queue) {
    for (const WriteQueue::Job& job : queue.jobs())
        print(resultLine(name(job.state), job.label, job.outcome.value_or(WriteOutcome{})));
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

Task<> timePlans(AppModel& model) {
    const std::vector<ResolvedFile> files = model.allFiles();
    for (const ResolvedFile& each : files) {
        const std::filesystem::path file = each.file.url;
        if (!PlanStore::needsPlan(file)) continue;
        const auto begun = std::chrono::steady_clock::now();
        const auto tell = [&](const char* label) {
            const std::chrono::duration<double> took = std::chrono::steady_clock::now() - begun;
            const double done = model.plans().analysisProgress(file).value_or(1);
            print("PLAN progress " + Text::fixed(done * 100, 0) + "% after " +
                  Text::fixed(took.count(), 1) + " s (" + label + ")");
        };
        auto waiting = waitForFirstPlan(model, file);
        co_await waiting;
        tell("first");
        auto planning = model.planFor(file);
        co_await planning;
        tell("final");
    }
}

void printPlans(AppModel& model) {
    for (const ResolvedFile& file : model.allFiles())
        if (const ConvertPlan* const plan = model.plans().find(file.file.url))
            print(planLine(*plan));
}

/// Adds what is ready and runs the queue, if that gave it anything to do.
Task<> write(AppModel& model) {
    auto adding = model.addToQueueNow(model.items());
    co_await adding;
    const bool hasJobs = model.queue().waitingCount() > 0;
    model.queue().start();
    if (hasJobs) {
        auto working = waitForQueue(model);
        co_await working;
    }
    if (model.notice)
        print("NOTICE " + *model.notice);
    else if (!hasJobs && model.toast())
        print("NOTICE " + *model.toast());
    printResults(model.queue());
}

Task<> restoreOriginals(AppModel& model, std::vector<std::filesystem::path> files) {
    for (const std::filesystem::path& file : files) {
        model.restoreOriginal(file);
        auto working = waitForQueue(model);
        co_await working;
        printResults(model.queue());
    }
}

Task<> addAgain(AppModel& model, std::vector<std::filesystem::path> files) {
    model.add(files);
    auto scanning = waitForScan(model);
    co_await scanning;
    print("AFTER ADD: review " + std::to_string(model.fileCount()));
    model.add(files);
    auto scanningAgain = waitForScan(model);
    co_await scanningAgain;
    print("AFTER ADD AGAIN: review " + std::to_string(model.fileCount()) +
          " file(s), queue waiting " + std::to_string(model.queue().waitingCount()));
}

}  // namespace

Task<> runTagTest(AppModel& model, Options options) {
    model.add(options.tag);
    auto scanning = waitForScan(model);
    co_await scanning;
    auto dropping = applyDrops(model, options.drop);
    const bool isClear = co_await dropping;
    if (!isClear) co_return;
    applyConfirmations(model, options);
    if (options.planTest) {
        auto planning = timePlans(model);
        co_await planning;
    }
    if (options.planOnly) {
        auto planning = makePlans(model);
        co_await planning;
        printPlans(model);
        co_return;
    }
    if (options.artReport) {
        auto loading = loadAllDrafts(model);
        co_await loading;
        printArt(model);
    }
    printMatches(model);
    if (options.matchOnly) co_return;

    std::vector<std::filesystem::path> files;
    for (const ResolvedFile& file : model.allFiles()) files.push_back(file.file.url);
    auto writing = write(model);
    co_await writing;
    if (options.restoreOriginal) {
        auto restoring = restoreOriginals(model, files);
        co_await restoring;
    }
    if (options.roundtrip) {
        auto adding = addAgain(model, options.tag);
        co_await adding;
    }
}

Task<> restoreLastBatch(AppModel& model) {
    const std::vector<HistoryEntry>& entries = model.history().entries();
    std::optional<std::string> batch;
    for (const HistoryEntry& entry : entries) {
        if (entry.isRestore.value_or(false) || !entry.batchID) continue;
        batch = entry.batchID;
        break;
    }
    if (!batch) {
        print("no run in History");
        co_return;
    }
    std::vector<HistoryEntry> run;
    for (const HistoryEntry& entry : entries)
        if (entry.batchID == batch) run.push_back(entry);
    model.restoreBatch(run);
    if (model.queue().jobs().empty()) {
        print("NOTICE " + model.notice.value_or(""));
        co_return;
    }
    auto working = waitForQueue(model);
    co_await working;
    for (const WriteQueue::Job& job : model.queue().jobs())
        print("RESTORE " + name(job.state) + ": " + job.label + " | " +
              (job.outcome ? job.outcome->message : ""));
}

}  // namespace marlet::Headless
