#include "sources/itunes_answers.h"

#include <nlohmann/json.hpp>
#include <set>

#include "foundation/text.h"
#include "sources/loose_json.h"

namespace marlet::ITunesAnswers {
namespace {

using namespace LooseJson;
using nlohmann::json;

constexpr int listSize = 300;    ///< pixels
constexpr int coverSize = 1600;  ///< pixels
constexpr double millisecondsPerMinute = 60000;

/// The first ten characters of "2026-07-03T07:00:00Z"; empty for what is no date.
std::string dateOf(const json& item) {
    static const Regex date(R"(^\d{4}-\d{2}-\d{2})");
    const std::string released = text(at(item, "releaseDate"));
    return date.matchesIn(released) ? released.substr(0, 10) : std::string();
}

std::optional<int> yearOf(const json& item) {
    static const Regex year(R"(^\d{4})");
    const std::string released = text(at(item, "releaseDate"));
    if (!year.matchesIn(released)) return std::nullopt;
    return Text::integer(released.substr(0, 4));
}

/// Numbers of the store are told as texts.
std::string idOf(const json& item, const char* key) {
    const auto number = integer(at(item, key));
    return number ? std::to_string(*number) : std::string();
}

std::string overviewOf(const json& item) {
    std::string words = text(at(item, "longDescription"));
    return words.empty() ? text(at(item, "shortDescription")) : words;
}

std::optional<int> minutesOf(const json& item) {
    return minutes(number(at(item, "trackTimeMillis")), millisecondsPerMinute);
}

std::optional<int> seasonOf(const json& item) {
    return seasonNumber(text(at(item, "collectionName")));
}

void fill(std::string& field, const std::string& with) {
    if (field.empty()) field = with;
}

}  // namespace

std::optional<int> seasonNumber(const std::string& name) {
    static const Regex pattern(R"(Season (\d+)\s*$)");
    const auto match = pattern.firstMatch(name);
    return match ? Text::integer(match->groups.at(0)) : std::nullopt;
}

std::optional<std::string> art(const json& item, int size) {
    static const Regex place(R"(\d+x\d+(bb|sr|ss)?\.(jpg|png))");
    std::string url = text(at(item, "artworkUrl100"));
    if (url.empty()) url = text(at(item, "artworkUrl60"));
    if (!Text::startsWith(url, "https://") && !Text::startsWith(url, "http://"))
        return std::nullopt;
    const std::string side = std::to_string(size);
    return place.replaceFirst(url, side + "x" + side + "bb.jpg");
}

std::vector<ExtShow> shows(const json& results) {
    std::vector<ExtShow> found;
    std::set<std::string> seen;
    for (const json* item : items(results)) {
        ExtShow show;
        show.source = SourceID::itunes;
        show.id = idOf(*item, "artistId");
        show.title = text(at(*item, "artistName"));
        if (show.id.empty() || show.title.empty() || !seen.insert(show.id).second) continue;
        show.year = yearOf(*item);
        show.overview = text(at(*item, "longDescription"));
        show.poster = art(*item, listSize);
        found.push_back(std::move(show));
    }
    return found;
}

std::map<int, std::int64_t> seasonCollections(const json& results) {
    std::map<int, std::int64_t> seasons;
    for (const json* item : items(results)) {
        const auto number = seasonOf(*item);
        const auto id = integer(at(*item, "collectionId"));
        if (number && id) seasons[*number] = *id;
    }
    return seasons;
}

ExtShowInfo showInfo(const json& results, const ExtShow& show) {
    ExtShowInfo info;
    info.overview = show.overview;
    for (const json* item : items(results)) {
        const auto number = seasonOf(*item);
        if (!number || !integer(at(*item, "collectionId"))) continue;
        if (const auto picture = art(*item, coverSize)) info.seasonTall[*number] = {*picture};
        fill(info.overview, text(at(*item, "longDescription")));
        fill(info.genre, text(at(*item, "primaryGenreName")));
        fill(info.rating, text(at(*item, "contentAdvisoryRating")));
        // The store lists seasons in any order; a show was released with its first.
        const std::string date = dateOf(*item);
        if (info.date.empty() || (!date.empty() && date < info.date)) info.date = date;
    }
    return info;
}

std::vector<ExtEpisode> episodes(const json& results, int season) {
    std::vector<ExtEpisode> found;
    for (const json* item : items(results)) {
        const auto number = smallInteger(at(*item, "trackNumber"));
        if (text(at(*item, "wrapperType")) != "track" || !number) continue;
        ExtEpisode episode;
        episode.season = season;
        episode.number = *number;
        episode.title = text(at(*item, "trackName"));
        episode.overview = overviewOf(*item);
        episode.date = dateOf(*item);
        episode.minutes = minutesOf(*item);
        found.push_back(std::move(episode));
    }
    return found;
}

std::vector<ExtMovie> movies(const json& results) {
    std::vector<ExtMovie> found;
    for (const json* item : items(results)) {
        if (text(at(*item, "wrapperType")) != "track" ||
            text(at(*item, "kind")) != "feature-movie") {
            continue;
        }
        ExtMovie movie;
        movie.source = SourceID::itunes;
        movie.id = idOf(*item, "trackId");
        movie.title = text(at(*item, "trackName"));
        if (movie.id.empty() || movie.title.empty()) continue;
        movie.year = yearOf(*item);
        movie.overview = overviewOf(*item);
        movie.minutes = minutesOf(*item);
        movie.poster = art(*item, listSize);
        if (const auto picture = art(*item, coverSize)) movie.tall = {*picture};
        const std::string director = text(at(*item, "artistName"));
        if (!director.empty()) movie.directors = {director};
        movie.genre = text(at(*item, "primaryGenreName"));
        movie.rating = text(at(*item, "contentAdvisoryRating"));
        movie.date = dateOf(*item);
        found.push_back(std::move(movie));
    }
    return found;
}

}  // namespace marlet::ITunesAnswers
