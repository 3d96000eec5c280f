#include "mp4/edit_list.h"

#include <algorithm>

#include "mp4/summary.h"
#include "mp4/track_parser.h"

namespace marlet {

EditCursor::EditCursor(ByteView data, const BoxSpan& trak) : data_(data) {
    const auto elst = findSpan(data, trak, {boxCode("edts"), boxCode("elst")});
    if (!elst) return;
    hasList_ = true;
    isWide_ = boxVersion(data, *elst) == 1;
    left_ = BigEndian::u32(data, elst->start + 4);
    at_ = elst->start + 8;
    end_ = elst->end;
}

std::optional<Edit> EditCursor::next() {
    const int width = isWide_ ? 8 : 4;
    const std::int64_t length = 2 * width + 4;  // and the rate
    if (left_ == 0 || at_ + length > end_) return std::nullopt;
    Edit edit{.at = at_, .width = width};
    if (isWide_) {
        edit.duration = BigEndian::u64(data_, at_);
        edit.mediaTime = static_cast<std::int64_t>(BigEndian::u64(data_, at_ + width));
    } else {
        edit.duration = BigEndian::u32(data_, at_);
        edit.mediaTime = static_cast<std::int32_t>(BigEndian::u32(data_, at_ + width));
    }
    left_--;
    at_ += length;
    return edit;
}

/// When a track's first sample is presented, and for how long the track plays.
std::optional<EditTimes> editTimes(ByteView data, std::int64_t from, std::int64_t to,
                                   std::uint32_t movieScale, std::uint32_t mediaScale) {
    EditCursor edits(data, BoxSpan{boxCode("trak"), true, from, from, to});
    if (!edits.hasList()) return std::nullopt;
    const double movieUnits = std::max(movieScale, 1U);
    const double mediaUnits = std::max(mediaScale, 1U);

    EditTimes times;
    double leadIn = 0;
    bool sawReal = false;
    while (const auto edit = edits.next()) {
        const double seconds = static_cast<double>(edit->duration) / movieUnits;
        times.length += seconds;
        if (edit->mediaTime < 0) {
            if (!sawReal) leadIn += seconds;
        } else if (!sawReal) {
            sawReal = true;
            times.offset = leadIn - static_cast<double>(edit->mediaTime) / mediaUnits;
        }
    }
    if (!sawReal) times.offset = leadIn;
    return times;
}

}  // namespace marlet
