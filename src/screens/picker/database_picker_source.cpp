#include "screens/picker/database_picker_source.h"

#include "foundation/text.h"
#include "sources/key_store.h"
#include "sources/tmdb_client.h"

namespace marlet {

namespace {

using Titles = PickerSource::Titles;
using Episodes = PickerSource::Episodes;

std::shared_ptr<TMDBClient> client(PickerSource::Fresh fresh, CancelToken cancel) {
    const auto refresh =
        fresh == PickerSource::Fresh::Yes ? TMDBClient::Refresh::Yes : TMDBClient::Refresh::No;
    auto made = TMDBClient::make(KeyStore::builtIn(), refresh, std::move(cancel));
    if (!made) throw TMDBError::noKey();
    return made;
}

PickerTitle titleOf(const TMDBSearchHit& hit) {
    PickerTitle title;
    title.id = std::to_string(hit.id);
    title.title = hit.anyTitle();
    title.year = hit.year();
    title.overview = hit.overview.value_or("");
    title.poster = hit.poster_path.value_or("");
    return title;
}

/// "Dune (1984)" as the words and the year.
std::pair<std::string, std::optional<int>> withYear(const std::string& words) {
    static const Regex year(R"(^(.*\S)\s*\(((?:18|19|20)\d\d)\)\s*$)");
    const auto found = year.firstMatch(words);
    if (!found) return {words, std::nullopt};
    return {found->groups[0], Text::integer(found->groups[1])};
}

void append(Episodes& episodes, const TMDBSeason& season) {
    for (const TMDBEpisode& each : season.episodes)
        episodes.push_back({season.season_number, each.episode_number, each.name, each.runtime,
                            each.air_date.value_or(""), each.still_path.value_or("")});
}

}  // namespace

Task<Titles> DatabasePickerSource::find(std::string words, bool tv, CancelToken cancel) {
    const auto tmdb = client(Fresh::No, cancel);
    const auto [title, year] = withYear(words);
    auto asking = tv ? tmdb->searchShow(words) : tmdb->searchMovie(title, year);
    const std::vector<TMDBSearchHit> hits = co_await asking;
    Titles titles;
    for (const TMDBSearchHit& hit : hits) titles.push_back(titleOf(hit));
    co_return titles;
}

Task<PickerTitle> DatabasePickerSource::full(PickerTitle title, bool tv, CancelToken cancel) {
    const auto tmdb = client(Fresh::No, cancel);
    const std::int64_t number = std::stoll(title.id);
    if (tv) {
        auto asking = tmdb->show(number);
        const TMDBShow show = co_await asking;
        title.seasons = show.number_of_seasons;
    } else {
        auto asking = tmdb->movie(number);
        const TMDBMovie film = co_await asking;
        title.runtime = film.runtime;
    }
    title.isFull = true;
    co_return title;
}

Task<std::vector<int>> DatabasePickerSource::seasons(PickerTitle show, Fresh fresh,
                                                     CancelToken cancel) {
    const auto tmdb = client(fresh, cancel);
    auto asking = tmdb->show(std::stoll(show.id));
    const TMDBShow record = co_await asking;
    std::vector<int> numbers;
    // The record counts the seasons; whether there are Specials shows when they are asked for.
    for (int number = 1; number <= std::clamp(record.number_of_seasons.value_or(1), 1, 500);
         number++)
        numbers.push_back(number);
    numbers.push_back(0);
    co_return numbers;
}

Task<Episodes> DatabasePickerSource::episodes(PickerTitle show, int season, Fresh fresh,
                                              CancelToken cancel) {
    const auto tmdb = client(fresh, cancel);
    Episodes episodes;
    try {
        auto asking = tmdb->season(season, std::stoll(show.id));
        TMDBSeason record = co_await asking;
        record.season_number = season;
        append(episodes, record);
    } catch (const TMDBError& error) {
        const bool isMissing = error.kind() == TMDBError::Kind::http && error.status() == 404;
        if (!isMissing) throw;
    }
    co_return episodes;
}

Task<Episodes> DatabasePickerSource::all(PickerTitle show, std::vector<int> seasons, Fresh fresh,
                                         CancelToken cancel) {
    const auto tmdb = client(fresh, cancel);
    auto asking = tmdb->seasons(std::move(seasons), std::stoll(show.id));
    std::map<int, TMDBSeason> found = co_await asking;
    Episodes episodes;
    for (auto& [number, season] : found) {
        season.season_number = number;
        append(episodes, season);
    }
    co_return episodes;
}

Task<bool> DatabasePickerSource::takeFilm(std::filesystem::path file, PickerTitle film,
                                          CancelToken cancel) {
    return model_.rematchMovie(std::move(file), std::stoll(film.id), std::move(cancel));
}

Task<bool> DatabasePickerSource::takeEpisodes(std::vector<EpisodeChoice> files, PickerTitle show,
                                              int season, CancelToken cancel) {
    return model_.rematchSeason(std::move(files), std::stoll(show.id), season, std::move(cancel));
}

}  // namespace marlet
