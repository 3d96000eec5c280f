#pragma once

#include <filesystem>

#include "convert/convert_job.h"

namespace marlet {

namespace Converter {

/// Makes sure that the media tool numbers the source's tracks as Matroska does: each that the plan
/// takes from there must be of its kind, as far as the tool lists it. Throws MFError "track N is
/// not the kind of track Marlet expected (TYPE)", CancelError.
void checkTrackIDs(const std::filesystem::path& tool, const std::filesystem::path& link,
                   const ConvertPlanSnapshot& plan, RunControl& control);

}  // namespace Converter

namespace BuildStep {

/// Has the media tool build the file, its sound in slices of 500, 250 and 100 ms until the layout
/// is fine, and writes the tags into it. Gives the sound layout in seconds. Throws MFError,
/// CancelError.
double run(ConvertJob& job);

}  // namespace BuildStep
}  // namespace marlet
