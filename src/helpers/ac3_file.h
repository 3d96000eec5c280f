#pragma once

#include "foundation/syscalls.h"
#include "helpers/track_box.h"

namespace marlet::AC3File {

/// The frames of a file that holds nothing but AC-3 or E-AC-3, one behind the other. MFError when
/// it doesn't begin with one; it is read up to where they end.
TrackMedia read(const FileHandle& file, std::uint64_t size);

}  // namespace marlet::AC3File
