#pragma once

#include <map>
#include <mutex>
#include <optional>
#include <string>

#include "catalogue/catalogue.h"
#include "catalogue/picture_list.h"

namespace marlet::catalogue {

/// Draws the catalogue's pictures when they are asked for, and keeps what it drew. May be asked
/// from several threads; one draws at a time.
class Gallery {
public:
    explicit Gallery(const Catalogue& catalogue);

    /// The file of a picture at one of the service's sizes ("w342", "original"); nothing for an
    /// unknown picture or size.
    std::optional<std::string> picture(const std::string& size, const std::string& path) const;

    /// The file of a picture fitted into a box of pixels, as other services offer it.
    std::optional<std::string> picture(const std::string& path, int width, int height) const;

private:
    std::string drawn(const std::string& key, const Picture& picture, int width, int height) const;

    std::map<std::string, Picture, std::less<>> pictures_;
    mutable std::mutex lock_;
    mutable std::map<std::string, std::string> drawn_;  ///< by size and path; guarded by lock_
};

}  // namespace marlet::catalogue
