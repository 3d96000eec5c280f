#pragma once

#include <string>

#include "foundation/records.h"

namespace marlet {

/// How verdicts name the catalogue that was asked.
struct CatalogueWords {
    std::string where;  ///< "in the database", "on Apple TV"
    std::string name;   ///< "database", "Apple TV"

    /// TMDB through its own client.
    static CatalogueWords database() { return {"in the database", "database"}; }
    static CatalogueWords of(SourceID id) { return {"on " + displayName(id), displayName(id)}; }
};

namespace VerdictWords {

inline constexpr const char* unknownFile = "Couldn't tell what this file is";
inline constexpr const char* noSource = "No source is switched on";
inline constexpr const char* noKey = "Not checked against the database (no TMDB key)";
inline constexpr const char* unreachable = "Couldn't reach the database";
inline constexpr const char* onlyNumber = "Only the file number to go on";
inline constexpr const char* noLength = "Couldn't compare the length";

/// In the quotation marks of all verdicts.
inline std::string quoted(const std::string& text) {
    return "“" + text + "”";
}

}  // namespace VerdictWords

/// No match, and the one reason why.
inline ResolvedFile unmatched(ScannedFile file, std::optional<Guess> guess, std::string reason) {
    return {std::move(file), std::move(guess), std::nullopt,
            Verdict::needsLook({std::move(reason)}), false};
}

}  // namespace marlet
