#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace marlet {

// The shapes of TMDB's version 3 API; a field's name is its JSON key. Optional fields may be
// absent or null; an answer that lacks another one doesn't decode.

struct TMDBSearchHit {
    std::int64_t id = 0;
    std::optional<std::string> title;
    std::optional<std::string> name;
    std::optional<std::string> release_date;
    std::optional<std::string> first_air_date;
    std::optional<std::string> poster_path;
    std::optional<double> popularity;
    std::optional<std::string> overview;

    std::optional<int> year() const;
    /// title, else name, else empty.
    std::string anyTitle() const;
};

struct TMDBMovie {
    std::int64_t id = 0;
    std::string title;
    std::optional<std::string> release_date;
    std::optional<int> runtime;  ///< minutes
    std::optional<std::string> poster_path;

    std::optional<int> year() const;
};

struct TMDBShow {
    std::int64_t id = 0;
    std::string name;
    std::optional<std::string> first_air_date;
    std::optional<std::string> poster_path;
    std::optional<int> number_of_seasons;
    std::optional<std::string> overview;

    std::optional<int> year() const;
};

struct TMDBEpisode {
    int episode_number = 0;
    std::string name;
    std::optional<int> runtime;  ///< minutes
    std::optional<std::string> still_path;
    std::optional<std::string> air_date;
};

struct TMDBSeason {
    int season_number = 0;
    std::optional<std::string> poster_path;
    std::vector<TMDBEpisode> episodes;
};

/// Seasons by number, from the "season/N" keys of a show's answer.
struct TMDBSeasonBundle {
    std::map<int, TMDBSeason> seasons;
};

struct TMDBImage {
    std::string file_path;
    std::optional<std::string> iso_639_1;
    std::optional<double> vote_average;
    std::optional<int> width;
    std::optional<int> height;
};

struct TMDBImages {
    std::optional<std::vector<TMDBImage>> backdrops;
    std::optional<std::vector<TMDBImage>> posters;
    std::optional<std::vector<TMDBImage>> stills;
};

struct TMDBPerson {
    std::string name;
    std::optional<std::string> job;
    std::optional<int> order;
};

struct TMDBCredits {
    std::optional<std::vector<TMDBPerson>> cast;
    std::optional<std::vector<TMDBPerson>> crew;
    std::optional<std::vector<TMDBPerson>> guest_stars;
};

struct TMDBGenre {
    std::string name;
};

struct TMDBMovieFull {
    struct Item {
        std::string certification;
        std::optional<int> type;
    };
    struct Country {
        std::string iso_3166_1;
        std::vector<Item> release_dates;
    };
    struct Releases {
        std::vector<Country> results;
    };
    std::int64_t id = 0;
    std::string title;
    std::optional<std::string> release_date;
    std::optional<int> runtime;
    std::optional<std::string> overview;
    std::optional<std::string> poster_path;
    std::optional<std::string> backdrop_path;
    std::optional<std::vector<TMDBGenre>> genres;
    std::optional<TMDBCredits> credits;
    std::optional<TMDBImages> images;
    std::optional<Releases> release_dates;

    /// The rating in the United States; nothing when there is none.
    std::optional<std::string> certification() const;
};

struct TMDBShowFull {
    struct Item {
        std::string iso_3166_1;
        std::string rating;
    };
    struct Ratings {
        std::vector<Item> results;
    };
    std::int64_t id = 0;
    std::string name;
    std::optional<std::string> overview;
    std::optional<std::string> first_air_date;
    std::optional<std::string> poster_path;
    std::optional<std::string> backdrop_path;
    std::optional<std::vector<TMDBGenre>> genres;
    std::optional<TMDBImages> images;
    std::optional<Ratings> content_ratings;

    std::optional<std::string> certification() const;
};

struct TMDBEpisodeFull {
    int episode_number = 0;
    std::optional<int> season_number;
    std::string name;
    std::optional<std::string> overview;
    std::optional<std::string> air_date;
    std::optional<int> runtime;
    std::optional<std::string> still_path;
    std::optional<TMDBCredits> credits;
    std::optional<TMDBImages> images;
    std::optional<std::vector<TMDBPerson>> crew;
    std::optional<std::vector<TMDBPerson>> guest_stars;
};

}  // namespace marlet
