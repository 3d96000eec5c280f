#pragma once

#include <optional>
#include <set>
#include <string>

#include "foundation/records.h"

namespace marlet {

/// The fields of a file's details that a person changed, with what they hold since. The others are
/// free to follow the sources.
struct EditedDetails {
    Details values;
    std::set<std::string> fields;  ///< named as in forEachDetailsField

    static EditedDetails between(const Details& loaded, const Details& now);
    void applyTo(Details& details) const;
    bool operator==(const EditedDetails&) const = default;
};

/// Visits every field of Details by name and member.
template <typename Visit>
void forEachDetailsField(const Visit& visit) {
    visit("kind", &Details::kind);
    visit("title", &Details::title);
    visit("description", &Details::description);
    visit("longDescription", &Details::longDescription);
    visit("cast", &Details::cast);
    visit("directors", &Details::directors);
    visit("writers", &Details::writers);
    visit("genre", &Details::genre);
    visit("rating", &Details::rating);
    visit("releaseDate", &Details::releaseDate);
    visit("show", &Details::show);
    visit("season", &Details::season);
    visit("episode", &Details::episode);
    visit("episodeEnd", &Details::episodeEnd);
}

/// What a person did to one draft since it was loaded.
struct DraftCorrections {
    EditedDetails details;
    std::optional<ArtworkOption> wide;  ///< picked, where another would have been taken
    std::optional<ArtworkOption> tall;
    std::optional<ArtworkStyle> style;
    bool isApart = false;  ///< its season doesn't share the artwork

    static DraftCorrections of(const FileDraft& draft);
    /// To a draft just loaded; what the season shares is the store's.
    void applyTo(FileDraft& draft) const;
    bool empty() const { return details.fields.empty() && !wide && !tall && !style; }
    bool operator==(const DraftCorrections&) const = default;
};

}  // namespace marlet
