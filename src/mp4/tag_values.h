#pragma once

#include <string>

#include "foundation/bytes.h"

namespace marlet {

/// The values of one tag item (the whole item box) in a line: texts in quotes, cut to 60
/// characters; other types by number and first bytes; a cover by its image. Several `data` boxes
/// are joined by " + ".
std::string describe(ByteView raw, bool isCover);

}  // namespace marlet
