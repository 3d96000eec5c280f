#include "screens/desktop/notifier.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QVariantMap>
#include <utility>

#include "foundation/paths.h"
#include "screens/base/qt_text.h"

namespace marlet {

namespace {

const QString service = QStringLiteral("org.freedesktop.Notifications");
const QString path = QStringLiteral("/org/freedesktop/Notifications");

}  // namespace

Notifier::Notifier(Buses buses, QObject* parent) : QObject(parent), buses_(std::move(buses)) {}

void Notifier::tell(const QString& title, const QString& body) {
    QDBusConnection bus = buses_.session();
    if (!bus.isConnected()) return;
    if (!std::exchange(listens_, true))
        bus.connect(service, path, service, QStringLiteral("ActionInvoked"), this,
                    SLOT(onAction(uint, QString)));
    const QString id = toQt(Paths::applicationID());
    const QVariantMap hints{{QStringLiteral("desktop-entry"), id},
                            {QStringLiteral("category"), QStringLiteral("transfer.complete")}};
    QDBusMessage call =
        QDBusMessage::createMethodCall(service, path, service, QStringLiteral("Notify"));
    constexpr int desktopsOwnTime = -1;
    call << QStringLiteral("Marlet") << last_ << id << title << body
         << QStringList{QStringLiteral("default"), tr("Show")} << hints << desktopsOwnTime;
    auto* const watcher = new QDBusPendingCallWatcher(bus.asyncCall(call), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher] {
        const QDBusPendingReply<uint> answer = *watcher;
        if (answer.isValid()) last_ = answer.value();
        watcher->deleteLater();
    });
}

void Notifier::onAction(uint id, const QString& action) {
    if (id == last_ && id != 0 && action == QStringLiteral("default")) Q_EMIT clicked();
}

}  // namespace marlet
