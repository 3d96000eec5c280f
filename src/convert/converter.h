#pragma once

#include "foundation/run_control.h"
#include "write/write_request.h"

namespace marlet::Converter {

/// Makes a new M4V of a Matroska file: video copied, sound and subtitles by the request's plan, the
/// result proved frame by frame before anything reaches the output folder. The original is never
/// opened for writing. Never throws: every failure becomes an outcome with a sentence. Progress is
/// called on the calling thread, and on the tool's reader while a tool runs.
WriteOutcome run(const ConvertRequest& request, RunControl& control,
                 const StepProgress& progress = {});

/// Makes a new M4V of a QuickTime film that needs no more than another container: every sample is
/// copied, and proved. One that holds anything else is refused in words that say what, before any
/// disk space is taken. The request's plan isn't used; the rest is as in run().
WriteOutcome runMOV(const ConvertRequest& request, RunControl& control,
                    const StepProgress& progress = {});

/// The road of one conversion by its source.
WriteOutcome runAny(const ConvertRequest& request, RunControl& control,
                    const StepProgress& progress = {});

}  // namespace marlet::Converter
