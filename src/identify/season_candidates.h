#pragma once

// The template of season_judging.h; include that one.

#include <algorithm>
#include <iterator>

#include "foundation/title_match.h"

namespace marlet::SeasonJudging {

template <typename Show, typename Title, typename Year>
std::vector<Show> candidates(const std::vector<Show>& found, const SeasonFiles& files, Title title,
                             Year year) {
    std::vector<Show> liked;
    std::copy_if(found.begin(), found.end(), std::back_inserter(liked), [&](const Show& show) {
        return TitleMatch::similarity(title(show), files.title()) >= likeTitle;
    });
    const auto otherYear = [&](const Show& show) { return year(show) != files.year(); };
    if (files.year() && !std::all_of(liked.begin(), liked.end(), otherYear)) {
        std::erase_if(liked, otherYear);
    }
    return liked;
}

}  // namespace marlet::SeasonJudging
