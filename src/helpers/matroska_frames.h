#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <vector>

#include "foundation/bytes.h"
#include "helpers/new_file.h"
#include "helpers/track_box.h"
#include "matroska/mkv_file.h"

namespace marlet {

/// The frames of one Matroska track in the order of the file.
struct MatroskaFrames {
    FrameList frames;  ///< places in the source, or in the scratch file; sizes as they are
    std::vector<std::optional<std::int64_t>> timesNs;  ///< nothing behind the first of a lace
    std::vector<std::uint32_t> keyframes;              ///< numbers from 1, as the blocks tell
    Bytes prefix;            ///< what each frame begins with and the source left out
    bool inScratch = false;  ///< they were packed and lie unpacked in the scratch file
};

namespace MatroskaFramesReader {

/// Reads the heads of all blocks of these tracks once. Frames that were stored packed are unpacked
/// into `scratch`, which is made for them only. MFError for a track that the file lacks or whose
/// frames can't be read, and when there are more frames than a film has.
std::map<int, MatroskaFrames> read(const MKVFile& file, const std::set<int>& tracks,
                                   const std::filesystem::path& scratch);

}  // namespace MatroskaFramesReader
}  // namespace marlet
