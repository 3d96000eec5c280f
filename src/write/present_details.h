#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "foundation/bytes.h"
#include "foundation/records.h"
#include "write/ilst_editor.h"

namespace marlet {

/// What the tags of a file say now, in the fields that a person edits: the other way of
/// TagBuilder::atoms. A field whose item is missing or of another form is empty.
struct PresentDetails {
    Details details;  ///< releaseDate without a time of day
    std::string album;
    std::string albumArtist;
    std::optional<int> track;    ///< of an album
    std::optional<Bytes> cover;  ///< the first image
    /// Other items, which no write of details changes.
    int others = 0;
    bool operator==(const PresentDetails&) const = default;

    static PresentDetails of(const std::vector<Atom>& atoms);
    /// Of an MP4 or QuickTime file; all empty when it can't be read or has no tags. Blocks.
    static PresentDetails read(const std::filesystem::path& file);
};

}  // namespace marlet
