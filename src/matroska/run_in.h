#pragma once

#include <cstdint>

#include "matroska/mkv_file.h"

namespace marlet::RunIn {

/// An encoder's run-in (RFC 9559, "CodecDelay"): it is taken off the times of a sound track's
/// blocks, and what then lies before 0 isn't heard.
struct Start {
    std::int64_t heardNs = 0;  ///< when the first sound that is heard is heard
    std::int64_t cutNs = 0;    ///< how much of the frames isn't
    bool operator==(const Start&) const = default;
};

/// Of a track whose first block has this time.
Start of(const MKVTrack& track, std::int64_t firstNs);

}  // namespace marlet::RunIn
