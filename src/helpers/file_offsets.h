#pragma once

#include "foundation/bytes.h"
#include "helpers/raw_box.h"

// Boxes besides the chunk tables that hold absolute offsets into the file. They are rare beside
// ordinary media, and what they point at lies where no chunk table knows of it, so a file that has
// one is refused rather than left with a wrong one.
namespace marlet::FileOffsets {

/// `iloc` in a whole `meta` box whose items lie in the file itself (ISO/IEC 14496-12, 8.11.3).
void refuseInMeta(ByteView meta);
/// `saio` in a `stbl`, and `iloc` in every `meta` of movie, track and user data (8.7.9).
void refuseInIndex(ByteView moov, const RawBox& root);

}  // namespace marlet::FileOffsets
