#include "helpers/chunk_check.h"

#include <algorithm>
#include <queue>

#include "foundation/errors.h"

namespace marlet::ChunkCheck {

namespace {

/// One track's chunks in the order of the file. Nearly every writer stores them so; only chunks
/// that are stored otherwise need a list.
class ByOffset {
public:
    ByOffset(const TrackTables& tables, bool ascending) : cursor_(tables) {
        if (ascending) return;
        while (const auto chunk = cursor_.next())
            if (chunk->bytes > 0) sorted_.push_back({chunk->offset, chunk->bytes});
        std::sort(sorted_.begin(), sorted_.end(),
                  [](const FilePart& a, const FilePart& b) { return a.at < b.at; });
    }

    std::optional<FilePart> next() {
        if (at_ < sorted_.size()) return sorted_[at_++];
        while (const auto chunk = cursor_.next())
            if (chunk->bytes > 0) return FilePart{chunk->offset, chunk->bytes};
        return std::nullopt;
    }

private:
    ChunkCursor cursor_;
    std::vector<FilePart> sorted_;
    std::size_t at_ = 0;
};

/// The first pass: every chunk that holds bytes lies in one piece of media data. True when the
/// chunks ascend.
bool checkPlaces(const TrackTables& tables, const std::vector<FilePart>& media) {
    bool ascending = true;
    std::uint64_t last = 0;
    ChunkCursor cursor(tables);
    while (const auto chunk = cursor.next()) {
        if (chunk->bytes == 0) continue;
        const auto past =
            std::upper_bound(media.begin(), media.end(), chunk->offset,
                             [](std::uint64_t at, const FilePart& part) { return at < part.at; });
        if (past == media.begin() || chunk->offset >= std::prev(past)->end() ||
            chunk->bytes > std::prev(past)->end() - chunk->offset)
            throw MFError("a track's data lies outside the media data of the file");
        ascending = ascending && chunk->offset >= last;
        last = chunk->offset;
    }
    return ascending;
}

struct Next {
    FilePart part;
    std::size_t track = 0;
    bool operator>(const Next& other) const { return part.at > other.part.at; }
};

}  // namespace

void run(const MovieMap& map, const std::vector<FilePart>& media) {
    std::vector<ByOffset> tracks;
    tracks.reserve(map.tracks.size());
    std::priority_queue<Next, std::vector<Next>, std::greater<>> queue;
    for (const MappedTrack& track : map.tracks) {
        tracks.emplace_back(track.tables, checkPlaces(track.tables, media));
        if (const auto part = tracks.back().next()) queue.push({*part, tracks.size() - 1});
    }
    std::uint64_t end = 0;
    while (!queue.empty()) {
        const Next next = queue.top();
        queue.pop();
        if (next.part.at < end) throw MFError("tracks of the file share media data");
        end = next.part.end();
        if (const auto part = tracks[next.track].next()) queue.push({*part, next.track});
    }
}

}  // namespace marlet::ChunkCheck
