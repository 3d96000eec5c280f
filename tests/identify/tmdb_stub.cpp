#include "identify/tmdb_stub.h"

#include <nlohmann/json.hpp>

namespace marlet::test {
namespace {

using Json = nlohmann::json;

std::string escaped(const std::string& text) {
    static const std::string plain =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-._~";
    static const std::string hex = "0123456789ABCDEF";
    std::string result;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (plain.find(c) != std::string::npos) {
            result += c;
        } else {
            result += {'%', hex[byte >> 4], hex[byte & 15]};
        }
    }
    return result;
}

Json orNull(const std::string& text) {
    return text.empty() ? Json() : Json(text);
}

Json orNull(const std::optional<int>& number) {
    return number ? Json(*number) : Json();
}

Json filmJson(const TmdbStub::Film& film) {
    return {{"id", film.id},
            {"title", film.title},
            {"release_date", orNull(film.released)},
            {"runtime", orNull(film.minutes)},
            {"popularity", film.popularity},
            {"poster_path", "/film" + std::to_string(film.id) + ".jpg"}};
}

Json showJson(const TmdbStub::Show& show) {
    return {{"id", show.id},
            {"name", show.name},
            {"first_air_date", orNull(show.firstAired)},
            {"poster_path", orNull(show.poster)}};
}

}  // namespace

TmdbStub::TmdbStub() : api_("MARLET_TMDB_API", http_.root() + "/3") {
    const std::string none = R"({"results":[]})";
    http_.answer("/3/search/movie", none);
    http_.answer("/3/search/tv", none);
}

void TmdbStub::film(const Film& film) {
    films_[film.id] = film;
    http_.answer("/3/movie/" + std::to_string(film.id), filmJson(film).dump());
}

void TmdbStub::finds(const std::string& query, const std::vector<std::int64_t>& ids,
                     std::optional<int> year) {
    Json results = Json::array();
    for (const std::int64_t id : ids) results.push_back(filmJson(films_.at(id)));
    http_.answer("/3" + searchTarget(query, year), Json{{"results", results}}.dump());
}

void TmdbStub::show(const Show& show) {
    shows_[show.id] = show;
}

void TmdbStub::findsShows(const std::string& query, const std::vector<std::int64_t>& ids) {
    Json results = Json::array();
    for (const std::int64_t id : ids) results.push_back(showJson(shows_.at(id)));
    http_.answer("/3/search/tv?query=" + escaped(query), Json{{"results", results}}.dump());
}

void TmdbStub::season(std::int64_t show, int number, const std::vector<Episode>& episodes,
                      const std::string& poster) {
    Json list = Json::array();
    for (const Episode& episode : episodes) {
        list.push_back({{"episode_number", episode.number},
                        {"name", episode.name},
                        {"runtime", orNull(episode.minutes)}});
    }
    const Json season{
        {"season_number", number}, {"poster_path", orNull(poster)}, {"episodes", list}};
    http_.answer("/3/tv/" + std::to_string(show) + "/season/" + std::to_string(number),
                 season.dump());
}

void TmdbStub::fails(const std::string& path, int status) {
    HttpStub::Reply reply;
    reply.status = status;
    reply.body = "{}";
    http_.answer("/3" + path, std::vector<HttpStub::Reply>{reply});
}

std::vector<std::string> TmdbStub::asked() const {
    std::vector<std::string> list = http_.targets();
    for (std::string& target : list) target.erase(0, 2);
    return list;
}

std::string TmdbStub::searchTarget(const std::string& query, std::optional<int> year) {
    std::string target = "/search/movie?include_adult=false&query=" + escaped(query);
    if (year) target += "&year=" + std::to_string(*year);
    return target;
}

std::shared_ptr<TMDBClient> TmdbStub::client() const {
    return TMDBClient::make("test-token", TMDBClient::Refresh::Yes);
}

}  // namespace marlet::test
