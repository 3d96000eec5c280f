#pragma once

#include <cstdint>
#include <filesystem>

#include "foundation/run_control.h"

namespace marlet::Converter {

/// What tells whether a source is still the file that it was.
struct SrcStat {
    std::uint64_t number = 0;  ///< the file system's identity of the file
    std::uint64_t size = 0;    ///< bytes
    double modified = 0;       ///< seconds since 1970
    bool operator==(const SrcStat&) const = default;
};

/// Fails with "the original can't be read".
SrcStat snapshot(const std::filesystem::path& source);

/// Puts a finished new file into the output folder, as the source's name with ".m4v" and a number
/// where the name is taken, and gives its path. The file comes to exist under that name whole and
/// compared, or not at all. `built` lies in the job's own folder.
std::filesystem::path deliver(const std::filesystem::path& built,
                              const std::filesystem::path& source, const SrcStat& srcStat,
                              const std::filesystem::path& outputDir, RunControl& control,
                              const StepProgress& progress);

}  // namespace marlet::Converter
