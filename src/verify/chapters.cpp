#include <algorithm>

#include "foundation/text.h"
#include "verify/chapter_track.h"
#include "verify/rebuild_verifier.h"

namespace marlet {

namespace {

/// A list counts in one byte, and so does each of its titles.
constexpr std::size_t mostInList = 255;
constexpr std::size_t longestTitle = 255;

bool isSame(const Chapter& a, const Chapter& b) {
    constexpr std::int64_t tolerance = 10;  // ms: time scales differ between a list and a track
    return std::abs(a.ms - b.ms) <= tolerance && a.title == b.title;
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

bool chaptersMatch(const std::vector<Chapter>& a, const std::vector<Chapter>& b) {
    return std::ranges::equal(a, b, isSame);
}

bool tellChapters(const ChapterPlaces& places, const std::vector<Chapter>& wanted) {
    if (places.areNone()) return false;
    if (!places.list.empty() && !isSameList(wanted, places.list)) return false;
    return std::ranges::all_of(places.tracks, [&](const Track* track) {
        return isSameList(wanted, chaptersInTrack(places.file, *track));
    });
}

}  // namespace marlet
