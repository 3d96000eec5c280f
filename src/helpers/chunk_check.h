#pragma once

#include <vector>

#include "helpers/movie_map.h"
#include "helpers/source_file.h"

namespace marlet::ChunkCheck {

/// Goes through the chunks of all tracks. Fails with a sentence when a table is broken, when a
/// chunk lies outside the media data, and when two chunks share bytes: then either of them is
/// wrong, and a small file could claim to hold any amount of media.
void run(const MovieMap& map, const std::vector<FilePart>& media);

}  // namespace marlet::ChunkCheck
