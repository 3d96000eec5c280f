#include "screens/picker/picker_text.h"

#include <QCoreApplication>
#include <QDate>
#include <QLocale>
#include <QStringList>

#include "screens/base/qt_text.h"
#include "screens/pictures/art_address.h"

namespace marlet::PickerText {

namespace {

QString tr(const char* text) {
    return QCoreApplication::translate("PickerText", text);
}

void addMinutes(QStringList& facts, std::optional<int> minutes) {
    if (minutes && *minutes > 0) facts += tr("%1 min").arg(*minutes);
}

QString joined(const QStringList& pieces) {
    return pieces.join(QStringLiteral(" · "));
}

QString spoken(QStringList pieces) {
    pieces.removeAll({});
    return pieces.join(QStringLiteral(", "));
}

}  // namespace

QString facts(const PickerTitle& title) {
    QStringList facts;
    if (title.year) facts += QString::number(*title.year);
    addMinutes(facts, title.runtime);
    if (title.seasons == 1) facts += tr("1 season");
    if (title.seasons > 1) facts += tr("%1 seasons").arg(*title.seasons);
    return joined(facts);
}

QString facts(const PickerEpisode& episode) {
    QStringList facts;
    addMinutes(facts, episode.runtime);
    const QDate date = QDate::fromString(toQt(episode.date), Qt::ISODate);
    if (date.isValid()) facts += QLocale::system().toString(date, QStringLiteral("d MMM yyyy"));
    return joined(facts);
}

QString seasonName(int season) {
    return season == 0 ? tr("Specials") : tr("Season %1").arg(season);
}

PickerTitleRow row(const PickerTitle& title, bool fits) {
    PickerTitleRow row;
    row.key = toQt(title.id);
    row.title = toQt(title.title);
    row.facts = facts(title);
    row.overview = toQt(title.overview);
    row.poster = ArtAddress::remote(title.poster, "w185");
    row.fits = fits;
    row.spoken = spoken({row.title, row.facts, fits ? tr("fits this file's length") : QString()});
    return row;
}

PickerEpisodeRow row(const PickerEpisode& episode, bool withSeason, const QString& file) {
    PickerEpisodeRow row;
    row.key = QStringLiteral("%1-%2").arg(episode.season).arg(episode.number);
    row.number = QString::number(episode.number);
    if (withSeason)
        row.number = QStringLiteral("S%1E%2")
                         .arg(episode.season, 2, 10, QLatin1Char('0'))
                         .arg(episode.number, 2, 10, QLatin1Char('0'));
    row.title = toQt(episode.title);
    if (row.title.isEmpty()) row.title = tr("Episode %1").arg(episode.number);
    row.facts = facts(episode);
    row.still = ArtAddress::remote(episode.still, "w300");
    row.file = file;
    const QString place = tr("%1, episode %2").arg(seasonName(episode.season)).arg(episode.number);
    row.spoken = spoken({place, row.title, row.facts,
                         file.isEmpty() ? file : tr("this is what %1 says").arg(file)});
    return row;
}

}  // namespace marlet::PickerText
