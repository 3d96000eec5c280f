#include "screens/picker/picker_pane.h"

#include <algorithm>

#include "identify/lengths.h"
#include "screens/base/qt_text.h"
#include "screens/picker/picker_text.h"

namespace marlet {

namespace {

constexpr int pauseMs = 350;
/// Full records that a service with a limit is asked for at one search.
constexpr std::size_t fewRecords = 4;
constexpr std::size_t allRecords = 1000;

}  // namespace

PickerPane::PickerPane(SourceID id, AppModel& model, QObject* parent)
    : PickerAsker(model, parent),
      source_(PickerSource::make(id, model)),
      show_(model, *source_, this) {
    pause_.setSingleShot(true);
    pause_.setInterval(pauseMs);
    connect(&pause_, &QTimer::timeout, this, &PickerPane::search);
    connect(&show_, &PickerShow::taken, this, &PickerPane::taken);
}

PickerPane::~PickerPane() {
    blockSignals(true);
    stop();
}

QString PickerPane::name() const {
    return toQt(displayName(id()));
}

QString PickerPane::prompt() const {
    return isDatabase() ? tr("Search the database") : tr("Search %1").arg(name());
}

QString PickerPane::foot() const {
    switch (id()) {
        case SourceID::appleTV:
            return tr("Details and artwork from Apple");
        case SourceID::itunes:
            return tr("Details and artwork from Apple's iTunes Store");
        case SourceID::tmdb:
            break;
    }
    return {};
}

QString PickerPane::nothingTitle() const {
    return isDatabase() ? tr("Nothing found") : tr("Nothing found on %1").arg(name());
}

QString PickerPane::nothingLine() const {
    return isDatabase() ? tr("Try fewer words, or the title as it appears on the poster.")
                        : tr("Try fewer words, or look in another tab.");
}

bool PickerPane::isNothing() const {
    return isFound_ && titles_.empty() && failure().isEmpty();
}

void PickerPane::start(const PickerFile& file, bool tv) {
    stop();
    file_ = file;
    tv_ = tv;
    wasTyped_ = false;
    isSearched_ = false;
    isFound_ = false;
    query_ = toQt(tv ? file.show : file.film);
    titles_.clear();
    clearFailure();
    showTitles();
}

void PickerPane::stop() {
    pause_.stop();
    renew(searching_);
    renew(taking_);
    show_.close();
}

void PickerPane::enter(bool tv, const QString& typed) {
    const bool isOther = tv_ != tv || (!typed.isEmpty() && typed != query_);
    tv_ = tv;
    if (!typed.isEmpty()) {
        query_ = typed;
        wasTyped_ = true;
    } else if (!wasTyped_) {
        query_ = toQt(tv ? file_.show : file_.film);
    }
    if (isOther || !isSearched_) search();
}

void PickerPane::setTV(bool tv) {
    if (tv_ == tv) return;
    tv_ = tv;
    if (!wasTyped_) query_ = toQt(tv ? file_.show : file_.film);
    search();
}

void PickerPane::type(const QString& words) {
    if (query_ == words) return;
    query_ = words;
    wasTyped_ = true;
    if (isDatabase()) pause_.start();
    Q_EMIT changed();
}

void PickerPane::search() {
    pause_.stop();
    isSearched_ = true;
    isFound_ = false;
    clearFailure();
    show_.close();
    renew(taking_);
    filling_.clear();
    titles_.clear();
    result_ = -1;
    const CancelToken cancel = renew(searching_);
    const QString words = query_.simplified();
    showTitles();
    if (!words.isEmpty()) find(words, tv_, cancel);
}

Task<> PickerPane::find(QString words, bool tv, CancelToken cancel) {
    const Waiting waiting(*this);
    try {
        auto asking = source_->find(fromQt(words), tv, cancel);
        auto found = co_await asking;
        cancel.check();
        takeOver(std::move(found));
        isFound_ = true;
        preselect();
        showTitles();
    } catch (const std::exception& error) {
        if (!cancel.isCancelled()) fail(error);
    }
}

/// One that a source names twice is one row.
void PickerPane::takeOver(std::vector<PickerTitle> found) {
    std::set<std::string> known;
    titles_.clear();
    for (PickerTitle& title : found)
        if (known.insert(title.id).second) titles_.push_back(std::move(title));
}

/// What the file is taken for now, else what the source thinks likeliest.
void PickerPane::preselect() {
    result_ = titles_.empty() ? -1 : 0;
    if (!isDatabase() || !file_.match) return;
    const std::string now = std::to_string(file_.match->tmdbID);
    for (std::size_t row = 0; row < titles_.size(); ++row)
        if (titles_[row].id == now) result_ = static_cast<int>(row);
}

bool PickerPane::fits(const PickerTitle& title) const {
    return !tv_ && Lengths::fits(file_.minutes, title.runtime, Lengths::film) == true;
}

void PickerPane::showTitles() {
    std::vector<PickerTitleRow> rows;
    for (const PickerTitle& title : titles_) rows.push_back(PickerText::row(title, fits(title)));
    rows_.set(std::move(rows));
    Q_EMIT changed();
}

std::size_t PickerPane::mostFilled() const {
    return isDatabase() ? allRecords : fewRecords;
}

void PickerPane::seen(int row) {
    if (row < 0 || row >= rows_.count()) return;
    const QString key = rows_.at(row).key;
    // Not while the view still makes its rows: a saved record is there at once and changes them.
    QMetaObject::invokeMethod(
        this, [this, key] { fillRow(key); }, Qt::QueuedConnection);
}

void PickerPane::fillRow(const QString& key) {
    const int row = rows_.indexOf(key);
    if (row < 0) return;
    const PickerTitle& title = titles_[static_cast<std::size_t>(row)];
    if (title.isFull || filling_.size() >= mostFilled()) return;
    if (filling_.insert(title.id).second) fill(title, tv_, searching_);
}

Task<> PickerPane::fill(PickerTitle title, bool tv, CancelToken cancel) {
    try {
        auto asking = source_->full(std::move(title), tv, cancel);
        PickerTitle full = co_await asking;
        if (cancel.isCancelled()) co_return;
        for (PickerTitle& each : titles_)
            if (each.id == full.id) each = full;
        showTitles();
    } catch (const std::exception&) {
        // A row without its length is a row all the same.
    }
}

void PickerPane::setResult(int row) {
    const int chosen = row >= 0 && row < rows_.count() ? row : -1;
    if (result_ == chosen) return;
    result_ = chosen;
    Q_EMIT changed();
}

bool PickerPane::canUse() const {
    return result_ >= 0 && result_ < rows_.count();
}

void PickerPane::use() {
    if (!canUse()) return;
    const PickerTitle& title = titles_[static_cast<std::size_t>(result_)];
    if (tv_)
        show_.start(file_, title);
    else
        take(title, renew(taking_));
    Q_EMIT changed();
}

void PickerPane::take(PickerTitle film, CancelToken cancel) {
    choose([this, film = std::move(film),
            cancel] { return source_->takeFilm(file_.url, film, cancel); },
           cancel);
}

}  // namespace marlet
