#include "screens/history/history_line.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QLocale>
#include <filesystem>

#include "foundation/text.h"
#include "screens/base/file_address.h"
#include "screens/base/qt_text.h"
#include "screens/pictures/art_address.h"

namespace marlet {

QString HistoryLine::title() const {
    return toQt(row->title);
}

QString HistoryLine::sub() const {
    return toQt(row->sub);
}

QString HistoryLine::line() const {
    return toQt(row->line);
}

QString HistoryLine::time() const {
    const QDateTime when = QDateTime::fromSecsSinceEpoch(row->time.time_since_epoch().count());
    return QLocale::system().toString(when.time(), QLocale::ShortFormat);
}

QString HistoryLine::kind() const {
    if (row->done) return QStringLiteral("done");
    return row->told().result == "skipped" ? QStringLiteral("skipped") : QStringLiteral("failed");
}

QString HistoryLine::poster() const {
    for (const HistoryEntry& entry : row->entries)
        if (entry.posterPath) return ArtAddress::saved(*entry.posterPath);
    return {};
}

QString HistoryLine::otherPoster() const {
    for (const HistoryEntry& entry : row->entries) {
        if (!entry.posterPath) continue;
        // A picture of the catalogue is saved under its address with each "/" as "_".
        const std::string name = std::filesystem::path(*entry.posterPath).filename().string();
        const bool isAddress = Text::startsWith(name, "_") && !Text::startsWith(name, "__");
        return isAddress ? ArtAddress::remote("/" + name.substr(1), "w342") : QString();
    }
    return {};
}

QString HistoryLine::spoken() const {
    QStringList pieces{title(), sub(), line(), time()};
    pieces.removeAll(QString());
    return pieces.join(QStringLiteral(", "));
}

QList<QUrl> HistoryLine::files() const {
    QList<QUrl> files;
    for (const HistoryEntry& entry : row->entries)
        if (const QUrl file = FileAddress::of(entry.path); !files.contains(file)) files << file;
    return files;
}

bool HistoryLine::isOf(const HistoryList& entries) const {
    return row->entries.shared() == entries.shared();
}

bool HistoryLine::operator==(const HistoryLine& other) const {
    return key == other.key && day == other.day && open == other.open && details == other.details &&
           restorable == other.restorable && other.isOf(row->entries);
}

}  // namespace marlet
