#include <algorithm>
#include <string>
#include <vector>

#include "convert/audio_convert.h"
#include "convert/encoder_rates.h"
#include "convert/mix_matrix.h"
#include "convert/passing_file.h"
#include "convert/round_samples.h"
#include "convert/sound_tool.h"
#include "convert/wav_pieces.h"
#include "convert/wav_writer.h"
#include "foundation/errors.h"
#include "foundation/file_ops.h"

namespace marlet::AudioConvert {

namespace fs = std::filesystem;

namespace {

constexpr std::size_t framesAPiece = 32768;
constexpr float loudest = 0.98F;
/// Shares of the step: looking for the peak, mixing, encoding.
constexpr double peakShare = 0.3;
constexpr double mixShare = 0.35;

WAV readFormat(const fs::path& file) {
    const WAV wav = readWAVHeader(file);
    if (!isDecodable(wav))
        throw MFError("unsupported decoded format (" + std::to_string(wav.bits) + "-bit, " +
                      std::to_string(wav.channels) + " channels)");
    return wav;
}

/// A WAV file's sound, mixed down piece by piece.
class MixedPieces {
public:
    MixedPieces(const fs::path& file, const WAV& wav)
        : pieces_(file, wav, framesAPiece),
          wav_(wav),
          mix_(wav.channels),
          samples_(framesAPiece * mix_.inputs()),
          rows_(mix_.outputs(), std::vector<float>(framesAPiece)) {}

    /// Mixes the next piece and gives its frames; 0 at the end.
    std::size_t next() {
        const ByteView bytes = pieces_.next();
        const std::size_t count = decodeSamples(bytes, wav_, samples_);
        const std::size_t frames = count / mix_.inputs();
        for (std::size_t row = 0; row < rows_.size(); row++)
            mix_.run(std::span(samples_).first(count), row, std::span(rows_[row]).first(frames));
        return frames;
    }
    std::size_t channels() const { return rows_.size(); }
    const std::vector<float>& row(std::size_t channel) const { return rows_[channel]; }
    double done() const { return pieces_.done(); }

private:
    WAVPieces pieces_;
    WAV wav_;
    Mix mix_;
    std::vector<float> samples_;
    std::vector<std::vector<float>> rows_;
};

class Step {
public:
    Step(const fs::path& wavFile, RunControl& control, const Progress& progress)
        : wavFile_(wavFile), wav_(readFormat(wavFile)), control_(control), progress_(progress) {}

    const WAV& wav() const { return wav_; }

    float peakGain() {
        constexpr int smallestMix = 3;
        if (wav_.channels < smallestMix) return 1;
        float highest = 0;
        MixedPieces pieces(wavFile_, wav_);
        for (;;) {
            control_.checkpoint();
            const std::size_t frames = pieces.next();
            if (frames == 0) break;
            for (std::size_t channel = 0; channel < pieces.channels(); channel++)
                highest = std::max(highest, peak(std::span(pieces.row(channel)).first(frames)));
            report(peakShare * pieces.done());
        }
        return highest > loudest ? loudest / highest : 1;
    }

    void writeMixed(const fs::path& to, float gain) {
        MixedPieces pieces(wavFile_, wav_);
        WAVWriter writer(to, static_cast<int>(pieces.channels()),
                         static_cast<std::uint32_t>(wav_.sampleRate));
        std::vector<std::int16_t> samples(framesAPiece * pieces.channels());
        for (;;) {
            control_.checkpoint();
            const std::size_t frames = pieces.next();
            if (frames == 0) break;
            for (std::size_t channel = 0; channel < pieces.channels(); channel++)
                roundSamples(std::span(pieces.row(channel)).first(frames), gain,
                             samples.data() + channel, pieces.channels());
            writer.write(std::span(samples).first(frames * pieces.channels()));
            report(peakShare + mixShare * pieces.done());
        }
        writer.finish();
    }

    void report(double done) const {
        if (progress_) progress_(done);
    }

private:
    const fs::path& wavFile_;
    WAV wav_;
    RunControl& control_;
    const Progress& progress_;
};

}  // namespace

Mixed aacStereo(const fs::path& wavFile, const fs::path& out, RunControl& control,
                const Progress& progress) {
    Step step(wavFile, control, progress);
    const WAV& wav = step.wav();
    const Mixed mixed{.inChannels = wav.channels, .peakGain = step.peakGain()};
    if (wav.sampleRate > aacRates[std::size(aacRates) - 1])
        throw MFError("sample rate above 48 kHz reached the encoder");
    if (!isAACRate(wav.sampleRate)) throw MFError("no audio format");

    const PassingFile stereo(fs::path(out) += ".wav");
    step.writeMixed(stereo.path(), mixed.peakGain);
    const std::string bitRate = wav.channels == 1 ? "128k" : "192k";
    // Flat: written as it comes, without a temporary file elsewhere. The film is laid out later.
    runTool({stereo.path(), {"ffenc:c=aac:b=" + bitRate}, out, "store=flat"}, control);
    if (FileOps::size(out) == 0) throw MFError("no audio format");
    step.report(1);
    return mixed;
}

}  // namespace marlet::AudioConvert
