#pragma once

#include <cstddef>
#include <set>
#include <string>
#include <vector>

#include "mp4/summary.h"
#include "verify/playback_details.h"
#include "verify/rebuild_verifier.h"

namespace marlet {

/// One of the two files, its index read.
struct VerifiedSide {
    MP4Summary summary;
    MoviePlayback playback;
};

/// How a track is named in reasons and notes: "track 2 (soun mp4a)".
std::string trackLabel(const Track& track, std::size_t position);

/// Positions of the tracks that hold chapter titles: text that some track names for it.
std::set<std::size_t> chapterTracks(const std::vector<Track>& tracks);

/// Compares the pair of tracks at this position, all but their sample data.
void compareTracks(const VerifiedSide& original, const VerifiedSide& rebuilt, std::size_t position,
                   bool isChapterTrack, const RebuildTerms& terms, VerifyReport& report);

}  // namespace marlet
