#include <algorithm>

#include "foundation/text.h"
#include "verify/chapter_track.h"
#include "verify/conversion_checks.h"
#include "verify/track_comparison.h"

namespace marlet::ConvertVerify {

namespace {

/// A list counts in one byte, and so does each of its titles.
constexpr std::size_t mostInList = 255;
constexpr std::size_t longestTitle = 255;

std::vector<Chapter> chaptersOf(const MKVFile& mkv) {
    constexpr std::uint64_t perMs = 1'000'000;
    std::vector<Chapter> chapters;
    for (const MKVChapter& chapter : mkv.chapters())
        chapters.push_back({static_cast<std::int64_t>(chapter.startNs / perMs), chapter.title});
    return chapters;
}

/// Line ends and runs of blanks don't survive a file of chapters, and a chapter without a title
/// gets one there.
bool isSameTitle(const std::string& wanted, const std::string& title) {
    const std::string a = Text::trim(Text::collapseSpace(wanted));
    const std::string b = Text::trim(Text::collapseSpace(title));
    if (a.empty() || a == b) return true;
    const bool isCut = title.size() + 3 >= longestTitle && !b.empty();  // within a letter perhaps
    return isCut && a.starts_with(b.substr(0, b.size() - std::min<std::size_t>(b.size(), 3)));
}

bool isSameChapter(const Chapter& wanted, const Chapter& told) {
    constexpr std::int64_t tolerance = 10;  // ms
    return std::abs(wanted.ms - told.ms) <= tolerance && isSameTitle(wanted.title, told.title);
}

bool isSameList(std::vector<Chapter> wanted, const std::vector<Chapter>& told) {
    if (wanted.size() > mostInList && told.size() == mostInList) wanted.resize(mostInList);
    return std::ranges::equal(wanted, told, isSameChapter);
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
    bool isSame = summary.chpl.empty() || isSameList(wanted, summary.chpl);
    for (const std::size_t position : chapterTracks(summary.tracks))
        isSame = isSame && isSameList(wanted, chaptersInTrack(built, summary.tracks[position]));
    if (!isSame) into.reasons.push_back("chapter titles or times differ from the original");
}

}  // namespace marlet::ConvertVerify
