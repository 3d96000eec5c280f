#pragma once

#include <cmath>
#include <cstring>
#include <filesystem>
#include <numbers>
#include <string>
#include <vector>

#include "support/media.h"

// Sound with a tone of its own on every channel, and what arrives of them.
namespace marlet::test {

/// In Hz, by channel; the fourth of 5.1 and 7.1 is the low-frequency one.
inline constexpr int tones[] = {300, 500, 700, 60, 1100, 1300, 1700, 1900};

struct Tones {
    std::string layout = "5.1";  ///< FFmpeg's word
    int channels = 6;
    int rate = 48000;
    std::vector<std::string> encoder{"-c:a", "flac"};
    double amplitude = 0.1;  ///< of each channel
    int seconds = 2;
    int only = -1;  ///< the one channel that sounds; otherwise all do
};

inline bool silent(const Tones& sound, int channel) {
    return sound.only >= 0 && sound.only != channel;
}

inline void makeTones(const std::filesystem::path& file, const Tones& sound = {}) {
    std::string channels;
    for (int i = 0; i < sound.channels; i++)
        channels += (i > 0 ? "|" : "") + std::to_string(silent(sound, i) ? 0 : sound.amplitude) +
                    "*sin(2*PI*" + std::to_string(tones[i]) + "*t)";
    std::vector<std::string> command{"-f", "lavfi", "-i"};
    command.push_back("aevalsrc='" + channels + "':s=" + std::to_string(sound.rate) +
                      ":c=" + sound.layout + ":d=" + std::to_string(sound.seconds));
    command.insert(command.end(), sound.encoder.begin(), sound.encoder.end());
    command.push_back(file.string());
    ffmpeg(command);
}

/// Sound as FFmpeg decodes it.
struct Heard {
    int channels = 0;
    int rate = 0;
    std::vector<float> samples;  // interleaved

    double seconds() const {
        return static_cast<double>(samples.size()) / channels / static_cast<double>(rate);
    }
    /// How loud a tone is on a channel, in dB below the full scale. Looked for in the second half
    /// of a second after the first quarter.
    double level(int channel, int tone) const {
        const int from = rate / 4;
        const int count = rate / 2;
        const double step = 2 * std::numbers::pi * tone / rate;
        double real = 0;
        double imaginary = 0;
        for (int i = 0; i < count; i++) {
            const float sample = samples[static_cast<std::size_t>((from + i) * channels + channel)];
            real += sample * std::cos(step * i);
            imaginary += sample * std::sin(step * i);
        }
        return 20 * std::log10(2 * std::hypot(real, imaginary) / count + 1e-9);
    }
};

/// `stream` as FFmpeg counts them: "a:1" is the second sound.
inline Heard heard(const std::filesystem::path& file, const std::string& stream = "a:0") {
    Heard sound;
    const std::string told = runTool({"ffprobe", "-v", "error", "-select_streams", stream,
                                      "-show_entries", "stream=channels,sample_rate", "-of",
                                      "default=noprint_wrappers=1", file.string()});
    const auto value = [&told](const std::string& key) {
        return std::stoi(told.substr(told.find(key) + key.size()));
    };
    sound.channels = value("channels=");
    sound.rate = value("sample_rate=");
    const std::string bytes =
        ffmpeg({"-i", file.string(), "-map", "0:" + stream, "-f", "f32le", "-"});
    sound.samples.resize(bytes.size() / sizeof(float));
    std::memcpy(sound.samples.data(), bytes.data(), sound.samples.size() * sizeof(float));
    return sound;
}

/// In dB, of an amplitude.
inline double decibels(double amplitude) {
    return 20 * std::log10(amplitude);
}

}  // namespace marlet::test
