#include "screens/review/review_model.h"

#include <algorithm>
#include <chrono>

#include "app/app_model.h"
#include "screens/base/file_address.h"
#include "screens/base/qt_text.h"

namespace marlet {

namespace {

constexpr std::chrono::milliseconds betweenLoads{150};

/// The model's end ends it: every wait in the model is one on its life.
Task<> refreshOneByOne(AppModel& model, std::vector<std::string> ids) {
    for (const std::string& id : ids) {
        auto asking = model.refreshFromTMDB(id);
        co_await asking;
    }
}

}  // namespace

ReviewModel::ReviewModel(AppModel& model, QObject* parent) : ScreenPart(parent), model_(model) {
    loading_.setSingleShot(true);
    loading_.setInterval(betweenLoads);
    connect(&loading_, &QTimer::timeout, this, [this] {
        if (std::exchange(loadAgain_, false)) loadDrafts();
    });
}

void ReviewModel::refresh() {
    if (model_.reviewRevision() != revision_) {
        // What comes next isn't hidden by what somebody looked for among things that are gone.
        if (model_.items().empty()) filter_ = {};
        makeRows(Stay::selected, true);
        // A file with another match has no draft any more.
        loadDrafts();
    }
    if (model_.reviewID != told_) adoptSelection();
    refreshShown();
}

void ReviewModel::refreshShown() {
    const AppModel::Phase& phase = model_.phase();
    Shown now;
    now.isEmpty = model_.items().empty();
    now.scanning = model_.isWorking();
    now.scanText = toQt(phase.message);
    now.scanDone = phase.done;
    now.scanTotal = phase.total;
    now.filter = filter();
    now.query = toQt(filter_.query());
    now.found = rows_.count();
    now.all = static_cast<int>(model_.items().size());
    now.needsChecking = model_.needsCheckingCount();
    now.selected = selected_.count();
    now.current = selected_.current();
    now.locked = model_.lockedCount() > 0;
    now.adding = model_.isAdding();
    now.canAddAll = !now.adding && model_.readyItemCount() > 0;
    now.canAccept = anyToAccept();
    if (const auto& offer = model_.unfinishedOffer()) now.unfinished = toQt(offer->sentence);
    if (take(shown_, std::move(now))) Q_EMIT changed();
}

void ReviewModel::makeRows(Stay stay, bool goOn) {
    const std::vector<LibraryItem>& items = model_.items();
    revision_ = model_.reviewRevision();
    if (filter_.isSearching() && textsOf_ != revision_) {
        texts_.clear();
        for (const LibraryItem& item : items) texts_.push_back(ReviewFilter::textOf(item));
        textsOf_ = revision_;
    }
    std::vector<ReviewRow> rows;
    std::vector<QString> keys;
    rows.reserve(items.size());
    keys.reserve(items.size());
    static const std::string none;
    for (std::size_t i = 0; i < items.size(); ++i) {
        ReviewRow row = ReviewRow::of(items[i], model_);
        // A row that somebody is at doesn't vanish below the hand.
        const bool stays = stay == Stay::selected && selected_.contains(row.key);
        const bool ready = row.is == ReviewRow::State::ready;
        if (!stays && !filter_.takes(ready, filter_.isSearching() ? texts_[i] : none)) continue;
        keys.push_back(row.key);
        rows.push_back(std::move(row));
    }
    selected_.setKeys(std::move(keys), goOn);
    for (ReviewRow& row : rows) row.selected = selected_.contains(row.key);
    rows_.set(std::move(rows));
}

void ReviewModel::setFilter(int filter) {
    filter_.setVerdicts(static_cast<ReviewFilter::Verdicts>(std::clamp(filter, 0, 2)));
    makeRows(Stay::nothing, false);
    tellSelection();
    refreshShown();
}

void ReviewModel::setQuery(const QString& query) {
    filter_.setQuery(fromQt(query));
    makeRows(Stay::nothing, false);
    tellSelection();
    refreshShown();
}

QString ReviewModel::scanCount() const {
    return shown_.scanTotal == 0 ? QString()
                                 : tr("%1 of %2").arg(shown_.scanDone).arg(shown_.scanTotal);
}

double ReviewModel::scanFraction() const {
    return shown_.scanTotal == 0 ? -1.0 : static_cast<double>(shown_.scanDone) / shown_.scanTotal;
}

QString ReviewModel::found() const {
    return filter_.isOn() ? tr("%1 of %2").arg(shown_.found).arg(shown_.all) : QString();
}

QString ReviewModel::needsChecking() const {
    if (shown_.needsChecking == 0) return {};
    return (shown_.needsChecking == 1 ? tr("%1 needs checking") : tr("%1 need checking"))
        .arg(shown_.needsChecking);
}

QString ReviewModel::selection() const {
    return shown_.selected > 1 ? tr("%1 selected").arg(shown_.selected) : QString();
}

QString ReviewModel::acceptText() const {
    return shown_.selected > 1 ? tr("Accept These") : tr("Accept This");
}

QString ReviewModel::nothingHere() const {
    if (shown_.isEmpty || shown_.found > 0) return {};
    if (filter_.isSearching()) return tr("Nothing here has these words");
    return filter_.verdicts() == ReviewFilter::Verdicts::ready ? tr("Nothing is ready yet")
                                                               : tr("Nothing needs a look");
}

const LibraryItem* ReviewModel::itemAt(int row) const {
    if (row < 0 || row >= rows_.count()) return nullptr;
    return model_.item(ReviewRow::itemOf(rows_.at(row).key));
}

void ReviewModel::forSelected(const std::function<void(const LibraryItem&)>& visit) const {
    for (const int row : selected_.rows())
        if (const LibraryItem* item = itemAt(row)) visit(*item);
}

bool ReviewModel::anyToAccept() const {
    bool any = false;
    forSelected([&](const LibraryItem& item) {
        any = any || std::ranges::any_of(item.files, [&](const ResolvedFile& file) {
                  return file.match && !model_.isConfirmed(file);
              });
    });
    return any;
}

void ReviewModel::addSelected() {
    std::vector<LibraryItem> items;
    forSelected([&](const LibraryItem& item) { items.push_back(item); });
    if (!items.empty() && !model_.isAdding()) model_.addToQueue(std::move(items));
}

void ReviewModel::addAll() {
    if (canAddAll()) model_.addToQueue(model_.items());
}

void ReviewModel::acceptSelected() {
    std::vector<std::filesystem::path> files;
    forSelected([&](const LibraryItem& item) {
        for (const ResolvedFile& file : item.files)
            if (file.match && !model_.isConfirmed(file)) files.push_back(file.file.url);
    });
    for (const std::filesystem::path& file : files) model_.confirm(file);
    // They are done with: a filter for the doubtful ones shows the next.
    makeRows(Stay::nothing, true);
    tellSelection();
    refreshShown();
}

void ReviewModel::removeSelected() {
    std::vector<std::filesystem::path> files;
    forSelected([&](const LibraryItem& item) {
        for (const ResolvedFile& file : item.files) files.push_back(file.file.url);
    });
    if (!files.empty()) model_.removeFromReview(files);
}

void ReviewModel::refreshSelected() {
    std::vector<std::string> ids;
    forSelected([&](const LibraryItem& item) { ids.push_back(item.id); });
    refreshOneByOne(model_, std::move(ids));
}

void ReviewModel::pickMatch() {
    const LibraryItem* item = itemAt(current());
    if (item == nullptr) return;
    const bool isShown = std::ranges::any_of(item->files, [&](const ResolvedFile& file) {
        return model_.inspectorFile == file.file.url;
    });
    model_.matchPickerURL = isShown ? *model_.inspectorFile : item->files.front().file.url;
    tellOthers();
}

void ReviewModel::showInspector() {
    if (current() < 0) return;
    model_.inspectorShown = true;
    tellOthers();
}

QList<QUrl> ReviewModel::selectedFiles() const {
    QList<QUrl> files;
    forSelected([&](const LibraryItem& item) {
        for (const ResolvedFile& file : item.files) files << FileAddress::of(file.file.url);
    });
    return files;
}

void ReviewModel::cancelScan() {
    model_.cancelScan();
}

void ReviewModel::resumeUnfinished() {
    model_.resumeUnfinished();
}

void ReviewModel::discardUnfinished() {
    model_.discardUnfinished();
}

}  // namespace marlet
