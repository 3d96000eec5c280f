#pragma once

#include <string>
#include <vector>

#include "foundation/bytes.h"

namespace marlet {

/// What a decoder would miss in samples that were moved into another container, between two `stsd`
/// payloads of the same track: the length fields and parameter sets of its pictures, the
/// configuration of its AAC, the very box of its AC-3. Whatever else an entry holds may differ, and
/// so may where it lies: QuickTime keeps a sound's configuration in `wave`. Empty means nothing.
std::vector<std::string> compareDecoders(ByteView original, ByteView rebuilt);

}  // namespace marlet
