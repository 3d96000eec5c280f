#pragma once

#include <QDBusConnection>
#include <functional>

namespace marlet {

/// The message buses, connected when they are first needed. Where there is none, calls fail and
/// nobody is told: what they are for isn't there either.
struct Buses {
    std::function<QDBusConnection()> session = &QDBusConnection::sessionBus;
    std::function<QDBusConnection()> system = &QDBusConnection::systemBus;
};

}  // namespace marlet
