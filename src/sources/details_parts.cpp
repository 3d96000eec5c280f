#include "sources/details_parts.h"

#include <algorithm>
#include <initializer_list>
#include <limits>
#include <string_view>

#include "sources/details_loader.h"

namespace marlet::DetailsParts {
namespace {

/// What the description field of a file holds, characters.
constexpr std::size_t descriptionLimit = 255;

std::vector<TMDBPerson> listOf(const People& people) {
    return people.value_or(std::vector<TMDBPerson>());
}

const People& creditsOr(const People& own, const People* credits) {
    return own || credits == nullptr ? own : *credits;
}

void addNames(std::vector<std::string>& names, const std::vector<TMDBPerson>& people) {
    for (const TMDBPerson& person : people) names.push_back(person.name);
}

/// Billing order; who has none comes last.
std::vector<TMDBPerson> byOrder(const People& people) {
    std::vector<TMDBPerson> sorted = listOf(people);
    const auto place = [](const TMDBPerson& person) {
        return person.order.value_or(std::numeric_limits<int>::max());
    };
    std::stable_sort(sorted.begin(), sorted.end(),
                     [place](const auto& a, const auto& b) { return place(a) < place(b); });
    return sorted;
}

std::vector<std::string> namesWith(const People& crew,
                                   std::initializer_list<std::string_view> jobs) {
    std::vector<std::string> names;
    for (const TMDBPerson& person : listOf(crew)) {
        const bool wanted =
            person.job && std::find(jobs.begin(), jobs.end(), *person.job) != jobs.end();
        if (wanted) names.push_back(person.name);
    }
    return DetailsLoader::unique(names);
}

const People& nobody() {
    static const People none;
    return none;
}

std::vector<TMDBImage> picturesOf(const std::optional<TMDBImages>& images,
                                  std::optional<std::vector<TMDBImage>> TMDBImages::*kind) {
    if (!images) return {};
    return ((*images).*kind).value_or(std::vector<TMDBImage>());
}

void add(std::vector<ArtworkOption>& list, std::vector<ArtworkOption> more) {
    list.insert(list.end(), more.begin(), more.end());
}

}  // namespace

std::vector<std::string> castOf(const TMDBMovieFull& film) {
    std::vector<std::string> names;
    if (film.credits) addNames(names, byOrder(film.credits->cast));
    return DetailsLoader::unique(names);
}

std::vector<std::string> castOf(const TMDBEpisodeFull& episode) {
    std::vector<std::string> names;
    if (episode.credits) addNames(names, byOrder(episode.credits->cast));
    const People* credited = episode.credits ? &episode.credits->guest_stars : nullptr;
    addNames(names, listOf(creditsOr(episode.guest_stars, credited)));
    return DetailsLoader::unique(names);
}

Crew crewOf(const TMDBMovieFull& film) {
    const People& crew = film.credits ? film.credits->crew : nobody();
    return {namesWith(crew, {"Director"}), namesWith(crew, {"Screenplay", "Writer", "Story"})};
}

Crew crewOf(const TMDBEpisodeFull& episode) {
    const People* credited = episode.credits ? &episode.credits->crew : nullptr;
    const People& crew = creditsOr(episode.crew, credited);
    return {namesWith(crew, {"Director"}),
            namesWith(crew, {"Writer", "Teleplay", "Story", "Screenplay"})};
}

std::string firstGenre(const std::optional<std::vector<TMDBGenre>>& genres) {
    return genres && !genres->empty() ? genres->front().name : std::string();
}

std::vector<ArtworkOption> wideOf(const TMDBMovieFull& film) {
    return DetailsLoader::options(picturesOf(film.images, &TMDBImages::backdrops),
                                  film.backdrop_path, ArtworkOption::Shape::wide);
}

std::vector<ArtworkOption> tallOf(const TMDBMovieFull& film) {
    return DetailsLoader::options(picturesOf(film.images, &TMDBImages::posters), film.poster_path,
                                  ArtworkOption::Shape::tall);
}

std::vector<ArtworkOption> wideOf(const std::optional<TMDBEpisodeFull>& episode,
                                  const TMDBShowFull& show) {
    std::vector<ArtworkOption> list;
    if (episode) {
        list = DetailsLoader::options(picturesOf(episode->images, &TMDBImages::stills),
                                      episode->still_path, ArtworkOption::Shape::wide);
        for (ArtworkOption& still : list) still.isStill = true;
    }
    add(list, DetailsLoader::options(picturesOf(show.images, &TMDBImages::backdrops),
                                     show.backdrop_path, ArtworkOption::Shape::wide));
    return list;
}

std::vector<ArtworkOption> tallOf(const std::vector<TMDBImage>& seasonPosters,
                                  const TMDBShowFull& show) {
    auto list = DetailsLoader::options(seasonPosters, std::nullopt, ArtworkOption::Shape::tall);
    add(list, DetailsLoader::options(picturesOf(show.images, &TMDBImages::posters),
                                     show.poster_path, ArtworkOption::Shape::tall));
    return list;
}

void setDescription(Details& details, const std::string& text) {
    details.longDescription = text;
    details.description = DetailsLoader::shorten(text, descriptionLimit);
}

void chooseFirst(FileDraft& draft) {
    if (!draft.chosenWide && !draft.wide.empty()) draft.chosenWide = draft.wide.front();
    if (!draft.chosenTall && !draft.tall.empty()) draft.chosenTall = draft.tall.front();
}

std::string seasonKey(std::int64_t show, int season) {
    return std::to_string(show) + "-S" + std::to_string(season);
}

}  // namespace marlet::DetailsParts
