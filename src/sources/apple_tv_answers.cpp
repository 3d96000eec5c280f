#include "sources/apple_tv_answers.h"

#include <chrono>
#include <cstdio>
#include <nlohmann/json.hpp>
#include <set>

#include "sources/apple_tv_pictures.h"
#include "sources/loose_json.h"

namespace marlet::AppleTVAnswers {
namespace {

using namespace LooseJson;
using nlohmann::json;

constexpr int secondsPerMinute = 60;
/// More than any show has; keeps sums of them small numbers.
constexpr int mostEpisodes = 100000;

/// The first text under the key, an object's own before those within it; empty when there is none.
std::string findText(const json& value, const char* key) {
    std::string found = text(at(value, key));
    if (!found.empty()) return found;
    for (const json* item : items(value)) {
        found = findText(*item, key);
        if (!found.empty()) return found;
    }
    return found;
}

std::optional<std::chrono::year_month_day> dayOf(std::optional<std::int64_t> milliseconds) {
    using namespace std::chrono;
    constexpr sys_days first = std::chrono::year(1) / January / 1;
    constexpr sys_days last = std::chrono::year(9999) / December / 31;
    if (!milliseconds) return std::nullopt;
    const sys_days day =
        floor<days>(sys_time<std::chrono::milliseconds>(std::chrono::milliseconds(*milliseconds)));
    if (day < first || day > last) return std::nullopt;
    return year_month_day(day);
}

std::optional<std::int64_t> releaseDate(const json& value) {
    return integer(at(value, "releaseDate"));
}

const json& contentOf(const json& answer) {
    return at(at(answer, "data"), "content");
}

std::string firstGenre(const json& content) {
    for (const json* genre : items(at(content, "genres"))) {
        std::string name = text(at(*genre, "name"));
        if (!name.empty()) return name;
    }
    return {};
}

std::string ratingOf(const json& content) {
    return text(at(at(content, "rating"), "displayName"));
}

std::vector<std::string> roles(const json& content, const char* role) {
    return texts(at(at(content, "rolesSummary"), role));
}

/// What a search tells of a show and of a film alike.
template <typename Found>
Found foundOne(const json& item) {
    Found found;
    found.source = SourceID::appleTV;
    found.id = text(at(item, "id"));
    found.title = text(at(item, "title"));
    found.year = year(releaseDate(item));
    found.overview = text(at(item, "description"));
    found.poster = AppleTVPictures::listPicture(at(item, "images"));
    return found;
}

ExtMovie foundMovie(const json& item) {
    auto movie = foundOne<ExtMovie>(item);
    // All that there is when the film's own record can't be had.
    AppleTVPictures::Pictures pictures = AppleTVPictures::pictures(at(item, "images"));
    movie.wide = std::move(pictures.wide);
    movie.tall = std::move(pictures.tall);
    return movie;
}

template <typename Found>
void add(std::vector<Found>& list, std::set<std::string>& seen, Found found) {
    const bool known = !found.id.empty() && !found.title.empty();
    // A title that stands on two shelves is still one title.
    if (known && seen.insert(found.id).second) list.push_back(std::move(found));
}

}  // namespace

std::optional<Key> parseKey(const json& answer) {
    Key key{findText(answer, "utsk"), findText(answer, "pfm")};
    if (key.utsk.empty()) return std::nullopt;
    if (key.pfm.empty()) key.pfm = "desktop";
    return key;
}

SearchResult parseSearch(const json& answer) {
    SearchResult result;
    std::set<std::string> seen;
    for (const json* shelf : items(at(at(at(answer, "data"), "canvas"), "shelves"))) {
        for (const json* item : items(at(*shelf, "items"))) {
            const std::string type = text(at(*item, "type"));
            if (type == "Show") add(result.shows, seen, foundOne<ExtShow>(*item));
            if (type == "Movie") add(result.movies, seen, foundMovie(*item));
        }
    }
    return result;
}

std::optional<ExtMovie> parseMovie(const json& answer, const std::string& id) {
    const json& content = contentOf(answer);
    ExtMovie movie;
    movie.source = SourceID::appleTV;
    movie.id = id;
    movie.title = text(at(content, "title"));
    if (movie.title.empty()) return std::nullopt;
    movie.year = year(releaseDate(content));
    movie.date = isoDate(releaseDate(content));
    movie.overview = text(at(content, "description"));
    movie.minutes = minutes(number(at(content, "duration")), secondsPerMinute);
    movie.genre = firstGenre(content);
    movie.rating = ratingOf(content);
    movie.cast = roles(content, "cast");
    movie.directors = roles(content, "directors");
    AppleTVPictures::Pictures pictures = AppleTVPictures::pictures(at(content, "images"));
    movie.wide = std::move(pictures.wide);
    movie.tall = std::move(pictures.tall);
    return movie;
}

std::optional<ExtShowInfo> parseShowInfo(const json& answer) {
    const json& content = contentOf(answer);
    if (!content.is_object()) return std::nullopt;
    ExtShowInfo info;
    info.overview = text(at(content, "description"));
    info.genre = firstGenre(content);
    info.rating = ratingOf(content);
    info.date = isoDate(releaseDate(content));
    info.cast = roles(content, "cast");
    AppleTVPictures::Pictures pictures = AppleTVPictures::pictures(at(content, "images"));
    info.wide = std::move(pictures.wide);
    info.tall = std::move(pictures.tall);
    for (const json* season : items(at(content, "seasons"))) {
        const auto number = smallInteger(at(*season, "seasonNumber"));
        if (!number) continue;
        auto own = AppleTVPictures::pictures(at(*season, "images"));
        if (!own.tall.empty()) info.seasonTall[*number] = std::move(own.tall);
    }
    return info;
}

std::optional<SeasonSummaries> parseSeasonSummaries(const json& answer) {
    const json& list = at(at(answer, "data"), "seasonSummaries");
    if (!list.is_array()) return std::nullopt;
    SeasonSummaries summaries;
    for (const json* summary : items(list)) {
        const auto season = smallInteger(at(*summary, "seasonNumber"));
        const auto count = smallInteger(at(*summary, "episodeCount"));
        if (season && count && *count >= 0 && *count <= mostEpisodes) summaries[*season] = *count;
    }
    return summaries;
}

std::vector<ExtEpisode> parseEpisodes(const json& answer) {
    std::vector<ExtEpisode> episodes;
    for (const json* item : items(at(at(answer, "data"), "episodes"))) {
        const auto season = smallInteger(at(*item, "seasonNumber"));
        const auto number = smallInteger(at(*item, "episodeNumber"));
        if (!season || !number) continue;
        ExtEpisode episode;
        episode.season = *season;
        episode.number = *number;
        episode.title = text(at(*item, "title"));
        episode.overview = text(at(*item, "description"));
        episode.date = isoDate(releaseDate(*item));
        episode.minutes = minutes(LooseJson::number(at(*item, "duration")), secondsPerMinute);
        episodes.push_back(std::move(episode));
    }
    return episodes;
}

std::int64_t offset(int season, const SeasonSummaries& summaries) {
    std::int64_t sum = 0;
    for (const auto& [number, count] : summaries) {
        if (number < season) sum += count;
    }
    return sum;
}

std::optional<int> year(std::optional<std::int64_t> milliseconds) {
    const auto day = dayOf(milliseconds);
    if (!day) return std::nullopt;
    return static_cast<int>(day->year());
}

std::string isoDate(std::optional<std::int64_t> milliseconds) {
    const auto day = dayOf(milliseconds);
    if (!day) return {};
    char text[16];
    std::snprintf(text, sizeof text, "%04d-%02u-%02u", static_cast<int>(day->year()),
                  static_cast<unsigned>(day->month()), static_cast<unsigned>(day->day()));
    return text;
}

}  // namespace marlet::AppleTVAnswers
