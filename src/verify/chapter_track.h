#pragma once

#include <filesystem>
#include <vector>

#include "mp4/summary.h"

namespace marlet {

/// The chapters that a chapter text track tells: a text a sample, shown from the sample's time on.
/// Throws MFError when the file can't be read.
std::vector<Chapter> chaptersInTrack(const std::filesystem::path& file, const Track& track);

}  // namespace marlet
