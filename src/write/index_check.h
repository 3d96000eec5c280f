#pragma once

#include <string>
#include <vector>

#include "foundation/bytes.h"
#include "write/ilst_editor.h"

namespace marlet {

/// Compares two whole `moov` boxes, header included: everything but the tag block must be the
/// same, and the candidate's tag block exactly the intended one. Gives the reasons against it.
std::vector<std::string> compareIndexes(ByteView original, ByteView candidate,
                                        const std::vector<Atom>& target);

}  // namespace marlet
