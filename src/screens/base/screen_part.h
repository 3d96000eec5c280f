#pragma once

#include <QtQml/qqmlregistration.h>
#include <QObject>

namespace marlet {

/// The model behind one screen: what QML binds to and calls. It holds nothing that the
/// application's model holds; refresh() reads that anew, at most once in a turn of the event loop,
/// and signals only what differs. Main context only. Heirs name it with its namespace: Qt's tools
/// don't find it otherwise.
class ScreenPart : public QObject {
    Q_OBJECT
    QML_ANONYMOUS

public:
    using QObject::QObject;
    virtual void refresh() = 0;

protected:
    /// Takes the value over; true when it is another one, which the caller then signals.
    template <typename T>
    static bool take(T& field, T value) {
        if (field == value) return false;
        field = std::move(value);
        return true;
    }
};

}  // namespace marlet
