#pragma once

#include "convert/convert_job.h"

namespace marlet::SoundStep {

/// Prepares each sound track of the plan, one after the other, and adds it to the new file: copied,
/// or made into AC3 and AAC in the job's folder. At most one decoded sound lies there at a time.
/// Throws MFError, CancelError.
void run(ConvertJob& job);

}  // namespace marlet::SoundStep
