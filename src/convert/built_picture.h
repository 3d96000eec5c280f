#pragma once

#include "convert/built_index.h"
#include "matroska/mkv_file.h"

/// GPAC's `MP4Box` tells colours and the shape of pixels by the pictures' stream alone: what the
/// source's container tells is lost, and of pictures that tell no colours it says RGB (matrix 0 of
/// ITU-T H.273), which a player may believe.
namespace marlet::BuiltPicture {

/// Puts into each picture's `colr` (ISO/IEC 14496-12, 12.1.5) what the source tells where the tool
/// knew nothing, and "not told" in the place of RGB: pictures of 4:2:0, and only those are copied,
/// are never that. Puts the source's shape into `pasp` (12.1.4), and the width that it makes into
/// the track's header. Nothing moves, and what has no such box stays as it is. MFError when the
/// file can't be written.
void restore(BuiltIndex& index, const MKVTrack& source);

}  // namespace marlet::BuiltPicture
