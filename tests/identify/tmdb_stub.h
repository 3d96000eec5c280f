#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "sources/tmdb_client.h"
#include "support/http_stub.h"
#include "support/temp_folder.h"

namespace marlet::test {

/// The database over real HTTP with exactly the films, shows and search results of a test. A
/// search that isn't scripted finds nothing; a film or season that isn't there is a 404.
class TmdbStub {
public:
    struct Film {
        std::int64_t id = 0;
        std::string title;
        std::string released;  ///< empty: no date
        std::optional<int> minutes;
        double popularity = 1.0;
    };
    struct Episode {
        int number = 0;
        std::string name;
        std::optional<int> minutes;
    };
    struct Show {
        std::int64_t id = 0;
        std::string name;
        std::string firstAired;
        std::string poster;  ///< empty: none
    };

    TmdbStub();

    void film(const Film& film);
    /// What a search for films gives, by the identifiers of known films.
    void finds(const std::string& query, const std::vector<std::int64_t>& ids,
               std::optional<int> year = {});
    void show(const Show& show);
    void findsShows(const std::string& query, const std::vector<std::int64_t>& ids);
    void season(std::int64_t show, int number, const std::vector<Episode>& episodes,
                const std::string& poster = "");
    /// From now on this status and nothing else; a path as "/search/movie".
    void fails(const std::string& path, int status);

    /// The targets asked so far, without "/3".
    std::vector<std::string> asked() const;
    /// How a search is spelled on the line.
    static std::string searchTarget(const std::string& query, std::optional<int> year = {});

    std::shared_ptr<TMDBClient> client() const;
    HttpStub& http() { return http_; }

private:
    HttpStub http_;
    ScopedEnv api_;
    std::map<std::int64_t, Film> films_;
    std::map<std::int64_t, Show> shows_;
};

}  // namespace marlet::test
