#include "catalogue/catalogue.h"

#include <algorithm>
#include <fstream>
#include <nlohmann/json.hpp>
#include <set>
#include <stdexcept>

namespace marlet::catalogue {

namespace fs = std::filesystem;
using nlohmann::json;

namespace {

/// The oldest film is of 1888, and nobody can have seen one of a far year.
constexpr int earliestYear = 1888;
constexpr int latestYear = 2100;
constexpr int longestMinutes = 300;

void require(bool holds, const std::string& what) {
    if (!holds) throw std::runtime_error(what);
}

int yearOf(const std::string& date) {
    return std::stoi(date.substr(0, 4));
}

void checkDate(const std::string& date) {
    const bool shaped = date.size() == 10 && date[4] == '-' && date[7] == '-';
    require(shaped, "a date must read YYYY-MM-DD, not \"" + date + "\"");
    require(yearOf(date) >= earliestYear && yearOf(date) <= latestYear, "no such year: " + date);
}

void checkMinutes(int minutes) {
    require(minutes >= 1 && minutes <= longestMinutes,
            "no such length: " + std::to_string(minutes) + " minutes");
}

std::vector<Credit> credits(const json& list) {
    std::vector<Credit> out;
    for (const json& pair : list)
        out.push_back({pair.at(0).get<std::string>(), pair.at(1).get<std::string>()});
    return out;
}

Film filmFrom(const json& j) {
    Film film;
    film.id = j.at("id").get<std::int64_t>();
    film.title = j.at("title").get<std::string>();
    film.originalTitle = j.value("originalTitle", film.title);
    film.alsoKnownAs = j.value("alsoKnownAs", std::vector<std::string>{});
    film.language = j.at("language").get<std::string>();
    film.country = j.at("country").get<std::string>();
    film.released = j.at("released").get<std::string>();
    film.minutes = j.at("minutes").get<int>();
    film.genres = j.at("genres").get<std::vector<std::string>>();
    film.rating = j.value("rating", "");
    film.popularity = j.at("popularity").get<double>();
    film.vote = j.at("vote").get<double>();
    film.overview = j.at("overview").get<std::string>();
    film.art = j.value("art", true);
    film.directors = j.at("directors").get<std::vector<std::string>>();
    film.writers = credits(j.at("writers"));
    film.cast = credits(j.at("cast"));
    checkDate(film.released);
    checkMinutes(film.minutes);
    return film;
}

Episode episodeFrom(const json& j) {
    Episode episode;
    episode.number = j.at("number").get<int>();
    episode.title = j.at("title").get<std::string>();
    episode.aired = j.at("aired").get<std::string>();
    episode.minutes = j.at("minutes").get<int>();
    episode.overview = j.at("overview").get<std::string>();
    episode.directors = j.at("directors").get<std::vector<std::string>>();
    episode.writers = credits(j.at("writers"));
    episode.guests = credits(j.at("guests"));
    checkDate(episode.aired);
    checkMinutes(episode.minutes);
    return episode;
}

Season seasonFrom(const json& j) {
    Season season;
    season.number = j.at("number").get<int>();
    season.name = j.at("name").get<std::string>();
    season.overview = j.at("overview").get<std::string>();
    for (const json& episode : j.at("episodes")) season.episodes.push_back(episodeFrom(episode));
    require(!season.episodes.empty(), "a season without episodes: " + season.name);
    return season;
}

Show showFrom(const json& j) {
    Show show;
    show.id = j.at("id").get<std::int64_t>();
    show.name = j.at("name").get<std::string>();
    show.language = j.at("language").get<std::string>();
    show.country = j.at("country").get<std::string>();
    show.firstAired = j.at("firstAired").get<std::string>();
    show.genres = j.at("genres").get<std::vector<std::string>>();
    show.rating = j.value("rating", "");
    show.popularity = j.at("popularity").get<double>();
    show.vote = j.at("vote").get<double>();
    show.overview = j.at("overview").get<std::string>();
    show.cast = credits(j.at("cast"));
    for (const json& season : j.at("seasons")) show.seasons.push_back(seasonFrom(season));
    checkDate(show.firstAired);
    return show;
}

std::vector<fs::path> jsonFiles(const fs::path& folder) {
    std::vector<fs::path> files;
    for (const fs::directory_entry& entry : fs::directory_iterator(folder))
        if (entry.path().extension() == ".json") files.push_back(entry.path());
    std::sort(files.begin(), files.end());
    return files;
}

/// Calls use with the JSON of each file of a folder; a failure gets the file's name in front.
template <typename Use>
void forEachFile(const fs::path& folder, Use use) {
    for (const fs::path& file : jsonFiles(folder)) {
        try {
            std::ifstream in(file);
            use(json::parse(in));
        } catch (const std::exception& error) {
            throw std::runtime_error(file.filename().string() + ": " + error.what());
        }
    }
}

template <typename Entry>
void checkUnique(const std::vector<Entry>& entries) {
    std::set<std::int64_t> seen;
    for (const Entry& entry : entries)
        require(seen.insert(entry.id).second,
                "two entries have the id " + std::to_string(entry.id));
}

template <typename Entry, typename Key>
const Entry* find(const std::vector<Entry>& entries, Key Entry::*field, const Key& wanted) {
    const auto found = std::find_if(entries.begin(), entries.end(),
                                    [&](const Entry& entry) { return entry.*field == wanted; });
    return found == entries.end() ? nullptr : &*found;
}

template <typename Entry>
const Entry& findNamed(const std::vector<Entry>& entries, std::string Entry::*name,
                       const std::string& wanted, int year) {
    for (const Entry& entry : entries)
        if (entry.*name == wanted && entry.year() == year) return entry;
    throw std::runtime_error("not in the catalogue: " + wanted + " (" + std::to_string(year) + ")");
}

}  // namespace

int Film::year() const {
    return yearOf(released);
}
int Show::year() const {
    return yearOf(firstAired);
}

const Episode* Season::episode(int wanted) const {
    return find(episodes, &Episode::number, wanted);
}

const Season* Show::season(int wanted) const {
    return find(seasons, &Season::number, wanted);
}

const Film* Catalogue::film(std::int64_t id) const {
    return find(films, &Film::id, id);
}
const Show* Catalogue::show(std::int64_t id) const {
    return find(shows, &Show::id, id);
}

const Film& Catalogue::film(const std::string& title, int year) const {
    return findNamed(films, &Film::title, title, year);
}

const Show& Catalogue::show(const std::string& name, int year) const {
    return findNamed(shows, &Show::name, name, year);
}

fs::path defaultFolder() {
    return MARLET_CATALOGUE_DATA;
}

Catalogue load(const fs::path& folder) {
    Catalogue out;
    forEachFile(folder / "films", [&](const json& list) {
        for (const json& film : list) out.films.push_back(filmFrom(film));
    });
    forEachFile(folder / "shows", [&](const json& show) { out.shows.push_back(showFrom(show)); });
    checkUnique(out.films);
    checkUnique(out.shows);
    return out;
}

}  // namespace marlet::catalogue
