#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "catalogue/catalogue.h"

namespace marlet::catalogue {

enum class Shape { poster, wide };

/// One picture of the catalogue; it is drawn from these fields alone.
struct Picture {
    std::string path;  ///< "/film-192201-poster-1.jpg"
    Shape shape = Shape::poster;
    std::string language;  ///< ISO 639-1; empty when no words are on it
    double vote = 0;
    std::string title;
    std::string line;  ///< the small line under the title
    std::string genre;
    std::string family;  ///< pictures of one family share their colours

    int width() const { return shape == Shape::poster ? 2000 : 1920; }
    int height() const { return shape == Shape::poster ? 3000 : 1080; }
};

/// Every picture of an entry; none for an entry without art.
std::vector<Picture> postersOf(const Film& film);
std::vector<Picture> backdropsOf(const Film& film);
std::vector<Picture> postersOf(const Show& show);
std::vector<Picture> backdropsOf(const Show& show);
std::vector<Picture> postersOf(const Show& show, const Season& season);
std::vector<Picture> stillsOf(const Show& show, const Season& season, const Episode& episode);

/// All of them, by path.
std::map<std::string, Picture, std::less<>> allPictures(const Catalogue& catalogue);

}  // namespace marlet::catalogue
