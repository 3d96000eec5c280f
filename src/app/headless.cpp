#include "app/headless.h"

#include <algorithm>
#include <cstdio>

#include "app/console_progress.h"
#include "app/playable.h"
#include "app/report_fields.h"
#include "app/scored_report.h"
#include "app/settings.h"
#include "app/virtual_run.h"
#include "foundation/preferences.h"
#include "foundation/text.h"
#include "identify/guess_model.h"
#include "identify/local_model.h"
#include "sources/key_store.h"

namespace marlet::Headless {

namespace {

using namespace std::chrono_literals;

/// Whoever set an address that isn't used should read why.
void tellOfRefusedModel() {
    const auto refused = LocalModel::refusal();
    if (refused && !AIGuesser::disabled()) std::fputs((*refused + "\n").c_str(), stderr);
}

void applyForTheRun(const Options& options) {
    if (options.noAI) AIGuesser::setDisabled(true);
    tellOfRefusedModel();
    if (options.noFix) Settings::setFixForAppleTV(false);
    if (options.outputDir) {
        AppModel::outputOverride = std::filesystem::absolute(*options.outputDir);
        Preferences::current().setBoolean("sourceOn.appleTV", false);
    }
}

void trace(const Options& options, const std::string& text) {
    if (options.trace) std::fputs(("headless: " + text + "\n").c_str(), stderr);
}

/// Whether a path was given that isn't there.
bool isAnyMissing(const std::vector<std::filesystem::path>& paths) {
    std::error_code none;
    return std::ranges::any_of(
        paths, [&](const auto& path) { return !std::filesystem::exists(path, none); });
}

bool writeAnyReport(AppModel& model, const Options& options) {
    if (!options.report) return true;
    return options.ignoreTags ? writeScoredReport(*options.report, model)
                              : writeReport(*options.report, model);
}

Task<RunEnd> runScan(AppModel& model, Options options, Shots* shots) {
    auto showing = takeIfAny(shots, Shots::Moment::empty);
    const bool isShown = co_await showing;
    trace(options, "adding " + std::to_string(options.scan.size()) + " roots");
    model.add(options.scan);
    auto scanning = waitForScan(model);
    co_await scanning;
    trace(options, "scan done, " + std::to_string(model.items().size()) + " items");
    // Nothing found is no failure, but whoever mistyped a path should read it.
    if (model.fileCount() == 0 && model.toast())
        std::fputs((*model.toast() + "\n").c_str(), stderr);
    RunEnd end = isAnyMissing(options.scan) ? RunEnd::failed : RunEnd::done;
    const std::unique_ptr<RunLines> lines = runLines(options);
    for (const ResolvedFile& file : model.allFiles()) {
        lines->found(file);
        if (!file.verdict.isCertain()) end = worse(end, RunEnd::needsLook);
    }
    auto showingAll = takeIfAny(shots, Shots::Moment::reviewed);
    const bool areAllShown = co_await showingAll;
    if (!writeAnyReport(model, options) || !isShown || !areAllShown) end = RunEnd::failed;
    co_return end;
}

Task<RunEnd> runTag(AppModel& model, Options options, Shots* shots) {
    auto running = runTagTest(model, options, shots);
    const RunEnd end = co_await running;
    co_return isAnyMissing(options.tag) ? RunEnd::failed : end;
}

/// A diagnosis on the worker, so that a quit is heard meanwhile.
Task<RunEnd> runDiagnosis(std::function<std::string()> work, std::string goodStart) {
    auto reading = Async::onWorker(std::move(work));
    const std::string text = co_await reading;
    std::fputs(text.c_str(), stdout);
    std::fflush(stdout);
    const bool isGood = text.starts_with(goodStart) && !Text::contains(text, "FAILED") &&
                        !Text::contains(text, "failed: ");
    co_return isGood ? RunEnd::done : RunEnd::failed;
}

Task<RunEnd> testKey() {
    const auto tmdb = TMDBClient::make(KeyStore::builtIn());
    if (!tmdb) {
        std::puts("No key yet.");
        co_return RunEnd::failed;
    }
    try {
        auto searching = tmdb->searchMovie("Alien");
        co_await searching;
    } catch (const std::exception&) {
        std::puts("TMDB rejected the key.");
        co_return RunEnd::failed;
    }
    std::puts("Key works.");
    co_return RunEnd::done;
}

Task<RunEnd> runVirtually(Options options) {
    auto running = runVirtual(*options.virtualMap, options.report);
    const bool isDone = co_await running;
    co_return isDone ? RunEnd::done : RunEnd::failed;
}

/// Pictures of About, or of what there is without any file.
Task<RunEnd> runPictures(Shots* shots, std::vector<Shots::Moment> moments) {
    RunEnd end = RunEnd::done;
    for (const Shots::Moment moment : moments) {
        auto taking = takeIfAny(shots, moment);
        const bool isTaken = co_await taking;
        if (!isTaken) end = RunEnd::failed;
    }
    co_return end;
}

/// The first mode that was asked for; nothing for none.
std::optional<Task<RunEnd>> modeOf(AppModel& model, const Options& options, Shots* shots) {
    using enum Shots::Moment;
    if (options.restoreLastBatch) return restoreLastBatch(model, options);
    if (options.playable)
        return runDiagnosis([options] { return Playable::account(*options.playable); },
                            "playable true");
    if (options.audioTest)
        return runDiagnosis([options] { return audioTest(*options.audioTest); }, "wav: ");
    if (options.mkvIn)
        return runDiagnosis([options] { return mkvAccount(*options.mkvIn); }, "duration ");
    if (options.testKey) return testKey();
    if (options.virtualMap) return runVirtually(options);
    if (options.shots.ofAbout()) return runPictures(shots, {about});
    if (!options.tag.empty()) return runTag(model, options, shots);
    if (!options.scan.empty()) return runScan(model, options, shots);
    if (options.shots.any()) return runPictures(shots, {empty, reviewed});
    return std::nullopt;
}

}  // namespace

Task<> waitForScan(AppModel& model) {
    while (model.isWorking()) {
        auto waiting = Async::sleep(5ms);
        co_await waiting;
    }
}

Task<bool> takeIfAny(Shots* shots, Shots::Moment moment) {
    if (shots == nullptr) co_return true;
    auto taking = shots->take(moment);
    const bool isTaken = co_await taking;
    co_return isTaken;
}

bool endsTheProgram(const Options& options) {
    const bool works = !options.tag.empty() || !options.scan.empty();
    const bool looks = options.restoreLastBatch || options.playable || options.audioTest ||
                       options.mkvIn || options.testKey || options.virtualMap;
    if (looks) return true;
    if (options.shots.ofAbout()) return !options.shots.keepOpen;
    if (works) return options.quit;
    return options.historyCsv || (options.shots.any() && !options.shots.keepOpen);
}

std::unique_ptr<RunLines> runLines(const Options& options) {
    return options.json ? RunLines::inJson() : RunLines::inWords();
}

Task<Run> runIfRequested(AppModel& model, Options options, Shots* shots) {
    trace(options, "entered");
    applyForTheRun(options);
    auto mode = modeOf(model, options, shots);
    std::optional<ConsoleProgress> progress;
    if (mode && (options.progress || ConsoleProgress::isWanted())) progress.emplace(model);
    Run run{.end = endsTheProgram(options)};
    if (mode) {
        const RunEnd ended = co_await *mode;
        run.ended = ended;
    }
    if (options.historyCsv) {
        auto loading = model.history().load();
        co_await loading;
        if (!ReportFields::save(*options.historyCsv, model.history().csv())) {
            std::fputs(("marlet: can't write " + options.historyCsv->string() + "\n").c_str(),
                       stderr);
            run.ended = RunEnd::failed;
        }
    }
    co_return run;
}

}  // namespace marlet::Headless
