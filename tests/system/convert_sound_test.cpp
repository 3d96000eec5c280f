// Sound of every kind that a film may have goes through the real programs: what can be copied is
// the very same, in step, and of what is converted each channel is heard where it belongs.

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <map>

#include "convert/tones.h"
#include "mp4/sound_layout.h"
#include "system/conversion_run.h"
#include "system/film_readers.h"

namespace marlet::test {
namespace {

namespace fs = std::filesystem;
using Strings = std::vector<std::string>;
using Tools = Bundle::Tools;

/// A tone on every channel for two seconds.
struct Sound {
    std::string encoder;
    std::string layout;
    int rate = 48000;

    int channels() const {
        const std::vector<std::pair<std::string, int>> all = {
            {"mono", 1}, {"stereo", 2}, {"2.1", 3}, {"5.0", 5}, {"5.1", 6}, {"6.1", 7}, {"7.1", 8}};
        return std::ranges::find(all, layout, &std::pair<std::string, int>::first)->second;
    }
    bool isCopied() const { return encoder == "aac" || encoder == "ac3" || encoder == "eac3"; }
    std::string name() const { return encoder + " " + layout + " " + std::to_string(rate); }
};

const std::vector<std::string> languages = {"eng", "fre", "ger", "spa", "ita",
                                            "jpn", "por", "dut", "swe", "nor"};

const std::map<std::string, std::vector<Sound>>& films() {
    static const std::map<std::string, std::vector<Sound>> all = {
        {"Lossless",
         {{"truehd", "5.1"},
          {"truehd", "stereo", 44100},
          {"dca", "5.1"},
          {"dca", "mono"},
          {"flac", "7.1"},
          {"flac", "6.1"},
          {"flac", "stereo", 96000}}},
        {"Lossy",
         {{"libopus", "7.1"},
          {"libopus", "mono"},
          {"libvorbis", "5.0"},
          {"libvorbis", "2.1"},
          {"libvorbis", "stereo", 44100},
          {"libmp3lame", "mono", 22050},
          {"libmp3lame", "stereo"}}},
        {"Uncompressed",
         {{"pcm_s16le", "stereo", 44100},
          {"pcm_s16be", "2.1"},
          {"pcm_s24le", "5.1"},
          {"pcm_s24be", "mono"},
          {"pcm_f32le", "7.1", 96000},
          {"pcm_s16le", "6.1"}}},
        {"Copied",
         {{"aac", "mono"},
          {"aac", "stereo", 44100},
          {"aac", "5.1"},
          {"aac", "7.1"},
          {"ac3", "5.1", 32000},
          {"ac3", "mono"},
          {"eac3", "5.0"},
          {"eac3", "stereo"}}},
        {"CopiedAt44100", {{"ac3", "mono", 44100}, {"eac3", "stereo", 44100}}}};
    return all;
}

Strings encoderOf(const Sound& sound) {
    Strings words = {"-c:a", sound.encoder, "-strict", "-2"};
    if (sound.encoder == "libopus") words.insert(words.end(), {"-mapping_family", "1"});
    if (!sound.encoder.starts_with("pcm")) words.insert(words.end(), {"-b:a", "256k"});
    if (sound.encoder == "dca") words.back() = "1400k";
    return words;
}

/// Made once a process.
fs::path partOf(const Sound& sound) {
    static const TempFolder folder;
    const fs::path file = folder / (sound.name() + ".mka");
    if (!fs::exists(file))
        makeTones(file, {.layout = sound.layout,
                         .channels = sound.channels(),
                         .rate = sound.rate,
                         .encoder = encoderOf(sound)});
    return file;
}

fs::path picture() {
    static const TempFolder folder;
    const fs::path file = folder / "v.mp4";
    if (!fs::exists(file))
        ffmpeg({"-f", "lavfi", "-i", "testsrc=size=64x36:rate=25:duration=2", "-c:v", "libx264",
                "-bf", "2", "-pix_fmt", "yuv420p", file.string()});
    return file;
}

/// mkvmerge laces what it may; FFmpeg tells nothing of lengths and delays of most kinds.
void mergeByMkvmerge(const fs::path& film, const std::vector<Sound>& sounds) {
    Strings words = {picture().string()};
    for (std::size_t i = 0; i < sounds.size(); i++)
        words.insert(words.end(), {"--language", "0:" + languages[i], partOf(sounds[i]).string()});
    mkvmerge(film, words);
}

void mergeByFFmpeg(const fs::path& film, const std::vector<Sound>& sounds) {
    Strings words = {"-i", picture().string()};
    for (const Sound& sound : sounds) words.insert(words.end(), {"-i", partOf(sound).string()});
    words.insert(words.end(), {"-map", "0", "-c", "copy"});
    for (std::size_t i = 0; i < sounds.size(); i++)
        words.insert(words.end(),
                     {"-map", std::to_string(i + 1), "-metadata:s:a:" + std::to_string(i),
                      "language=" + languages[i]});
    words.push_back(film.string());
    ffmpeg(words);
}

/// What is to become of a film's sounds, in order.
struct Wanted {
    std::size_t source = 0;
    std::string codec;
    int channels = 0;
    bool isCopy = false;
};

std::vector<Wanted> wantedOf(const std::vector<Sound>& sounds) {
    std::vector<Wanted> wanted;
    for (std::size_t i = 0; i < sounds.size(); i++) {
        const int channels = sounds[i].channels();
        if (sounds[i].isCopied()) {
            wanted.push_back({i, sounds[i].encoder, channels, true});
            if (channels > 2) wanted.push_back({i, "aac", 2});
        } else {
            if (channels == 6 || channels == 8) wanted.push_back({i, "ac3", 6});
            wanted.push_back({i, "aac", channels == 1 ? 1 : 2});
        }
    }
    return wanted;
}

/// How much of a channel a mix has, of 2.0 and 5.1 in the order of WAV files.
double shareOf(int of, int channel, int in, bool isSurround) {
    constexpr double root = 0.7071;
    if (isSurround) {
        if (channel < 4 || of == 6) return in == channel ? 1 : 0;
        return in == channel || in == channel + 2 ? root : 0;
    }
    if (of <= 2) return in == channel ? 1 : 0;
    struct Share {
        int left, right;
        double share;
    };
    const auto shares = [of]() -> std::vector<Share> {
        switch (of) {
            case 3:
                return {{0, 1, 1}, {2, 2, root}};
            case 5:
                return {{0, 1, 1}, {2, 2, root}, {3, 4, root}};
            case 6:
                return {{0, 1, 1}, {2, 2, root}, {4, 5, root}};
            case 7:
                return {{0, 1, 1}, {2, 2, root}, {5, 6, root}, {4, 4, 0.5}};
            default:
                return {{0, 1, 1}, {2, 2, root}, {4, 5, 0.5}, {6, 7, 0.5}};
        }
    }();
    for (const Share& each : shares)
        if ((channel == 0 ? each.left : each.right) == in) return each.share;
    return 0;
}

void expectMix(const Heard& made, const Heard& source, bool isSurround) {
    constexpr double faintest = -40;  // dB: DTS has its own idea of low frequencies
    constexpr double silence = -50;   // codecs leave some noise
    constexpr double tolerance = 1.5;
    for (int in = 0; in < source.channels; in++) {
        const double before = source.level(in, tones[in]);
        EXPECT_GT(before, faintest) << in;
        for (int out = 0; out < made.channels; out++) {
            const double share = shareOf(source.channels, out, in, isSurround);
            const double level = made.level(out, tones[in]);
            if (share > 0)
                EXPECT_NEAR(level, before + decibels(share), tolerance) << out << " of " << in;
            else
                EXPECT_LT(level, silence) << out << " of " << in;
        }
    }
}

class SoundConversion : public testing::TestWithParam<std::tuple<Tools, std::string, std::string>> {
protected:
    void SetUp() override {
        if (std::get<1>(GetParam()) == "mkvmerge")
            mergeByMkvmerge(source_, sounds_);
        else
            mergeByFFmpeg(source_, sounds_);
        const auto result =
            film_.convertKeeping({languages.begin(), languages.begin() + std::ssize(sounds_)});
        ASSERT_EQ(result.lines("RESULT done: ").size(), 1U) << result.output;
    }

    void expectCopy(const Wanted& wanted, const std::string& stream) {
        const auto before = packetsOf(source_, "a:" + std::to_string(wanted.source));
        const auto after = packetsOf(made_, stream);
        ASSERT_EQ(before.size(), after.size());
        const double from = startOf(packetsOf(source_, "v:0"));
        const double to = startOf(packetsOf(made_, "v:0"));
        for (std::size_t i = 0; i < before.size(); i++) {
            EXPECT_EQ(before[i].hash, after[i].hash) << i;
            EXPECT_NEAR(before[i].time - from, after[i].time - to, 0.0025) << i;
        }
    }

    const Heard& heardBefore(std::size_t sound) {
        const auto [found, isNew] = before_.try_emplace(sound);
        if (isNew) found->second = heard(source_, "a:" + std::to_string(sound));
        return found->second;
    }

    ConversionRun film_{std::get<0>(GetParam())};
    const std::vector<Sound> sounds_ = films().at(std::get<2>(GetParam()));
    const fs::path source_ = film_.source();
    const fs::path made_ = film_.made();
    std::map<std::size_t, Heard> before_;
};

TEST_P(SoundConversion, IsHeardAsItsSource) {
    const std::vector<Stream> streams = streamsOf(made_, "a");
    const std::vector<Wanted> wanted = wantedOf(sounds_);
    ASSERT_EQ(streams.size(), wanted.size());
    for (std::size_t i = 0; i < wanted.size(); i++) {
        const Sound& source = sounds_[wanted[i].source];
        SCOPED_TRACE(source.name() + " as " + wanted[i].codec);
        const Stream& stream = streams[i];
        EXPECT_EQ(stream.codec, wanted[i].codec);
        EXPECT_EQ(stream.channels, wanted[i].channels);
        EXPECT_EQ(stream.language, languages[wanted[i].source]);
        EXPECT_EQ(stream.isDefault, i == 0);
        EXPECT_NEAR(stream.duration, 2, 0.15);
        const std::string place = "a:" + std::to_string(i);
        if (wanted[i].isCopy)
            expectCopy(wanted[i], place);
        else
            expectMix(heard(made_, place), heardBefore(wanted[i].source), wanted[i].codec == "ac3");
    }
    EXPECT_LE(measureInterleave(made_), 1.0);
    EXPECT_EQ(complaintsOf(made_), "");
}

std::string nameOf(const testing::TestParamInfo<SoundConversion::ParamType>& info) {
    const auto& [tools, muxer, film] = info.param;
    return film + "By" + (muxer == "mkvmerge" ? "Mkvmerge" : "FFmpeg");
}

// What FFmpeg puts into Matroska otherwise than mkvmerge does is among these two.
const auto byMkvmerge =
    testing::Combine(testing::Values(Tools::own), testing::Values("mkvmerge"),
                     testing::Values("Lossless", "Lossy", "Uncompressed", "Copied"));
const auto byFFmpeg = testing::Combine(testing::Values(Tools::own), testing::Values("FFmpeg"),
                                       testing::Values("Lossy", "Copied"));
const auto byGpac =
    testing::Combine(testing::Values(Tools::gpac), testing::Values("mkvmerge"),
                     testing::Values("Lossless", "Lossy", "Uncompressed", "Copied"));
const auto ofFFmpegByGpac = testing::Combine(
    testing::Values(Tools::gpac), testing::Values("FFmpeg"), testing::Values("Lossy", "Copied"));
// GPAC cuts the lengths of such frames to whole milliseconds, and what it makes is refused.
INSTANTIATE_TEST_SUITE_P(OwnAt44100, SoundConversion,
                         testing::Combine(testing::Values(Tools::own),
                                          testing::Values("mkvmerge", "FFmpeg"),
                                          testing::Values("CopiedAt44100")),
                         nameOf);
INSTANTIATE_TEST_SUITE_P(Own, SoundConversion, byMkvmerge, nameOf);
INSTANTIATE_TEST_SUITE_P(OwnOfFFmpeg, SoundConversion, byFFmpeg, nameOf);
INSTANTIATE_TEST_SUITE_P(Gpac, SoundConversion, byGpac, nameOf);
INSTANTIATE_TEST_SUITE_P(GpacOfFFmpeg, SoundConversion, ofFFmpegByGpac, nameOf);

}  // namespace
}  // namespace marlet::test
