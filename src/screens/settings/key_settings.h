#pragma once

#include <QtQml/qqmlregistration.h>
#include <QObject>
#include <QString>

#include "app/key_field.h"

namespace marlet {

/// The person's own TMDB key: kept, tried and removed. A typed key passes through and stays
/// nowhere.
class KeySettings : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("App.settings has it")
    Q_PROPERTY(QString origin READ origin NOTIFY changed)  ///< where the key in use comes from
    Q_PROPERTY(QString result READ result NOTIFY changed)  ///< of the last thing done; may be empty
    Q_PROPERTY(bool busy READ isBusy NOTIFY changed)

public:
    explicit KeySettings(QObject* parent = nullptr);

    QString origin() const { return origin_; }
    QString result() const;
    bool isBusy() const { return field_.isBusy(); }

    /// Finds out soon where the key comes from; the keyring may take a moment.
    void look();
    Q_INVOKABLE void keep(const QString& typed);
    Q_INVOKABLE void tryKey();
    Q_INVOKABLE void remove();

Q_SIGNALS:
    void changed();

private:
    KeyField field_;
    QString origin_;
};

}  // namespace marlet
