#include "write/tag_writer.h"

#include "foundation/errors.h"
#include "foundation/file_ops.h"
#include "foundation/text.h"
#include "mp4/sound_layout.h"
#include "write/candidate.h"
#include "write/change_summary.h"
#include "write/copy_delivery.h"
#include "write/in_place_delivery.h"
#include "write/job_end.h"
#include "write/outcome_wording.h"
#include "write/private_copy.h"
#include "write/track_removal.h"
#include "write/write_gate.h"

namespace marlet::TagWriter {

namespace {

/// Measures the file, makes sure that it may be worked on, and claims a folder for the work.
void begin(WriteJob& job) {
    WriteGate::checkRequest(job);
    job.outcome.before = measureInterleave(job.file());
    job.reference = FileMark::of(job.file());
    job.outcome.size = job.reference.size;
    WriteGate::checkNoOtherWriter(job.request);
    job.folder.create();
    const bool needsRebuild = job.request.fixLayout && *job.outcome.before > soundLayoutLimit;
    WriteGate::requireSpace(job, needsRebuild ? WriteGate::Way::Rebuild : WriteGate::Way::Edit);
    job.control.checkpoint();
}

void runSteps(WriteJob& job) {
    begin(job);
    makePrivateCopy(job);
    const TrackRemoval removal = TrackChoice::check(job);
    const TagTarget target = intendedTags(job);
    job.outcome.changes = ChangeSummary::describe(target.old, target.atoms);
    const Candidate candidate = buildCandidate(job, target, removal);
    job.outcome.after = candidate.after;
    judge(job.request, *job.outcome.before, candidate.after, job.outcome.rebuilt);
    job.report("Checked", 0.64);

    if (job.request.copyTo)
        saveCopy(job, *job.request.copyTo);
    else if (removal.isAny())
        TrackChoice::deliver(job, removal);
    else
        InPlaceDelivery(job, candidate).run();
}

void end(WriteOutcome& outcome, WriteOutcome::Status status, std::string message) {
    outcome.status = status;
    outcome.message = std::move(message);
}

/// Names of files may hold bytes that are no text, and what reads an outcome expects text.
void repair(WriteOutcome& outcome) {
    outcome.message = Text::repairUtf8(viewOf(outcome.message));
    for (std::string& change : outcome.changes) change = Text::repairUtf8(viewOf(change));
}

/// The one place where a failure becomes an outcome.
void runCaught(WriteJob& job) {
    using Status = WriteOutcome::Status;
    try {
        runSteps(job);
    } catch (const JobEnd& ending) {
        end(job.outcome, ending.status(), ending.message());
    } catch (const CancelError&) {
        end(job.outcome, Status::cancelled, Wording::cancelled);
    } catch (const NoRoom& failure) {
        end(job.outcome, Status::failed, Wording::noRoom(failure.description()));
    } catch (const std::bad_alloc&) {
        end(job.outcome, Status::failed, "there is not enough memory for this file");
    } catch (const std::exception& failure) {
        end(job.outcome, Status::failed, failure.what());
    }
    repair(job.outcome);
}

}  // namespace

WriteOutcome write(const WriteRequest& request, RunControl& control, const StepProgress& progress) {
    WriteJob job(request, control, progress);
    runCaught(job);
    return std::move(job.outcome);
}

}  // namespace marlet::TagWriter
