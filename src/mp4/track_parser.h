#pragma once

#include <cstdint>
#include <optional>

#include "foundation/bytes.h"
#include "mp4/box_cursor.h"
#include "mp4/sample_tables.h"
#include "mp4/summary.h"

namespace marlet {

/// The version of a full box (ISO/IEC 14496-12, 4.2); 0 past the buffer.
std::uint8_t boxVersion(ByteView data, const BoxSpan& box);

/// The parts of a media header or movie header that are read: timescale (0 is given as 1) and
/// duration in its units.
struct MediaClock {
    std::uint32_t timescale = 1;
    std::uint64_t duration = 0;
    double seconds() const { return static_cast<double>(duration) / timescale; }
};
/// From `mvhd` or `mdhd`, whose first fields are the same.
MediaClock mediaClock(ByteView data, const BoxSpan& header);
/// That of the movie of an index; as it is by default where it has no header.
MediaClock movieClock(ByteView moov);
/// Units a second; 1 when the index doesn't tell.
inline std::uint32_t movieTimescale(ByteView moov) {
    return movieClock(moov).timescale;
}

/// parseTrack on the budget that all tracks of an index share.
std::optional<Track> parseTrack(ByteView data, std::int64_t from, std::int64_t to, Detail detail,
                                std::uint32_t movieScale, SampleTables::Budget& budget);

}  // namespace marlet
