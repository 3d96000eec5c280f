#include "identify/external_match.h"

#include "identify/matcher.h"

namespace marlet::ExternalMatch {

namespace {

/// The first tall picture, else what stands in for it, in its small form.
std::optional<std::string> rowPicture(const std::vector<std::string>& tall,
                                      const std::optional<std::string>& otherwise,
                                      const std::vector<std::string>& wide) {
    std::optional<std::string> picture = otherwise;
    if (!tall.empty())
        picture = tall.front();
    else if (!picture && !wide.empty())
        picture = wide.front();
    if (picture) picture = Matcher::thumbnail(*picture);
    return picture;
}

const std::vector<std::string>& tallPictures(const ExtShowInfo& info, int season) {
    const auto own = info.seasonTall.find(season);
    return own == info.seasonTall.end() || own->second.empty() ? info.tall : own->second;
}

}  // namespace

Match ofFilm(const ExtMovie& film, SourceID source) {
    Match match;
    match.tmdbID = film.pseudoID();
    match.kind = MediaKind::movie;
    match.title = film.title;
    match.year = film.year;
    match.runtimeMinutes = film.minutes;
    match.posterPath = rowPicture(film.tall, film.poster, {});
    match.manual = ManualDetails{.title = film.title,
                                 .description = film.overview,
                                 .releaseDate = film.date,
                                 .cast = film.cast,
                                 .directors = film.directors,
                                 .writers = {},
                                 .source = source,
                                 .genre = film.genre,
                                 .rating = film.rating,
                                 .wide = film.wide,
                                 .tall = film.tall};
    return match;
}

Match ofEpisode(const ExtShow& show, const ExtShowInfo& info, const ExtEpisode& episode,
                SourceID source) {
    const std::vector<std::string>& tall = tallPictures(info, episode.season);
    Match match;
    match.tmdbID = show.pseudoID();
    match.kind = MediaKind::tv;
    match.title = show.title;
    match.year = show.year;
    match.season = episode.season;
    match.episode = episode.number;
    match.episodeTitle = episode.title.empty() ? show.title : episode.title;
    match.runtimeMinutes = episode.minutes;
    match.posterPath = rowPicture(tall, show.poster, info.wide);
    match.manual =
        ManualDetails{.title = *match.episodeTitle,
                      .description = episode.overview.empty() ? info.overview : episode.overview,
                      .releaseDate = episode.date.empty() ? info.date : episode.date,
                      .cast = info.cast,
                      .directors = {},
                      .writers = {},
                      .source = source,
                      .genre = info.genre,
                      .rating = info.rating,
                      .wide = info.wide,
                      .tall = tall};
    return match;
}

}  // namespace marlet::ExternalMatch
