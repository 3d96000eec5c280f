// Reads one Matroska file in a process of its own, for io_of to time beside other programs.
//
//   mkv_once open FILE    its tracks and chapters
//   mkv_once stats FILE   frames and bytes of each track as well
#include <iostream>
#include <string_view>

#include "matroska/mkv_file.h"

int main(int count, char** arguments) {
    const std::string_view what = count == 3 ? arguments[1] : "";
    if (what != "open" && what != "stats") {
        std::cerr << "usage: mkv_once open|stats FILE\n";
        return 2;
    }
    const auto file = marlet::MKVFile::open(arguments[2]);
    if (!file) return 1;
    std::cout << file->tracks().size() << " tracks, " << file->chapters().size() << " chapters\n";
    if (what == "open") return 0;
    for (const auto& [track, stats] : file->blockStats())
        std::cout << "track " << track << ": " << stats.count << " frames, " << stats.bytes
                  << " bytes\n";
    return 0;
}
