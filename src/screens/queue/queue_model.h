#pragma once

#include <QtQml/qqmlregistration.h>
#include <QSet>
#include <QStringList>
#include <QTimer>
#include <QUrl>
#include <string>
#include <vector>

#include "app/write_queue.h"
#include "screens/base/row_list.h"
#include "screens/base/screen_part.h"
#include "screens/queue/job_line.h"

namespace marlet {

class AppModel;

/// The jobs that wait, run or have ended, and the run as a whole. States change at once; numbers
/// at most twice a second.
class QueueModel : public marlet::ScreenPart {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("App has it")
    Q_PROPERTY(QAbstractItemModel* jobs READ jobs CONSTANT)
    /// "empty", "waiting", "running" or "finished"
    Q_PROPERTY(QString stage READ stage NOTIFY changed)
    Q_PROPERTY(QString title READ title NOTIFY changed)
    Q_PROPERTY(QString detail READ detail NOTIFY changed)
    Q_PROPERTY(QString now READ now NOTIFY changed)           ///< the running job and its step
    Q_PROPERTY(double progress READ progress NOTIFY changed)  ///< of the run, 0 to 1
    Q_PROPERTY(bool paused READ paused NOTIFY changed)
    Q_PROPERTY(bool locked READ locked NOTIFY changed)  ///< a file is being changed
    Q_PROPERTY(bool cancelling READ cancelling NOTIFY changed)
    Q_PROPERTY(bool failures READ failures NOTIFY changed)
    Q_PROPERTY(bool canRetry READ canRetry NOTIFY changed)
    Q_PROPERTY(bool canShow READ canShow NOTIFY changed)
    Q_PROPERTY(int runningRow READ runningRow NOTIFY changed)  ///< -1: none

public:
    explicit QueueModel(AppModel& model, QObject* parent = nullptr);
    void refresh() override;

    QAbstractItemModel* jobs() { return &lines_; }
    QString stage() const { return head_.stage; }
    QString title() const { return head_.title; }
    QString detail() const;
    QString now() const { return numbers_.now; }
    double progress() const { return numbers_.progress; }
    bool paused() const { return head_.paused; }
    bool locked() const { return locked_; }
    bool cancelling() const { return head_.cancelling; }
    bool failures() const { return head_.failures; }
    bool canRetry() const { return head_.canRetry; }
    bool canShow() const { return head_.canShow; }
    int runningRow() const { return head_.runningRow; }

    Q_INVOKABLE void start();
    Q_INVOKABLE void pause();
    Q_INVOKABLE void resume();
    Q_INVOKABLE void cancel();
    Q_INVOKABLE void removeAll();
    Q_INVOKABLE void remove(const QString& key);
    /// Shows or hides a job's technical message.
    Q_INVOKABLE void toggle(const QString& key);
    Q_INVOKABLE void retryFailed();
    Q_INVOKABLE void clearResults();
    /// The files that the run wrote.
    Q_INVOKABLE QList<QUrl> outputs() const;
    /// The file that a job wrote, or its own.
    Q_INVOKABLE QList<QUrl> filesOf(const QString& key) const;

Q_SIGNALS:
    void changed();

private:
    struct Head {
        QString stage = QStringLiteral("empty");
        QString title;
        QString detail;
        bool paused = false;
        bool cancelling = false;
        bool failures = false;
        bool canRetry = false;
        bool canShow = false;
        int runningRow = -1;
        bool operator==(const Head&) const = default;
    };
    struct Numbers {
        double progress = 0;
        QString timeLeft;
        QString now;
        bool operator==(const Numbers&) const = default;
    };
    /// What a row was last made of.
    struct Seen {
        std::string id;
        WriteQueue::Job::State state{};
    };

    void look();
    bool takeJobs();
    void makeLines();
    JobLine lineOf(const WriteQueue::Job& job) const;
    Head headNow() const;
    Numbers numbersNow() const;
    bool takeNumbers();
    void updateRunning();
    bool takeLocked();

    AppModel& model_;
    RowList<JobLine> lines_;
    std::vector<Seen> seen_;
    std::string batch_;
    QSet<QString> open_;
    bool sorted_ = false;  ///< the lines stand in the order of results
    Head head_;
    Numbers numbers_;
    bool cancelAsked_ = false;
    bool locked_ = false;
    QTimer pace_;  ///< runs while numbers were shown a moment ago
    QTimer poll_;  ///< of the critical section, while a run is on
};

}  // namespace marlet
