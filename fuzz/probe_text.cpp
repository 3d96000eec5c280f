// Whatever FFmpeg's ffprobe prints, no count is below 0 and no length is none.
#include <cstdint>
#include <cstdlib>

#include "app/playable.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto probed = marlet::Playable::parseProbe(std::string(data, data + size));
    if (probed.tracks < 0 || !(probed.duration >= 0) || probed.duration >= 1e9) std::abort();
    return 0;
}
