#include "screens/desktop/run_watch.h"

#include <QGuiApplication>
#include <utility>

#include "app/app_model.h"
#include "app/settings.h"
#include "foundation/run_mode.h"
#include "screens/queue/run_words.h"

namespace marlet {

RunWatch::RunWatch(AppModel& model, const Buses& buses, QObject* parent)
    : QObject(parent),
      isInFront([] { return QGuiApplication::applicationState() == Qt::ApplicationActive; }),
      model_(model),
      sleep_(buses),
      launcher_(buses),
      notifier_(buses) {
    connect(&notifier_, &Notifier::clicked, this, &RunWatch::queueAsked);
}

void RunWatch::refresh() {
    const WriteQueue& queue = model_.queue();
    const bool runs = queue.active();
    sleep_.hold(runs, tr("Files are being written"));
    if (runs)
        launcher_.show(queue.doneBytes() / queue.totalBytes());
    else
        launcher_.clear();
    if (std::exchange(running_, runs) && !runs) tellEnd();
}

void RunWatch::tellEnd() {
    // Whoever scripts a run reads its lines.
    if (!Settings::notifyAtEnd() || RunMode::automated() || isInFront()) return;
    notifier_.tell(RunWords::finished(model_.queue()), RunWords::counts(model_.queue()));
}

}  // namespace marlet
