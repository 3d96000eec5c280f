#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "foundation/bytes.h"
#include "mp4/box_cursor.h"

namespace marlet {

/// An `stsd` payload taken apart (ISO/IEC 14496-12, 8.5.2). What stands behind the last whole entry
/// is the tail.
struct SampleEntries {
    ByteView header;  ///< version, flags, stated count
    std::vector<BoxSpan> entries;
    ByteView tail;

    int version() const { return header.empty() ? 0 : header[0]; }
    std::uint32_t statedCount() const { return BigEndian::u32(header, 4); }
};
SampleEntries sampleEntries(ByteView stsd);

/// The bytes between an entry's box header and its first child box. Nothing for a type whose layout
/// isn't known, and for an entry that is too short for it.
///
/// Sound of version 1 and 2 has the QuickTime fields behind the common ones (QuickTime File Format,
/// "Sound Sample Descriptions"), except under an `stsd` of version 1: there version 1 is that of
/// ISO/IEC 14496-12, 12.2.3, which adds none.
std::optional<std::int64_t> fixedFieldsLength(ByteView stsd, int stsdVersion, const BoxSpan& entry);

}  // namespace marlet
