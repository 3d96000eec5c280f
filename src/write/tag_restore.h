#pragma once

#include <filesystem>

#include "foundation/run_control.h"
#include "mp4/box.h"

namespace marlet::TagRestore {

/// True when `output` now is a copy of `rebuilt` whose tag block is the original's, byte for byte;
/// false (and no file) when there was nothing to put right. Throws MFError and CancelError; what is
/// left of `output` then is the caller's to remove.
bool restore(const std::filesystem::path& original, const std::filesystem::path& rebuilt,
             const std::filesystem::path& output, RunControl& control,
             const Progress& progress = {});

}  // namespace marlet::TagRestore
