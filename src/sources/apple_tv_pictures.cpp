#include "sources/apple_tv_pictures.h"

#include <nlohmann/json.hpp>

#include "foundation/text.h"
#include "sources/details_loader.h"
#include "sources/loose_json.h"

namespace marlet::AppleTVPictures {
namespace {

using nlohmann::json;

struct Offer {
    std::string url;
    double aspect = 0;  ///< 0 when the size isn't told

    bool isWide() const { return aspect >= 1.6 && aspect <= 2.05; }
    bool isTall() const { return aspect >= 0.5 && aspect <= 0.8; }
    /// The lower, the better for a list.
    int rank() const { return isTall() ? 0 : isWide() ? 2 : 1; }
};

std::optional<Offer> offerOf(const json& image) {
    Offer offer;
    offer.url = LooseJson::text(LooseJson::at(image, "url"));
    const auto width = LooseJson::number(LooseJson::at(image, "width"));
    const auto height = LooseJson::number(LooseJson::at(image, "height"));
    const bool web =
        Text::startsWith(offer.url, "https://") || Text::startsWith(offer.url, "http://");
    if (!web) return std::nullopt;
    if (width && height && *width > 0 && *height > 0) offer.aspect = *width / *height;
    return offer;
}

/// In the order of their names: that is how the JSON library keeps an object.
std::vector<Offer> offersOf(const json& images) {
    std::vector<Offer> offers;
    if (!images.is_object()) return offers;
    for (const json& image : images) {
        if (auto offer = offerOf(image)) offers.push_back(std::move(*offer));
    }
    return offers;
}

std::string filled(std::string url, int width, int height) {
    url = Text::replaceAll(std::move(url), "{w}", std::to_string(width));
    url = Text::replaceAll(std::move(url), "{h}", std::to_string(height));
    url = Text::replaceAll(std::move(url), "{c}", "");
    return Text::replaceAll(std::move(url), "{f}", "jpg");
}

}  // namespace

Pictures pictures(const json& images) {
    Pictures found;
    for (const Offer& offer : offersOf(images)) {
        if (offer.isWide()) found.wide.push_back(filled(offer.url, 1920, 1080));
        if (offer.isTall()) found.tall.push_back(filled(offer.url, 1600, 2400));
    }
    return {DetailsLoader::unique(found.wide), DetailsLoader::unique(found.tall)};
}

std::optional<std::string> listPicture(const json& images) {
    std::optional<Offer> best;
    for (const Offer& offer : offersOf(images)) {
        if (!best || offer.rank() < best->rank()) best = offer;
    }
    if (!best) return std::nullopt;
    return filled(best->url, 300, 450);
}

}  // namespace marlet::AppleTVPictures
