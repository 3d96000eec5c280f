#include "screens/picker/picker_model.h"

#include <algorithm>
#include <cmath>

#include "app/app_model.h"
#include "screens/base/qt_text.h"
#include "sources/source_settings.h"

namespace marlet {

PickerModel::PickerModel(AppModel& model, QObject* parent)
    : ScreenPart(parent), model_(model), hand_(new HandForm(model, this)) {
    for (const SourceID id : {SourceID::tmdb, SourceID::appleTV, SourceID::itunes}) {
        all_.push_back(new PickerPane(id, model, this));
        connect(all_.back(), &PickerPane::taken, this, &PickerModel::close);
    }
    active_ = {all_.front()};
    connect(hand_, &HandForm::taken, this, &PickerModel::close);
}

void PickerModel::refresh() {
    const auto& wanted = model_.matchPickerURL;
    if (!wanted) {
        if (file_) end();
        return;
    }
    auto file = PickerFile::of(model_, *wanted);
    if (!file)
        close();  // it has left Review
    else if (!file_ || file_->url != *wanted)
        begin(std::move(*file));
}

void PickerModel::begin(PickerFile file) {
    file_ = std::move(file);
    hand_->back();
    active_.clear();
    for (const SourceID id : SourceSettings::active())
        for (PickerPane* pane : all_)
            if (pane->id() == id) active_.push_back(pane);
    if (active_.empty()) active_ = {all_.front()};
    for (PickerPane* pane : all_) pane->start(*file_, file_->tv);
    tab_ = firstTab();
    Q_EMIT tabsChanged();
    pane()->enter(file_->tv, {});
    Q_EMIT changed();
}

/// That of the source which the match is from; else TMDB, which is the quickest to ask.
int PickerModel::firstTab() const {
    const SourceID wanted = file_->match ? file_->match->sourceID() : SourceID::tmdb;
    const auto tabOf = [&](SourceID id) {
        return std::find_if(active_.begin(), active_.end(),
                            [&](const PickerPane* pane) { return pane->id() == id; });
    };
    auto found = tabOf(wanted);
    if (found == active_.end()) found = tabOf(SourceID::tmdb);
    return found == active_.end() ? 0 : static_cast<int>(found - active_.begin());
}

void PickerModel::end() {
    file_.reset();
    for (PickerPane* pane : all_) pane->stop();
    hand_->back();
    Q_EMIT changed();
}

QString PickerModel::fileName() const {
    return file_ ? nameToShow(file_->url.filename()) : QString();
}

QString PickerModel::fileFacts() const {
    if (!file_ || !file_->minutes) return {};
    return tr("%1 min").arg(std::lround(*file_->minutes));
}

QStringList PickerModel::tabs() const {
    QStringList names;
    for (const PickerPane* pane : active_) names += pane->name();
    return names;
}

PickerPane* PickerModel::pane() const {
    return active_[static_cast<std::size_t>(tab_)];
}

void PickerModel::setTab(int tab) {
    if (!file_ || tab < 0 || tab >= static_cast<int>(active_.size()) || tab == tab_) return;
    const PickerPane* before = pane();
    const bool tv = before->isTV();
    const QString typed = before->typed();
    tab_ = tab;
    pane()->enter(tv, typed);
    Q_EMIT changed();
}

void PickerModel::tagByHand() {
    if (!file_) return;
    PickerPane& from = *pane();
    HandForm::Start start;
    start.tv = from.isTV();
    start.title = fromQt(from.query().simplified());
    if (const auto& show = from.show()->shown()) {
        start.title = show->title;
        start.year = show->year;
        start.season = from.show()->seasonNumber();
        if (from.isDatabase()) {
            start.tmdbID = std::stoll(show->id);
            start.poster = show->poster;
        }
    }
    hand_->begin(*file_, std::move(start));
}

void PickerModel::back() {
    if (hand_->isOpen())
        hand_->back();
    else if (pane()->show()->isOpen())
        pane()->show()->close();
    else
        close();
}

void PickerModel::close() {
    model_.matchPickerURL.reset();
    if (file_) end();
}

}  // namespace marlet
