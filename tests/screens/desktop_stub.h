#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVariant>
#include <QDBusVirtualObject>
#include <QStringList>
#include <QVariantMap>
#include <vector>

#include "support/private_bus.h"

namespace marlet::test {

/// A desktop on a bus of its own: it answers as the settings portal, logind, the notification
/// service and a file manager do, and notes what it is asked.
class DesktopStub : public QDBusVirtualObject {
    Q_OBJECT

public:
    DesktopStub();
    ~DesktopStub() override;

    /// Another connection to that bus: what the program has.
    QDBusConnection client() const { return client_; }

    struct Call {
        QString name;
        QVariantList arguments;
    };
    std::vector<Call> calls;
    /// How many calls of that name came.
    int count(const QString& name) const;
    /// The latest of that name.
    QVariantList arguments(const QString& name) const;

    QVariantMap settings;  ///< of the portal, by "group key"
    void change(const QString& group, const QString& key, const QVariant& value);
    /// Whether the program has the lock: it is told by the other end of the lock's pipe.
    bool isLockHeld() const;
    bool holdAnswers = false;  ///< logind answers only when answerNow() says so
    void answerNow();
    void click(uint notification, const QString& action);
    /// What the task bar was told.
    struct Update {
        QString application;
        QVariantMap values;
    };
    std::vector<Update> updates;

    QString introspect(const QString&) const override { return {}; }
    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override;

public Q_SLOTS:
    void onUpdate(const QString& application, const QVariantMap& values);

private:
    void answer(const QDBusMessage& message);

    PrivateBus bus_;
    QDBusConnection desktop_;
    QDBusConnection client_;
    int lockPipe_ = -1;  ///< our end
    std::vector<QDBusMessage> held_;
};

}  // namespace marlet::test
