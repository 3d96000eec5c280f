#pragma once

#include "convert/built_index.h"

namespace marlet::ChapterList {

/// Makes the chapter list (`chpl`) of a built file into free space, in place: the media tool takes
/// along what its source hides, and a film without chapters is to stay one.
void remove(BuiltIndex& index);

}  // namespace marlet::ChapterList
