#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "convert/mkv_files.h"
#include "convert/sound_tools.h"
#include "foundation/file_ops.h"

namespace marlet::test {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::StartsWith;

class DecodeToWAV : public WithEachTool {
protected:
    /// Decodes such sound and compares length, rate, channels and every channel's tone with what
    /// FFmpeg hears in the film.
    void expectAllArrives(const Tones& sound) {
        const fs::path film = job_->in("film.mkv");
        makeTones(film, sound);
        const fs::path wav = decoded(film);
        const AudioConvert::WAV header = AudioConvert::readWAVHeader(wav);
        EXPECT_EQ(header.bits, 16);
        EXPECT_FALSE(header.isFloat);
        EXPECT_EQ(header.channels, sound.channels);
        EXPECT_EQ(header.sampleRate, std::min(sound.rate, 48000));
        const Heard source = heard(film);
        const Heard arrived = heard(wav);
        EXPECT_NEAR(arrived.seconds(), sound.seconds, 0.1);
        for (int channel = 0; channel < sound.channels; channel++) {
            const int tone = tones[channel];
            ASSERT_GT(source.level(channel, tone), -35);
            EXPECT_NEAR(arrived.level(channel, tone), source.level(channel, tone), 0.2) << channel;
        }
    }
};
INSTANTIATE_WITH_EACH_TOOL(DecodeToWAV);

TEST_P(DecodeToWAV, TrueHD) {
    expectAllArrives({.encoder = {"-c:a", "truehd", "-strict", "-2"}});
}

TEST_P(DecodeToWAV, DTS) {
    expectAllArrives({.encoder = {"-c:a", "dca", "-strict", "-2"}});
}

TEST_P(DecodeToWAV, FLACOf71) {
    expectAllArrives({.layout = "7.1", .channels = 8});
}

TEST_P(DecodeToWAV, FLACOf61) {
    expectAllArrives({.layout = "6.1", .channels = 7});
}

TEST_P(DecodeToWAV, FLACOf24Bits) {
    expectAllArrives({.encoder = {"-c:a", "flac", "-sample_fmt", "s32"}});
}

TEST_P(DecodeToWAV, Opus) {
    expectAllArrives({.encoder = {"-c:a", "libopus", "-b:a", "256k", "-mapping_family", "1"}});
}

TEST_P(DecodeToWAV, VorbisInStereo) {
    expectAllArrives({.layout = "stereo", .channels = 2, .encoder = {"-c:a", "libvorbis"}});
}

TEST_P(DecodeToWAV, VorbisOf51) {
    expectAllArrives({.encoder = {"-c:a", "libvorbis", "-q:a", "8"}});
}

TEST_P(DecodeToWAV, MP3) {
    expectAllArrives({.layout = "stereo", .channels = 2, .encoder = {"-c:a", "libmp3lame"}});
}

TEST_P(DecodeToWAV, EAC3) {
    expectAllArrives({.encoder = {"-c:a", "eac3", "-b:a", "640k"}});
}

TEST_P(DecodeToWAV, AMonoTrack) {
    expectAllArrives({.layout = "mono", .channels = 1, .rate = 44100});
}

TEST_P(DecodeToWAV, A96KilohertzTrackComesAt48) {
    expectAllArrives({.layout = "stereo", .channels = 2, .rate = 96000});
}

TEST_P(DecodeToWAV, ARateThatNoEncoderTakesComesAt48Kilohertz) {
    const fs::path film = job_->in("film.mkv");
    makeTones(film, {.layout = "stereo", .channels = 2, .rate = 37800});
    const Heard arrived = heard(decoded(film));
    EXPECT_EQ(arrived.rate, 48000);
    EXPECT_NEAR(arrived.seconds(), 2, 0.01);
    EXPECT_NEAR(arrived.level(0, tones[0]), -20, 0.2);
}

TEST_P(DecodeToWAV, LacedFramesAllArrive) {
    makeTones(job_->in("raw.mp3"),
              {.layout = "stereo", .channels = 2, .encoder = {"-c:a", "libmp3lame"}, .seconds = 4});
    const fs::path film = job_->in("film.mkv");
    const auto mkv = merge(film, {job_->in("raw.mp3").string()});
    ASSERT_TRUE(mkv);
    bool isLaced = false;
    mkv->forEachBlock({}, {}, [&](const MKVBlock& block) {
        isLaced = isLaced || block.frames.size() > 1;
        return true;
    });
    ASSERT_TRUE(isLaced);
    const Heard arrived = heard(decoded(film));
    EXPECT_NEAR(arrived.seconds(), 4, 0.1);
    EXPECT_NEAR(arrived.level(1, tones[1]), heard(film).level(1, tones[1]), 0.2);
}

TEST_P(DecodeToWAV, LeavesNothingButTheWAVBehind) {
    makeTones(job_->in("film.mkv"), {});
    decoded(job_->in("film.mkv"));
    EXPECT_THAT(job_->names(), ElementsAre("film.mkv", "t1.mkv", "t1.wav"));
}

TEST_P(DecodeToWAV, AnOlderOutputIsReplaced) {
    makeTones(job_->in("film.mkv"), {});
    writeFile(job_->in("t1.wav"), viewOf("old"));
    EXPECT_EQ(AudioConvert::readWAVHeader(decoded(job_->in("film.mkv"))).channels, 6);
}

TEST_P(DecodeToWAV, NoiseCantBeDecoded) {
    Bytes noise = bytesOf("fLaC");
    for (unsigned i = 0; i < 5000; i++) noise.push_back(static_cast<std::uint8_t>(i * i * 7 >> 3));
    writeFile(job_->in("t1.mkv"), noise);
    writeFile(job_->in("t1.wav"),
              viewOf("of an earlier run, and longer than 45 bytes would be ......"));
    const std::string failure = failureOf([&] {
        AudioConvert::decodeToWAV(job_->in("t1.mkv"), 48000, job_->in("t1.wav"), job_->control);
    });
    EXPECT_THAT(failure, testing::AnyOf("the sound track could not be decoded",
                                        StartsWith("gpac failed (exit ")));
    EXPECT_FALSE(fs::exists(job_->in("t1.wav")));
}

TEST_P(DecodeToWAV, ACancelledJobEndsAsCancelled) {
    makeTones(job_->in("film.mkv"), {});
    job_->control.cancel();
    EXPECT_THROW(
        AudioConvert::decodeToWAV(job_->in("film.mkv"), 48000, job_->in("t1.wav"), job_->control),
        CancelError);
    EXPECT_THAT(job_->names(), ElementsAre("film.mkv"));
}

/// What a tool of the test's making is asked for, and what comes of its answer.
class DecodeWithScript : public testing::Test {
protected:
    std::string failure(double rate = 48000) {
        return failureOf(
            [&] { AudioConvert::decodeToWAV(single_, rate, job_.in("t3.wav"), job_.control); });
    }
    /// The words between input and output.
    std::string filters(double rate) {
        job_.putScript("shift 2; while [ $# -gt 2 ]; do echo \"$1\"; shift; done; exit 1");
        return failure(rate);
    }
    static std::string answer(const std::string& lines) { return "gpac failed (exit 1): " + lines; }

    SoundJob job_{Bundle::Tools::own};
    const fs::path single_ = [this] {
        writeFile(job_.in("t3.mkv"), viewOf("sound"));
        return job_.in("t3.mkv");
    }();
};

TEST_F(DecodeWithScript, TheToolIsAskedForSixteenBits) {
    EXPECT_EQ(filters(48000), answer("ffdec\nresample:osfmt=s16"));
    EXPECT_EQ(filters(44100), answer("ffdec\nresample:osfmt=s16"));
    EXPECT_EQ(filters(8000), answer("ffdec\nresample:osfmt=s16"));
    EXPECT_EQ(filters(0), answer("ffdec\nresample:osfmt=s16"));
}

TEST_F(DecodeWithScript, HigherRatesAreBroughtDown) {
    EXPECT_EQ(filters(48001), answer("ffdec\nresample:osfmt=s16:osr=48000"));
    EXPECT_EQ(filters(96000), answer("ffdec\nresample:osfmt=s16:osr=48000"));
    EXPECT_EQ(filters(192000), answer("ffdec\nresample:osfmt=s16:osr=48000"));
}

TEST_F(DecodeWithScript, InputComesFirstAndOutputLast) {
    job_.putScript("echo \"$1 $2 $5 ${6##*/}\"; exit 1");
    EXPECT_EQ(failure(), answer("-i " + single_.string() + " -o t3.wav"));
}

TEST_F(DecodeWithScript, LessThanAWAVIsAFailure) {
    const std::string wanted = "the sound track could not be decoded";
    job_.putScript("head -c 44 /dev/zero > \"$6\"");
    EXPECT_EQ(failure(), wanted);
    job_.putScript("exit 0");
    EXPECT_EQ(failure(), wanted);
    EXPECT_FALSE(fs::exists(job_.in("t3.wav")));
}

TEST_F(DecodeWithScript, WhatIsNoWAVIsAFailure) {
    job_.putScript("head -c 45 /dev/zero > \"$6\"");
    EXPECT_EQ(failure(), "the decoded sound isn't a readable WAV file");
}

TEST_F(DecodeWithScript, AFolderThatCannotBeUsedIsTold) {
    job_.putScript("head -c 100 /dev/zero > \"$6\"");
    const std::string phrase = "the work folder could not be used: ";
    {
        const Sys::Fault full(Sys::Call::MakeFolder, ENOSPC, 1, false, job_.in("t3.wav.making"));
        EXPECT_THAT(failure(), StartsWith(phrase));
    }
    const Sys::Fault broken(Sys::Call::Rename, EIO, 1, false, job_.in("t3.wav"));
    EXPECT_THAT(failure(), StartsWith(phrase));
}

TEST_F(DecodeWithScript, ALinkIsNoOutput) {
    job_.putScript("ln -s /etc/hostname \"$6\"; exit 0");
    EXPECT_EQ(failure(), "the sound track could not be decoded");
}

TEST_F(DecodeWithScript, OtherFilesOfTheJobAreOutOfReach) {
    writeFile(job_.in("t2.ac3"), viewOf("an earlier track"));
    job_.putScript("echo spoilt > \"${2%/*}/t2.ac3\"; cat \"${2%/*}/t2.ac3\"; exit 1");
    const std::string told = failure();
    if (ToolSandbox::landlockVersion() == 0) GTEST_SKIP() << "this kernel has no Landlock";
    EXPECT_THAT(told, testing::Not(testing::HasSubstr("an earlier track")));
    EXPECT_EQ(textOf(readFile(job_.in("t2.ac3"))), "an earlier track");
}

TEST_F(DecodeWithScript, WithoutTheToolTheFailureSaysSo) {
    const std::string wanted = "the media tool (gpac) is missing from this copy of Marlet";
    fs::remove(job_.bundle().helpers() / "gpac");
    EXPECT_EQ(failure(), wanted);
    fs::remove(job_.bundle().helpers() / "MP4Box");
    EXPECT_EQ(failure(), wanted);
}

TEST_F(DecodeWithScript, ASizeThatOverflowedIsReadToTheFilesEnd) {
    // 8 channels, a second beyond 4 GiB; what lies between is a hole in the file.
    makeTones(job_.in("short.flac"), {.layout = "7.1", .channels = 8, .seconds = 1});
    AudioConvert::decodeToWAV(job_.in("short.flac"), 48000, job_.in("short.wav"), job_.control);
    const auto header = AudioConvert::readWAVHeader(job_.in("short.wav"));
    fs::rename(job_.in("short.wav"), single_);
    const std::uint64_t size = (std::uint64_t{1} << 32) + 48000 * 16;
    job_.putScript(
        "head -c 100000 \"$2\" > \"$6\"; dd if=\"$2\" of=\"$6\" bs=1 count=2 conv=notrunc seek=" +
        std::to_string(static_cast<std::uint64_t>(header.dataOffset) + size - 2) + " 2>&1");
    EXPECT_EQ(failure(), "no failure");
    const auto long_ = AudioConvert::readWAVHeader(job_.in("t3.wav"));
    EXPECT_EQ(static_cast<std::uint64_t>(long_.dataSize), size);
    EXPECT_EQ(long_.channels, 8);
}

TEST_F(DecodeWithScript, TheOwnToolRefusesWhatItIsNotAsked) {
    EXPECT_THAT(failureOf([&] {
                    ToolRunner::run(*ToolRunner::gpac(), {"-i", "http://host/film", "-o", "x"}, {},
                                    job_.control);
                }),
                StartsWith("gpac failed (exit 1): marlet-audio: this program takes "));
}

}  // namespace
}  // namespace marlet::test
