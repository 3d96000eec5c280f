#include "screens/desktop/file_manager.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDesktopServices>
#include <QStringList>

namespace marlet::FileManager {

void show(const QList<QUrl>& files, const QDBusConnection& bus) {
    if (files.isEmpty()) return;
    QStringList addresses;
    for (const QUrl& file : files) addresses << QString::fromLatin1(file.toEncoded());
    QDBusMessage call = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.FileManager1"),
        QStringLiteral("/org/freedesktop/FileManager1"),
        QStringLiteral("org.freedesktop.FileManager1"), QStringLiteral("ShowItems"));
    call << addresses << QString();
    auto* const watcher = new QDBusPendingCallWatcher(bus.asyncCall(call));
    const QUrl folder = files.first().adjusted(QUrl::RemoveFilename);
    QObject::connect(watcher, &QDBusPendingCallWatcher::finished, watcher, [watcher, folder] {
        if (watcher->isError()) QDesktopServices::openUrl(folder);
        watcher->deleteLater();
    });
}

}  // namespace marlet::FileManager
