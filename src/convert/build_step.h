#pragma once

#include <filesystem>
#include <string>

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

/// The share of the progress that one run of the tool has.
struct Stage {
    std::string label;
    double from = 0;
    double span = 0;
};

/// Sets the places where the tool works and the room that is kept for these tags (an `ilst` box).
void makeRoom(ConvertJob& job, const Bytes& ilst);
/// Has the media tool make `job.built()` of `job.mux`; what an earlier try left goes first. Throws
/// MFError, CancelError.
void build(ConvertJob& job, const Stage& stage);
/// What is proved next must not change any more: a process that the tool left behind could still
/// hold it open, but not open it anew. Throws MFError.
void requireAlone(const ConvertJob& job);

/// Has the media tool build the file, its sound in slices of 500, 250 and 100 ms until the layout
/// is fine, and writes the tags into it. Gives the sound layout in seconds. Throws MFError,
/// CancelError.
double run(ConvertJob& job);

}  // namespace BuildStep
}  // namespace marlet
