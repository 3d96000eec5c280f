#pragma once

#include <filesystem>
#include <set>

#include "mp4/summary.h"
#include "verify/rebuild_verifier.h"

namespace marlet {

/// Compares the sample bytes of all pairs of tracks, reading each file once, the two of them side
/// by side. Adds what it finds to the report; throws what sampleDigests throws.
void compareSamples(const std::filesystem::path& originalFile, const MP4Summary& original,
                    const std::filesystem::path& rebuiltFile, const MP4Summary& rebuilt,
                    const std::set<std::size_t>& chapterTracks, RunControl& control,
                    const StepProgress& progress, VerifyReport& report);

}  // namespace marlet
