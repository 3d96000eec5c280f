#include "screens/picker/catalogue_picker_source.h"

#include <algorithm>

#include "identify/asking.h"

namespace marlet {

Task<PickerSource::Titles> CataloguePickerSource::find(std::string words, bool tv,
                                                       CancelToken cancel) {
    Titles titles;
    if (tv) {
        auto asking = Asking::orCancelled(source()->searchShows(words, cancel), cancel);
        const std::vector<ExtShow> found = co_await asking;
        for (const ExtShow& show : found) {
            shows_[show.id] = show;
            titles.push_back({show.id, show.title, show.year, std::nullopt, show.overview,
                              show.poster.value_or(""), std::nullopt, true});
        }
    } else {
        auto asking = Asking::orCancelled(source()->searchMovies(words, cancel), cancel);
        const std::vector<ExtMovie> found = co_await asking;
        for (const ExtMovie& film : found) {
            films_[film.id] = film;
            titles.push_back({film.id, film.title, film.year, film.minutes, film.overview,
                              film.poster.value_or(""), std::nullopt, film.minutes.has_value()});
        }
    }
    co_return titles;
}

Task<PickerTitle> CataloguePickerSource::full(PickerTitle title, bool tv, CancelToken cancel) {
    if (tv) co_return title;
    auto asking = Asking::orCancelled(source()->movieDetails(films_.at(title.id), cancel), cancel);
    const ExtMovie film = co_await asking;
    title.runtime = film.minutes;
    if (title.overview.empty()) title.overview = film.overview;
    title.isFull = true;
    co_return title;
}

Task<std::vector<int>> CataloguePickerSource::seasons(PickerTitle show, Fresh, CancelToken cancel) {
    auto asking = Asking::orCancelled(source()->seasons(shows_.at(show.id), cancel), cancel);
    std::vector<int> numbers = co_await asking;
    std::stable_partition(numbers.begin(), numbers.end(), [](int number) { return number != 0; });
    co_return numbers;
}

Task<PickerSource::Episodes> CataloguePickerSource::episodes(PickerTitle show, int season, Fresh,
                                                             CancelToken cancel) {
    auto asking =
        Asking::orCancelled(source()->episodes(season, shows_.at(show.id), cancel), cancel);
    const std::vector<ExtEpisode> found = co_await asking;
    Episodes episodes;
    for (const ExtEpisode& each : found)
        episodes.push_back({season, each.number, each.title, each.minutes, each.date, ""});
    co_return episodes;
}

Task<bool> CataloguePickerSource::takeFilm(std::filesystem::path file, PickerTitle film,
                                           CancelToken cancel) {
    return model_.rematchExternal(std::move(file), source(), films_.at(film.id), std::move(cancel));
}

Task<bool> CataloguePickerSource::takeEpisodes(std::vector<EpisodeChoice> files, PickerTitle show,
                                               int season, CancelToken cancel) {
    return model_.rematchSeason(std::move(files), source(), shows_.at(show.id), season,
                                std::move(cancel));
}

}  // namespace marlet
