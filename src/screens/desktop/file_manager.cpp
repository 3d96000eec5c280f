#include "screens/desktop/file_manager.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDesktopServices>
#include <QFileInfo>
#include <QUrl>

namespace marlet::FileManager {

void show(const QStringList& paths, const QDBusConnection& bus) {
    if (paths.isEmpty()) return;
    QStringList addresses;
    for (const QString& path : paths)
        addresses << QUrl::fromLocalFile(path).toString(QUrl::FullyEncoded);
    QDBusMessage call = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.FileManager1"),
        QStringLiteral("/org/freedesktop/FileManager1"),
        QStringLiteral("org.freedesktop.FileManager1"), QStringLiteral("ShowItems"));
    call << addresses << QString();
    auto* const watcher = new QDBusPendingCallWatcher(bus.asyncCall(call));
    const QUrl folder = QUrl::fromLocalFile(QFileInfo(paths.first()).path());
    QObject::connect(watcher, &QDBusPendingCallWatcher::finished, watcher, [watcher, folder] {
        if (watcher->isError()) QDesktopServices::openUrl(folder);
        watcher->deleteLater();
    });
}

}  // namespace marlet::FileManager
