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
        into.reasons.push_back("chapters were not carried over");
        return;
    }
    const std::vector<Chapter> wanted = chaptersOf(mkv);
    const auto texts = chapterTracks(summary.tracks);
    bool isSame = summary.chpl.empty() ? !texts.empty() : isSameChapterList(wanted, summary.chpl);
    for (const std::size_t position : texts)
        isSame =
            isSame && isSameChapterList(wanted, chaptersInTrack(built, summary.tracks[position]));
    if (!isSame) into.reasons.push_back("chapter titles or times differ from the original");
}

}  // namespace marlet::ConvertVerify
