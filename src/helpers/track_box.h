#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "foundation/bytes.h"
#include "helpers/track_request.h"
#include "helpers/track_times.h"
#include "mp4/box_cursor.h"

namespace marlet {

/// Where the samples of a track lie in their source, in the order of decoding.
struct FrameList {
    std::vector<std::uint64_t> offsets;
    std::vector<std::uint32_t> sizes;
};

/// A track that is made from frames.
struct TrackMedia {
    BoxCode handler = 0;
    Bytes entry;              ///< the only one of its `stsd`
    Bytes mediaHeader;        ///< `vmhd`, `smhd`, `nmhd` or `gmhd`
    std::uint32_t width = 0;  ///< as shown, in pixels
    std::uint32_t height = 0;
    int quarterTurns = 0;  ///< with the clock, before it is shown
    TrackTimes times;
    FrameList frames;
    bool allSync = true;
    std::vector<std::uint32_t> sync;  ///< sample numbers from 1, unless all are
};

/// The place of a track in the film.
struct TrackPlace {
    std::uint32_t id = 1;
    std::uint32_t movieScale = 1;  ///< units a second
    /// The track that chapters lie in, when this one refers to it; 0: none.
    std::uint32_t chapterTrack = 0;
};

/// A `trak` box as it is to be, its chunk table telling of places in the source.
struct TrackBox {
    Bytes bytes;
    double seconds = 0;  ///< until when it is presented
};

namespace TrackBoxes {

/// Each sample is a chunk of its own.
TrackBox make(const TrackMedia& media, const TrackRequest& request, const TrackPlace& place);

/// `elst` in its `edts`: the wait, then the media from `mediaStart` on; nothing when neither is
/// needed. `length` in the movie's units.
struct Edits {
    std::uint64_t wait = 0;  ///< units of the movie
    std::uint64_t mediaStart = 0;
    std::uint64_t length = 0;
};
Bytes edits(const Edits& edits);
/// `tref` to a track of chapters; nothing for 0.
Bytes chapterReference(std::uint32_t track);

}  // namespace TrackBoxes
}  // namespace marlet
