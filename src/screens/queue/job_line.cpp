#include "screens/queue/job_line.h"

#include <QCoreApplication>
#include <QStringList>

#include "foundation/text.h"
#include "screens/base/qt_text.h"

namespace marlet {

namespace {

using State = WriteQueue::Job::State;

QString translated(const char* text) {
    return QCoreApplication::translate("JobLine", text);
}

QString wordOf(State state) {
    switch (state) {
        case State::waiting:
            return translated("Waiting");
        case State::running:
            return translated("Running");
        case State::done:
            return translated("Done");
        case State::failed:
            return translated("Failed");
        case State::skipped:
            return translated("Skipped");
        case State::cancelled:
            break;
    }
    return translated("Cancelled");
}

QString layoutOf(const WriteOutcome& outcome) {
    const auto measure = [](double seconds) { return toQt(Text::fixed(seconds, 2)); };
    if (outcome.before && outcome.after && measure(*outcome.before) != measure(*outcome.after))
        return translated("Sound layout %1 s → %2 s")
            .arg(measure(*outcome.before), measure(*outcome.after));
    const auto only = outcome.after ? outcome.after : outcome.before;
    return only ? translated("Sound layout %1 s").arg(measure(*only)) : QString();
}

/// The pieces that say something, with `between` between them.
QString joined(QStringList pieces, const char* between) {
    pieces.removeAll(QString());
    return pieces.join(QString::fromUtf8(between));
}

void tellOutcome(JobLine& line, const WriteQueue::Job& job, const WriteOutcome& outcome) {
    const QString message = toQt(outcome.message);
    line.technical = joined({message, layoutOf(outcome)}, "\n");
    // Of a job that went well there is nothing to explain, nor is its original as it was.
    if (job.state == State::done) {
        line.second = joined({line.second, message}, " · ");
        return;
    }
    const PlainText::Explanation words = PlainText::explain(outcome.message);
    line.damaged = mayBeDamaged(job);
    line.happened = line.damaged ? message : toQt(words.happened);
    line.next = toQt(words.next);
}

}  // namespace

bool mayBeDamaged(const WriteQueue::Job& job) {
    return job.state == State::failed && job.outcome &&
           PlainText::tellsOfDamage(job.outcome->message);
}

int rankOfEnded(const WriteQueue::Job& job) {
    switch (job.state) {
        case State::failed:
            return mayBeDamaged(job) ? 0 : 1;
        case State::cancelled:
            return 2;
        case State::skipped:
            return 3;
        case State::done:
        case State::waiting:
        case State::running:
            break;
    }
    return 4;
}

JobLine JobLine::of(const WriteQueue::Job& job) {
    JobLine line;
    line.key = toQt(job.id);
    line.label = toQt(job.label);
    line.kind = toQt(name(job.state));
    line.word = wordOf(job.state);
    line.second = toQt(job.summary);
    if (job.outcome) {
        tellOutcome(line, job, *job.outcome);
    } else if (job.state == State::running) {
        line.second = joined({line.second, toQt(job.step)}, " · ");
        line.fraction = job.fraction;
    } else {
        line.second = joined({line.second, toQt(job.request.file.filename())}, " · ");
    }
    line.spoken = joined({line.label, line.word, line.happened, line.next, line.second}, ", ");
    return line;
}

}  // namespace marlet
