#include "foundation/records.h"

#include <array>

namespace marlet {

namespace {

struct SourceName {
    SourceID id;
    const char* raw;
    const char* shown;
};

constexpr std::array<SourceName, 3> sourceNames = {{
    {SourceID::appleTV, "appleTV", "Apple TV"},
    {SourceID::tmdb, "tmdb", "TMDB"},
    {SourceID::itunes, "itunes", "iTunes Store"},
}};

}  // namespace

std::string rawValue(SourceID id) {
    for (const SourceName& name : sourceNames)
        if (name.id == id) return name.raw;
    return {};
}

std::optional<SourceID> sourceFromRaw(const std::string& raw) {
    for (const SourceName& name : sourceNames)
        if (raw == name.raw) return name.id;
    return std::nullopt;
}

std::string displayName(SourceID id) {
    for (const SourceName& name : sourceNames)
        if (name.id == id) return name.shown;
    return {};
}

SourceID Match::sourceID() const {
    return manual ? manual->source.value_or(SourceID::tmdb) : SourceID::tmdb;
}

std::string Details::episodeLabel() const {
    if (!season || !episode) return {};
    std::string label = "S" + std::to_string(*season) + "E" + std::to_string(*episode);
    if (episodeEnd) label += "-" + std::to_string(*episodeEnd);
    return label;
}

std::optional<ArtworkOption> FileDraft::chosen(ArtworkStyle defaultStyle) const {
    const bool isWide = styleOverride.value_or(defaultStyle) == ArtworkStyle::wide;
    const std::optional<ArtworkOption>& picked = isWide ? chosenWide : chosenTall;
    if (picked) return picked;
    const std::vector<ArtworkOption>& offered = isWide ? wide : tall;
    if (offered.empty()) return std::nullopt;
    return offered.front();
}

}  // namespace marlet
