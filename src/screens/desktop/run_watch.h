#pragma once

#include <QObject>
#include <functional>

#include "screens/desktop/launcher_entry.h"
#include "screens/desktop/notifier.h"
#include "screens/desktop/sleep_lock.h"

namespace marlet {

class AppModel;

/// What a run means to the desktop: the computer stays awake, the task bar shows how far it is, and
/// its end is told when nobody looks at the window.
class RunWatch : public QObject {
    Q_OBJECT

public:
    explicit RunWatch(AppModel& model, const Buses& buses = {}, QObject* parent = nullptr);
    /// Reads the queue anew.
    void refresh();

    /// Whether the person has the window before them.
    std::function<bool()> isInFront;
    SleepLock& sleep() { return sleep_; }
    LauncherEntry& launcher() { return launcher_; }

Q_SIGNALS:
    /// A click on the message about the end.
    void queueAsked();

private:
    void tellEnd();

    AppModel& model_;
    SleepLock sleep_;
    LauncherEntry launcher_;
    Notifier notifier_;
    bool running_ = false;
};

}  // namespace marlet
