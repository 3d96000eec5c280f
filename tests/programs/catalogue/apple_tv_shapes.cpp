#include <chrono>
#include <cstdio>

#include "catalogue/hash.h"
#include "catalogue/other_shapes.h"
#include "catalogue/picture_list.h"

namespace marlet::catalogue::AppleTVShapes {

namespace {

/// Milliseconds since 1970, as the service tells dates.
std::int64_t milliseconds(const std::string& date) {
    using namespace std::chrono;
    int y = 0;
    unsigned m = 0;
    unsigned d = 0;
    if (std::sscanf(date.c_str(), "%d-%u-%u", &y, &m, &d) != 3) return 0;
    const sys_days day = std::chrono::year(y) / month(m) / std::chrono::day(d);
    return duration_cast<std::chrono::milliseconds>(day.time_since_epoch()).count();
}

Json image(const Picture& picture, const std::string& root) {
    return {{"url", root + "/image/thumb" + picture.path + "/{w}x{h}{c}.{f}"},
            {"width", picture.width()},
            {"height", picture.height()},
            {"supportsLayeredImage", false}};
}

Json images(const std::vector<Picture>& posters, const std::vector<Picture>& wide,
            const std::string& root) {
    Json out = Json::object();
    if (!posters.empty()) out["coverArt"] = image(posters.front(), root);
    if (!wide.empty()) {
        out["coverArt16X9"] = image(wide.front(), root);
        // The strip of letters that lies over pictures; no cover.
        Json logo = image(wide.front(), root);
        logo["width"] = 1176;
        logo["height"] = 176;
        out["contentLogo"] = std::move(logo);
    }
    return out;
}

Json genres(const std::vector<std::string>& names) {
    Json out = Json::array();
    for (const std::string& name : names)
        out.push_back({{"id", hexOf(hashOf(name))}, {"name", name}, {"type", "Genre"}});
    return out;
}

Json rating(const std::string& name) {
    if (name.empty()) return nullptr;
    return {{"displayName", name}, {"name", name}, {"system", "US"}};
}

Json names(const std::vector<Credit>& credits) {
    Json out = Json::array();
    for (const Credit& credit : credits) out.push_back(credit.name);
    return out;
}

Json hit(const Film& film, const std::string& root) {
    return {{"id", idOf(film)},
            {"type", "Movie"},
            {"title", film.title},
            {"releaseDate", milliseconds(film.released)},
            {"images", images(postersOf(film), backdropsOf(film), root)},
            {"url", "https://tv.example/movie/" + idOf(film)}};
}

Json hit(const Show& show, const std::string& root) {
    return {{"id", idOf(show)},
            {"type", "Show"},
            {"title", show.name},
            {"releaseDate", milliseconds(show.firstAired)},
            {"images", images(postersOf(show), backdropsOf(show), root)},
            {"url", "https://tv.example/show/" + idOf(show)}};
}

Json shelf(const char* title, Json items) {
    return {{"id", hexOf(hashOf(title))}, {"title", title}, {"items", std::move(items)}};
}

Json episode(const Show& show, const Season& season, const Episode& one) {
    return {{"id",
             idOf(show) + ".s" + std::to_string(season.number) + "e" + std::to_string(one.number)},
            {"type", "Episode"},
            {"seasonNumber", season.number},
            {"episodeNumber", one.number},
            {"title", one.title},
            {"description", one.overview},
            {"duration", one.minutes * 60},
            {"releaseDate", milliseconds(one.aired)}};
}

}  // namespace

std::string idOf(const Film& film) {
    return "umc.cmc.film" + std::to_string(film.id);
}

std::string idOf(const Show& show) {
    return "umc.cmc.show" + std::to_string(show.id);
}

Json configurations(const std::string& key) {
    Json client = {{"pfm", "web"}, {"utsk", key}};
    return {{"data", {{"applicationProps", {{"requiredParamsMap", {{"Default", client}}}}}}}};
}

Json search(const std::vector<const Show*>& shows, const std::vector<const Film*>& films,
            const std::string& root) {
    Json programmes = Json::array();
    for (const Show* show : shows) programmes.push_back(hit(*show, root));
    Json movies = Json::array();
    for (const Film* film : films) movies.push_back(hit(*film, root));
    Json people = Json::array();
    people.push_back({{"id", "umc.cpc.1"}, {"type", "Person"}, {"title", "Somebody"}});
    Json shelves = Json::array();
    if (!shows.empty()) shelves.push_back(shelf("TV Shows", std::move(programmes)));
    shelves.push_back(shelf("People", std::move(people)));
    if (!films.empty()) shelves.push_back(shelf("Movies", std::move(movies)));
    return {{"data", {{"canvas", {{"id", "search"}, {"shelves", std::move(shelves)}}}}}};
}

Json show(const Show& show, const std::string& root) {
    Json seasons = Json::array();
    for (const Season& season : show.seasons)
        seasons.push_back({{"seasonNumber", season.number},
                           {"title", season.name},
                           {"images", images(postersOf(show, season), {}, root)}});
    Json content = hit(show, root);
    content.update({{"description", show.overview},
                    {"genres", genres(show.genres)},
                    {"rating", rating(show.rating)},
                    {"rolesSummary", {{"cast", names(show.cast)}}},
                    {"seasons", std::move(seasons)}});
    return {{"data", {{"content", std::move(content)}}}};
}

Json episodes(const Show& show, std::size_t first, std::size_t count) {
    Json summaries = Json::array();
    Json page = Json::array();
    std::size_t place = 0;
    for (const Season& season : show.seasons) {
        summaries.push_back(
            {{"seasonNumber", season.number}, {"episodeCount", season.episodes.size()}});
        for (const Episode& one : season.episodes) {
            if (place >= first && place < first + count) page.push_back(episode(show, season, one));
            place++;
        }
    }
    return {{"data",
             {{"seasonSummaries", std::move(summaries)},
              {"episodes", std::move(page)},
              {"totalEpisodeCount", place}}}};
}

Json movie(const Film& film, const std::string& root) {
    Json content = hit(film, root);
    content.update({{"description", film.overview},
                    {"duration", film.minutes * 60},
                    {"genres", genres(film.genres)},
                    {"rating", rating(film.rating)},
                    {"rolesSummary", {{"cast", names(film.cast)}, {"directors", film.directors}}}});
    return {{"data", {{"content", std::move(content)}}}};
}

}  // namespace marlet::catalogue::AppleTVShapes
