#pragma once

#include "helpers/matroska_frames.h"
#include "helpers/track_box.h"
#include "matroska/mkv_file.h"

namespace marlet {

namespace MatroskaMedia {

/// A picture or sound track as an MP4 has it. `source` is the file that the frames lie in. MFError
/// for a codec that isn't copied, and a configuration that can't be used.
TrackMedia make(const MKVTrack& track, const MatroskaFrames& frames, const FileHandle& source);

}  // namespace MatroskaMedia

namespace MediaHeaders {
Bytes video();
Bytes sound();
Bytes subtitle();
Bytes chapters();
}  // namespace MediaHeaders

}  // namespace marlet
