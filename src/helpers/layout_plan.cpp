#include "helpers/layout_plan.h"

#include "foundation/errors.h"
#include "helpers/interleave.h"

namespace marlet::LayoutPlans {

namespace {

/// Ten tracks of ten hours in slices of 250 ms have 1.4 million.
constexpr std::uint64_t mostChunks = 1'000'000;
/// A long index may have more; a chunk costs at most 20 bytes in the new tables.
constexpr std::uint64_t bytesPerChunk = 20;

/// The chunk of a track that is being filled.
struct OpenChunk {
    std::uint32_t samples = 0;
    std::uint32_t description = 0;
    bool isOpen = false;
};

void close(const OpenChunk& chunk, PlannedTrack& track) {
    if (!chunk.isOpen) return;
    track.chunks++;
    const bool goesOn = !track.rows.empty() && track.rows.back().samples == chunk.samples &&
                        track.rows.back().description == chunk.description;
    if (!goesOn) track.rows.push_back({track.chunks, chunk.samples, chunk.description});
}

}  // namespace

LayoutPlan make(const MovieMap& map, std::uint32_t sliceMilliseconds, std::size_t indexBytes) {
    LayoutPlan plan;
    plan.tracks.resize(map.tracks.size());
    std::vector<OpenChunk> open(map.tracks.size());
    std::uint64_t chunks = 0;
    Interleave pieces(map, sliceMilliseconds);
    while (const auto placed = pieces.next()) {
        OpenChunk& chunk = open[placed->track];
        if (placed->piece.beginsChunk) {
            close(chunk, plan.tracks[placed->track]);
            chunk = {0, placed->piece.description, true};
            plan.tracks[placed->track].lastAt = placed->at;
            if (++chunks > mostChunks + indexBytes / bytesPerChunk)
                throw MFError("the file's samples lie too far apart in time to be laid out anew");
        }
        chunk.samples += placed->piece.samples;
    }
    for (std::size_t t = 0; t < open.size(); t++) close(open[t], plan.tracks[t]);
    plan.mediaBytes = pieces.size();
    return plan;
}

}  // namespace marlet::LayoutPlans
