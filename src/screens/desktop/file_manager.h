#pragma once

#include <QDBusConnection>
#include <QList>
#include <QUrl>

namespace marlet {

/// The desktop's file manager.
namespace FileManager {

/// Opens the files' folders with the files selected (org.freedesktop.FileManager1); where no file
/// manager knows that, the folder of the first one. Waits for nobody.
void show(const QList<QUrl>& files, const QDBusConnection& bus = QDBusConnection::sessionBus());

}  // namespace FileManager
}  // namespace marlet
