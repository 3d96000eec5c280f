// Any bytes as an index: its tracks are listed and worded, or a sentence tells why not.
#include <cstdlib>

#include "foundation/errors.h"
#include "foundation/text.h"
#include "write/in_place_tracks.h"
#include "write/sound_channels.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace marlet;
    const ByteView bytes(data, size);
    soundChannels(bytes);
    try {
        const auto tracks = InPlaceTracks::tracksIn(bytes);
        for (const InPlaceTrack& track : tracks) {
            const std::string label = track.label();
            if (label.empty() || Text::repairUtf8(viewOf(label)) != label) std::abort();
        }
        InPlaceTracks::summary(tracks);
    } catch (const MFError&) {
    }
    return 0;
}
