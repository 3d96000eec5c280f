#pragma once

#include "write/write_job.h"

namespace marlet {

/// Copies the file into the work folder and proves the copy to be what the disk holds. From here
/// on the file itself isn't read again until it is written.
void makePrivateCopy(const WriteJob& job);

}  // namespace marlet
