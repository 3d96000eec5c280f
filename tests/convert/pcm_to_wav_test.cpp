#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <limits>

#include "convert/pcm_samples.h"
#include "convert/sound_tools.h"
#include "foundation/syscalls.h"
#include "support/mkv_builder.h"

namespace marlet::test {
namespace {

namespace fs = std::filesystem;
using AudioConvert::decodePCM;
using AudioConvert::PCMFormat;
using testing::ElementsAre;

MKVTrack pcmTrack(const std::string& codec, std::optional<int> bits) {
    return {.number = 1, .type = 2, .codecID = codec, .channels = 1, .bitDepth = bits};
}

std::vector<std::int32_t> samplesOf(const Bytes& bytes, const PCMFormat& format) {
    std::vector<std::int32_t> samples;
    decodePCM(bytes, format, samples);
    return samples;
}

TEST(PCMSamples, AFormatIsCodecAndBitDepth) {
    using AudioConvert::pcmFormat;
    EXPECT_EQ(pcmFormat(pcmTrack("A_PCM/INT/LIT", 24)), (PCMFormat{false, false, 3}));
    EXPECT_EQ(pcmFormat(pcmTrack("A_PCM/INT/BIG", 20)), (PCMFormat{false, true, 3}));
    EXPECT_EQ(pcmFormat(pcmTrack("A_PCM/INT/LIT", {})), (PCMFormat{false, false, 2}));
    EXPECT_EQ(pcmFormat(pcmTrack("A_PCM/FLOAT/IEEE", {})), (PCMFormat{true, false, 4}));
    EXPECT_EQ(pcmFormat(pcmTrack("A_PCM/FLOAT/IEEE", 64)), (PCMFormat{true, false, 8}));
    EXPECT_EQ(pcmFormat(pcmTrack("A_PCM/FLOAT/IEEE", 24)), std::nullopt);
    EXPECT_EQ(pcmFormat(pcmTrack("A_PCM/INT/LIT", 65)), std::nullopt);
    EXPECT_EQ(pcmFormat(pcmTrack("A_PCM/INT/LIT", -8)), std::nullopt);
    EXPECT_EQ(pcmFormat(pcmTrack("A_FLAC", 16)), std::nullopt);
}

TEST(PCMSamples, IntegersOfEveryWidthFillTheSameRange) {
    EXPECT_THAT(samplesOf({0x80, 0x00, 0xFF}, {false, false, 1}),
                ElementsAre(0, -2147483648, 0x7F000000));
    EXPECT_THAT(samplesOf({0x34, 0x12, 0x00, 0x80}, {false, false, 2}),
                ElementsAre(0x12340000, -2147483648));
    EXPECT_THAT(samplesOf({0x12, 0x34, 0x80, 0x00}, {false, true, 2}),
                ElementsAre(0x12340000, -2147483648));
    EXPECT_THAT(samplesOf({0x56, 0x34, 0x12}, {false, false, 3}), ElementsAre(0x12345600));
    EXPECT_THAT(samplesOf({0x12, 0x34, 0x56, 0x78}, {false, true, 4}), ElementsAre(0x12345678));
    EXPECT_THAT(samplesOf({1, 2, 3, 4, 0x78, 0x56, 0x34, 0x12}, {false, false, 8}),
                ElementsAre(0x12345678));
}

TEST(PCMSamples, FloatsAreHeldWithinTheRange) {
    Bytes bytes;
    for (const float value :
         {0.5F, -1.0F, 1.0F, 7.0F, -7.0F, std::nanf(""), std::numeric_limits<float>::infinity()}) {
        const auto bits = std::bit_cast<std::uint32_t>(value);
        for (int i = 0; i < 4; i++) bytes.push_back(static_cast<std::uint8_t>(bits >> (8 * i)));
    }
    constexpr std::int32_t most = std::numeric_limits<std::int32_t>::max();
    constexpr std::int32_t least = std::numeric_limits<std::int32_t>::min();
    EXPECT_THAT(samplesOf(bytes, {true, false, 4}),
                ElementsAre(0x40000000, least, most, most, least, 0, most));
    Bytes wide;
    BigEndian::put64(wide, std::bit_cast<std::uint64_t>(-0.25));
    std::reverse(wide.begin(), wide.end());
    EXPECT_THAT(samplesOf(wide, {true, false, 8}), ElementsAre(-0x20000000));
}

TEST(PCMSamples, APartOfASampleIsLeftOut) {
    EXPECT_THAT(samplesOf({0x34, 0x12, 0x00}, {false, false, 2}), ElementsAre(0x12340000));
    EXPECT_TRUE(samplesOf({}, {false, false, 2}).empty());
}

TEST(PCMSamples, FewerBitsAreTheNearest) {
    using AudioConvert::narrowed;
    EXPECT_EQ(narrowed(0x12347FFF, 16), 0x1234);
    EXPECT_EQ(narrowed(0x12348000, 16), 0x1235);
    EXPECT_EQ(narrowed(0x7FFFFFFF, 16), 32767);
    EXPECT_EQ(narrowed(-2147483647 - 1, 16), -32768);
    EXPECT_EQ(narrowed(0x12345680, 24), 0x123457);
    EXPECT_EQ(narrowed(-1, 24), 0);
}

class PCMToWAV : public WithEachTool {
protected:
    /// From Matroska to WAV, without and with the tool, as it needs.
    fs::path converted(const fs::path& film) {
        const auto mkv = MKVFile::open(film);
        if (!mkv) throw std::runtime_error("no Matroska file");
        EXPECT_TRUE(mkv->tracks().at(0).codecID.starts_with("A_PCM/"));
        AudioConvert::pcmToWAV(*mkv, mkv->tracks().at(0), job_->in("t.wav"), job_->control);
        return job_->in("t.wav");
    }
    Heard converted(const Tones& sound) {
        makeTones(job_->in("film.mkv"), sound);
        return heard(converted(job_->in("film.mkv")));
    }
};
INSTANTIATE_WITH_EACH_TOOL(PCMToWAV);

TEST_P(PCMToWAV, EveryKindArrivesInSixteenBits) {
    for (const char* encoder : {"pcm_u8", "pcm_s16le", "pcm_s24le", "pcm_s32le", "pcm_s16be",
                                "pcm_s24be", "pcm_s32be", "pcm_f32le", "pcm_f64le"}) {
        const Heard sound = converted(
            Tones{.layout = "5.1", .channels = 6, .encoder = {"-c:a", encoder}, .seconds = 1});
        EXPECT_EQ(AudioConvert::readWAVHeader(job_->in("t.wav")).bits, 16);
        ASSERT_EQ(sound.channels, 6);
        EXPECT_EQ(sound.seconds(), 1);
        for (int channel = 0; channel < 6; channel++)
            EXPECT_NEAR(sound.level(channel, tones[channel]), -20, 0.05) << encoder;
    }
    EXPECT_THAT(job_->names(), ElementsAre("film.mkv", "t.wav"));
}

TEST_P(PCMToWAV, SixteenBitsPassUnchanged) {
    makeTones(job_->in("film.mkv"), {.encoder = {"-c:a", "pcm_s16be"}, .seconds = 1});
    converted(job_->in("film.mkv"));
    const auto samples = [&](const std::string& name) {
        return ffmpeg({"-i", job_->in(name).string(), "-f", "md5", "-c:a", "pcm_s16le", "-"});
    };
    EXPECT_EQ(samples("t.wav"), samples("film.mkv"));
}

TEST_P(PCMToWAV, HigherRatesAreBroughtDown) {
    const Heard sound = converted(Tones{.layout = "7.1",
                                        .channels = 8,
                                        .rate = 96000,
                                        .encoder = {"-c:a", "pcm_s24le"},
                                        .seconds = 1});
    EXPECT_EQ(sound.rate, 48000);
    EXPECT_NEAR(sound.seconds(), 1, 0.01);
    for (int channel = 0; channel < 8; channel++)
        EXPECT_NEAR(sound.level(channel, tones[channel]), -20, 0.2) << channel;
    EXPECT_THAT(job_->names(), ElementsAre("film.mkv", "t.wav"));
}

/// Made-up files, which need no tool.
class MadeUpPCM : public testing::Test {
protected:
    std::string failure(std::initializer_list<Bytes> children,
                        std::initializer_list<Bytes> entryMore) {
        const Bytes entry = mkv::entry(1, 2, codec_, entryMore);
        Bytes file = mkv::header();
        std::vector<Bytes> parts(children);
        Bytes body = mkv::info();
        append(body, mkv::tracks({entry}));
        for (const Bytes& part : parts) append(body, part);
        append(file, mkv::element(0x18538067, body));
        writeFile(job_.in("film.mkv"), file);
        const auto mkv = MKVFile::open(job_.in("film.mkv"));
        if (!mkv) return "no file";
        return failureOf([&] {
            AudioConvert::pcmToWAV(*mkv, mkv->tracks().at(0), job_.in("t.wav"), job_.control);
        });
    }
    static Bytes sound(double rate, std::uint64_t channels, std::uint64_t bits) {
        return mkv::element(
            0xE1, {mkv::real(0xB5, rate), mkv::number(0x9F, channels), mkv::number(0x6264, bits)});
    }
    Bytes wav() const { return readFile(job_.in("t.wav")); }

    std::string codec_ = "A_PCM/INT/LIT";
    SoundJob job_{Bundle::Tools::own};
    const Bytes block_ = mkv::cluster(0, {mkv::simpleBlock(1, 0, Bytes{1, 0, 2, 0, 3, 0})});
    const std::string undecodable_ = "the sound track could not be decoded";
};

TEST_F(MadeUpPCM, APartOfAFrameIsLeftOut) {
    EXPECT_EQ(failure({block_}, {sound(48000, 2, 16)}), "no failure");
    EXPECT_EQ(wav().size(), 44U + 4U);
}

TEST_F(MadeUpPCM, LacedFramesFollowEachOther) {
    EXPECT_EQ(failure({mkv::cluster(
                          0, {mkv::lacedBlock(1, 0, mkv::Lace::Fixed, {{1, 0}, {2, 0}, {3, 0}})})},
                      {sound(48000, 1, 16)}),
              "no failure");
    const Bytes all = wav();
    EXPECT_EQ(Bytes(all.begin() + 44, all.end()), (Bytes{1, 0, 2, 0, 3, 0}));
}

TEST_F(MadeUpPCM, ATrackWithoutFramesSaysSo) {
    EXPECT_EQ(failure({mkv::cluster(0, {})}, {sound(48000, 1, 16)}),
              "the sound track has no frames");
}

TEST_F(MadeUpPCM, FramesWithoutASampleCantBeDecoded) {
    EXPECT_EQ(failure({block_}, {sound(48000, 4, 16)}), undecodable_);
    EXPECT_EQ(failure({block_}, {sound(96000, 4, 16)}), undecodable_);
}

TEST_F(MadeUpPCM, WhatCantBePlayedIsRefused) {
    EXPECT_EQ(failure({block_}, {sound(48000, 1, 99)}), undecodable_);
    EXPECT_EQ(failure({block_}, {sound(48000, 70000, 16)}), undecodable_);
    EXPECT_EQ(failure({block_}, {sound(1e12, 1, 16)}), undecodable_);
    EXPECT_EQ(failure({block_}, {sound(std::nan(""), 1, 16)}), "no failure") << "48 kHz is usual";
    EXPECT_EQ(failure({block_}, {sound(0.2, 1, 16)}), undecodable_);
    EXPECT_EQ(failure({block_}, {sound(96000, 9, 8)}), undecodable_) << "FLAC has 8 channels";
    codec_ = "A_PCM/SOMETHING";
    EXPECT_EQ(failure({block_}, {sound(48000, 1, 16)}), undecodable_);
}

TEST_F(MadeUpPCM, AFullDiskIsTold) {
    const Sys::Fault fault(Sys::Call::Write, ENOSPC, 1, true, job_.in("t.wav"));
    EXPECT_EQ(failure({block_}, {sound(48000, 1, 16)}), "write failed: No space left on device");
}

}  // namespace
}  // namespace marlet::test
