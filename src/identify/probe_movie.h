#pragma once

#include <filesystem>

#include "foundation/bytes.h"
#include "foundation/records.h"

namespace marlet::Probe {

/// Duration, tracks and tags of an MP4 or QuickTime index (the payload of `moov`). A field that
/// isn't there leaves its default.
void readMovie(ByteView moov, ScannedFile& into);

/// The tags alone: `ilst` items, and before them QuickTime's own user data texts.
ExistingTags movieTags(ByteView moov);

}  // namespace marlet::Probe
