#include "sources/tmdb_decode.h"

#include "foundation/text.h"
#include "sources/json_object.h"

namespace marlet {

// One function a record, one line a field, in the order of tmdb_records.h. Static and not in an
// unnamed namespace, where JsonObject's templates would not find them by their argument.

static void readRecord(const Json& json, const std::string& what, TMDBSearchHit& out) {
    JsonObject(json, what)
        .required("id", out.id)
        .optional("title", out.title)
        .optional("name", out.name)
        .optional("release_date", out.release_date)
        .optional("first_air_date", out.first_air_date)
        .optional("poster_path", out.poster_path)
        .optional("popularity", out.popularity)
        .optional("overview", out.overview);
}

static void readRecord(const Json& json, const std::string& what, TMDBMovie& out) {
    JsonObject(json, what)
        .required("id", out.id)
        .required("title", out.title)
        .optional("release_date", out.release_date)
        .optional("runtime", out.runtime)
        .optional("poster_path", out.poster_path);
}

static void readRecord(const Json& json, const std::string& what, TMDBShow& out) {
    JsonObject(json, what)
        .required("id", out.id)
        .required("name", out.name)
        .optional("first_air_date", out.first_air_date)
        .optional("poster_path", out.poster_path)
        .optional("number_of_seasons", out.number_of_seasons)
        .optional("overview", out.overview);
}

static void readRecord(const Json& json, const std::string& what, TMDBEpisode& out) {
    JsonObject(json, what)
        .required("episode_number", out.episode_number)
        .required("name", out.name)
        .optional("runtime", out.runtime)
        .optional("still_path", out.still_path)
        .optional("air_date", out.air_date);
}

static void readRecord(const Json& json, const std::string& what, TMDBImage& out) {
    JsonObject(json, what)
        .required("file_path", out.file_path)
        .optional("iso_639_1", out.iso_639_1)
        .optional("vote_average", out.vote_average)
        .optional("width", out.width)
        .optional("height", out.height);
}

static void readRecord(const Json& json, const std::string& what, TMDBPerson& out) {
    JsonObject(json, what)
        .required("name", out.name)
        .optional("job", out.job)
        .optional("order", out.order);
}

static void readRecord(const Json& json, const std::string& what, TMDBGenre& out) {
    JsonObject(json, what).required("name", out.name);
}

static void readRecord(const Json& json, const std::string& what, TMDBMovieFull::Item& out) {
    JsonObject(json, what).required("certification", out.certification).optional("type", out.type);
}

static void readRecord(const Json& json, const std::string& what, TMDBShowFull::Item& out) {
    JsonObject(json, what).required("iso_3166_1", out.iso_3166_1).required("rating", out.rating);
}

// Records of records.

static void readRecord(const Json& json, const std::string& what, TMDBSeason& out) {
    JsonObject(json, what)
        .required("season_number", out.season_number)
        .optional("poster_path", out.poster_path)
        .required("episodes", out.episodes);
}

static void readRecord(const Json& json, const std::string& what, TMDBImages& out) {
    JsonObject(json, what)
        .optional("backdrops", out.backdrops)
        .optional("posters", out.posters)
        .optional("stills", out.stills);
}

static void readRecord(const Json& json, const std::string& what, TMDBCredits& out) {
    JsonObject(json, what)
        .optional("cast", out.cast)
        .optional("crew", out.crew)
        .optional("guest_stars", out.guest_stars);
}

static void readRecord(const Json& json, const std::string& what, TMDBMovieFull::Country& out) {
    JsonObject(json, what)
        .required("iso_3166_1", out.iso_3166_1)
        .required("release_dates", out.release_dates);
}

static void readRecord(const Json& json, const std::string& what, TMDBMovieFull::Releases& out) {
    JsonObject(json, what).required("results", out.results);
}

static void readRecord(const Json& json, const std::string& what, TMDBShowFull::Ratings& out) {
    JsonObject(json, what).required("results", out.results);
}

static void readRecord(const Json& json, const std::string& what, TMDBMovieFull& out) {
    JsonObject(json, what)
        .required("id", out.id)
        .required("title", out.title)
        .optional("release_date", out.release_date)
        .optional("runtime", out.runtime)
        .optional("overview", out.overview)
        .optional("poster_path", out.poster_path)
        .optional("backdrop_path", out.backdrop_path)
        .optional("genres", out.genres)
        .optional("credits", out.credits)
        .optional("images", out.images)
        .optional("release_dates", out.release_dates);
}

static void readRecord(const Json& json, const std::string& what, TMDBShowFull& out) {
    JsonObject(json, what)
        .required("id", out.id)
        .required("name", out.name)
        .optional("overview", out.overview)
        .optional("first_air_date", out.first_air_date)
        .optional("poster_path", out.poster_path)
        .optional("backdrop_path", out.backdrop_path)
        .optional("genres", out.genres)
        .optional("images", out.images)
        .optional("content_ratings", out.content_ratings);
}

static void readRecord(const Json& json, const std::string& what, TMDBEpisodeFull& out) {
    JsonObject(json, what)
        .required("episode_number", out.episode_number)
        .optional("season_number", out.season_number)
        .required("name", out.name)
        .optional("overview", out.overview)
        .optional("air_date", out.air_date)
        .optional("runtime", out.runtime)
        .optional("still_path", out.still_path)
        .optional("credits", out.credits)
        .optional("images", out.images)
        .optional("crew", out.crew)
        .optional("guest_stars", out.guest_stars);
}

static void readRecord(const Json& json, const std::string& what, TMDBDecode::SearchResponse& out) {
    JsonObject(json, what).required("results", out.results);
}

static void readRecord(const Json& json, const std::string& what, TMDBDecode::SeasonImages& out) {
    JsonObject(json, what).optional("posters", out.posters);
}

/// The number behind "season/"; nothing for any other key.
static std::optional<int> seasonNumber(const std::string& key) {
    constexpr std::string_view start = "season/";
    if (!Text::startsWith(key, start)) return std::nullopt;
    return Text::integer(std::string_view(key).substr(start.size()));
}

/// Forgiving: what isn't a season is left out, and the others survive.
static void readRecord(const Json& json, const std::string& what, TMDBSeasonBundle& out) {
    const JsonObject mustBeOne(json, what);
    for (const auto& [key, value] : json.items()) {
        const auto number = seasonNumber(key);
        if (!number) continue;
        try {
            TMDBSeason season;
            readRecord(value, key, season);
            out.seasons[*number] = std::move(season);
        } catch (const MFError&) {
        }
    }
}

namespace TMDBDecode {

template <typename Record>
Record decode(ByteView json) {
    const Json value = parseJson(json);
    Record record;
    readRecord(value, "", record);
    return record;
}

template SearchResponse decode(ByteView);
template SeasonImages decode(ByteView);
template TMDBMovie decode(ByteView);
template TMDBShow decode(ByteView);
template TMDBSeason decode(ByteView);
template TMDBSeasonBundle decode(ByteView);
template TMDBMovieFull decode(ByteView);
template TMDBShowFull decode(ByteView);
template TMDBEpisodeFull decode(ByteView);

}  // namespace TMDBDecode
}  // namespace marlet
