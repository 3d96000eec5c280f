#include "screens/inspector/inspector_model.h"

#include <algorithm>
#include <utility>

#include "app/app_model.h"
#include "screens/base/qt_text.h"

namespace marlet {

namespace {

struct State {
    const char* name;
    const char* words;
};

State stateOf(const AppModel& model, const ResolvedFile& file) {
    if (!file.match) return {"none", QT_TRANSLATE_NOOP("marlet::InspectorModel", "Needs a look")};
    if (!model.isConfirmed(file))
        return {"look", QT_TRANSLATE_NOOP("marlet::InspectorModel", "Check this")};
    return {"ready", QT_TRANSLATE_NOOP("marlet::InspectorModel", "Ready")};
}

QString twoDigits(int number) {
    return QStringLiteral("%1").arg(number, 2, 10, QLatin1Char('0'));
}

}  // namespace

InspectorModel::InspectorModel(AppModel& model, QObject* parent)
    : ScreenPart(parent),
      model_(model),
      present_([this] { refresh(); }),
      details_(model),
      tracks_(model),
      artwork_(model) {}

void InspectorModel::refresh() {
    const Inspected now = inspected();
    file_ = now.file ? std::optional(now.file->file.url) : std::nullopt;
    itemID_ = now.item ? std::optional(now.item->id) : std::nullopt;
    episodes_.set(episodesOf(now));
    details_.refresh(now);
    tracks_.refresh(now);
    artwork_.refresh(now);
    compare_.refresh(now);
    if (take(shown_, headOf(now))) Q_EMIT changed();
}

Inspected InspectorModel::inspected() {
    Inspected now;
    now.item = model_.reviewID ? model_.item(*model_.reviewID) : nullptr;
    if (!now.item || now.item->files.empty()) {
        present_.forget();
        return {};
    }
    const auto& files = now.item->files;
    const auto found = std::ranges::find_if(
        files, [&](const ResolvedFile& file) { return model_.inspectorFile == file.file.url; });
    now.file = found == files.end() ? &files.front() : &*found;
    now.draft = std::as_const(model_).drafts().find(now.file->file.url);
    // Nobody looks: nothing is read.
    if (model_.inspectorShown) now.present = present_.of(now.file->file);
    return now;
}

InspectorModel::Shown InspectorModel::headOf(const Inspected& now) const {
    Shown shown;
    shown.page = std::clamp(model_.inspectorPage, 0, 2);
    if (!now.file) return shown;
    const ResolvedFile& file = *now.file;
    const State state = stateOf(model_, file);
    shown.empty = false;
    shown.fileName = nameToShow(file.file.url.filename());
    shown.state = QLatin1String(state.name);
    shown.verdict = tr(state.words);
    for (const std::string& reason : file.verdict.reasons()) shown.reasons << toQt(reason);
    shown.canConfirm = file.match && !model_.isConfirmed(file);
    shown.loading = std::as_const(model_).drafts().isLoading(file.file.url);
    shown.hasDraft = now.draft != nullptr;
    shown.failed = file.match && !now.draft && !shown.loading;
    if (now.item->season || now.item->files.size() > 1)
        shown.episode = static_cast<int>(now.file - now.item->files.data());
    if (file.match) {
        showMatch(file, shown);
    } else {
        shown.match = tr("Not matched yet");
        shown.pickText = tr("Find the Match…");
    }
    return shown;
}

void InspectorModel::showMatch(const ResolvedFile& file, Shown& shown) const {
    const Match& match = *file.match;
    QString what = toQt(match.title);
    if (match.year) what += QStringLiteral(" (%1)").arg(*match.year);
    if (match.season && match.episode)
        what +=
            QStringLiteral(" · S%1E%2").arg(twoDigits(*match.season), twoDigits(*match.episode));
    shown.match = what;
    shown.pickText = tr("Choose Another Match…");
    if (match.byHand()) {
        shown.source = tr("Tagged by hand");
        return;
    }
    shown.source = tr("Source: %1").arg(toQt(displayName(match.sourceID())));
    if (match.sourceID() != SourceID::tmdb)
        shown.apple = tr("The title, description, cast and artwork come from Apple");
}

std::vector<EpisodeRow> InspectorModel::episodesOf(const Inspected& now) const {
    std::vector<EpisodeRow> rows;
    if (!now.item || (!now.item->season && now.item->files.size() < 2)) return rows;
    for (const ResolvedFile& file : now.item->files) rows.push_back(episodeOf(file));
    return rows;
}

EpisodeRow InspectorModel::episodeOf(const ResolvedFile& file) const {
    EpisodeRow row;
    // Bytes of any kind, each path with a text of its own.
    row.key = QString::fromLatin1(QByteArray::fromStdString(file.file.url.string()));
    const FileDraft* draft = std::as_const(model_).drafts().find(file.file.url);
    QString title = draft ? toQt(draft->details.title) : QString();
    if (title.isEmpty() && file.match) title = toQt(file.match->episodeTitle);
    if (file.match && file.match->season && file.match->episode)
        row.title = QStringLiteral("S%1E%2 · %3")
                        .arg(twoDigits(*file.match->season), twoDigits(*file.match->episode),
                             title.isEmpty() ? toQt(file.file.url.stem()) : title);
    else
        row.title = toQt(file.file.url.filename());
    const State state = stateOf(model_, file);
    row.state = QLatin1String(state.name);
    row.verdict = tr(state.words);
    return row;
}

void InspectorModel::chooseEpisode(int row) {
    const LibraryItem* item = itemID_ ? model_.item(*itemID_) : nullptr;
    if (!item || row < 0 || row >= static_cast<int>(item->files.size())) return;
    model_.inspectorFile = item->files[static_cast<std::size_t>(row)].file.url;
    refresh();
}

void InspectorModel::confirm() {
    if (file_ && shown_.canConfirm) model_.confirm(*file_);
}

void InspectorModel::openPicker() {
    if (!file_) return;
    model_.matchPickerURL = *file_;
    if (model_.onChanged) model_.onChanged();
}

void InspectorModel::loadAgain() {
    if (const LibraryItem* item = itemID_ ? model_.item(*itemID_) : nullptr)
        model_.loadDrafts(*item);
}

void InspectorModel::setPage(int page) {
    model_.inspectorPage = page;
    refresh();
}

}  // namespace marlet
