#include "screens/review/review_filter.h"

#include <algorithm>

#include "foundation/text.h"

namespace marlet {

void ReviewFilter::setQuery(const std::string& query) {
    query_ = query;
    words_ = Text::words(Text::fold(Text::collapseSpace(query)));
}

std::string ReviewFilter::textOf(const LibraryItem& item) {
    std::string text = item.title;
    if (item.year) text += '\n' + std::to_string(*item.year);
    for (const ResolvedFile& file : item.files) {
        text += '\n' + file.file.url.filename().string();
        if (!file.match) continue;
        if (file.match->episodeTitle) text += '\n' + *file.match->episodeTitle;
        if (file.match->title != item.title) text += '\n' + file.match->title;
    }
    return Text::fold(text);
}

bool ReviewFilter::takes(bool ready, const std::string& text) const {
    if (verdicts_ != Verdicts::all && ready != (verdicts_ == Verdicts::ready)) return false;
    return std::ranges::all_of(words_,
                               [&](const std::string& word) { return Text::contains(text, word); });
}

}  // namespace marlet
