#pragma once

#include <string>
#include <utility>
#include <vector>

#include "catalogue/catalogue.h"

namespace marlet::demo {

/// Where the index box (moov) lies, and what room stands around it.
enum class Index {
    last,          ///< behind the media, at the end of the file
    lastWithRoom,  ///< behind the media, with a free box behind it
    first,         ///< ahead of the media, with no room to grow
    firstWithRoom  ///< ahead of the media, with a free box behind it
};

enum class SoundLayout {
    interleaved,
    oneStretch  ///< all of it stored together, which stalls on Apple TV
};

/// One file of the library.
struct Item {
    std::string path;  ///< below the library's folder
    int seconds = 0;
    Index index = Index::last;
    std::vector<std::pair<std::string, std::string>> tags;  ///< by FFmpeg's names
    bool accountTags = false;
    SoundLayout sound = SoundLayout::interleaved;
};

/// The films and episodes of the library with their true lengths: tidy names and wild ones, one
/// that could be either of two films and one that says nothing.
std::vector<Item> tidyLibrary(const catalogue::Catalogue& catalogue);
/// Files that need more than new tags.
std::vector<Item> trouble(const catalogue::Catalogue& catalogue);

}  // namespace marlet::demo
