#include <algorithm>
#include <cmath>
#include <cstring>
#include <vector>

#include "convert/audio_convert.h"
#include "convert/encoder_rates.h"
#include "convert/flac_writer.h"
#include "convert/passing_file.h"
#include "convert/sound_tool.h"
#include "convert/wav_pieces.h"
#include "foundation/errors.h"
#include "foundation/file_ops.h"

namespace marlet::AudioConvert {

namespace fs = std::filesystem;

namespace {

constexpr std::size_t framesAPiece = 16384;
constexpr std::size_t outputs = 6;
constexpr int sampleBits = 16;

bool isSurround(const WAV& wav) {
    return (wav.channels == 6 || wav.channels == 8) && wav.bits == sampleBits;
}

std::int32_t folded(std::int16_t side, std::int16_t rear) {
    constexpr double root = 0.7071;  // 3 dB down
    const double sum = (static_cast<double>(side) + rear) * root;
    return static_cast<std::int32_t>(std::clamp<long>(std::lround(sum), -32768, 32767));
}

/// One frame: the second pair of 7.1 goes into the first one.
void appendFrame(const std::int16_t* in, std::size_t channels, std::vector<std::int32_t>& out) {
    if (channels == outputs) {
        out.insert(out.end(), in, in + outputs);
        return;
    }
    out.insert(out.end(), in, in + 4);
    out.push_back(folded(in[4], in[6]));
    out.push_back(folded(in[5], in[7]));
}

void write51FLAC(const fs::path& wavFile, const WAV& wav, const fs::path& out,
                 RunControl& control) {
    const auto channels = static_cast<std::size_t>(wav.channels);
    const FLACWriter::Format format{.channels = outputs,
                                    .sampleRate = static_cast<std::uint32_t>(wav.sampleRate),
                                    .bits = sampleBits};
    if (!FLACWriter::takes(format)) throw MFError("no 5.1 layout");
    FLACWriter writer(out, format);
    WAVPieces pieces(wavFile, wav, framesAPiece);
    std::vector<std::int16_t> samples(framesAPiece * channels);
    std::vector<std::int32_t> mixed;
    mixed.reserve(framesAPiece * outputs);
    for (;;) {
        control.checkpoint();
        const ByteView bytes = pieces.next();
        if (bytes.empty()) break;
        std::memcpy(samples.data(), bytes.data(), bytes.size());
        mixed.clear();
        for (std::size_t at = 0; at < bytes.size() / sizeof(std::int16_t); at += channels)
            appendFrame(samples.data() + at, channels, mixed);
        writer.write(mixed);
    }
    writer.finish();
}

/// AC3 knows three rates, and an encoder that is given another one falls over it.
void resampled51FLAC(const fs::path& atAnyRate, const fs::path& out, RunControl& control) {
    const PassingFile wav(fs::path(out) += ".wav");
    runTool({atAnyRate, {"ffdec", "resample:osfmt=s16:osr=48000"}, wav.path()}, control);
    const WAV usual = readWAVHeader(wav.path());
    if (!isSurround(usual) || !isAC3Rate(usual.sampleRate)) throw MFError("no 5.1 layout");
    write51FLAC(wav.path(), usual, out, control);
}

}  // namespace

void surround51FLAC(const fs::path& wavFile, const fs::path& out, RunControl& control) {
    const WAV wav = readWAVHeader(wavFile);
    if (!isSurround(wav))
        throw MFError("surround conversion needs 6 or 8 channels of 16-bit sound");
    if (isAC3Rate(wav.sampleRate)) return write51FLAC(wavFile, wav, out, control);
    const PassingFile unusual(fs::path(out) += ".flac");
    write51FLAC(wavFile, wav, unusual.path(), control);
    resampled51FLAC(unusual.path(), out, control);
}

void ac3(const fs::path& flac, const fs::path& out, RunControl& control) {
    constexpr std::uint64_t smallestTrack = 1001;
    runTool({flac, {"ffdec", "ffenc:c=ac3:b=640k"}, out}, control);
    if (FileOps::size(out) < smallestTrack) throw MFError("the AC3 5.1 track could not be made");
}

}  // namespace marlet::AudioConvert
