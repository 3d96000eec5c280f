#include "catalogue/gallery.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "catalogue/artwork.h"

namespace marlet::catalogue {

namespace {

/// The widths that the service offers; "original" is the picture's own.
constexpr std::array widths = {45, 92, 154, 185, 300, 342, 500, 780, 1280};

std::optional<int> widthOf(const std::string& size, const Picture& picture) {
    if (size == "original") return picture.width();
    for (const int width : widths)
        if (size == "w" + std::to_string(width)) return width;
    return std::nullopt;
}

}  // namespace

Gallery::Gallery(const Catalogue& catalogue) : pictures_(allPictures(catalogue)) {}

std::optional<std::string> Gallery::picture(const std::string& size,
                                            const std::string& path) const {
    const auto found = pictures_.find(path);
    if (found == pictures_.end()) return std::nullopt;
    const Picture& picture = found->second;
    const std::optional<int> width = widthOf(size, picture);
    if (!width) return std::nullopt;
    const double height = static_cast<double>(*width) * picture.height() / picture.width();
    return drawn(size + path, picture, *width, static_cast<int>(std::lround(height)));
}

std::optional<std::string> Gallery::picture(const std::string& path, int width, int height) const {
    const auto found = pictures_.find(path);
    if (found == pictures_.end() || width < 1 || height < 1) return std::nullopt;
    const Picture& picture = found->second;
    const double scale = std::min({1.0, static_cast<double>(width) / picture.width(),
                                   static_cast<double>(height) / picture.height()});
    const int drawnWidth = std::max(1, static_cast<int>(std::lround(picture.width() * scale)));
    const int drawnHeight = std::max(1, static_cast<int>(std::lround(picture.height() * scale)));
    return drawn(path + "@" + std::to_string(drawnWidth), picture, drawnWidth, drawnHeight);
}

std::string Gallery::drawn(const std::string& key, const Picture& picture, int width,
                           int height) const {
    const std::lock_guard hold(lock_);
    const auto [entry, isNew] = drawn_.try_emplace(key);
    if (isNew) entry->second = Artwork::draw(picture, width, height);
    return entry->second;
}

}  // namespace marlet::catalogue
