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
    const std::lock_guard hold(lock_);
    const auto [entry, isNew] = drawn_.try_emplace(size + path);
    if (isNew) {
        const double height = static_cast<double>(*width) * picture.height() / picture.width();
        entry->second = Artwork::draw(picture, *width, static_cast<int>(std::lround(height)));
    }
    return entry->second;
}

}  // namespace marlet::catalogue
