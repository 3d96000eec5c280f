#pragma once

#include <QtQml/qqmlregistration.h>
#include <QObject>
#include <QTimer>
#include <exception>
#include <functional>

#include "sources/async.h"

namespace marlet {

class AppModel;

/// What asks a source for a person who waits: tells when the wait is long enough to be shown, and
/// when it failed. Main context only.
class PickerAsker : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("its kinds are the picker's")
    Q_PROPERTY(bool waiting READ isWaiting NOTIFY changed)     ///< for 300 ms and more
    Q_PROPERTY(QString failure READ failure NOTIFY changed)    ///< empty: none
    Q_PROPERTY(QString failureHelp READ failureHelp CONSTANT)  ///< what to do about it

public:
    bool isWaiting() const { return waiting_; }
    const QString& failure() const { return failure_; }
    QString failureHelp() const;
    /// Whether an answer is on its way.
    bool isAsking() const { return asked_ > 0; }

Q_SIGNALS:
    void changed();
    /// The file has what was chosen.
    void taken();

protected:
    PickerAsker(AppModel& model, QObject* parent);

    AppModel& model() const { return model_; }
    /// Ends what goes by this token and gives a new one for what comes instead.
    static CancelToken renew(CancelToken& token);
    /// The wait for an answer, from here to the end of a coroutine.
    class Waiting {
    public:
        explicit Waiting(PickerAsker& asker);
        ~Waiting();
        Waiting(const Waiting&) = delete;
        Waiting& operator=(const Waiting&) = delete;

    private:
        PickerAsker& asker_;
    };
    /// Has the source give the file what was chosen, and tells how that went.
    Task<> choose(std::function<Task<bool>()> taking, CancelToken cancel);
    /// A source that can't be reached is told as a toast, too.
    void fail(const std::exception& error);
    void clearFailure() { failure_.clear(); }

private:
    AppModel& model_;
    QTimer patience_;
    int asked_ = 0;
    bool waiting_ = false;
    QString failure_;
};

}  // namespace marlet
