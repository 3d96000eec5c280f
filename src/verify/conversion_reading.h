#pragma once

#include <vector>

#include "foundation/run_control.h"
#include "verify/conversion_frames.h"

namespace marlet::ConvertVerify {

/// Says that the frames of a track of the source are compared, and how.
void setReading(SourceFrames& frames, const MKVTrack& track, NALFilter skip,
                std::size_t lengthSize);
/// The track of the new file that should hold these frames. Its units have lengths of their own.
BuiltFrames builtCopy(const SourceFrames& source, const Track& track);

/// Reads the frames of the source and those of the new file, side by side where that pays.
/// Progress is "Verifying", 0.7 to 0.86.
void readBoth(const MKVFile& mkv, SourceTracks& sources, int fd, std::vector<BuiltFrames>& copies,
              RunControl& control, const StepProgress& progress);

}  // namespace marlet::ConvertVerify
