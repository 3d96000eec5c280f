#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "foundation/bytes.h"

namespace marlet::test {

/// Of a film to convert.
struct FilmToConvert {
    int quantiser = 30;    ///< of the picture: the smaller, the larger the file
    bool surround = true;  ///< FLAC 5.1, which becomes AC3 and AAC; otherwise stereo, AAC alone
};
/// A second of picture, sound, an English subtitle and two chapters, in Matroska.
Bytes filmToConvert(const FilmToConvert& film);

/// The processes whose command line names this place: media tools at work for it.
std::vector<std::string> processesAt(const std::filesystem::path& place);
/// Waits until there are none any more; what is left after ten seconds otherwise.
std::vector<std::string> processesLeftAt(const std::filesystem::path& place);

}  // namespace marlet::test
