#pragma once

#include <cstdint>
#include <optional>
#include <vector>

namespace marlet {

/// When the samples of a track are decoded and presented (ISO/IEC 14496-12, 8.6.1), in units of
/// `timescale` a second.
struct TrackTimes {
    std::uint32_t timescale = 1;
    std::vector<std::uint32_t> durations;  ///< one a sample, in the order of decoding
    std::vector<std::uint32_t> offsets;    ///< presentation less decoding; empty: all 0
    std::uint64_t mediaStart = 0;          ///< where the presentation starts in the media
    std::uint64_t length = 0;              ///< of the presentation
    bool operator==(const TrackTimes&) const = default;
};

namespace VideoTimes {

/// From the presentation times of frames in the order of decoding, as Matroska has them. Pictures
/// of a steady rate, which times of a millisecond only come near to, get exactly that rate; all
/// others get their own times to 1/90000 s. Each frame stays within a millisecond of what the
/// source says, relative to the first one. MFError for times that no film has.
TrackTimes make(const std::vector<std::int64_t>& presentedNs, std::optional<std::uint64_t> frameNs);

}  // namespace VideoTimes

namespace SoundTimes {

/// A frame's time, for those whose block has one: behind the first of a lace there is none.
using FrameTime = std::optional<std::int64_t>;

/// Frames of `frameLength` samples each follow each other without a gap until the source's times
/// depart from that by more than its rounding; then the next frame comes when the source says.
TrackTimes make(const std::vector<FrameTime>& startsNs, std::uint32_t rate,
                std::uint32_t frameLength);

}  // namespace SoundTimes
}  // namespace marlet
