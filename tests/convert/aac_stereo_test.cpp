#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <numeric>

#include "convert/sound_tools.h"
#include "convert/wav_writer.h"
#include "foundation/syscalls.h"

namespace marlet::test {
namespace {

namespace fs = std::filesystem;
using AudioConvert::Mixed;
using testing::ElementsAre;

/// PCM of FFmpeg, in a WAV file.
Tones wavOf(const std::string& layout, int channels, double amplitude = 0.1) {
    return {.layout = layout,
            .channels = channels,
            .encoder = {"-c:a", "pcm_s16le"},
            .amplitude = amplitude};
}

class AACStereo : public WithEachTool {
protected:
    Mixed converted(const Tones& sound) {
        makeTones(wav(), sound);
        return AudioConvert::aacStereo(wav(), out(), job_->control);
    }
    fs::path wav() const { return job_->in("t1.wav"); }
    fs::path out() const { return job_->in("t1.m4a"); }
};
INSTANTIATE_WITH_EACH_TOOL(AACStereo);

TEST_P(AACStereo, StereoStaysAsItIs) {
    EXPECT_EQ(converted(wavOf("stereo", 2)).peakGain, 1);
    EXPECT_EQ(probeValue(out(), "stream=codec_name,profile"), "aac\nLC");
    const Heard sound = heard(out());
    EXPECT_EQ(sound.channels, 2);
    EXPECT_EQ(sound.rate, 48000);
    EXPECT_NEAR(std::stod(probeValue(out(), "stream=duration")), 2, 0.03);
    for (const int channel : {0, 1}) {
        EXPECT_NEAR(sound.level(channel, tones[channel]), -20, 0.2);
        EXPECT_LT(sound.level(channel, tones[1 - channel]), -50);
    }
}

TEST_P(AACStereo, MonoStaysMono) {
    const Mixed mixed = converted(wavOf("mono", 1));
    EXPECT_EQ(mixed.inChannels, 1);
    EXPECT_EQ(mixed.peakGain, 1);
    EXPECT_EQ(heard(out()).channels, 1);
    EXPECT_NEAR(heard(out()).level(0, tones[0]), -20, 0.2);
}

TEST_P(AACStereo, AChannelOf51ArrivesWhereItBelongs) {
    struct Case {
        int channel;
        double left;
        double right;
    };
    for (const auto& [channel, left, right] :
         {Case{1, 0, 1}, {2, 0.7071, 0.7071}, {3, 0, 0}, {4, 0.7071, 0}}) {
        Tones source = wavOf("5.1", 6);
        source.only = channel;
        const Mixed mixed = converted(source);
        EXPECT_EQ(mixed.inChannels, 6);
        EXPECT_EQ(mixed.peakGain, 1);
        const Heard sound = heard(out());
        ASSERT_EQ(sound.channels, 2);
        const double weights[] = {left, right};
        for (const int output : {0, 1}) {
            const double level = sound.level(output, tones[channel]);
            if (weights[output] > 0) {
                EXPECT_NEAR(level, decibels(0.1 * weights[output]), 0.2) << channel;
            } else {
                EXPECT_LT(level, -60) << channel;
            }
        }
    }
}

TEST_P(AACStereo, AMixThatWouldClipIsLowered) {
    Tones source = wavOf("5.1", 6);
    source.amplitude = 0.8;
    const Mixed mixed = converted(source);
    // Left, centre and surround meet now and then: 0.8 (1 + 2 * 0.7071) is nearly 1.93.
    EXPECT_NEAR(mixed.peakGain, 0.98 / 1.93, 0.03);
    const Heard sound = heard(out());
    EXPECT_LT(*std::max_element(sound.samples.begin(), sound.samples.end()), 1.05);
}

TEST_P(AACStereo, ALowRateIsKept) {
    Tones sound = wavOf("stereo", 2);
    sound.rate = 22050;
    converted(sound);
    EXPECT_EQ(heard(out()).rate, 22050);
    EXPECT_NEAR(heard(out()).seconds(), 2, 0.1);
}

TEST_P(AACStereo, LengthIsTheSourcesWhateverItsPartsAre) {
    Tones sound = wavOf("stereo", 2);
    sound.rate = 44100;
    sound.seconds = 5;
    converted(sound);
    EXPECT_NEAR(std::stod(probeValue(out(), "stream=duration")), 5, 0.03);
    EXPECT_NEAR(heard(out()).seconds(), 5, 0.05);
}

TEST_P(AACStereo, LeavesNothingElseBehind) {
    converted(wavOf("5.1", 6));
    EXPECT_THAT(job_->names(), ElementsAre("t1.m4a", "t1.wav"));
}

/// What is decided before the encoder runs. The script in its place keeps what it was given.
class BeforeTheEncoder : public testing::Test {
protected:
    BeforeTheEncoder() { job_.putScript("cat \"$2\" > \"${5%:store=flat}\""); }

    Mixed converted(const Progress& progress = {}) {
        return AudioConvert::aacStereo(wav_, job_.in("t.m4a"), job_.control, progress);
    }
    std::string failure() {
        return failureOf([&] { converted(); });
    }
    /// One value for each channel, over and over.
    void writeWAV(const std::vector<std::int16_t>& frame, std::size_t frames = 100,
                  std::uint32_t rate = 48000) {
        AudioConvert::WAVWriter writer(wav_, static_cast<int>(frame.size()), rate);
        std::vector<std::int16_t> samples;
        for (std::size_t i = 0; i < frames; i++)
            samples.insert(samples.end(), frame.begin(), frame.end());
        writer.write(samples);
        writer.finish();
    }
    /// What reached the encoder: the whole sound.
    std::vector<std::int16_t> given() {
        const fs::path m4a = job_.in("t.m4a");
        const AudioConvert::WAV header = AudioConvert::readWAVHeader(m4a);
        EXPECT_EQ(header.bits, 16);
        const Bytes bytes = readFile(m4a);
        std::vector<std::int16_t> samples(static_cast<std::size_t>(header.dataSize) / 2);
        std::memcpy(samples.data(), bytes.data() + header.dataOffset, samples.size() * 2);
        return samples;
    }

    SoundJob job_{Bundle::Tools::own};
    const fs::path wav_ = job_.in("t.wav");
};

std::int16_t part(double ofFullScale) {
    return static_cast<std::int16_t>(std::lround(ofFullScale * 32768));
}

TEST_F(BeforeTheEncoder, TheMixIsExact) {
    makeTones(wav_, wavOf("7.1", 8));
    EXPECT_EQ(converted().inChannels, 8);
    const Heard sound = heard(job_.in("t.m4a"));
    const double weights[] = {1, 1, 0.7071, 0, 0.5, 0.5, 0.5, 0.5};
    for (int from = 0; from < 8; from++)
        for (const int output : {0, 1}) {
            const double level = sound.level(output, tones[from]);
            const bool isHere = from == 2 || (from != 3 && from % 2 == output);
            if (isHere) {
                EXPECT_NEAR(level, decibels(0.1 * weights[from]), 0.01) << from;
            } else {
                EXPECT_LT(level, -80) << from << " on " << output;
            }
        }
}

TEST_F(BeforeTheEncoder, AMixThatPeaksAt196GetsHalf) {
    writeWAV({part(0.98), 0, part(0.98 / 1.4142), 0, part(0.98 / 1.4142), 0});
    EXPECT_NEAR(converted().peakGain, 0.5, 0.0001);
    EXPECT_NEAR(given().at(0), part(0.98), 1);
}

TEST_F(BeforeTheEncoder, AMixThatPeaksAt09StaysAsItIs) {
    writeWAV({part(0.9), 0, 0, part(1 - 1e-4), 0, 0});
    EXPECT_EQ(converted().peakGain, 1);
    EXPECT_EQ(given().at(0), part(0.9));
    EXPECT_EQ(given().at(1), 0);
}

TEST_F(BeforeTheEncoder, ThePeakIsLookedForInBothChannelsAndBothDirections) {
    writeWAV({0, part(-0.98), 0, 0, 0, part(-0.98 / 0.7071 * 0.5)});
    EXPECT_NEAR(converted().peakGain, 0.98 / 1.47, 0.001);
}

TEST_F(BeforeTheEncoder, APeakAtTheVeryEndCounts) {
    AudioConvert::WAVWriter writer(wav_, 3, 48000);
    std::vector<std::int16_t> samples(40000 * 3, 0);
    samples[samples.size() - 3] = samples[samples.size() - 1] = part(-1);
    writer.write(samples);
    writer.finish();
    EXPECT_NEAR(converted().peakGain, 0.98 / 1.7071, 0.001);
    EXPECT_EQ(given().size(), 80000U);
}

TEST_F(BeforeTheEncoder, StereoIsNeverLowered) {
    writeWAV({32767, -32768});
    EXPECT_EQ(converted().peakGain, 1);
    EXPECT_EQ(given().at(0), 32767);
    EXPECT_EQ(given().at(1), -32768);
}

TEST_F(BeforeTheEncoder, SixteenBitsPassUnchanged) {
    std::vector<std::int16_t> all(65536);
    std::iota(all.begin(), all.end(), std::int16_t{-32768});
    AudioConvert::WAVWriter writer(wav_, 1, 44100);
    writer.write(all);
    writer.finish();
    EXPECT_EQ(converted().inChannels, 1);
    EXPECT_EQ(given(), all);
}

TEST_F(BeforeTheEncoder, OtherFormatsAreRoundedToTheNearest) {
    for (const char* format : {"pcm_s24le", "pcm_s32le", "pcm_f32le"}) {
        Tones sound = wavOf("stereo", 2);
        sound.encoder = {"-c:a", format};
        makeTones(wav_, sound);
        converted();
        EXPECT_NEAR(heard(job_.in("t.m4a")).level(1, tones[1]), -20, 0.01) << format;
    }
}

TEST_F(BeforeTheEncoder, TheBitRateGoesByTheChannels) {
    job_.putScript("echo \"$1 $3 $4 ${5##*/}\"; exit 1");
    writeWAV({0, 0});
    EXPECT_EQ(failure(), "gpac failed (exit 1): -i ffenc:c=aac:b=192k -o t.m4a:store=flat");
    writeWAV({0, 0, 0, 0, 0, 0});
    EXPECT_EQ(failure(), "gpac failed (exit 1): -i ffenc:c=aac:b=192k -o t.m4a:store=flat");
    writeWAV({0});
    EXPECT_EQ(failure(), "gpac failed (exit 1): -i ffenc:c=aac:b=128k -o t.m4a:store=flat");
    EXPECT_THAT(job_.names(), ElementsAre("t.wav"));
}

TEST_F(BeforeTheEncoder, AFormatThatIsNotDecodedIsNamed) {
    for (const auto& [codec, channels] : {std::pair{"pcm_u8", 2}, std::pair{"pcm_f64le", 2}}) {
        Tones sound = wavOf("stereo", channels);
        sound.encoder = {"-c:a", codec};
        makeTones(wav_, sound);
        const std::string bits = std::string(codec) == "pcm_u8" ? "8" : "64";
        EXPECT_EQ(failure(), "unsupported decoded format (" + bits + "-bit, 2 channels)");
    }
    AudioConvert::WAVWriter(wav_, 0, 48000).finish();
    EXPECT_EQ(failure(), "unsupported decoded format (16-bit, 0 channels)");
}

TEST_F(BeforeTheEncoder, WhatIsNoWAVIsRefused) {
    writeFile(wav_, viewOf("no sound at all, but more than a header has"));
    EXPECT_EQ(failure(), "the decoded sound isn't a readable WAV file");
    fs::remove(wav_);
    EXPECT_THAT(failure(), testing::StartsWith("the decoded sound could not be opened: "));
}

TEST_F(BeforeTheEncoder, MoreThan48KilohertzNeverReachesIt) {
    writeWAV({0, 0}, 100, 96000);
    EXPECT_EQ(failure(), "sample rate above 48 kHz reached the encoder");
}

TEST_F(BeforeTheEncoder, ARateThatAACDoesNotKnowHasNoFormat) {
    writeWAV({0, 0}, 100, 37800);
    EXPECT_EQ(failure(), "no audio format");
}

TEST_F(BeforeTheEncoder, AnEncoderThatWritesNothingHadNoFormat) {
    writeWAV({0, 0});
    job_.putScript("exit 0");
    EXPECT_EQ(failure(), "no audio format");
}

TEST_F(BeforeTheEncoder, ADataSizeOfZeroIsReadToTheFilesEnd) {
    writeWAV({1, 2}, 50);
    Bytes bytes = readFile(wav_);
    std::fill_n(bytes.begin() + 40, 4, std::uint8_t{0});
    writeFile(wav_, bytes);
    converted();
    EXPECT_EQ(given().size(), 100U);
}

TEST_F(BeforeTheEncoder, HalfAFrameAtTheEndIsLeftOut) {
    writeWAV({1, 2}, 50);
    Bytes bytes = readFile(wav_);
    bytes.resize(bytes.size() - 3);
    writeFile(wav_, bytes);
    converted();
    EXPECT_EQ(given().size(), 98U);
}

TEST_F(BeforeTheEncoder, ProgressRisesFromPassToPass) {
    std::vector<double> seen;
    writeWAV({0, 0, 0}, 80000);
    converted([&](double done) { seen.push_back(done); });
    EXPECT_TRUE(std::is_sorted(seen.begin(), seen.end()));
    ASSERT_EQ(seen.size(), 7U);
    EXPECT_NEAR(seen[2], 0.3, 1e-9) << "the peak is found";
    EXPECT_EQ(seen.back(), 1);
    seen.clear();
    writeWAV({0, 0}, 80000);
    converted([&](double done) { seen.push_back(done); });
    ASSERT_EQ(seen.size(), 4U);
    EXPECT_GT(seen.front(), 0.3) << "there is no peak to find";
}

TEST_F(BeforeTheEncoder, ACancelEndsEveryPass) {
    for (const std::vector<std::int16_t>& frame : {std::vector<std::int16_t>{0, 0, 0}, {0, 0}}) {
        SoundJob job(Bundle::Tools::own);
        writeWAV(frame);
        job.control.cancel();
        EXPECT_THROW(AudioConvert::aacStereo(wav_, job.in("t.m4a"), job.control), CancelError);
        EXPECT_TRUE(job.names().empty());
    }
}

TEST_F(BeforeTheEncoder, AFullDiskIsTold) {
    writeWAV({0, 0});
    const Sys::Fault fault(Sys::Call::Write, ENOSPC, 1, true, job_.in("t.m4a.wav"));
    EXPECT_EQ(failure(), "write failed: No space left on device");
    EXPECT_THAT(job_.names(), ElementsAre("t.wav"));
}

}  // namespace
}  // namespace marlet::test
