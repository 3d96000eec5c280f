#pragma once

#include <string>
#include <vector>

#include "matroska/mkv_file.h"

namespace marlet {

/// The chapters as the media tool reads them from a file: "CHAPTER01=00:01:00.000" and a line
/// "CHAPTER01NAME=...". A chapter list of an MP4 counts to 255 and holds titles of 255 bytes: more
/// are left out, and longer ones are cut.
std::string chapterFile(const std::vector<MKVChapter>& chapters);

}  // namespace marlet
