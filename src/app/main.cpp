#include <QCoreApplication>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "app/app_model.h"
#include "app/console_progress.h"
#include "app/headless.h"
#include "app/quit_gate.h"
#include "app/settings.h"
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
Task<bool> launchSteps(AppModel& model, Headless::Options options) {
    if (!options.files.empty()) model.add(options.files);
    if (const auto message = TagWriter::recoverInterruptedWrite()) {
        model.notice = *message;
        std::fprintf(stderr, "NOTICE %s\n", message->c_str());
    }
    if (!RunMode::automated()) WorkArea::cleanUp(WorkArea::DryRun::No);
    auto running = Headless::runIfRequested(model, options);
    const bool end = co_await running;
    co_return end;
}

Task<> launch(AppModel& model, QuitGate& gate, Headless::Options options) {
    bool end = options.quit || options.restoreLastBatch;
    try {
        auto steps = launchSteps(model, options);
        end = co_await steps;
    } catch (const std::exception& failure) {
        // Nobody sits there to end a scripted run that went wrong.
        std::fprintf(stderr, "marlet: %s\n", failure.what());
    }
    if (end) gate.requestQuit();
    if (!RunMode::automated() && ConsoleProgress::isWanted())
        std::fputs(
            "Marlet has no window yet. Try: marlet --scan FOLDER --report FILE --quit\n"
            "Ctrl+C ends it.\n",
            stderr);
}

}  // namespace

int main(int argc, char** argv) {
    CoreDumps::forbid();
    RunMode::setArguments({argv + 1, argv + argc});
    const QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("marlet"));
    Preferences::install(Settings::open());

    AppModel model;
    QuitGate gate;
    QMetaObject::invokeMethod(
        QCoreApplication::instance(),
        [&] { launch(model, gate, Headless::parse(RunMode::arguments())); }, Qt::QueuedConnection);
    return QCoreApplication::exec();
}
