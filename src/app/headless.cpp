#include "app/headless.h"

#include <cstdio>

#include "app/console_progress.h"
#include "app/settings.h"
#include "foundation/preferences.h"
#include "identify/guess_model.h"
#include "identify/local_model.h"

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

Task<> runScan(AppModel& model, Options options) {
    trace(options, "adding " + std::to_string(options.scan.size()) + " roots");
    model.add(options.scan);
    auto scanning = waitForScan(model);
    co_await scanning;
    trace(options, "scan done, " + std::to_string(model.items().size()) + " items");
    // Nothing found is no failure, but whoever mistyped a path should read it.
    if (model.fileCount() == 0 && model.toast())
        std::fputs((*model.toast() + "\n").c_str(), stderr);
    if (options.report) writeReport(*options.report, model);
}

}  // namespace

Task<> waitForScan(AppModel& model) {
    while (model.isWorking()) {
        auto waiting = Async::sleep(20ms);
        co_await waiting;
    }
}

Task<bool> runIfRequested(AppModel& model, Options options) {
    trace(options, "entered");
    applyForTheRun(options);
    std::optional<ConsoleProgress> progress;
    if (options.progress || ConsoleProgress::isWanted()) progress.emplace(model);
    if (options.restoreLastBatch) {
        auto restoring = restoreLastBatch(model);
        co_await restoring;
        co_return true;
    }
    // On the worker, so that a quit is heard meanwhile.
    if (options.audioTest || options.mkvIn) {
        std::function<std::string()> work = [options] {
            return options.audioTest ? audioTest(*options.audioTest) : mkvAccount(*options.mkvIn);
        };
        auto reading = Async::onWorker(std::move(work));
        const std::string text = co_await reading;
        std::fputs(text.c_str(), stdout);
        std::fflush(stdout);
        co_return true;
    }
    if (!options.tag.empty()) {
        auto running = runTagTest(model, options);
        co_await running;
        co_return options.quit;
    }
    if (!options.scan.empty()) {
        auto running = runScan(model, options);
        co_await running;
        co_return options.quit;
    }
    co_return false;
}

}  // namespace marlet::Headless
