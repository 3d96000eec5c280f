#pragma once

#include <QObject>
#include <QString>

#include "app/write_queue.h"

namespace marlet {

/// A job as the list shows it.
struct JobLine {
    Q_GADGET
    Q_PROPERTY(QString key MEMBER key)
    Q_PROPERTY(QString label MEMBER label)
    Q_PROPERTY(QString second MEMBER second)
    Q_PROPERTY(QString kind MEMBER kind)
    Q_PROPERTY(QString word MEMBER word)
    Q_PROPERTY(QString group MEMBER group)
    Q_PROPERTY(double fraction MEMBER fraction)
    Q_PROPERTY(QString happened MEMBER happened)
    Q_PROPERTY(QString next MEMBER next)
    Q_PROPERTY(QString technical MEMBER technical)
    Q_PROPERTY(bool damaged MEMBER damaged)
    Q_PROPERTY(bool open MEMBER open)
    Q_PROPERTY(QString spoken MEMBER spoken)

public:
    QString key;
    QString label;
    /// The job's summary, and what else there is to say quietly: the file of a waiting one, the
    /// step of a running one, the message of one that went well.
    QString second;
    QString kind;   ///< "waiting", "running", "done", "failed", "skipped", "cancelled"
    QString word;   ///< the state for people
    QString group;  ///< the heading it stands under; empty while there are no headings
    double fraction = 0;
    QString happened;      ///< of one that ended otherwise than well
    QString next;          ///< and what to do
    QString technical;     ///< the message as the writer gave it, the sound layout under it
    bool damaged = false;  ///< the person's file may not be as it was
    bool open = false;     ///< shows the technical message
    QString spoken;        ///< the row in one sentence
    bool operator==(const JobLine&) const = default;

    static JobLine of(const WriteQueue::Job& job);
};

/// What a person should read first comes first: 0 for a file that may be damaged, then failed,
/// cancelled, skipped, and last what went well.
int rankOfEnded(const WriteQueue::Job& job);
bool mayBeDamaged(const WriteQueue::Job& job);

}  // namespace marlet
