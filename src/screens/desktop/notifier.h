#pragma once

#include <QObject>
#include <QString>

#include "screens/desktop/buses.h"

namespace marlet {

/// Tells something by the desktop (org.freedesktop.Notifications). A newer message takes the place
/// of the one before it.
class Notifier : public QObject {
    Q_OBJECT

public:
    explicit Notifier(Buses buses, QObject* parent = nullptr);
    /// The body is plain text without a character that markup knows.
    void tell(const QString& title, const QString& body);

Q_SIGNALS:
    void clicked();

private Q_SLOTS:
    void onAction(uint id, const QString& action);

private:
    Buses buses_;
    bool listens_ = false;
    uint last_ = 0;  ///< 0: none
};

}  // namespace marlet
