#include "screens/review/review_row.h"

#include <QCoreApplication>
#include <QStringList>
#include <algorithm>

#include "app/app_model.h"
#include "identify/scanner.h"
#include "screens/base/qt_text.h"
#include "screens/pictures/art_address.h"

namespace marlet {

namespace {

QString tr(const char* text) {
    return QCoreApplication::translate("ReviewRow", text);
}

bool isReady(const ResolvedFile& file, const AppModel& model) {
    return file.match && model.isConfirmed(file);
}

QString seasonName(const LibraryItem& item) {
    if (!item.season) return {};
    return *item.season == 0 ? tr("Specials") : tr("Season %1").arg(*item.season);
}

QString episodeCount(int count) {
    return (count == 1 ? tr("%1 episode") : tr("%1 episodes")).arg(count);
}

/// The first reason of the first file that asks for a look.
QString firstReason(const LibraryItem& item, const AppModel& model) {
    for (const ResolvedFile& file : item.files)
        if (!isReady(file, model) && !file.verdict.reasons().empty())
            return toQt(file.verdict.reasons().front());
    return {};
}

void describe(ReviewRow& row, const LibraryItem& item, const AppModel& model) {
    QStringList parts;
    if (row.series) parts = {seasonName(item), episodeCount(row.files)};
    if (row.toLookAt > 0) parts << firstReason(item, model);
    parts.removeAll(QString());
    row.line = parts.join(QStringLiteral(" · "));
    if (!row.line.isEmpty()) return;
    row.lineIsName = true;
    row.line = nameToShow(item.files.front().file.url.filename());
}

}  // namespace

ReviewRow ReviewRow::of(const LibraryItem& item, const AppModel& model) {
    ReviewRow row;
    row.key = keyOf(item.id);
    row.title = toQt(item.title);
    if (item.year.value_or(0) > 0) row.year = QString::number(*item.year);
    row.posterPath = item.posterPath.value_or("");
    row.series = item.kind == MediaKind::tv;
    row.files = static_cast<int>(item.files.size());
    bool anyMatched = false;
    for (const ResolvedFile& file : item.files) {
        if (isReady(file, model)) continue;
        row.toLookAt++;
        anyMatched = anyMatched || file.match;
    }
    if (row.toLookAt > 0) row.is = anyMatched ? State::look : State::none;
    row.becomesM4V = std::ranges::all_of(item.files, [](const ResolvedFile& file) {
        return Scanner::extensionOf(file.file.url) == "mkv";
    });
    describe(row, item, model);
    return row;
}

QString ReviewRow::keyOf(const std::string& itemID) {
    return QString::fromLatin1(itemID.data(), static_cast<qsizetype>(itemID.size()));
}

std::string ReviewRow::itemOf(const QString& key) {
    return key.toLatin1().toStdString();
}

QString ReviewRow::sign() const {
    if (is == State::ready) return QStringLiteral("ready");
    return is == State::look ? QStringLiteral("look") : QStringLiteral("none");
}

QString ReviewRow::verdict() const {
    if (is == State::ready) return tr("Ready");
    if (series)
        return (toLookAt == 1 ? tr("%1 episode needs a look") : tr("%1 episodes need a look"))
            .arg(toLookAt);
    return is == State::look ? tr("Check this") : tr("Needs a look");
}

QString ReviewRow::poster() const {
    return posterPath.empty() ? QString() : ArtAddress::remote(posterPath, "w185");
}

QString ReviewRow::badge() const {
    return becomesM4V ? tr("MKV, will become M4V") : QString();
}

QString ReviewRow::spoken() const {
    QStringList parts{year.isEmpty() ? title : tr("%1, %2").arg(title, year), verdict(), line,
                      badge()};
    parts.removeAll(QString());
    return parts.join(QStringLiteral(". "));
}

}  // namespace marlet
