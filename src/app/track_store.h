#pragma once

#include <filesystem>
#include <functional>
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

    TrackStore() = default;
    /// Lets go whoever waits here.
    ~TrackStore();
    TrackStore(const TrackStore&) = delete;
    TrackStore& operator=(const TrackStore&) = delete;

    /// Reads the file on a worker, unless it was read before. Ignored for what isn't an MP4.
    Task<> load(Path file);
    const std::vector<InPlaceTrack>* find(const Path& file) const;
    /// Ticks or unticks the track at that place of the file; false when it has no such track.
    bool setKeep(const Path& file, int index, bool keep);
    /// Unticks these tracks, as soon as the file is read. Ignored for what isn't an MP4.
    void wish(const Path& file, const std::vector<int>& dropped);
    bool isWished(const Path& file) const { return wishes_.contains(file); }
    /// Track::index of what is unticked, or wished to be in a file that wasn't read yet.
    std::vector<int> dropped(const Path& file) const;
    bool dropsAny(const Path& file) const { return !dropped(file).empty(); }
    void forget(const Path& file);

    /// Told of each file whose ticks a person changed.
    std::function<void(const Path&)> onTouched;

private:
    std::map<Path, std::vector<InPlaceTrack>> tracks_;
    std::map<Path, std::vector<int>> wishes_;
    CancelToken life_;
};

}  // namespace marlet
