#include "screens/settings/work_files.h"

#include <algorithm>
#include <optional>

#include "foundation/format_bytes.h"
#include "identify/asking.h"
#include "screens/base/qt_text.h"

namespace marlet {

namespace {

struct Found {
    std::optional<WorkArea::Report> report;
    WorkArea::Usage usage;
};

}  // namespace

WorkFiles::~WorkFiles() {
    life_.cancel();
}

QString WorkFiles::usage() const {
    return known_ ? wordsOf(usage_) : QString();
}

QString WorkFiles::wordsOf(const WorkArea::Usage& usage) {
    if (usage.folders == 0) return tr("None");
    const QString folders =
        usage.folders == 1 ? tr("1 folder") : tr("%1 folders").arg(usage.folders);
    return tr("%1 in %2").arg(toQt(formatBytes(usage.bytes)), folders);
}

QString WorkFiles::wordsOf(const WorkArea::Report& report) {
    QString words = report.removable.empty()
                        ? tr("Nothing to clean up.")
                        : tr("Freed %1.").arg(toQt(formatBytes(report.freed())));
    if (report.kept.empty()) return words;
    QStringList reasons;
    for (const WorkArea::Entry& entry : report.kept)
        if (const QString reason = toQt(entry.reason); !reasons.contains(reason)) reasons << reason;
    const QString stays = report.kept.size() == 1
                              ? tr("1 folder stays: %1.")
                              : tr("%1 folders stay: %2.").arg(report.kept.size());
    return words + QLatin1Char(' ') + stays.arg(reasons.join(QStringLiteral(", ")));
}

void WorkFiles::measure() {
    result_.clear();
    if (!busy_) work(Way::look);
}

void WorkFiles::cleanUp() {
    if (canCleanUp()) work(Way::clean);
}

Task<> WorkFiles::work(Way way) {
    busy_ = true;
    Q_EMIT changed();
    std::function<Found()> job = [way] {
        Found found;
        if (way == Way::clean) found.report = WorkArea::cleanUp(WorkArea::DryRun::No);
        found.usage = WorkArea::usage();
        return found;
    };
    auto working = Asking::orCancelled(Async::onWorker(std::move(job)), life_);
    const Found found = co_await working;
    busy_ = false;
    known_ = true;
    usage_ = found.usage;
    if (found.report) result_ = wordsOf(*found.report);
    Q_EMIT changed();
}

}  // namespace marlet
