#include <fcntl.h>

#include <cstdint>
#include <limits>

#include "convert/audio_convert.h"
#include "convert/encoder_rates.h"
#include "convert/sound_tool.h"
#include "foundation/errors.h"
#include "foundation/file_ops.h"

namespace marlet::AudioConvert {

namespace fs = std::filesystem;

namespace {

/// A WAV header and the first byte of sound.
constexpr std::uint64_t smallestSound = 45;

std::string resampling(double sampleRate) {
    const std::string toInteger = "resample:osfmt=s16";
    // A rate that no encoder takes would come out as another, at another speed.
    const bool isUsual = sampleRate <= 0 || isAACRate(sampleRate);
    return isUsual ? toInteger : toInteger + ":osr=48000";
}

/// The header counts in 32 bits, and tools let it overflow: a film in 7.1 reaches 4 GiB after an
/// hour and a half. Such a size is put down as unknown, which readers take for all that follows.
void correctSize(const fs::path& file, const WAV& wav) {
    constexpr std::uint64_t mostCountable = std::numeric_limits<std::uint32_t>::max();
    constexpr int sizeField = 4;
    if (FileOps::size(file) - static_cast<std::uint64_t>(wav.dataOffset) <= mostCountable) return;
    const FileHandle handle = FileHandle::open(file, O_WRONLY, "write failed");
    FileOps::writeAll(handle.get(), Bytes(sizeField, 0xFF),
                      static_cast<std::uint64_t>(wav.dataOffset - sizeField));
}

}  // namespace

void decodeToWAV(const fs::path& single, double sampleRate, const fs::path& out,
                 RunControl& control) {
    runTool({single, {"ffdec", resampling(sampleRate)}, out}, control);
    const bool isLongEnough = FileOps::size(out) >= smallestSound;
    const WAV wav = isLongEnough ? readWAVHeader(out) : WAV{};
    if (wav.dataSize == 0) throw MFError("the sound track could not be decoded");
    correctSize(out, wav);
}

}  // namespace marlet::AudioConvert
