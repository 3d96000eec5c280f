#pragma once

#include <filesystem>

#include "convert/wav.h"
#include "foundation/run_control.h"
#include "matroska/mkv_file.h"

namespace marlet {

namespace MKVWriter {
/// Writes a Matroska file that holds this one sound track and nothing else. Throws MFError "the
/// sound track has no frames", CancelError.
void extractAudio(const MKVFile& from, const MKVTrack& track, const std::filesystem::path& to,
                  RunControl& control);
}  // namespace MKVWriter

/// Sound tracks made into what Apple TV plays. All files lie in the job's work folder; what a
/// failure leaves there is the caller's to remove.
namespace AudioConvert {

/// Decodes a one-track Matroska file to 16-bit WAV of at most 48 kHz, by the media tool.
void decodeToWAV(const std::filesystem::path& single, double sampleRate,
                 const std::filesystem::path& out, RunControl& control);
/// The same for uncompressed sound (A_PCM), which needs no decoder.
void pcmToWAV(const MKVFile& from, const MKVTrack& track, const std::filesystem::path& out,
              RunControl& control);

struct Mixed {
    int inChannels = 0;
    float peakGain = 1;  ///< below 1 where the mix would have clipped
};
/// AAC, mono from mono and stereo from anything else. Progress is 0 to 1 of this step.
Mixed aacStereo(const std::filesystem::path& wav, const std::filesystem::path& out,
                RunControl& control, const Progress& progress = {});
/// FLAC 5.1 (L R C LFE Ls Rs) from 6 or 8 channels of 16 bits.
void surround51FLAC(const std::filesystem::path& wav, const std::filesystem::path& out,
                    RunControl& control);
/// AC3 5.1 at 640 kbit/s, by the media tool.
void ac3(const std::filesystem::path& flac, const std::filesystem::path& out, RunControl& control);

}  // namespace AudioConvert
}  // namespace marlet
