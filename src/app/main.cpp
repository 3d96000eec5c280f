#include <QCoreApplication>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "app/app_model.h"
#include "app/console_progress.h"
#include "app/front.h"
#include "app/headless.h"
#include "app/quit_gate.h"
#include "app/settings.h"
#include "app/updater.h"
#include "app/usage.h"
#include "foundation/core_dumps.h"
#include "foundation/preferences.h"
#include "foundation/run_mode.h"
#include "foundation/work_area.h"
#include "sources/async.h"
#include "write/tag_writer.h"

namespace {

using namespace marlet;

/// What a launch does once, in this order: take the files that were handed over, finish an
/// interrupted write before anything can be queued, clear what dead jobs left, run what was asked.
Task<Headless::Run> launchSteps(AppModel& model, Headless::Options options, Front* front) {
    if (!options.files.empty()) model.add(options.files);
    if (const auto message = TagWriter::recoverInterruptedWrite()) {
        model.notice = *message;
        std::fprintf(stderr, "NOTICE %s\n", message->c_str());
    }
    if (!RunMode::automated()) WorkArea::cleanUp(WorkArea::DryRun::No);
    Updater::start();
    // Not waited for: it looks at films, whose disks may take their time.
    model.openUnfinished();
    Headless::Shots* const shots = front == nullptr ? nullptr : front->shots();
    auto running = Headless::runIfRequested(model, options, shots);
    const Headless::Run run = co_await running;
    co_return run;
}

Task<> launch(AppModel& model, QuitGate& gate, Headless::Options options, Front* front) {
    Headless::Run run{.end = Headless::endsTheProgram(options), .ended = RunEnd::failed};
    // Until all is done it isn't, whatever ends the program.
    if (options.strictExit) gate.setStatus(static_cast<int>(RunEnd::failed));
    try {
        auto steps = launchSteps(model, options, front);
        run = co_await steps;
    } catch (const std::exception& failure) {
        // Nobody sits there to end a scripted run that went wrong.
        std::fprintf(stderr, "marlet: %s\n", failure.what());
    }
    if (options.strictExit) gate.setStatus(static_cast<int>(run.ended));
    if (run.end) gate.requestQuit();
    if (front == nullptr && !RunMode::automated() && ConsoleProgress::isWanted())
        std::fputs(
            "Marlet finds no display to open its window on. Try: marlet --scan FOLDER --report "
            "FILE --quit\n"
            "Ctrl+C ends it.\n",
            stderr);
}

}  // namespace

int main(int argc, char** argv) {
    CoreDumps::forbid();
    RunMode::setArguments({argv + 1, argv + argc});
    if (const auto answer = Usage::answerAtOnce(RunMode::arguments())) {
        std::fputs(answer->c_str(), stdout);
        return std::fflush(stdout) == 0 ? 0 : 1;
    }
    const Headless::Options options = Headless::parse(RunMode::arguments());
    const auto application = Front::makeApplication(argc, argv, options);
    QCoreApplication::setApplicationName(QStringLiteral("marlet"));
    Preferences::install(Settings::open());

    AppModel model;
    QuitGate gate;
    gate.onEnd = [&] { model.keepNow(); };
    const auto front = Front::make(model, gate, options);
    if (front) front->open();
    QMetaObject::invokeMethod(
        QCoreApplication::instance(), [&] { launch(model, gate, options, front.get()); },
        Qt::QueuedConnection);
    return QCoreApplication::exec();
}
