#pragma once

#include <cstdint>
#include <optional>

#include "foundation/bytes.h"
#include "mp4/box_cursor.h"

namespace marlet {

/// The `esds` box of a sample entry (ISO/IEC 14496-14, 5.6); QuickTime keeps it inside `wave`.
std::optional<BoxSpan> descriptorOf(ByteView stsd, int stsdVersion, const BoxSpan& entry);

/// Where the two bytes of the ES_ID stand, which follow the head of the ES descriptor
/// (ISO/IEC 14496-1, 7.2.6.5). Nothing when the box doesn't begin with one.
std::optional<std::int64_t> streamIDPlace(ByteView stsd, const BoxSpan& esds);

}  // namespace marlet
