#pragma once

#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>
#include <vector>

namespace marlet {

/// What Apple TV's `images` offer: a map from a name to {url, width, height}, the address being a
/// template with places for width, height, crop and format. Pure; anything may come in.
namespace AppleTVPictures {

struct Pictures {
    std::vector<std::string> wide;  ///< 1920 by 1080
    std::vector<std::string> tall;  ///< 1600 by 2400
};

/// Those of a cover's shape, in the order of their names; an address only once. Strips such as
/// logos are left out.
Pictures pictures(const nlohmann::json& images);
/// The one small picture for a list: a tall one if there is any, wide ones last. One whose size
/// isn't told is of no known shape, and stands between them.
std::optional<std::string> listPicture(const nlohmann::json& images);

}  // namespace AppleTVPictures
}  // namespace marlet
