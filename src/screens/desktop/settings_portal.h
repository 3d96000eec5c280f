#pragma once

#include <QDBusConnection>
#include <QDBusVariant>
#include <QObject>
#include <QString>

#include "app/settings.h"

namespace marlet {

/// What a person set for all programs of the desktop, and what becomes of it while this runs
/// (org.freedesktop.portal.Settings). Without a portal nothing was set.
class SettingsPortal : public QObject {
    Q_OBJECT

public:
    enum class Scheme { none, dark, light };

    explicit SettingsPortal(const QDBusConnection& bus, QObject* parent = nullptr);
    Scheme scheme() const { return scheme_; }
    /// No motion that isn't needed.
    bool isCalm() const { return !animated_ || reduced_; }

    /// Whether the look is the dark one. A person's own choice comes before the desktop's, and
    /// that before what its other programs look like.
    static bool isDark(Settings::Appearance chosen, Scheme scheme, bool othersAreDark);

Q_SIGNALS:
    void changed();

private Q_SLOTS:
    void take(const QString& group, const QString& key, const QDBusVariant& value);

private:
    void ask(const QString& group, const QString& key);

    QDBusConnection bus_;
    Scheme scheme_ = Scheme::none;
    bool animated_ = true;
    bool reduced_ = false;
};

}  // namespace marlet
