#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <vector>

#include "convert/audio_convert.h"
#include "convert/encoder_rates.h"
#include "convert/flac_writer.h"
#include "convert/passing_file.h"
#include "convert/pcm_samples.h"
#include "convert/wav_writer.h"
#include "foundation/errors.h"

namespace marlet::AudioConvert {

namespace fs = std::filesystem;

namespace {

[[noreturn]] void refuse() {
    throw MFError("the sound track could not be decoded");
}

constexpr int wavBits = 16;
/// What is resampled is rounded once only, at the end.
constexpr int flacBits = 24;

struct Sound {
    PCMFormat format;
    int channels = 0;
    std::uint32_t sampleRate = 0;
};

Sound soundOf(const MKVTrack& track) {
    constexpr double usualRate = 48000;
    const auto format = pcmFormat(track);
    const int channels = std::max(track.channels, 1);
    const double rate = track.sampleRate > 0 ? std::round(track.sampleRate) : usualRate;
    if (!format || channels > std::numeric_limits<std::uint16_t>::max() ||
        !(rate >= 1 && rate <= std::numeric_limits<std::uint32_t>::max()))
        refuse();
    return {*format, channels, static_cast<std::uint32_t>(rate)};
}

/// Hands on a track's samples, whole frames at a time; gives false when there were none.
template <class Take>
bool forEachPiece(const MKVFile& from, const MKVTrack& track, const Sound& sound,
                  RunControl& control, Take take) {
    constexpr int blocksBetweenChecks = 400;
    const auto channels = static_cast<std::size_t>(sound.channels);
    int blocks = 0;
    bool any = false;
    std::vector<std::int32_t> samples;
    from.forEachBlock(std::set<int>{track.number}, {}, [&](const MKVBlock& block) {
        if (++blocks % blocksBetweenChecks == 0) control.checkpoint();
        for (const Bytes& frame : from.data(block)) {
            samples.clear();
            decodePCM(frame, sound.format, samples);
            samples.resize(samples.size() - samples.size() % channels);
            any = any || !samples.empty();
            if (!samples.empty()) take(samples);
        }
        return true;
    });
    if (blocks == 0) throw MFError("the sound track has no frames");
    return any;
}

void writeWAV(const MKVFile& from, const MKVTrack& track, const Sound& sound, const fs::path& out,
              RunControl& control) {
    WAVWriter writer(out, sound.channels, sound.sampleRate);
    std::vector<std::int16_t> narrow;
    const bool any =
        forEachPiece(from, track, sound, control, [&](const std::vector<std::int32_t>& samples) {
            narrow.clear();
            for (const std::int32_t sample : samples)
                narrow.push_back(static_cast<std::int16_t>(narrowed(sample, wavBits)));
            writer.write(narrow);
        });
    if (!any) refuse();
    writer.finish();
}

void writeFLAC(const MKVFile& from, const MKVTrack& track, const Sound& sound, const fs::path& out,
               RunControl& control) {
    const FLACWriter::Format format{sound.channels, sound.sampleRate, flacBits};
    if (!FLACWriter::takes(format)) refuse();
    FLACWriter writer(out, format);
    std::vector<std::int32_t> narrow;
    const bool any =
        forEachPiece(from, track, sound, control, [&](const std::vector<std::int32_t>& samples) {
            narrow.clear();
            for (const std::int32_t sample : samples) narrow.push_back(narrowed(sample, flacBits));
            writer.write(narrow);
        });
    if (!any) refuse();
    writer.finish();
}

}  // namespace

void pcmToWAV(const MKVFile& from, const MKVTrack& track, const fs::path& out,
              RunControl& control) {
    const Sound sound = soundOf(track);
    if (isAACRate(sound.sampleRate)) return writeWAV(from, track, sound, out, control);
    // The tool resamples what it decodes. It takes no uncompressed sound, but FLAC.
    const PassingFile flac(fs::path(out) += ".flac");
    writeFLAC(from, track, sound, flac.path(), control);
    decodeToWAV(flac.path(), sound.sampleRate, out, control);
}

}  // namespace marlet::AudioConvert
