#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace marlet::catalogue {

/// A person with what they did: a job of the crew, or a role of the cast.
struct Credit {
    std::string name;
    std::string as;
};

struct Film {
    std::int64_t id = 0;
    std::string title;
    std::string originalTitle;
    std::vector<std::string> alsoKnownAs;  ///< found by a search, never shown
    std::string language;                  ///< ISO 639-1
    std::string country;                   ///< ISO 3166-1
    std::string released;                  ///< "1922-03-04"
    int minutes = 0;
    std::vector<std::string> genres;
    std::string rating;  ///< of the United States; empty when there is none
    double popularity = 0;
    double vote = 0;
    std::string overview;
    bool art = true;  ///< false: an entry without pictures
    std::vector<std::string> directors;
    std::vector<Credit> writers;
    std::vector<Credit> cast;

    int year() const;
};

struct Episode {
    int number = 0;
    std::string title;
    std::string aired;
    int minutes = 0;
    std::string overview;
    std::vector<std::string> directors;
    std::vector<Credit> writers;
    std::vector<Credit> guests;
};

struct Season {
    int number = 0;
    std::string name;
    std::string overview;
    std::vector<Episode> episodes;

    const Episode* episode(int wanted) const;
};

struct Show {
    std::int64_t id = 0;
    std::string name;
    std::string language;
    std::string country;
    std::string firstAired;
    std::vector<std::string> genres;
    std::string rating;
    double popularity = 0;
    double vote = 0;
    std::string overview;
    std::vector<Credit> cast;
    std::vector<Season> seasons;

    int year() const;
    const Season* season(int wanted) const;
};

struct Catalogue {
    std::vector<Film> films;
    std::vector<Show> shows;

    const Film* film(std::int64_t id) const;
    const Show* show(std::int64_t id) const;
    /// By exact title or name, and year; throws std::runtime_error when there is none.
    const Film& film(const std::string& title, int year) const;
    const Show& show(const std::string& name, int year) const;
};

/// The catalogue of the source tree.
std::filesystem::path defaultFolder();
/// Reads films/*.json and shows/*.json below a folder. Throws std::runtime_error that names the
/// file and the entry for what can't be read or can't be true.
Catalogue load(const std::filesystem::path& folder);

}  // namespace marlet::catalogue
