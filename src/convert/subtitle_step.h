#pragma once

#include "convert/convert_job.h"

namespace marlet::SubtitleStep {

/// Writes the lines of each subtitle of the plan into a file of the job's folder and adds it to the
/// new file. One without lines is left out, with a note. Throws MFError when a file can't be
/// written, CancelError.
void run(ConvertJob& job);

}  // namespace marlet::SubtitleStep
