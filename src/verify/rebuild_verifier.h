#pragma once

#include <filesystem>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "foundation/run_control.h"
#include "mp4/summary.h"

namespace marlet {

struct VerifyReport {
    std::vector<std::string> reasons;  ///< empty: proved
    std::vector<std::string> notes;    ///< facts that don't refuse
    double before = 0;                 ///< the original's sound layout, seconds
    double after = 0;                  ///< the rebuilt file's; 0 when the run ended early
};

/// What may differ between an original and the file built from it.
struct RebuildTerms {
    double maxAfter = 1.0;              ///< the highest sound layout allowed, seconds
    bool allowTagChange = false;        ///< the tags were changed on purpose
    bool lenientSampleEntries = false;  ///< a difference in `stsd` is a note
    bool sameDecoders = false;  ///< with lenient entries: what a decoder needs of them is kept
    /// Which of the original's tracks (Track::index) are meant to stay, in order; nothing: all.
    std::optional<std::vector<int>> keepIndices;
    std::set<int> enabledOnPurpose;  ///< the rebuilt file's tracks that may have become enabled
    /// The chapters were made anew: those that the rebuilt file is to tell. Its tracks of chapter
    /// text don't count among its tracks then, and no list is compared with the original's.
    std::optional<std::vector<Chapter>> newChapters;
};

/// Proves that `rebuilt` holds what `original` holds: structure, every table, tags, chapters, and a
/// SHA-256 over the samples of every track. Beyond the tables it refuses what else would change
/// playback: time scales, references between tracks, the use of sample descriptions, headers that
/// players read, an index that only forgiving readers walk. Films in fragments are refused. Throws
/// MFError when a file can't be read, and CancelError. Progress is "Verifying", 0.55 to 0.85.
VerifyReport verifyRebuild(const std::filesystem::path& original,
                           const std::filesystem::path& rebuilt, const RebuildTerms& terms,
                           RunControl& control, const StepProgress& progress = {});

/// What differs between the original's items and the rebuilt file's, one line each, whatever their
/// order.
std::vector<std::string> compareTags(const std::vector<TagItem>& original,
                                     const std::vector<TagItem>& rebuilt);

/// Titles equal, times at most 10 ms apart.
bool chaptersMatch(const std::vector<Chapter>& a, const std::vector<Chapter>& b);

}  // namespace marlet
