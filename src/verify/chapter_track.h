#pragma once

#include <filesystem>
#include <vector>

#include "mp4/summary.h"

namespace marlet {

/// The chapters that a chapter text track tells: a text a sample, shown from the sample's time on.
/// Throws MFError when the file can't be read.
std::vector<Chapter> chaptersInTrack(const std::filesystem::path& file, const Track& track);

/// Where a player looks for a film's chapters.
struct ChapterPlaces {
    const std::filesystem::path& file;
    const std::vector<Chapter>& list;  ///< `chpl`
    std::vector<const Track*> tracks;  ///< of chapter text

    bool areNone() const { return list.empty() && tracks.empty(); }
};

/// Whether there is such a place and each tells these chapters, which went through a file of
/// chapters: as many, starts within 10 ms, titles but for blanks and control characters. A list
/// counts to 255, and so does each of its titles. Throws MFError when the file can't be read.
bool tellChapters(const ChapterPlaces& places, const std::vector<Chapter>& wanted);

// What a proof says of them.
inline constexpr const char* chaptersLost = "chapters were not carried over";
inline constexpr const char* chaptersDiffer = "chapter titles or times differ from the original";

}  // namespace marlet
