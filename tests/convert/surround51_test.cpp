#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "convert/sound_tools.h"
#include "convert/wav_writer.h"
#include "foundation/syscalls.h"

namespace marlet::test {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;

using Frames = std::vector<std::vector<std::int16_t>>;

void writeWAV(const fs::path& file, const Frames& frames, std::uint32_t rate = 48000) {
    AudioConvert::WAVWriter writer(file, static_cast<int>(frames.at(0).size()), rate);
    for (const auto& frame : frames) writer.write(frame);
    writer.finish();
}

/// A FLAC file's samples, as FFmpeg decodes them.
std::vector<std::int16_t> samplesOf(const fs::path& flac) {
    const std::string bytes = ffmpeg({"-i", flac.string(), "-f", "s16le", "-"});
    std::vector<std::int16_t> samples(bytes.size() / 2);
    std::memcpy(samples.data(), bytes.data(), samples.size() * 2);
    return samples;
}

class Surround51FLAC : public testing::Test {
protected:
    void convert() { AudioConvert::surround51FLAC(wav_, flac_, job_.control); }
    std::string failure() {
        return failureOf([&] { convert(); });
    }

    SoundJob job_{Bundle::Tools::own};
    const fs::path wav_ = job_.in("t.wav");
    const fs::path flac_ = job_.in("t.flac");
};

TEST_F(Surround51FLAC, SixChannelsGoOverUnchanged) {
    writeWAV(wav_, {{1, -2, 3, -4, 5, -6}, {32767, -32768, 0, 100, -100, 7}});
    convert();
    EXPECT_THAT(samplesOf(flac_), ElementsAre(1, -2, 3, -4, 5, -6, 32767, -32768, 0, 100, -100, 7));
    EXPECT_THAT(probeValue(flac_, "stream=channel_layout"), testing::StartsWith("5.1"));
    EXPECT_EQ(probeValue(flac_, "stream=bits_per_raw_sample"), "16");
}

TEST_F(Surround51FLAC, TheSecondPairOf71IsFoldedIntoTheFirst) {
    writeWAV(wav_, {{10, 20, 30, 40, 1000, -1000, 500, -300}});
    convert();
    EXPECT_THAT(samplesOf(flac_), ElementsAre(10, 20, 30, 40, 1061, -919));
}

TEST_F(Surround51FLAC, AFoldThatIsTooLoudIsHeld) {
    writeWAV(wav_, {{0, 0, 0, 0, 32767, -32768, 32767, -32768}});
    convert();
    EXPECT_THAT(samplesOf(flac_), ElementsAre(0, 0, 0, 0, 32767, -32768));
}

TEST_F(Surround51FLAC, MoreThanAPieceArrivesWhole) {
    writeWAV(wav_, Frames(40000, {1, 2, 3, 4, 5, 6, 7, 8}));
    convert();
    EXPECT_EQ(samplesOf(flac_).size(), 40000U * 6);
}

TEST_F(Surround51FLAC, OtherNumbersOfChannelsAreRefused) {
    const std::string wanted = "surround conversion needs 6 or 8 channels of 16-bit sound";
    for (const std::size_t channels : {1, 2, 4, 5, 7, 9}) {
        writeWAV(wav_, {std::vector<std::int16_t>(channels, 0)});
        EXPECT_EQ(failure(), wanted) << channels;
    }
    makeTones(wav_, {.encoder = {"-c:a", "pcm_s24le"}});
    EXPECT_EQ(failure(), wanted);
    EXPECT_FALSE(fs::exists(flac_));
}

TEST_F(Surround51FLAC, ARateThatNoFileCanTellHasNoLayout) {
    writeWAV(wav_, {{1, 2, 3, 4, 5, 6}}, 0);
    EXPECT_EQ(failure(), "no 5.1 layout");
    writeWAV(wav_, {{1, 2, 3, 4, 5, 6}}, 0xFFFFFFFF);
    EXPECT_EQ(failure(), "no 5.1 layout");
}

TEST_F(Surround51FLAC, WhatIsNoWAVIsRefused) {
    writeFile(wav_, viewOf("x"));
    EXPECT_EQ(failure(), "the decoded sound isn't a readable WAV file");
}

TEST_F(Surround51FLAC, AFullDiskIsTold) {
    writeWAV(wav_, Frames(40000, {1, -2000, 300, 4, 5, 6}));
    {
        const Sys::Fault fault(Sys::Call::Write, ENOSPC, 1, true, flac_);
        EXPECT_EQ(failure(), "write failed: No space left on device");
    }
    const Sys::Fault fault(Sys::Call::Write, ENOSPC, 5, true, flac_);
    EXPECT_EQ(failure(), "write failed: No space left on device");
}

TEST_F(Surround51FLAC, ACancelledJobEndsAsCancelled) {
    writeWAV(wav_, {{1, 2, 3, 4, 5, 6}});
    job_.control.cancel();
    EXPECT_THROW(convert(), CancelError);
}

class AC3 : public WithEachTool {
protected:
    /// From a WAV of that sound to AC3.
    Heard converted(const Tones& sound) {
        makeTones(job_->in("t.wav"), sound);
        AudioConvert::surround51FLAC(job_->in("t.wav"), job_->in("t.flac"), job_->control);
        AudioConvert::ac3(job_->in("t.flac"), out(), job_->control);
        return heard(out());
    }
    fs::path out() const { return job_->in("t.ac3"); }
};
INSTANTIATE_WITH_EACH_TOOL(AC3);

const std::vector<std::string> pcm16{"-c:a", "pcm_s16le"};

TEST_P(AC3, EveryChannelArrivesInItsPlace) {
    const Heard sound = converted({.encoder = pcm16});
    ASSERT_EQ(sound.channels, 6);
    for (int channel = 0; channel < 6; channel++)
        for (int other = 0; other < 6; other++) {
            const double level = sound.level(channel, tones[other]);
            if (other == channel) {
                EXPECT_NEAR(level, -20, 0.2) << channel;
            } else {
                EXPECT_LT(level, -50) << channel << " has the tone of " << other;
            }
        }
    EXPECT_EQ(probeValue(out(), "stream=codec_name,bit_rate,channel_layout"),
              "ac3\n5.1(side)\n640000");
    EXPECT_NEAR(sound.seconds(), 2, 0.05);
    EXPECT_THAT(job_->names(), ElementsAre("t.ac3", "t.flac", "t.wav"));
}

TEST_P(AC3, The71OfAFilmArrivesFolded) {
    makeTones(job_->in("film.mkv"), {.layout = "7.1", .channels = 8});
    AudioConvert::surround51FLAC(decoded(job_->in("film.mkv")), job_->in("t.flac"), job_->control);
    AudioConvert::ac3(job_->in("t.flac"), out(), job_->control);
    const Heard sound = heard(out());
    const double lower = decibels(0.1 * 0.7071);
    for (const int channel : {0, 1, 2, 3})
        EXPECT_NEAR(sound.level(channel, tones[channel]), -20, 0.2);
    for (const int channel : {4, 5}) {
        EXPECT_NEAR(sound.level(channel, tones[channel]), lower, 0.2);
        EXPECT_NEAR(sound.level(channel, tones[channel + 2]), lower, 0.2);
    }
}

TEST_P(AC3, ARateOfItsOwnIsKeptAndAnyOtherBecomes48Kilohertz) {
    EXPECT_EQ(converted({.rate = 44100, .encoder = pcm16}).rate, 44100);
    EXPECT_EQ(converted({.rate = 32000, .encoder = pcm16}).rate, 32000);
    const Heard sound = converted({.rate = 24000, .encoder = pcm16});
    EXPECT_EQ(sound.rate, 48000);
    EXPECT_NEAR(sound.seconds(), 2, 0.05);
    EXPECT_NEAR(sound.level(4, tones[4]), -20, 0.2);
    EXPECT_THAT(job_->names(), ElementsAre("t.ac3", "t.flac", "t.wav"));
}

TEST(AC3Script, TheToolIsAskedFor640KilobitsAndMustWriteThem) {
    SoundJob job(Bundle::Tools::own);
    writeFile(job.in("t.flac"), viewOf("sound"));
    const auto failure = [&] {
        return failureOf(
            [&] { AudioConvert::ac3(job.in("t.flac"), job.in("t.ac3"), job.control); });
    };
    job.putScript("echo \"$1 ${2##*/} $3 $4 $5 ${6##*/}\"; exit 2");
    EXPECT_EQ(failure(), "gpac failed (exit 2): -i t.flac ffdec ffenc:c=ac3:b=640k -o t.ac3");
    job.putScript("head -c 1000 /dev/zero > \"$6\"");
    EXPECT_EQ(failure(), "the AC3 5.1 track could not be made");
    job.putScript("exit 0");
    EXPECT_EQ(failure(), "the AC3 5.1 track could not be made");
    job.putScript("head -c 1001 /dev/zero > \"$6\"");
    EXPECT_EQ(failure(), "no failure");
    fs::remove(job.bundle().helpers() / "gpac");
    EXPECT_EQ(failure(), "the media tool (gpac) is missing from this copy of Marlet");
}

}  // namespace
}  // namespace marlet::test
