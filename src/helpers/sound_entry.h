#pragma once

#include <cstdint>
#include <optional>

#include "foundation/bytes.h"
#include "helpers/raw_box.h"

namespace marlet::SoundEntry {

/// A `stsd` whose sound entries of QuickTime's versions 1 and 2 have the form of ISO/IEC 14496-12:
/// no fields but those of version 0, and what lay in `wave` directly inside; its pictures that of
/// PictureEntry. All entries use the only data reference. Everything else stays as it is.
/// `textFlags` become the display flags of a `tx3g`.
Bytes rewritten(ByteView moov, const RawBox& stsd, std::optional<std::uint32_t> textFlags);

}  // namespace marlet::SoundEntry
