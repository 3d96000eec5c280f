#pragma once

#include "foundation/run_control.h"
#include "write/write_request.h"

namespace marlet {

/// The road of one job by its mode: a conversion goes to the converter of its kind, everything
/// else is a write into the file. Runs on a worker thread and never throws.
WriteOutcome runJob(const WriteRequest& request, RunControl& control, const StepProgress& progress);

}  // namespace marlet
