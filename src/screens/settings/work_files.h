#pragma once

#include <QtQml/qqmlregistration.h>
#include <QObject>
#include <QString>

#include "foundation/work_area.h"
#include "sources/async.h"

namespace marlet {

/// What the jobs' folders take on the disk, and the clean-up of those that no job needs. Disks are
/// slow: both are found out on a worker.
class WorkFiles : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("App.settings has it")
    Q_PROPERTY(QString usage READ usage NOTIFY changed)    ///< empty until it is known
    Q_PROPERTY(QString result READ result NOTIFY changed)  ///< of the last clean-up; may be empty
    Q_PROPERTY(bool busy READ isBusy NOTIFY changed)
    Q_PROPERTY(bool canCleanUp READ canCleanUp NOTIFY changed)

public:
    using QObject::QObject;
    /// What a worker still finds out is dropped.
    ~WorkFiles() override;

    QString usage() const;
    QString result() const { return result_; }
    bool isBusy() const { return busy_; }
    bool canCleanUp() const { return !busy_ && known_ && usage_.folders > 0; }

    void measure();
    /// "Clean Up": removes what nothing needs and tells what was freed and what stays, and why.
    Q_INVOKABLE void cleanUp();

    static QString wordsOf(const WorkArea::Usage& usage);
    static QString wordsOf(const WorkArea::Report& report);

Q_SIGNALS:
    void changed();

private:
    enum class Way { look, clean };
    Task<> work(Way way);

    CancelToken life_;
    WorkArea::Usage usage_;
    bool known_ = false;
    bool busy_ = false;
    QString result_;
};

}  // namespace marlet
