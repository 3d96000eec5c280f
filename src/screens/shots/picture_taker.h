#pragma once

#include <QQuickWindow>
#include <QString>
#include <filesystem>

#include "sources/async.h"

namespace marlet {

/// Takes pictures of the window, each when nothing loads or moves any more.
class PictureTaker {
public:
    enum class Watcher { No, Yes };
    /// With a watcher, "NAME.req" beside each picture tells somebody outside that the window shows
    /// it now, and the run goes on when "NAME.done" is there, or after half a minute.
    PictureTaker(QQuickWindow& window, Watcher watcher);

    /// Ends when everything that is shown has loaded, or after some seconds.
    Task<> settle();
    /// Writes a PNG, with the folders that it needs; of the whole window, or of the sheet of that
    /// object name. False when it can't be written.
    Task<bool> take(std::filesystem::path file, QString sheet = {});

private:
    QImage grab(const QString& sheet) const;
    Task<> tellWatcher(std::filesystem::path file);

    QQuickWindow& window_;
    Watcher watcher_;
};

}  // namespace marlet
