#include "helpers/new_layout.h"

#include <algorithm>
#include <limits>
#include <vector>

#include "helpers/layout_plan.h"

namespace marlet::NewLayouts {

namespace {

constexpr std::uint64_t most32 = std::numeric_limits<std::uint32_t>::max();
constexpr std::uint64_t smallestBox = 8;

NewLayout::Places placesOf(const SourceFile& file, const LayoutPlan& plan, std::uint32_t padding,
                           std::uint64_t indexSize) {
    NewLayout::Places places;
    places.padding = padding == 0 ? 0 : std::max<std::uint64_t>(padding, smallestBox);
    places.mediaBytes = plan.mediaBytes;
    const bool isWide = file.wideMedia || plan.mediaBytes > most32 - smallestBox;
    places.mediaHeader = file.media.empty() ? 0 : isWide ? 16 : 8;
    places.mediaAt =
        (file.ftyp ? file.ftyp->size : 0) + indexSize + places.padding + places.mediaHeader;
    return places;
}

}  // namespace

NewLayout make(const SourceFile& file, const MovieMap& map, std::uint32_t sliceMilliseconds,
               std::uint32_t padding) {
    const LayoutPlan plan = LayoutPlans::make(map, sliceMilliseconds, file.moov.size());
    std::vector<bool> wide;
    for (const MappedTrack& track : map.tracks) wide.push_back(track.tables.wideOffsets);
    // A longer index moves the media, which may make another table wide; tables never become
    // narrow again, so this ends.
    for (;;) {
        NewLayout layout;
        layout.index = IndexWriter::write(file.moov, map, plan, wide);
        layout.places = placesOf(file, plan, padding, layout.index.moov.size());
        const std::uint64_t base = layout.places.mediaAt;
        bool changed = false;
        for (std::size_t t = 0; t < wide.size(); t++) {
            if (wide[t] || plan.tracks[t].lastAt + base <= most32) continue;
            wide[t] = changed = true;
        }
        if (changed) continue;
        IndexWriter::fillOffsets(layout.index, map, sliceMilliseconds, base);
        return layout;
    }
}

}  // namespace marlet::NewLayouts
