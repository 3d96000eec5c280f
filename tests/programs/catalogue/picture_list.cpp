#include "catalogue/picture_list.h"

namespace marlet::catalogue {

namespace {

/// What the pictures of one entry have in common.
Picture base(const std::string& family, const std::string& title, int year,
             const std::vector<std::string>& genres) {
    Picture picture;
    picture.family = family;
    picture.title = title;
    picture.line = std::to_string(year);
    picture.genre = genres.empty() ? "" : genres.front();
    return picture;
}

struct Kind {
    const char* name;
    Shape shape;
    bool words;  ///< false: a picture with no language
    double vote;
};

// The textless poster has the best vote, so that an order by vote alone is seen to be wrong.
constexpr Kind posterKinds[] = {{"poster-1", Shape::poster, true, 5.6},
                                {"poster-2", Shape::poster, false, 5.9},
                                {"poster-3", Shape::poster, true, 5.2}};
constexpr Kind backdropKinds[] = {{"backdrop-1", Shape::wide, false, 5.8},
                                  {"backdrop-2", Shape::wide, true, 5.4},
                                  {"backdrop-3", Shape::wide, false, 5.1}};
constexpr Kind seasonKinds[] = {{"poster-1", Shape::poster, true, 5.5},
                                {"poster-2", Shape::poster, false, 5.3}};
constexpr Kind stillKinds[] = {{"still-1", Shape::wide, false, 5.7},
                               {"still-2", Shape::wide, false, 5.0}};

template <std::size_t count>
std::vector<Picture> make(const Picture& common, const Kind (&kinds)[count],
                          const std::string& ending = ".jpg") {
    std::vector<Picture> out;
    for (const Kind& kind : kinds) {
        Picture picture = common;
        picture.path = "/" + common.family + "-" + kind.name + ending;
        picture.shape = kind.shape;
        picture.language = kind.words ? "en" : "";
        picture.vote = kind.vote;
        out.push_back(picture);
    }
    return out;
}

Picture base(const Film& film) {
    return base("film-" + std::to_string(film.id), film.title, film.year(), film.genres);
}

Picture base(const Show& show) {
    return base("show-" + std::to_string(show.id), show.name, show.year(), show.genres);
}

}  // namespace

std::vector<Picture> postersOf(const Film& film) {
    if (!film.art) return {};
    std::vector<Picture> out = make(base(film), posterKinds);
    if (film.language != "en") {  // the last one carries the original title
        out.back().language = film.language;
        out.back().title = film.originalTitle;
    }
    return out;
}

std::vector<Picture> backdropsOf(const Film& film) {
    if (!film.art) return {};
    return make(base(film), backdropKinds);
}

std::vector<Picture> postersOf(const Show& show) {
    return make(base(show), posterKinds);
}

std::vector<Picture> backdropsOf(const Show& show) {
    return make(base(show), backdropKinds);
}

std::vector<Picture> postersOf(const Show& show, const Season& season) {
    Picture common = base(show);
    common.family += "-season-" + std::to_string(season.number);
    common.line = season.name;
    return make(common, seasonKinds);
}

std::vector<Picture> stillsOf(const Show& show, const Season& season, const Episode& episode) {
    Picture common = base(show);
    common.family += "-s" + std::to_string(season.number) + "e" + std::to_string(episode.number);
    common.line.clear();
    // The service holds a few stills as PNG, and so does every third episode here.
    return make(common, stillKinds, episode.number % 3 == 0 ? ".png" : ".jpg");
}

std::map<std::string, Picture, std::less<>> allPictures(const Catalogue& catalogue) {
    std::map<std::string, Picture, std::less<>> out;
    const auto add = [&](std::vector<Picture> pictures) {
        for (Picture& picture : pictures) out.emplace(picture.path, std::move(picture));
    };
    for (const Film& film : catalogue.films) {
        add(postersOf(film));
        add(backdropsOf(film));
    }
    for (const Show& show : catalogue.shows) {
        add(postersOf(show));
        add(backdropsOf(show));
        for (const Season& season : show.seasons) {
            add(postersOf(show, season));
            for (const Episode& episode : season.episodes) add(stillsOf(show, season, episode));
        }
    }
    return out;
}

}  // namespace marlet::catalogue
