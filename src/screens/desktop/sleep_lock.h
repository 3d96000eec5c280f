#pragma once

#include <QDBusUnixFileDescriptor>
#include <QObject>
#include <functional>

#include "screens/desktop/buses.h"

namespace marlet {

/// Keeps the computer awake (logind's Inhibit, "block"): it neither falls asleep nor is shut down
/// without a word. The lock is a descriptor, so it is given back however the program ends.
class SleepLock : public QObject {
public:
    explicit SleepLock(Buses buses, QObject* parent = nullptr);
    /// `why` is what the system tells the person who wants to shut it down.
    void hold(bool on, const QString& why);
    bool isHeld() const { return lock_.isValid(); }

private:
    void ask(const QString& why);

    Buses buses_;
    bool wanted_ = false;
    int asked_ = 0;
    QDBusUnixFileDescriptor lock_;
};

}  // namespace marlet
