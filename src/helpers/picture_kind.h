#pragma once

#include "foundation/bytes.h"
#include "matroska/mkv_file.h"

namespace marlet::PictureKind {

/// As much of a frame as tells its kind, parameter sets in front included.
inline constexpr std::size_t enough = 4096;

/// False when the frame surely is none that decoding can start at: its first slice is neither of
/// a random access picture nor, in H.264, of intra kind. Matroska's block groups don't mark the
/// frames that need others with certainty, and a player that jumps to a wrong one shows rubble.
bool maySync(const MKVTrack& track, ByteView frame);

}  // namespace marlet::PictureKind
