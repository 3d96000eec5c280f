#pragma once

#include <cstdint>
#include <filesystem>
#include <vector>

#include "mp4/summary.h"

namespace marlet {

/// The longest stretch of sound stored together, in seconds, that Apple TV plays without
/// stalling. A file is fine at exactly this value.
inline constexpr double soundLayoutLimit = 1.0;

/// At most this many time units count for one sample: four times the most frequent duration.
std::uint64_t gapCap(const std::vector<std::uint32_t>& durations);
/// The longest stretch of one sound track stored without a gap, in seconds to hundredths. The
/// summary must hold sound tracks only.
double measure(const MP4Summary& summary);
/// loadMoov, parseSummary and measure, with their failures.
double measureInterleave(const std::filesystem::path& file);

}  // namespace marlet
