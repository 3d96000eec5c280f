#include "screens/inspector/inspector_compare.h"

#include <utility>

#include "app/settings.h"
#include "foundation/text.h"
#include "screens/base/qt_text.h"
#include "screens/pictures/art_address.h"
#include "write/tag_builder.h"

namespace marlet {

namespace {

struct Line {
    const char* label;
    QString (*text)(const PresentDetails&);
    bool always;  ///< shown though both sides are empty
};

QString numberOf(const std::optional<int>& number) {
    return number ? QString::number(*number) : QString();
}

QString namesOf(const std::vector<std::string>& names) {
    return toQt(Text::join(names, ", "));
}

const Line lines[] = {
    {QT_TRANSLATE_NOOP("marlet::InspectorCompare", "Title"),
     [](const PresentDetails& p) { return toQt(p.details.title); }, true},
    {QT_TRANSLATE_NOOP("marlet::InspectorCompare", "Show"),
     [](const PresentDetails& p) { return toQt(p.details.show); }, false},
    {QT_TRANSLATE_NOOP("marlet::InspectorCompare", "Season"),
     [](const PresentDetails& p) { return numberOf(p.details.season); }, false},
    {QT_TRANSLATE_NOOP("marlet::InspectorCompare", "Episode"),
     [](const PresentDetails& p) { return numberOf(p.details.episode); }, false},
    {QT_TRANSLATE_NOOP("marlet::InspectorCompare", "Description"),
     [](const PresentDetails& p) { return toQt(p.details.description); }, true},
    {QT_TRANSLATE_NOOP("marlet::InspectorCompare", "Long description"),
     [](const PresentDetails& p) { return toQt(p.details.longDescription); }, true},
    {QT_TRANSLATE_NOOP("marlet::InspectorCompare", "Cast"),
     [](const PresentDetails& p) { return namesOf(p.details.cast); }, true},
    {QT_TRANSLATE_NOOP("marlet::InspectorCompare", "Director"),
     [](const PresentDetails& p) { return namesOf(p.details.directors); }, true},
    {QT_TRANSLATE_NOOP("marlet::InspectorCompare", "Writer"),
     [](const PresentDetails& p) { return namesOf(p.details.writers); }, true},
    {QT_TRANSLATE_NOOP("marlet::InspectorCompare", "Genre"),
     [](const PresentDetails& p) { return toQt(p.details.genre); }, true},
    {QT_TRANSLATE_NOOP("marlet::InspectorCompare", "Content rating"),
     [](const PresentDetails& p) { return toQt(p.details.rating); }, true},
    {QT_TRANSLATE_NOOP("marlet::InspectorCompare", "Release date"),
     [](const PresentDetails& p) { return toQt(p.details.releaseDate); }, true},
    {QT_TRANSLATE_NOOP("marlet::InspectorCompare", "Album"),
     [](const PresentDetails& p) { return toQt(p.album); }, false},
    {QT_TRANSLATE_NOOP("marlet::InspectorCompare", "Album artist"),
     [](const PresentDetails& p) { return toQt(p.albumArtist); }, false},
    {QT_TRANSLATE_NOOP("marlet::InspectorCompare", "Track number"),
     [](const PresentDetails& p) { return numberOf(p.track); }, false},
};

/// What the file will say: its own items and the new ones, by the rules of a write.
PresentDetails after(const Inspected& now) {
    std::vector<Atom> fresh = TagBuilder::atoms(now.draft->details, {});
    return PresentDetails::of(now.keepsTags() ? TagBuilder::merge(now.present->atoms, fresh)
                                              : fresh);
}

}  // namespace

void InspectorCompare::refresh(const Inspected& now) {
    Shown shown;
    std::vector<CompareRow> rows;
    if (now.draft && now.present) {
        shown.possible = true;
        const PresentDetails will = after(now);
        int changes = 0;
        for (const Line& line : lines) {
            CompareRow row;
            row.key = QString::fromLatin1(line.label);
            row.label = tr(line.label);
            row.before = line.text(now.present->details);
            row.after = line.text(will);
            row.differs = row.before != row.after;
            if (!line.always && row.before.isEmpty() && row.after.isEmpty()) continue;
            const QString none = tr("nothing");
            row.spoken =
                row.differs
                    ? tr("%1: %2 becomes %3")
                          .arg(row.label, row.before.isEmpty() ? none : row.before,
                               row.after.isEmpty() ? none : row.after)
                    : tr("%1 stays: %2").arg(row.label, row.after.isEmpty() ? none : row.after);
            changes += row.differs ? 1 : 0;
            rows.push_back(std::move(row));
        }
        showCovers(now, shown, changes);
        shown.head = changes == 0 ? tr("Nothing differs from what is in the file now.")
                     : changes == 1
                         ? tr("1 thing differs from what is in the file now.")
                         : tr("%1 things differ from what is in the file now.").arg(changes);
        const int others = now.present->details.others;
        if (now.keepsTags() && others > 0)
            shown.foot = others == 1
                             ? tr("1 other tag of the file stays as it is.")
                             : tr("%1 other tags of the file stay as they are.").arg(others);
        shown.left = tr("In the file now");
        shown.right = now.keepsTags() ? tr("Will be written") : tr("In the new .m4v");
    }
    fields_.set(std::move(rows));
    if (shown_ != shown) {
        shown_ = std::move(shown);
        Q_EMIT changed();
    }
}

void InspectorCompare::showCovers(const Inspected& now, Shown& shown, int& changes) const {
    const bool has = now.present->hasCover;
    if (has) shown.coverBefore = ArtAddress::inFile(now.file->file.url, now.present->stamp);
    const auto style = now.draft->styleOverride.value_or(Settings::artworkStyle());
    shown.wide = style == ArtworkStyle::wide;
    const auto chosen = now.draft->chosen(style);
    if (chosen && !chosen->keepsFiles()) {
        shown.coverAfter = ArtAddress::remote(chosen->path, "w300");
        shown.coverWords = has ? tr("A new cover") : tr("A cover, where there is none now");
        changes++;
    } else if (now.keepsTags() && has) {
        shown.coverAfter = shown.coverBefore;
        shown.coverWords = tr("The cover stays");
    } else {
        shown.coverWords = tr("No cover");
    }
}

}  // namespace marlet
