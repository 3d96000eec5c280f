#include "convert/audio_convert.h"
#include "matroska/mkv_writer.h"

namespace marlet::MKVWriter {

void extractAudio(const MKVFile& from, const MKVTrack& track, const std::filesystem::path& to,
                  RunControl& control) {
    constexpr int blocksBetweenChecks = 400;
    SoundFile file(to, track);
    int count = 0;
    from.forEachBlock(std::set<int>{track.number}, {}, [&](const MKVBlock& block) {
        if (++count % blocksBetweenChecks == 0) control.checkpoint();
        file.add(block.timeNs, from.data(block));
        return true;
    });
    file.finish();
}

}  // namespace marlet::MKVWriter
