#pragma once

#include <filesystem>
#include <vector>

#include "mp4/summary.h"

namespace marlet {

/// The chapters that a chapter text track tells: a text a sample, shown from the sample's time on.
/// Throws MFError when the file can't be read.
std::vector<Chapter> chaptersInTrack(const std::filesystem::path& file, const Track& track);

/// Whether chapters that went through a file of chapters are the same: count, starts within 10 ms,
/// titles but for blanks and control characters. A list counts to 255, and so does each of its
/// titles.
bool isSameChapterList(std::vector<Chapter> wanted, const std::vector<Chapter>& told);

}  // namespace marlet
