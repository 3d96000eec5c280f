#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "foundation/convert_records.h"
#include "foundation/run_control.h"
#include "matroska/mkv_file.h"

/// Proves that a new M4V holds what was promised of its Matroska source.
namespace marlet::ConvertVerify {

/// What a track of the new file should be, in the order of its tracks.
struct Expected {
    enum class Kind { video, audioCopy, audioAAC, audioAC3, sub };
    Kind kind = Kind::video;
    int source = 0;       ///< track number in the source; 0 for a subtitle
    int channels = 0;     ///< of audioAAC
    bool forced = false;  ///< of sub
    std::optional<std::string> language;
    bool operator==(const Expected&) const = default;
};

struct Report {
    std::vector<std::string> reasons;  ///< empty: proved
    std::vector<std::string> notes;
};

/// Throws MFError when the built file can't be read, and CancelError. Progress is "Verifying", 0.7
/// to 0.86.
Report run(const MKVFile& mkv, const ConvertPlanSnapshot& plan, const std::filesystem::path& built,
           const std::vector<Expected>& expected, RunControl& control,
           const StepProgress& progress = {});

}  // namespace marlet::ConvertVerify
