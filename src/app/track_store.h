#pragma once

#include <filesystem>
#include <map>
#include <vector>

#include "sources/async.h"
#include "write/in_place_tracks.h"

namespace marlet {

/// The sound and subtitle tracks of the MP4s in Review, with a person's ticks. Each file is read
/// once. Main context only.
class TrackStore {
public:
    using Path = std::filesystem::path;

    /// Reads the file on a worker, unless it was read before. Ignored for what isn't an MP4.
    Task<> load(Path file);
    const std::vector<InPlaceTrack>* find(const Path& file) const;
    /// Ticks or unticks the track at that place of the file; false when it has no such track.
    bool setKeep(const Path& file, int index, bool keep);
    /// Track::index of what is unticked; empty for a file that wasn't read.
    std::vector<int> dropped(const Path& file) const;
    bool dropsAny(const Path& file) const { return !dropped(file).empty(); }
    void forget(const Path& file) { tracks_.erase(file); }

private:
    std::map<Path, std::vector<InPlaceTrack>> tracks_;
};

}  // namespace marlet
