#include "catalogue/shapes.h"

#include <algorithm>
#include <map>

#include "catalogue/hash.h"
#include "catalogue/shapes_people.h"

namespace marlet::catalogue::Shapes {

namespace {

constexpr int pageSize = 20;

/// The service's own numbers of its genres.
const std::map<std::string, int, std::less<>>& genreNumbers() {
    static const std::map<std::string, int, std::less<>> numbers = {
        {"Action", 28},    {"Adventure", 12},  {"Animation", 16},
        {"Comedy", 35},    {"Crime", 80},      {"Documentary", 99},
        {"Drama", 18},     {"Family", 10751},  {"Fantasy", 14},
        {"History", 36},   {"Horror", 27},     {"Music", 10402},
        {"Mystery", 9648}, {"Romance", 10749}, {"Science Fiction", 878},
        {"Thriller", 53},  {"War", 10752},     {"Western", 37}};
    return numbers;
}

int genreNumber(const std::string& name) {
    const auto found = genreNumbers().find(name);
    return found == genreNumbers().end() ? 0 : found->second;
}

Json genreIds(const std::vector<std::string>& genres) {
    Json out = Json::array();
    for (const std::string& name : genres) out.push_back(genreNumber(name));
    return out;
}

Json genreList(const std::vector<std::string>& genres) {
    Json out = Json::array();
    for (const std::string& name : genres)
        out.push_back({{"id", genreNumber(name)}, {"name", name}});
    return out;
}

Json pathOf(const std::vector<Picture>& pictures) {
    return pictures.empty() ? Json(nullptr) : Json(pictures.front().path);
}

std::size_t voteCount(double popularity) {
    return static_cast<std::size_t>(popularity * 37);
}

Json imageList(const std::vector<Picture>& pictures, const Languages& languages) {
    Json out = Json::array();
    for (const Picture& picture : pictures) {
        if (languages && !languages->contains(picture.language)) continue;
        Json image = {{"aspect_ratio", picture.shape == Shape::poster ? 0.667 : 1.778},
                      {"file_path", picture.path},
                      {"height", picture.height()},
                      {"iso_639_1", nullptr},
                      {"vote_average", picture.vote},
                      {"vote_count", 4},
                      {"width", picture.width()}};
        if (!picture.language.empty()) image["iso_639_1"] = picture.language;
        out.push_back(std::move(image));
    }
    return out;
}

/// What a film's hit and its details have in common.
Json core(const Film& film) {
    return {{"adult", false},
            {"backdrop_path", pathOf(backdropsOf(film))},
            {"id", film.id},
            {"original_language", film.language},
            {"original_title", film.originalTitle},
            {"overview", film.overview},
            {"popularity", film.popularity},
            {"poster_path", pathOf(postersOf(film))},
            {"release_date", film.released},
            {"title", film.title},
            {"video", false},
            {"vote_average", film.vote},
            {"vote_count", voteCount(film.popularity)}};
}

Json core(const Show& show) {
    return {{"adult", false},
            {"backdrop_path", pathOf(backdropsOf(show))},
            {"first_air_date", show.firstAired},
            {"id", show.id},
            {"name", show.name},
            {"origin_country", {show.country}},
            {"original_language", show.language},
            {"original_name", show.name},
            {"overview", show.overview},
            {"popularity", show.popularity},
            {"poster_path", pathOf(postersOf(show))},
            {"vote_average", show.vote},
            {"vote_count", voteCount(show.popularity)}};
}

std::int64_t seasonId(const Show& show, const Season& season) {
    return show.id * 100 + season.number;
}

Json episodeCore(const Show& show, const Season& season, const Episode& episode) {
    return {{"air_date", episode.aired},
            {"episode_number", episode.number},
            {"id", seasonId(show, season) * 100 + episode.number},
            {"name", episode.title},
            {"overview", episode.overview},
            {"production_code", ""},
            {"runtime", episode.minutes},
            {"season_number", season.number},
            {"still_path", pathOf(stillsOf(show, season, episode))},
            {"vote_average", show.vote},
            {"vote_count", 11},
            {"crew", crewList(episode.directors, episode.writers)},
            {"guest_stars", castList(episode.guests, 500)}};
}

Json seasonSummary(const Show& show, const Season& season) {
    return {{"air_date", season.episodes.front().aired},
            {"episode_count", season.episodes.size()},
            {"id", seasonId(show, season)},
            {"name", season.name},
            {"overview", season.overview},
            {"poster_path", pathOf(postersOf(show, season))},
            {"season_number", season.number},
            {"vote_average", show.vote}};
}

std::size_t numberOfEpisodes(const Show& show) {
    std::size_t count = 0;
    for (const Season& season : show.seasons)
        if (season.number > 0) count += season.episodes.size();  // specials don't count
    return count;
}

Json certificate(const std::string& value, const std::string& date, int type) {
    return {{"certification", value},
            {"descriptors", Json::array()},
            {"iso_639_1", ""},
            {"note", ""},
            {"release_date", date + "T00:00:00.000Z"},
            {"type", type}};
}

}  // namespace

Json hit(const Film& film) {
    Json out = core(film);
    out["genre_ids"] = genreIds(film.genres);
    return out;
}

Json hit(const Show& show) {
    Json out = core(show);
    out["genre_ids"] = genreIds(show.genres);
    return out;
}

Json page(const std::vector<Json>& hits, int number) {
    const int count = static_cast<int>(hits.size());
    Json results = Json::array();
    for (int i = (number - 1) * pageSize; i < std::min(number * pageSize, count); i++)
        results.push_back(hits[static_cast<std::size_t>(i)]);
    return {{"page", number},
            {"results", std::move(results)},
            {"total_pages", (count + pageSize - 1) / pageSize},
            {"total_results", count}};
}

Json details(const Film& film) {
    Json out = core(film);
    out.update({{"belongs_to_collection", nullptr},
                {"budget", 0},
                {"genres", genreList(film.genres)},
                {"homepage", ""},
                {"imdb_id", nullptr},
                {"origin_country", {film.country}},
                {"production_companies", Json::array()},
                {"production_countries", {{{"iso_3166_1", film.country}, {"name", ""}}}},
                {"revenue", 0},
                {"runtime", film.minutes},
                {"spoken_languages", {{{"iso_639_1", film.language}, {"name", ""}}}},
                {"status", "Released"},
                {"tagline", ""}});
    return out;
}

Json details(const Show& show) {
    Json seasons = Json::array();
    int last = 0;
    for (const Season& season : show.seasons) {
        seasons.push_back(seasonSummary(show, season));
        last = std::max(last, season.number);
    }
    const Episode& final = show.seasons.back().episodes.back();
    Json out = core(show);
    out.update({{"created_by", Json::array()},
                {"episode_run_time", {final.minutes}},
                {"genres", genreList(show.genres)},
                {"homepage", ""},
                {"in_production", false},
                {"languages", {show.language}},
                {"last_air_date", final.aired},
                {"next_episode_to_air", nullptr},
                {"networks", Json::array()},
                {"number_of_episodes", numberOfEpisodes(show)},
                {"number_of_seasons", last},
                {"production_companies", Json::array()},
                {"seasons", std::move(seasons)},
                {"status", "Ended"},
                {"tagline", ""},
                {"type", "Scripted"}});
    return out;
}

Json season(const Show& show, const Season& season) {
    Json episodes = Json::array();
    for (const Episode& one : season.episodes) {
        Json entry = episodeCore(show, season, one);
        entry["episode_type"] = "standard";
        entry["show_id"] = show.id;
        episodes.push_back(std::move(entry));
    }
    Json out = seasonSummary(show, season);
    out.erase("episode_count");
    out["_id"] = hexOf(hashOf(show.name + season.name));
    out["episodes"] = std::move(episodes);
    return out;
}

Json episode(const Show& show, const Season& season, const Episode& episode) {
    return episodeCore(show, season, episode);
}

Json credits(const Film& film) {
    return {{"cast", castList(film.cast)}, {"crew", crewList(film.directors, film.writers)}};
}

Json credits(const Show& show, const Episode& episode) {
    return {{"cast", castList(show.cast)},
            {"crew", crewList(episode.directors, episode.writers)},
            {"guest_stars", castList(episode.guests, 500)}};
}

Json releaseDates(const Film& film) {
    Json home = certificate("", film.released, 3);
    // The United States have an empty entry first, as many titles do: a premiere has no rating.
    Json here = {certificate("", film.released, 1), certificate(film.rating, film.released, 3)};
    Json results = Json::array();
    if (film.country != "US")
        results.push_back({{"iso_3166_1", film.country}, {"release_dates", {std::move(home)}}});
    results.push_back({{"iso_3166_1", "US"}, {"release_dates", std::move(here)}});
    return {{"results", std::move(results)}};
}

Json contentRatings(const Show& show) {
    Json results = Json::array();
    results.push_back({{"descriptors", Json::array()}, {"iso_3166_1", "GB"}, {"rating", "12"}});
    if (!show.rating.empty())
        results.push_back(
            {{"descriptors", Json::array()}, {"iso_3166_1", "US"}, {"rating", show.rating}});
    return {{"results", std::move(results)}};
}

Json images(const Film& film, const Languages& languages) {
    return {{"backdrops", imageList(backdropsOf(film), languages)},
            {"logos", Json::array()},
            {"posters", imageList(postersOf(film), languages)}};
}

Json images(const Show& show, const Languages& languages) {
    return {{"backdrops", imageList(backdropsOf(show), languages)},
            {"logos", Json::array()},
            {"posters", imageList(postersOf(show), languages)}};
}

Json images(const Show& show, const Season& season, const Languages& languages) {
    return {{"posters", imageList(postersOf(show, season), languages)}};
}

Json images(const Show& show, const Season& season, const Episode& episode,
            const Languages& languages) {
    return {{"stills", imageList(stillsOf(show, season, episode), languages)}};
}

}  // namespace marlet::catalogue::Shapes
