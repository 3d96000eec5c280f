#pragma once

#include "write/write_job.h"

namespace marlet {

/// Puts the candidate into the chosen folder as "NAME (Marlet).EXT". The original is never opened
/// for writing, and nothing in the folder is replaced.
void saveCopy(WriteJob& job, const std::filesystem::path& folder);

}  // namespace marlet
