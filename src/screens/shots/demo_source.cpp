#include "screens/shots/demo_source.h"

namespace marlet {

namespace {

PickerTitle filmOf(const char* id, const char* title, int year, int runtime, const char* overview) {
    PickerTitle film;
    film.id = id;
    film.title = title;
    film.year = year;
    film.runtime = runtime;
    film.overview = overview;
    film.isFull = true;
    return film;
}

PickerTitle showOf(const char* id, const char* title, int year, int seasons, const char* overview) {
    PickerTitle show = filmOf(id, title, year, 0, overview);
    show.runtime.reset();
    show.seasons = seasons;
    return show;
}

PickerSource::Titles films() {
    return {filmOf("1", "The Paper Lantern", 1962, 104,
                   "A night watchman finds letters that were never sent and starts to deliver "
                   "them."),
            filmOf("2", "The Paper Lantern", 2009, 91,
                   "Two sisters open their grandmother's tea house again for one summer."),
            filmOf("3", "Paper Lanterns Over Kessel", 1987, 126,
                   "A documentary about a festival and the people who build it."),
            filmOf("4", "Lantern of Paper, Lantern of Stone", 1934, 68,
                   "The earliest film of its studio that is still whole.")};
}

PickerSource::Titles shows() {
    return {showOf("11", "The Tide Clerks", 2014, 3,
                   "Harbour officials with too little to do and too much to tell."),
            showOf("12", "Tide and Clerk", 1979, 1, "A serial in six parts.")};
}

ResolvedFile fileOf(const char* name, MediaKind kind, const char* title, double minutes) {
    ResolvedFile file;
    file.file.url = std::filesystem::path("/made-up") / name;
    file.file.size = 1;
    file.file.duration = minutes * 60;
    Guess guess;
    guess.kind = kind;
    guess.title = title;
    file.guess = guess;
    file.verdict = Verdict::needsLook({"More than one title fits"});
    return file;
}

}  // namespace

ResolvedFile DemoSource::film() {
    return fileOf("the.paper.lantern.mp4", MediaKind::movie, "The Paper Lantern", 104);
}

ResolvedFile DemoSource::episode() {
    ResolvedFile file = fileOf("The Tide Clerks - 2x03.mkv", MediaKind::tv, "The Tide Clerks", 28);
    file.guess->season = 2;
    file.guess->episode = 3;
    return file;
}

Task<PickerSource::Titles> DemoSource::find(std::string, bool tv, CancelToken) {
    Titles found = films();
    if (tv) found = shows();
    co_return found;
}

Task<PickerTitle> DemoSource::full(PickerTitle title, bool, CancelToken) {
    co_return title;
}

Task<std::vector<int>> DemoSource::seasons(PickerTitle show, Fresh, CancelToken) {
    std::vector<int> numbers;
    for (int season = 1; season <= show.seasons.value_or(1); season++) numbers.push_back(season);
    numbers.push_back(0);
    co_return numbers;
}

Task<PickerSource::Episodes> DemoSource::episodes(PickerTitle, int season, Fresh, CancelToken) {
    static const std::vector<std::string> titles = {"Low Water",       "A Matter of Stamps",
                                                    "The Lost Buoy",   "Fog, Again",
                                                    "Mrs. Hale Waits", "Spring Tide"};
    Episodes all;
    for (const std::string& title : titles) {
        PickerEpisode episode;
        episode.season = season;
        episode.number = static_cast<int>(all.size()) + 1;
        episode.title = title;
        episode.runtime = 28;
        all.push_back(std::move(episode));
    }
    co_return all;
}

Task<bool> DemoSource::takeFilm(std::filesystem::path, PickerTitle, CancelToken) {
    co_return false;
}

Task<bool> DemoSource::takeEpisodes(std::vector<EpisodeChoice>, PickerTitle, int, CancelToken) {
    co_return false;
}

}  // namespace marlet
