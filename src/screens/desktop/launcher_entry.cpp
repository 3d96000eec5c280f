#include "screens/desktop/launcher_entry.h"

#include <QDBusMessage>
#include <QVariantMap>
#include <algorithm>
#include <utility>

#include "foundation/paths.h"
#include "screens/base/qt_text.h"

namespace marlet {

namespace {

constexpr auto usualPause = std::chrono::milliseconds(250);

}  // namespace

LauncherEntry::LauncherEntry(Buses buses, QObject* parent)
    : QObject(parent), buses_(std::move(buses)) {
    pause_.setSingleShot(true);
    setPause(usualPause);
    connect(&pause_, &QTimer::timeout, this, [this] {
        if (const auto next = std::exchange(next_, std::nullopt)) show(*next);
    });
}

void LauncherEntry::show(double fraction) {
    fraction = std::clamp(fraction, 0.0, 1.0);
    if (pause_.isActive()) {
        next_ = fraction;
        return;
    }
    if (shown_ == fraction) return;
    shown_ = fraction;
    send(fraction, true);
    pause_.start();
}

void LauncherEntry::clear() {
    pause_.stop();
    next_.reset();
    if (std::exchange(shown_, std::nullopt)) send(0, false);
}

void LauncherEntry::send(double fraction, bool visible) {
    const QDBusConnection bus = buses_.session();
    if (!bus.isConnected()) return;
    QDBusMessage update = QDBusMessage::createSignal(
        QStringLiteral("/com/canonical/unity/launcherentry/marlet"),
        QStringLiteral("com.canonical.Unity.LauncherEntry"), QStringLiteral("Update"));
    update << QStringLiteral("application://%1.desktop").arg(toQt(Paths::applicationID()))
           << QVariantMap{{QStringLiteral("progress"), fraction},
                          {QStringLiteral("progress-visible"), visible}};
    bus.send(update);
}

}  // namespace marlet
