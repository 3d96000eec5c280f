// Edit lists (ISO/IEC 14496-12, 8.6.6): when a track's first sample is presented, and for how long
// the track plays.

#include <algorithm>

#include "mp4/box_cursor.h"
#include "mp4/summary.h"
#include "mp4/track_parser.h"

namespace marlet {

namespace {

struct Edit {
    std::uint64_t duration = 0;  ///< units of the movie
    std::int64_t mediaTime = 0;  ///< units of the media; negative for an empty edit
};

Edit readEdit(ByteView data, std::int64_t at, bool wide) {
    if (wide)
        return {BigEndian::u64(data, at), static_cast<std::int64_t>(BigEndian::u64(data, at + 8))};
    return {BigEndian::u32(data, at), static_cast<std::int32_t>(BigEndian::u32(data, at + 4))};
}

}  // namespace

std::optional<EditTimes> editTimes(ByteView data, std::int64_t from, std::int64_t to,
                                   std::uint32_t movieScale, std::uint32_t mediaScale) {
    const auto elst = findSpan(data, from, to, {boxCode("edts"), boxCode("elst")});
    if (!elst) return std::nullopt;
    const bool wide = boxVersion(data, *elst) == 1;
    const std::int64_t width = wide ? 20 : 12;
    const double movieUnits = std::max(movieScale, 1U);
    const double mediaUnits = std::max(mediaScale, 1U);

    EditTimes times;
    double leadIn = 0;
    bool sawReal = false;
    std::int64_t at = elst->start + 8;
    for (std::uint32_t left = BigEndian::u32(data, elst->start + 4); left > 0; left--) {
        if (at + width > elst->end) break;
        const Edit edit = readEdit(data, at, wide);
        const double seconds = static_cast<double>(edit.duration) / movieUnits;
        times.length += seconds;
        if (edit.mediaTime < 0) {
            if (!sawReal) leadIn += seconds;
        } else if (!sawReal) {
            sawReal = true;
            times.offset = leadIn - static_cast<double>(edit.mediaTime) / mediaUnits;
        }
        at += width;
    }
    if (!sawReal) times.offset = leadIn;
    return times;
}

}  // namespace marlet
