#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "convert/mkv_files.h"
#include "convert/sound_tools.h"
#include "foundation/syscalls.h"
#include "support/mkv_builder.h"

namespace marlet::test {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;

class ExtractAudio : public testing::Test {
protected:
    /// Cuts out the sound track of that number and opens what came of it.
    std::unique_ptr<MKVFile> extracted(const MKVFile& film, int number = 1) {
        MKVWriter::extractAudio(film, *film.track(number), single_, control_);
        return MKVFile::open(single_);
    }
    std::unique_ptr<MKVFile> film(const std::vector<Bytes>& clusters) {
        Bytes body = mkv::info();
        append(body, mkv::tracks({mkv::entry(1, 2, "A_FLAC"), mkv::entry(2, 2, "A_OPUS")}));
        for (const Bytes& cluster : clusters) append(body, cluster);
        Bytes file = mkv::header();
        append(file, mkv::element(0x18538067, body));
        writeFile(folder_ / "film.mkv", file);
        return MKVFile::open(folder_ / "film.mkv");
    }
    static std::vector<std::pair<std::int64_t, std::string>> framesOf(const MKVFile& file) {
        std::vector<std::pair<std::int64_t, std::string>> all;
        file.forEachBlock({}, {}, [&](const MKVBlock& block) {
            for (const Bytes& frame : file.data(block))
                all.emplace_back(block.timeNs / 1'000'000, textOf(frame));
            return true;
        });
        return all;
    }

    TempFolder folder_;
    RunControl control_;
    const fs::path single_ = folder_ / "t1.mkv";
};

using Frame = std::pair<std::int64_t, std::string>;

TEST_F(ExtractAudio, OfTwoTracksOneIsLeftWithItsTimes) {
    const auto source = film({mkv::cluster(1000, {mkv::simpleBlock(1, 0, bytesOf("a")),
                                                  mkv::simpleBlock(2, 5, bytesOf("x")),
                                                  mkv::simpleBlock(1, 20, bytesOf("b"))}),
                              mkv::cluster(9000, {mkv::simpleBlock(1, 0, bytesOf("c"))})});
    ASSERT_TRUE(source);
    const auto single = extracted(*source);
    ASSERT_TRUE(single);
    ASSERT_EQ(single->tracks().size(), 1U);
    EXPECT_EQ(single->tracks()[0].codecID, "A_FLAC");
    EXPECT_THAT(framesOf(*single),
                ElementsAre(Frame{1000, "a"}, Frame{1020, "b"}, Frame{9000, "c"}));
    EXPECT_THAT(framesOf(*extracted(*source, 2)), ElementsAre(Frame{1005, "x"}));
}

TEST_F(ExtractAudio, ThreeLacedFramesComeAMillisecondApart) {
    for (const mkv::Lace lace : {mkv::Lace::Xiph, mkv::Lace::Fixed, mkv::Lace::EBML}) {
        const auto source = film({mkv::cluster(
            1000, {mkv::lacedBlock(1, 0, lace, {bytesOf("a"), bytesOf("b"), bytesOf("c")})})});
        EXPECT_THAT(framesOf(*extracted(*source)),
                    ElementsAre(Frame{1000, "a"}, Frame{1001, "b"}, Frame{1002, "c"}));
    }
}

TEST_F(ExtractAudio, NegativeTimesAreZero) {
    const auto source = film({mkv::cluster(0, {mkv::simpleBlock(1, -500, bytesOf("a"))})});
    EXPECT_THAT(framesOf(*extracted(*source)), ElementsAre(Frame{0, "a"}));
}

TEST_F(ExtractAudio, ATrackWithoutFramesSaysSo) {
    const auto source = film({mkv::cluster(0, {mkv::simpleBlock(2, 0, bytesOf("x"))})});
    EXPECT_EQ(failureOf([&] { extracted(*source); }), "the sound track has no frames");
}

TEST_F(ExtractAudio, AFullDiskIsTold) {
    const auto source = film({mkv::cluster(0, {mkv::simpleBlock(1, 0, bytesOf("a"))})});
    const Sys::Fault fault(Sys::Call::Write, ENOSPC, 2, true, single_);
    EXPECT_EQ(failureOf([&] { extracted(*source); }), "write failed: No space left on device");
}

TEST_F(ExtractAudio, ACancelIsHeededAtThe400thBlock) {
    const auto blocks = [](int count) {
        Bytes payload = mkv::number(0xE7, 0);
        for (int i = 0; i < count; i++)
            append(payload, mkv::simpleBlock(1, static_cast<std::int16_t>(i), bytesOf("a")));
        return std::vector<Bytes>{mkv::element(0x1F43B675, payload)};
    };
    control_.cancel();
    EXPECT_EQ(framesOf(*extracted(*film(blocks(399)))).size(), 399U);
    EXPECT_THROW(extracted(*film(blocks(400))), CancelError);
}

TEST_F(ExtractAudio, ARealTracksPacketsAreAllThere) {
    makeTones(folder_ / "sound.mkv", {.encoder = {"-c:a", "ac3"}});
    const auto film = merge(folder_ / "laced.mkv", {(folder_ / "sound.mkv").string()});
    ASSERT_TRUE(film);
    ASSERT_TRUE(extracted(*film));
    EXPECT_EQ(packetHashes(single_), packetHashes(folder_ / "sound.mkv"));
    EXPECT_EQ(probeValue(single_, "stream=codec_name,channels,sample_rate"), "ac3\n48000\n6");
}

TEST_F(ExtractAudio, TheDecoderGetsWhatItNeeds) {
    makeTones(folder_ / "sound.mkv", {.encoder = {"-c:a", "libopus", "-mapping_family", "1"}});
    const auto film = MKVFile::open(folder_ / "sound.mkv");
    const auto single = extracted(*film, film->tracks()[0].number);
    const MKVTrack& from = film->tracks()[0];
    const MKVTrack& to = single->tracks()[0];
    EXPECT_FALSE(from.codecPrivate.empty());
    EXPECT_GT(from.codecDelayNs, 0U);
    EXPECT_EQ(to.codecPrivate, from.codecPrivate);
    EXPECT_EQ(to.codecDelayNs, from.codecDelayNs);
    EXPECT_EQ(to.seekPreRollNs, from.seekPreRollNs);
    EXPECT_EQ(to.sampleRate, from.sampleRate);
    EXPECT_EQ(to.channels, from.channels);
}

}  // namespace
}  // namespace marlet::test
