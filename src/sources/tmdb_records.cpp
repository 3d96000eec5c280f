#include "sources/tmdb_records.h"

#include "foundation/text.h"

namespace marlet {
namespace {

std::optional<int> yearOf(const std::optional<std::string>& date) {
    if (!date) return std::nullopt;
    return Text::integer(Text::firstCharacters(*date, 4));
}

}  // namespace

std::optional<int> TMDBSearchHit::year() const {
    return yearOf(release_date ? release_date : first_air_date);
}

std::string TMDBSearchHit::anyTitle() const {
    if (title) return *title;
    return name.value_or("");
}

std::optional<int> TMDBMovie::year() const {
    return yearOf(release_date);
}

std::optional<int> TMDBShow::year() const {
    return yearOf(first_air_date);
}

std::optional<std::string> TMDBMovieFull::certification() const {
    if (!release_dates) return std::nullopt;
    for (const Country& country : release_dates->results) {
        if (country.iso_3166_1 != "US") continue;
        for (const Item& item : country.release_dates) {
            if (!item.certification.empty()) return item.certification;
        }
        return std::nullopt;
    }
    return std::nullopt;
}

std::optional<std::string> TMDBShowFull::certification() const {
    if (!content_ratings) return std::nullopt;
    for (const Item& item : content_ratings->results) {
        if (item.iso_3166_1 == "US" && !item.rating.empty()) return item.rating;
    }
    return std::nullopt;
}

}  // namespace marlet
