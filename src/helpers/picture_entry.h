#pragma once

#include "foundation/bytes.h"
#include "helpers/raw_box.h"

namespace marlet::PictureEntry {

/// Whether entries of this type are pictures that are only moved into another container.
bool isCopied(BoxCode type);

/// A picture's sample entry (whole box) in the form of ISO/IEC 14496-12, 12.1.3: the fields that
/// QuickTime has where reserved ones belong are zeros, no word of zeros ends the list of boxes, and
/// colours are told as `nclx`. Everything else stays as it is.
Bytes rewritten(ByteView moov, const RawBox& entry);

}  // namespace marlet::PictureEntry
