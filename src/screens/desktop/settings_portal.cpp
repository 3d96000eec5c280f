#include "screens/desktop/settings_portal.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <tuple>

namespace marlet {

namespace {

const QString service = QStringLiteral("org.freedesktop.portal.Desktop");
const QString path = QStringLiteral("/org/freedesktop/portal/desktop");
const QString interface = QStringLiteral("org.freedesktop.portal.Settings");

const QString appearance = QStringLiteral("org.freedesktop.appearance");
const QString colorScheme = QStringLiteral("color-scheme");
const QString reducedMotion = QStringLiteral("reduced-motion");
const QString gnome = QStringLiteral("org.gnome.desktop.interface");
const QString animations = QStringLiteral("enable-animations");

/// Read() wraps its answer once more than SettingChanged does.
QVariant plain(const QDBusVariant& wrapped) {
    QVariant value = wrapped.variant();
    while (value.metaType() == QMetaType::fromType<QDBusVariant>())
        value = value.value<QDBusVariant>().variant();
    return value;
}

SettingsPortal::Scheme schemeOf(const QVariant& value) {
    switch (value.toUInt()) {
        case 1:
            return SettingsPortal::Scheme::dark;
        case 2:
            return SettingsPortal::Scheme::light;
        default:
            return SettingsPortal::Scheme::none;
    }
}

}  // namespace

SettingsPortal::SettingsPortal(const QDBusConnection& bus, QObject* parent)
    : QObject(parent), bus_(bus) {
    if (!bus_.isConnected()) return;
    bus_.connect(service, path, interface, QStringLiteral("SettingChanged"), this,
                 SLOT(take(QString, QString, QDBusVariant)));
    ask(appearance, colorScheme);
    ask(appearance, reducedMotion);
    ask(gnome, animations);
}

void SettingsPortal::ask(const QString& group, const QString& key) {
    QDBusMessage call =
        QDBusMessage::createMethodCall(service, path, interface, QStringLiteral("Read"));
    call << group << key;
    auto* const watcher = new QDBusPendingCallWatcher(bus_.asyncCall(call), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher, group, key] {
        const QDBusPendingReply<QDBusVariant> answer = *watcher;
        if (answer.isValid()) take(group, key, answer.value());
        watcher->deleteLater();
    });
}

void SettingsPortal::take(const QString& group, const QString& key, const QDBusVariant& value) {
    const auto before = std::tuple(scheme_, isCalm());
    const QVariant now = plain(value);
    if (group == appearance && key == colorScheme) scheme_ = schemeOf(now);
    if (group == appearance && key == reducedMotion) reduced_ = now.toUInt() == 1;
    if (group == gnome && key == animations) animated_ = now.toBool();
    if (before != std::tuple(scheme_, isCalm())) Q_EMIT changed();
}

bool SettingsPortal::isDark(Settings::Appearance chosen, Scheme scheme, bool othersAreDark) {
    if (chosen != Settings::Appearance::automatic) return chosen == Settings::Appearance::dark;
    if (scheme != Scheme::none) return scheme == Scheme::dark;
    return othersAreDark;
}

}  // namespace marlet
