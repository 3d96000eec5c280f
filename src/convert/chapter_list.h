#pragma once

#include <filesystem>

namespace marlet::ChapterList {

/// Makes the chapter list (`chpl`) of a built file into free space, in place: the media tool takes
/// along what its source hides, and a film without chapters is to stay one.
void remove(const std::filesystem::path& built);

}  // namespace marlet::ChapterList
