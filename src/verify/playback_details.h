#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "foundation/bytes.h"
#include "mp4/summary.h"

namespace marlet {

/// What a summary doesn't tell of a track and what yet decides how it plays.
struct TrackPlayback {
    /// SHA-256 over which sample description each sample uses (ISO/IEC 14496-12, 8.7.4).
    std::string descriptionUse;
    bool hasSyncTable = false;  ///< a table without entries says that no sample is a keyframe
    /// Samples have data beside them that is found by its own offsets (8.7.9), as keys of
    /// encrypted samples do.
    bool hasAuxiliaryData = false;
    /// A data reference stands there, and each says that the media lies in the file itself (8.7.2).
    bool isSelfContained = false;
    std::uint32_t mediaHeader = 0;      ///< type of `vmhd` or its like (8.4.5); 0: none
    double shownSeconds = 0;            ///< `tkhd` duration
    double mediaSeconds = 0;            ///< `mdhd` duration
    double tableSeconds = 0;            ///< the sum of the sample durations
    std::optional<double> editSeconds;  ///< the length of the edit list
    /// SHA-256 over the references to other tracks, each told by its position among the tracks.
    std::string references;
};

/// The same of a whole file.
struct MoviePlayback {
    bool isWellFormed = true;
    bool isFragmented = false;  ///< samples lie outside the index (8.8.1)
    std::uint32_t timescale = 1;
    std::string brand;                     ///< the main one of `ftyp` (4.3); empty: none
    std::vector<std::string> tagHandlers;  ///< of each `meta` that holds tags
    Bytes presentation;                    ///< rate, volume and matrix of `mvhd` (8.2.2)
    std::vector<TrackPlayback> tracks;     ///< one for each track of the summary, in its order
};

/// `summary` is what parseSummary made of this index, perhaps with tracks left out.
MoviePlayback readPlayback(ByteView moov, const MP4Summary& summary);
/// The main brand, of the file's first box.
std::string mainBrand(const std::filesystem::path& file);

}  // namespace marlet
