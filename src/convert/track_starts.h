#pragma once

#include <cstdint>
#include <map>
#include <set>

#include "foundation/run_control.h"
#include "matroska/mkv_file.h"

namespace marlet {

/// When each track's first frame is shown or heard, the run-in of an encoder taken off. A new file
/// begins with the earliest of them: the media tool puts the first frame of every track there,
/// unless it is told a delay.
class TrackStarts {
public:
    TrackStarts() = default;
    /// Reads on until all of these tracks have begun. Throws CancelError.
    TrackStarts(const MKVFile& mkv, const std::set<int>& tracks, RunControl& control);

    /// Milliseconds behind the earliest; 0 for a track without frames.
    std::int64_t delayMs(int track) const;
    /// Where the source's clock stands when the new file begins, milliseconds.
    std::int64_t beginMs() const;

private:
    std::map<int, std::int64_t> first_;  // by track number, nanoseconds
};

}  // namespace marlet
