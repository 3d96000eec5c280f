#pragma once

#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "mp4/summary.h"
#include "write/write_job.h"

namespace marlet {

/// Which tracks of a file a new file is made without.
struct TrackRemoval {
    std::vector<std::uint32_t> ids;        ///< `tkhd` track IDs that go
    std::vector<std::string> words;        ///< "sound French", "subtitles English": what goes
    std::optional<std::vector<int>> keep;  ///< Track::index of those that stay; nothing: all
    /// Which of those that stay, counted from 0, are to be switched on: without it no sound would
    /// play by itself.
    std::vector<int> enable;

    bool isAny() const { return keep.has_value(); }
};

namespace TrackChoice {

/// What the request leaves out, checked against the private copy: only sound and subtitles may go,
/// the picture stays, and the tool and the space are there.
TrackRemoval check(const WriteJob& job);
/// The same on a file's tracks alone.
TrackRemoval choose(const std::vector<Track>& tracks, const std::vector<int>& drop);
/// Track::index in the new file of what is to be switched on. The two counts differ when there are
/// tracks that can't be read.
std::vector<int> placesToEnable(const TrackRemoval& removal, const std::vector<Track>& newTracks);

/// Puts the candidate into the output folder as a new file. The original is not touched.
void deliver(WriteJob& job, const TrackRemoval& removal);

}  // namespace TrackChoice
}  // namespace marlet
