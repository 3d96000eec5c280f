#pragma once

#include <string>
#include <vector>

#include "foundation/bytes.h"

// An index (the payload of `moov`) in lines of text, for the support log. Nothing depends on their
// wording; what would fill a log is told in part.
namespace marlet {

/// The sample descriptions of every track, with the boxes of each entry.
std::vector<std::string> stsdDump(ByteView moov);
/// The tag items with their values.
std::vector<std::string> ilstDump(ByteView moov);
/// The box tree, with sizes.
std::vector<std::string> moovTree(ByteView moov);

}  // namespace marlet
