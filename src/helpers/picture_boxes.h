#pragma once

#include "foundation/bytes.h"
#include "matroska/mkv_file.h"

// How pictures are to be shown, in the words of an MP4.
namespace marlet::PictureBoxes {

/// What stands in a sample entry behind the decoder's configuration, each box only where the source
/// tells it, colours also where only its stream does: `colr`, `mdcv`, `clli`, `clap` and `pasp`
/// (ISO/IEC 14496-12, 12.1.4 to 12.1.7), and `dvcC` or `dvvC` (Dolby Vision Streams Within the ISO
/// Base Media File Format, 3.2).
Bytes make(const MKVTrack& track);

/// Whether only a decoder of Dolby Vision shows its colours right, so that the entry must not call
/// itself plain HEVC (the same, 3.1).
bool needsDolbyVision(const MKVTrack& track);

/// Quarters of a turn with the clock, 0 to 3.
int quarterTurns(const MKVTrack& track);

}  // namespace marlet::PictureBoxes
