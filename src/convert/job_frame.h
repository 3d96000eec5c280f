#pragma once

#include "convert/convert_job.h"

// What every conversion begins and ends with.
namespace marlet::JobFrame {

/// Runs the work on a job of its own and puts its failure or cancel into words. Never throws. The
/// work folder goes at the end, unless MARLET_KEEP_WORK is there.
WriteOutcome run(const ConvertRequest& request, RunControl& control, const StepProgress& progress,
                 WriteOutcome (*work)(ConvertJob& job));

/// Finds the media tool and asks whether new files may go into the output folder. Throws MFError.
void open(ConvertJob& job);
/// Throws MFError where the output folder has no room for a copy of the source.
void requireOutputSpace(const ConvertJob& job);
/// The only name of the source that the tools know.
void linkSource(const ConvertJob& job);
/// Throws MFError unless the built file's tags are exactly those of the request.
void requireTags(const ConvertJob& job);

/// Delivers the built file. The outcome's changes begin with its name, the job's notes follow; the
/// message is the caller's. Throws MFError, CancelError.
WriteOutcome deliver(ConvertJob& job);

}  // namespace marlet::JobFrame
