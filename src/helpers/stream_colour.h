#pragma once

#include "matroska/mkv_file.h"

namespace marlet::StreamColour {

/// The colours and the range that the first sequence parameter set of an H.264 or HEVC track tells
/// in its usability information (ISO/IEC 14496-10, E.1.1; ISO/IEC 23008-2, E.2.1). What it doesn't
/// tell, or a set that can't be read, is "not told".
PictureColour of(const MKVTrack& track);

}  // namespace marlet::StreamColour
