#include "screens/inspector/inspector_tracks.h"

#include <algorithm>
#include <utility>

#include "foundation/languages.h"
#include "foundation/text.h"
#include "screens/base/qt_text.h"

namespace marlet {

namespace {

QString pictureName(const std::string& codecID) {
    if (Text::startsWith(codecID, "V_MPEGH/ISO/HEVC")) return QStringLiteral("HEVC");
    if (Text::startsWith(codecID, "V_MPEG4/ISO/AVC")) return QStringLiteral("H.264");
    return toQt(Text::startsWith(codecID, "V_") ? codecID.substr(2) : codecID);
}

/// A person who asked for these languages has no use for the others.
bool isOther(const ConvertPlan& plan, const std::string& language) {
    return language != "und" && !language.empty() && !plan.keepLanguages.empty() &&
           std::ranges::none_of(plan.keepLanguages, [&](const std::string& kept) {
               return Lang::same(kept, language);
           });
}

}  // namespace

InspectorTracks::InspectorTracks(AppModel& model, QObject* parent)
    : QObject(parent), model_(model) {}

void InspectorTracks::refresh(const Inspected& now) {
    const auto file = now.file ? now.file->file.url : std::filesystem::path();
    if (std::exchange(file_, file) != file) open_ = false;
    again();
}

void InspectorTracks::again() {
    Rows rows;
    Shown shown;
    if (!file_.empty()) {
        switch (Inspected::kindOf(file_)) {
            case Inspected::Kind::mp4:
                shown = ofMP4(rows);
                break;
            case Inspected::Kind::mov:
                shown.container = QStringLiteral("mov");
                shown.foot =
                    tr("A QuickTime file is copied track for track into a new .m4v. "
                       "Nothing is converted.");
                break;
            case Inspected::Kind::mkv:
                shown = ofMKV(rows);
                break;
        }
    }
    sounds_.set(std::move(rows.sounds));
    subtitles_.set(std::move(rows.subtitles));
    if (shown_ != shown) {
        shown_ = std::move(shown);
        Q_EMIT changed();
    }
}

InspectorTracks::Shown InspectorTracks::ofMP4(Rows& rows) {
    Shown shown;
    shown.container = QStringLiteral("mp4");
    const auto* tracks = std::as_const(model_).tracks().find(file_);
    if (!tracks) {
        shown.busy = tr("Reading the tracks…");
        if (std::exchange(reading_, file_) != file_) readTracks(this, file_, life_);
        return shown;
    }
    reading_.clear();
    for (const InPlaceTrack& track : *tracks) {
        auto& list = track.kind == InPlaceTrack::Kind::audio ? rows.sounds : rows.subtitles;
        TrackRow row;
        row.key = QString::number(track.index);
        row.title = toQt(track.label());
        row.keep = track.keep;
        if (!track.keep) row.note = tr("Left out");
        list.push_back(std::move(row));
    }
    const auto first = std::ranges::find_if(*tracks, [](const auto& track) {
        return track.kind == InPlaceTrack::Kind::audio && track.enabled && track.keep;
    });
    if (first != tracks->end() && rows.sounds.size() > 1)
        for (TrackRow& row : rows.sounds) row.playsFirst = row.key == QString::number(first->index);
    if (rows.sounds.empty()) shown.noSounds = tr("No sound tracks.");
    if (rows.subtitles.empty()) shown.noSubtitles = tr("No subtitles in this file.");
    shown.foot =
        tr("Untick a track to leave it out. Marlet then makes a new .m4v and leaves this "
           "file as it is.");
    const auto dropped = static_cast<int>(model_.tracks().dropped(file_).size());
    if (dropped > 0)
        shown.leavesOut =
            (dropped == 1 ? tr("%1 track will be left out of a new .m4v saved in your output "
                               "folder. This file isn't touched, and the picture stays exactly "
                               "the same.")
                          : tr("%1 tracks will be left out of a new .m4v saved in your output "
                               "folder. This file isn't touched, and the picture stays exactly "
                               "the same."))
                .arg(dropped);
    return shown;
}

Task<> InspectorTracks::readTracks(InspectorTracks* self, std::filesystem::path file,
                                   CancelToken life) {
    auto loading = self->model_.tracks().load(file);
    co_await loading;
    if (life.isCancelled()) co_return;
    if (self->file_ == file) self->again();
}

InspectorTracks::Shown InspectorTracks::ofMKV(Rows& rows) {
    Shown shown;
    shown.container = QStringLiteral("mkv");
    const ConvertPlan* plan = model_.plans().find(file_);
    if (!plan) {
        if (model_.plans().isLoading(file_) || std::exchange(reading_, file_) != file_) {
            shown.busy = tr("Reading the tracks…");
            model_.plans().analyse(file_);
        } else {
            shown.refusal = tr("This file can't be read.");
        }
        return shown;
    }
    reading_ = file_;
    showPlan(*plan, shown, rows);
    return shown;
}

void InspectorTracks::showPlan(const ConvertPlan& plan, Shown& shown, Rows& rows) const {
    if (plan.video) shown.picture = pictureName(plan.video->codecID);
    if (!plan.snapshot()) {
        shown.refusal = tr("%1. This file is skipped.").arg(toQt(plan.videoVerdict.message()));
        return;
    }
    shown.pictureNote = tr("Copied as it is");
    showSounds(plan, shown, rows);
    showSubtitles(plan, shown, rows);
    if (const auto progress = model_.plans().analysisProgress(file_)) {
        shown.checked = *progress;
        shown.checking = tr("Checking which subtitles are foreign-parts-only… %1 %")
                             .arg(static_cast<int>(*progress * 100));
    }
    shown.foot = plan.chapters.empty()
                     ? tr("Picture quality stays exactly the same. Cover, description, cast and "
                          "ratings are included.")
                     : tr("Picture quality stays exactly the same. Chapters, cover, description, "
                          "cast and ratings are included.");
}

void InspectorTracks::showSounds(const ConvertPlan& plan, Shown& shown, Rows& rows) const {
    int more = 0;
    for (const AudioChoice& choice : plan.audio) {
        const bool isQuiet = !choice.keep && !choice.touched && !choice.isCommentary &&
                             isOther(plan, choice.track.language);
        more += isQuiet ? 1 : 0;
        if (isQuiet && !open_) continue;
        TrackRow row;
        row.key = QString::number(choice.track.number);
        row.title = toQt(choice.label) + QStringLiteral(" · ") + toQt(choice.codec);
        row.keep = choice.keep;
        row.possible = !choice.unsupportedReason;
        row.playsFirst = choice.keep && choice.isDefault;
        if (choice.unsupportedReason)
            row.note = toQt(*choice.unsupportedReason);
        else if (choice.keep)
            row.note = toQt(choice.becomes);
        else
            row.note = choice.isCommentary ? tr("Commentary, left out") : tr("Left out");
        rows.sounds.push_back(std::move(row));
    }
    if (more > 0)
        shown.moreSounds =
            (more == 1 ? tr("%1 more sound track, left out") : tr("%1 more sound tracks, left out"))
                .arg(more);
    if (rows.sounds.empty() && more == 0) shown.noSounds = tr("No sound tracks.");
}

void InspectorTracks::showSubtitles(const ConvertPlan& plan, Shown& shown, Rows& rows) const {
    int more = 0;
    for (const SubChoice& choice : plan.subs) {
        const bool isQuiet = !choice.keep && !choice.touched && isOther(plan, choice.language);
        more += isQuiet ? 1 : 0;
        if (isQuiet && !open_) continue;
        TrackRow row;
        row.key = toQt(choice.id);
        row.title = toQt(choice.label);
        row.keep = choice.keep;
        row.possible = !choice.unsupportedReason;
        QStringList notes;
        if (choice.unsupportedReason)
            notes << toQt(*choice.unsupportedReason);
        else if (!choice.keep)
            notes << tr("Left out of the new file");
        else if (choice.kind == SubKind::picture)
            notes << tr("text from picture subtitles");
        if (choice.note && choice.kind != SubKind::picture) notes << toQt(*choice.note);
        row.note = notes.join(QStringLiteral(" · "));
        rows.subtitles.push_back(std::move(row));
    }
    if (more > 0)
        shown.moreSubtitles =
            (more == 1 ? tr("%1 other subtitle") : tr("%1 other subtitles")).arg(more);
    if (plan.subs.empty()) shown.noSubtitles = tr("No subtitles in this file.");
}

void InspectorTracks::keepSound(const QString& key, bool keep) {
    if (shown_.container == QLatin1String("mp4"))
        model_.keepTrack(file_, key.toInt(), keep);
    else
        model_.plans().setKeepSound(file_, key.toInt(), keep);
    again();
}

void InspectorTracks::keepSubtitle(const QString& key, bool keep) {
    if (shown_.container == QLatin1String("mp4"))
        model_.keepTrack(file_, key.toInt(), keep);
    else
        model_.plans().setKeepSubtitle(file_, fromQt(key), keep);
    again();
}

void InspectorTracks::setOpen(bool open) {
    if (std::exchange(open_, open) == open) return;
    again();
    Q_EMIT changed();
}

}  // namespace marlet
