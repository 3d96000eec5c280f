#include <algorithm>

#include "foundation/text.h"
#include "foundation/title_match.h"
#include "identify/file_names.h"
#include "identify/matcher.h"

namespace marlet {
namespace {

bool isEpisode(const ResolvedFile& file) {
    return file.guess && file.guess->kind == MediaKind::tv;
}

std::string itemID(const ResolvedFile& file) {
    if (!isEpisode(file)) return "file|" + file.file.url.native();
    const std::string season = "|s" + std::to_string(file.guess->season.value_or(0));
    if (file.match) return "tv" + std::to_string(file.match->tmdbID) + season;
    return "tv?" + TitleMatch::normalise(file.guess->title) + season;
}

void describeFrom(LibraryItem& item, const Match& match) {
    item.title = match.title;
    item.year = match.year;
    item.posterPath = match.posterPath;
}

LibraryItem seasonItem(const ResolvedFile& first) {
    LibraryItem item;
    item.kind = MediaKind::tv;
    if (first.match) {
        describeFrom(item, *first.match);
        item.season = first.match->season;
    } else {
        item.title = first.guess->title;
        item.season = first.guess->season;
    }
    return item;
}

LibraryItem singleItem(const ResolvedFile& file) {
    LibraryItem item;
    item.kind = MediaKind::movie;
    if (file.match && !file.ambiguous) {
        describeFrom(item, *file.match);
    } else if (file.guess && !file.ambiguous) {
        item.title = file.guess->title;
        item.year = file.guess->year;
    } else {
        item.title = FileNames::base(file.file.url);
    }
    return item;
}

int episodeOf(const ResolvedFile& file) {
    return file.guess ? file.guess->episode.value_or(0) : 0;
}

bool comesBefore(const LibraryItem& a, const LibraryItem& b) {
    if (a.kind != b.kind) return a.kind == MediaKind::tv;
    const int byTitle = Text::compareNatural(a.title, b.title);
    if (byTitle != 0) return byTitle < 0;
    return a.season.value_or(0) < b.season.value_or(0);
}

}  // namespace

std::vector<LibraryItem> Matcher::group(const std::vector<ResolvedFile>& resolved) {
    std::vector<LibraryItem> items;
    std::map<std::string, std::size_t> places;
    for (const ResolvedFile& file : resolved) {
        const std::string id = itemID(file);
        const auto [place, isNew] = places.try_emplace(id, items.size());
        if (isNew) {
            items.push_back(isEpisode(file) ? seasonItem(file) : singleItem(file));
            items.back().id = id;
        }
        items[place->second].files.push_back(file);
    }
    for (LibraryItem& item : items) {
        std::stable_sort(item.files.begin(), item.files.end(),
                         [](const ResolvedFile& a, const ResolvedFile& b) {
                             return episodeOf(a) < episodeOf(b);
                         });
    }
    // Most often a list that is in order has lost a row.
    if (!std::ranges::is_sorted(items, comesBefore))
        std::stable_sort(items.begin(), items.end(), comesBefore);
    return items;
}

}  // namespace marlet
