#include "screens/history/history_model.h"

#include <QStandardPaths>
#include <chrono>

#include "app/app_model.h"
#include "app/restore_jobs.h"
#include "foundation/durable.h"
#include "foundation/errors.h"
#include "identify/asking.h"
#include "screens/base/file_address.h"
#include "screens/base/qt_text.h"

namespace marlet {

namespace {

using namespace std::chrono_literals;

/// A search begins when nobody has typed for so long.
constexpr auto typingPause = 150ms;

HistoryList restorableOf(const HistoryList& entries) {
    HistoryList found;
    for (RestoreJobs::Restorable& each : RestoreJobs::among(entries))
        found.add(std::move(each.entry));
    return found;
}

std::vector<HistoryLine> linesOf(const HistoryList& entries, int filter, const std::string& query) {
    std::vector<HistoryLine> lines;
    for (HistoryDay& day : HistoryRows::build(entries, filter, query)) {
        const QString label = toQt(day.label);
        for (HistoryRow& row : day.rows) {
            HistoryLine line;
            line.key = toQt(row.id());
            line.day = label;
            line.row = std::make_shared<const HistoryRow>(std::move(row));
            lines.push_back(std::move(line));
        }
    }
    return lines;
}

QStringList detailsOf(const HistoryRow& row) {
    QStringList texts;
    for (const auto& [label, text] : row.details()) texts << toQt(label) << toQt(text);
    return texts;
}

}  // namespace

HistoryModel::HistoryModel(AppModel& model, QObject* parent)
    : ScreenPart(parent), model_(model), lines_(this) {
    typing_.setSingleShot(true);
    typing_.setInterval(typingPause);
    connect(&typing_, &QTimer::timeout, this, [this] { buildSoon(); });
}

HistoryModel::~HistoryModel() {
    life_.cancel();
}

void HistoryModel::refresh() {
    if (ScreenPart::take(canRestore_, !model_.queue().active())) Q_EMIT changed();
    if (!typing_.isActive()) buildSoon();
}

void HistoryModel::setShown(bool shown) {
    if (!ScreenPart::take(shown_, shown)) return;
    Q_EMIT changed();
    buildSoon();
}

int HistoryModel::filter() const {
    return model_.historyFilter;
}

void HistoryModel::setFilter(int filter) {
    if (!ScreenPart::take(model_.historyFilter, filter)) return;
    Q_EMIT changed();
    buildSoon();
}

QString HistoryModel::query() const {
    return toQt(model_.historyQuery);
}

void HistoryModel::setQuery(const QString& query) {
    if (!ScreenPart::take(model_.historyQuery, fromQt(query))) return;
    Q_EMIT changed();
    typing_.start();
}

bool HistoryModel::isOutdated() const {
    if (builtFilter_ != model_.historyFilter || builtQuery_ != model_.historyQuery) return true;
    if (builtDay_ != Dates::startOfLocalDay(Dates::now())) return true;
    const HistoryList& now = entries();
    if (now.size() != built_.size()) return true;
    return !now.empty() && now.shared().front() != built_.shared().front();
}

const HistoryList& HistoryModel::entries() const {
    static const HistoryList none;
    if (model_.forceEmptyHistory) return none;
    const HistoryList& own = model_.history().known();
    if (!model_.sampleEntry) return own;
    if (sampled_.size() != own.size() + 1) {
        sampled_ = own;
        sampled_.addInFront(model_.sampleEntry);
    }
    return sampled_;
}

// Nobody looks at a page that isn't shown, and History is read when it is first needed.
void HistoryModel::buildSoon() {
    if (!shown_ || building_) return;
    if (!model_.history().isLoaded()) {
        if (!loading_) load();
    } else if (isOutdated()) {
        build();
    }
}

Task<> HistoryModel::load() {
    const CancelToken life = life_;
    loading_ = true;
    auto loading = model_.history().load();
    co_await loading;
    life.check();
    loading_ = false;
    buildSoon();
}

Task<> HistoryModel::build() {
    building_ = true;
    built_ = entries();
    builtFilter_ = model_.historyFilter;
    builtQuery_ = model_.historyQuery;
    builtDay_ = Dates::startOfLocalDay(Dates::now());
    std::function<Rows()> work = [entries = built_, filter = builtFilter_, query = builtQuery_] {
        return std::make_shared<const Built>(
            Built{linesOf(entries, filter, query), entries.empty()});
    };
    auto working = Asking::orCancelled(Async::onWorker(std::move(work)), life_);
    const Rows made = co_await working;
    building_ = false;
    take(*made);
    buildSoon();
}

void HistoryModel::take(Built built) {
    const bool hasRows = !built.lines.empty();
    QStringList unknown;
    for (HistoryLine& line : built.lines) {
        complete(line);
        if (line.open && line.details.isEmpty()) unknown << line.key;
    }
    lines_.set(std::move(built.lines));
    for (const QString& key : unknown) findOut(key);
    const QString none = built.isEmpty ? QStringLiteral("empty") : QStringLiteral("nothing");
    if (ScreenPart::take(stage_, hasRows ? QStringLiteral("rows") : none)) Q_EMIT changed();
}

void HistoryModel::complete(HistoryLine& line) const {
    line.open = model_.historyOpen.contains(fromQt(line.key));
    const auto known = known_.constFind(line.key);
    if (known == known_.constEnd() || !line.isOf(known->entries)) return;
    line.details = known->details;
    line.restorable = static_cast<int>(known->restorable.size());
}

void HistoryModel::toggle(const QString& key) {
    const int at = lines_.indexOf(key);
    if (at < 0) return;
    const std::string id = fromQt(key);
    if (model_.historyOpen.erase(id) == 0) {
        model_.historyOpen.insert(id);
        findOut(key);
    }
    HistoryLine line = lines_.at(at);
    complete(line);
    lines_.update(at, std::move(line));
}

void HistoryModel::look(const QString& key) {
    findOut(key);
}

Task<> HistoryModel::findOut(QString key) {
    const int at = lines_.indexOf(key);
    if (at < 0) co_return;
    std::function<Known()> work = [row = lines_.at(at).row] {
        return Known{row->entries, detailsOf(*row), restorableOf(row->entries)};
    };
    auto working = Asking::orCancelled(Async::onWorker(std::move(work)), life_);
    const Known found = co_await working;
    known_.insert(key, found);
    const int now = lines_.indexOf(key);
    if (now < 0) co_return;
    HistoryLine line = lines_.at(now);
    complete(line);
    lines_.update(now, std::move(line));
}

QList<QUrl> HistoryModel::filesOf(const QString& key) const {
    const int at = lines_.indexOf(key);
    return at < 0 ? QList<QUrl>() : lines_.at(at).files();
}

void HistoryModel::tryAgain(const QString& key) {
    const int at = lines_.indexOf(key);
    if (at < 0) return;
    std::vector<std::filesystem::path> paths;
    for (const HistoryEntry& entry : lines_.at(at).row->entries) paths.emplace_back(entry.path);
    model_.tab = AppModel::Tab::review;
    model_.add(std::move(paths));
}

void HistoryModel::askRestore(const QString& key) {
    const auto known = known_.constFind(key);
    if (known == known_.constEnd() || known->restorable.empty() || !canRestore_) return;
    toRestore_ = known->restorable;
    Q_EMIT restoreAsked();
}

QString HistoryModel::restoreMessage() const {
    const auto count = toRestore_.size();
    const QString files = count == 1 ? tr("The tags and covers these %1 file had before Marlet "
                                          "first changed them are put back.")
                                     : tr("The tags and covers these %1 files had before Marlet "
                                          "first changed them are put back.");
    return files.arg(count) + QLatin1Char(' ') + tr("The picture and sound are not touched.");
}

QString HistoryModel::restoreButton() const {
    return tr("Restore %1").arg(toRestore_.size());
}

void HistoryModel::answerRestore(bool restore) {
    const HistoryList entries = std::exchange(toRestore_, {});
    if (restore && !entries.empty()) this->restore(entries);
}

Task<> HistoryModel::restore(HistoryList entries) {
    const CancelToken life = life_;
    auto restoring = model_.restoreBatch(std::move(entries));
    const bool isQueued = co_await restoring;
    life.check();
    if (!isQueued) co_return;
    // Its progress is there to be seen.
    model_.tab = AppModel::Tab::queue;
    if (model_.onChanged) model_.onChanged();
}

QUrl HistoryModel::exportPlace() const {
    const QString folder = QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
    return QUrl::fromLocalFile(folder + QStringLiteral("/Marlet History.csv"));
}

void HistoryModel::exportTo(const QUrl& file) {
    const auto path = FileAddress::pathOf(file);
    if (!path) {
        tell(tr("History can't be saved there: it isn't a folder of this computer."));
        return;
    }
    write(*path);
}

void HistoryModel::tell(const QString& notice) {
    model_.notice = fromQt(notice);
    if (model_.onChanged) model_.onChanged();
}

Task<> HistoryModel::write(std::filesystem::path file) {
    const CancelToken life = life_;
    auto loading = model_.history().load();
    co_await loading;
    life.check();
    const QString name = toQt(file.filename());
    std::function<std::string()> work = [entries = model_.history().known(), file] {
        try {
            Durable::writeFile(file, viewOf(HistoryStore::csvOf(entries)));
            return std::string();
        } catch (const MFError& failure) {
            return std::string(failure.what());
        }
    };
    auto working = Asking::orCancelled(Async::onWorker(std::move(work)), life_);
    const std::string failure = co_await working;
    if (failure.empty())
        model_.say(fromQt(tr("Saved “%1”").arg(name)));
    else
        tell(tr("History couldn't be saved as “%1”: %2").arg(name, toQt(failure)));
}

}  // namespace marlet
