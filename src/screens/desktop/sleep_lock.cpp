#include "screens/desktop/sleep_lock.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <utility>

namespace marlet {

SleepLock::SleepLock(Buses buses, QObject* parent) : QObject(parent), buses_(std::move(buses)) {}

void SleepLock::hold(bool on, const QString& why) {
    if (std::exchange(wanted_, on) == on) return;
    lock_ = {};
    if (on) ask(why);
}

void SleepLock::ask(const QString& why) {
    QDBusMessage call = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.login1"), QStringLiteral("/org/freedesktop/login1"),
        QStringLiteral("org.freedesktop.login1.Manager"), QStringLiteral("Inhibit"));
    call << QStringLiteral("shutdown:sleep:idle") << QStringLiteral("Marlet") << why
         << QStringLiteral("block");
    const int mine = ++asked_;
    auto* const watcher = new QDBusPendingCallWatcher(buses_.system().asyncCall(call), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher, mine] {
        const QDBusPendingReply<QDBusUnixFileDescriptor> answer = *watcher;
        // One that comes after the run has ended is given back with the answer.
        if (answer.isValid() && wanted_ && mine == asked_) lock_ = answer.value();
        watcher->deleteLater();
    });
}

}  // namespace marlet
