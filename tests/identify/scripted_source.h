#pragma once

#include <map>
#include <string>
#include <vector>

#include "foundation/errors.h"
#include "sources/source.h"

namespace marlet::test {

/// A catalogue that answers what a test wrote into it and notes what it was asked.
class ScriptedSource : public ExternalSource {
public:
    explicit ScriptedSource(SourceID id) : id_(id) {}

    struct Show {
        ExtShow show;
        std::map<int, std::vector<ExtEpisode>> seasons;
        ExtShowInfo info;
    };

    std::vector<Show> shows;
    std::vector<ExtMovie> films;               ///< as a search tells them
    std::map<std::string, ExtMovie> filledIn;  ///< by id, as movieDetails tells them
    bool fails = false;                        ///< every call throws
    bool hidesDetails = false;                 ///< showInfo and movieDetails throw
    std::vector<std::string> asked;

    /// A show with one season of episodes that have a number and a title.
    Show& add(const std::string& id, const std::string& title, int season,
              const std::vector<ExtEpisode>& episodes) {
        Show show;
        show.show.source = id_;
        show.show.id = id;
        show.show.title = title;
        show.seasons[season] = episodes;
        shows.push_back(show);
        return shows.back();
    }
    ExtMovie& addFilm(const std::string& id, const std::string& title, std::optional<int> year,
                      std::optional<int> minutes) {
        ExtMovie film;
        film.source = id_;
        film.id = id;
        film.title = title;
        film.year = year;
        film.minutes = minutes;
        films.push_back(film);
        return films.back();
    }

    SourceID id() const override { return id_; }

    Task<std::vector<ExtShow>> searchShows(std::string title, CancelToken) override {
        note("shows " + title);
        std::vector<ExtShow> found;
        for (const Show& show : shows) found.push_back(show.show);
        co_return found;
    }
    Task<ExtShowInfo> showInfo(ExtShow show, CancelToken) override {
        note("info " + show.id);
        if (hidesDetails) throw MFError("no details");
        co_return at(show.id).info;
    }
    Task<std::vector<int>> seasons(ExtShow show, CancelToken) override {
        note("seasons " + show.id);
        std::vector<int> numbers;
        for (const auto& [number, episodes] : at(show.id).seasons) numbers.push_back(number);
        co_return numbers;
    }
    Task<std::vector<ExtEpisode>> episodes(int season, ExtShow show, CancelToken) override {
        note("episodes " + show.id + " " + std::to_string(season));
        const auto& all = at(show.id).seasons;
        const auto found = all.find(season);
        if (found == all.end()) co_return std::vector<ExtEpisode>{};
        co_return found->second;
    }
    Task<std::vector<ExtMovie>> searchMovies(std::string title, CancelToken) override {
        note("films " + title);
        co_return films;
    }
    Task<ExtMovie> movieDetails(ExtMovie movie, CancelToken) override {
        note("details " + movie.id);
        if (hidesDetails) throw MFError("no details");
        const auto found = filledIn.find(movie.id);
        co_return found == filledIn.end() ? movie : found->second;
    }

private:
    void note(const std::string& call) {
        asked.push_back(call);
        if (fails) throw MFError("the service is down");
    }
    const Show& at(const std::string& id) const {
        for (const Show& show : shows) {
            if (show.show.id == id) return show;
        }
        throw MFError("no such show");
    }

    SourceID id_;
};

}  // namespace marlet::test
