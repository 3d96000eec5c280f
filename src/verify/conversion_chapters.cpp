#include <algorithm>

#include "verify/chapter_track.h"
#include "verify/conversion_checks.h"
#include "verify/track_comparison.h"

namespace marlet::ConvertVerify {

namespace {

std::vector<Chapter> chaptersOf(const MKVFile& mkv) {
    constexpr std::uint64_t perMs = 1'000'000;
    std::vector<Chapter> chapters;
    for (const MKVChapter& chapter : mkv.chapters())
        chapters.push_back({static_cast<std::int64_t>(chapter.startNs / perMs), chapter.title});
    return chapters;
}

}  // namespace

void checkChapters(const MKVFile& mkv, const std::filesystem::path& built,
                   const MP4Summary& summary, Report& into) {
    const bool hasText = std::ranges::any_of(
        summary.tracks, [](const Track& track) { return track.handler == "text"; });
    if (summary.chpl.empty() && !hasText) {
        into.reasons.emplace_back(chaptersLost);
        return;
    }
    ChapterPlaces places{built, summary.chpl, {}};
    for (const std::size_t position : chapterTracks(summary.tracks))
        places.tracks.push_back(&summary.tracks[position]);
    if (!tellChapters(places, chaptersOf(mkv))) into.reasons.emplace_back(chaptersDiffer);
}

}  // namespace marlet::ConvertVerify
