#pragma once

#include <QtQml/qqmlregistration.h>
#include <QObject>
#include <QString>

#include "screens/settings/typed_text.h"
#include "sources/async.h"

namespace marlet {

/// The model of this computer that reads messy names: its address, its name and how it is.
class GuessSettings : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("App.settings has it")
    Q_PROPERTY(QString note READ note NOTIFY changed)  ///< its state in words
    Q_PROPERTY(QString address READ address WRITE setAddress NOTIFY changed)
    Q_PROPERTY(QString name READ name WRITE setName NOTIFY changed)
    /// Given by the environment: the address here has no effect.
    Q_PROPERTY(bool fixed READ isFixed CONSTANT)
    Q_PROPERTY(bool asking READ isAsking NOTIFY changed)
    Q_PROPERTY(bool canAsk READ canAsk NOTIFY changed)

public:
    explicit GuessSettings(QObject* parent = nullptr);
    /// An answer still under way is dropped.
    ~GuessSettings() override;
    void refresh();

    QString note() const { return note_; }
    QString address() const { return address_.text(); }
    void setAddress(const QString& address);
    QString name() const { return name_.text(); }
    void setName(const QString& name);
    bool isFixed() const;
    bool isAsking() const { return asking_; }
    bool canAsk() const { return canAsk_; }

    /// The fields show what is stored; the model is asked whether it is there.
    void open();
    /// Asks the model's server whether it is there; no model is started by it.
    Q_INVOKABLE void ask();

Q_SIGNALS:
    void changed();
    void stored();

private:
    Task<> askNow();

    CancelToken life_;
    TypedText address_;
    TypedText name_;
    QString note_;
    bool asking_ = false;
    bool canAsk_ = false;
};

}  // namespace marlet
