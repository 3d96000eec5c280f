#include "catalogue/other_shapes.h"
#include "catalogue/picture_list.h"

namespace marlet::catalogue::ITunesShapes {

namespace {

void addArt(Json& out, const std::vector<Picture>& pictures, const std::string& root) {
    if (pictures.empty()) return;
    const std::string place = root + "/image/thumb" + pictures.front().path;
    out["artworkUrl30"] = place + "/30x30bb.jpg";
    out["artworkUrl60"] = place + "/60x60bb.jpg";
    out["artworkUrl100"] = place + "/100x100bb.jpg";
}

void addGenreAndRating(Json& out, const std::vector<std::string>& genres,
                       const std::string& rating) {
    if (!genres.empty()) out["primaryGenreName"] = genres.front();
    if (!rating.empty()) out["contentAdvisoryRating"] = rating;
}

/// The store tells moments, not days.
std::string released(const std::string& date) {
    return date + "T08:00:00Z";
}

constexpr int msPerMinute = 60000;

}  // namespace

std::int64_t collectionIdOf(const Show& show, const Season& season) {
    return show.id * 100 + season.number;
}

Json answer(const std::vector<Json>& results) {
    return {{"resultCount", results.size()}, {"results", results}};
}

Json movie(const Film& film, const std::string& root) {
    Json out = {{"wrapperType", "track"},
                {"kind", "feature-movie"},
                {"trackId", film.id},
                {"trackName", film.title},
                {"releaseDate", released(film.released)},
                {"trackTimeMillis", film.minutes * msPerMinute + 4217},
                {"longDescription", film.overview},
                {"country", "USA"},
                {"currency", "USD"}};
    if (!film.directors.empty()) out["artistName"] = film.directors.front();
    addGenreAndRating(out, film.genres, film.rating);
    addArt(out, postersOf(film), root);
    return out;
}

Json artist(const Show& show) {
    return {{"wrapperType", "artist"},
            {"artistType", "TV Show"},
            {"artistName", show.name},
            {"artistId", show.id},
            {"primaryGenreName", "TV Shows"}};
}

Json collection(const Show& show, const Season& season, const std::string& root) {
    const std::string name =
        season.number == 0 ? show.name + ": " + season.name : show.name + ", " + season.name;
    Json out = {{"wrapperType", "collection"},
                {"collectionType", "TV Season"},
                {"artistId", show.id},
                {"artistName", show.name},
                {"collectionId", collectionIdOf(show, season)},
                {"collectionName", name},
                {"trackCount", season.episodes.size()},
                {"longDescription", season.overview},
                {"releaseDate", released(season.episodes.front().aired)}};
    addGenreAndRating(out, show.genres, show.rating);
    addArt(out, postersOf(show, season), root);
    return out;
}

Json episode(const Show& show, const Season& season, const Episode& one, const std::string& root) {
    Json out = {{"wrapperType", "track"},
                {"kind", "tv-episode"},
                {"artistId", show.id},
                {"artistName", show.name},
                {"collectionId", collectionIdOf(show, season)},
                {"collectionName", show.name + ", " + season.name},
                {"trackId", collectionIdOf(show, season) * 100 + one.number},
                {"trackNumber", one.number},
                {"trackName", one.title},
                {"shortDescription", one.overview.substr(0, one.overview.find('.'))},
                {"longDescription", one.overview},
                {"releaseDate", released(one.aired)},
                {"trackTimeMillis", one.minutes * msPerMinute - 1383}};
    addGenreAndRating(out, show.genres, show.rating);
    addArt(out, postersOf(show, season), root);
    return out;
}

}  // namespace marlet::catalogue::ITunesShapes
