#include "matroska/mkv_writer.h"

#include <gtest/gtest.h>

#include <cerrno>

#include "foundation/errors.h"
#include "matroska/ebml.h"
#include "matroska/mkv_reading.h"
#include "support/box_builder.h"
#include "support/media.h"
#include "support/temp_folder.h"

namespace marlet::test {
namespace {

using Times = std::vector<std::int64_t>;

MKVTrack track(std::string_view codec = "A_AC3") {
    MKVTrack made;
    made.codecID = codec;
    made.sampleRate = 44100;
    made.channels = 2;
    return made;
}

struct Block {
    std::int64_t milliseconds = 0;
    std::vector<Bytes> frames = {bytesOf("frame")};
};

Bytes fileOf(const std::vector<Block>& blocks, const MKVTrack& of = track()) {
    const TempFolder folder;
    MKVWriter::SoundFile file(folder / "sound.mkv", of);
    for (const Block& block : blocks) file.add(block.milliseconds * 1'000'000, block.frames);
    file.finish();
    return readFile(folder / "sound.mkv");
}

/// The bytes behind the front, which are the clusters.
Bytes clustersOf(const std::vector<Block>& blocks) {
    const Bytes file = fileOf(blocks);
    const auto length = static_cast<std::ptrdiff_t>(MKVWriter::front(track()).size());
    return {file.begin() + length, file.end()};
}

TEST(MKVWriter, SizesAreTheShortestThatAreNotAllOnes) {
    EXPECT_EQ(MKVWriter::size(0), (Bytes{0x80}));
    EXPECT_EQ(MKVWriter::size(126), (Bytes{0xFE}));
    EXPECT_EQ(MKVWriter::size(127), (Bytes{0x40, 0x7F}));
    EXPECT_EQ(MKVWriter::size(16382), (Bytes{0x7F, 0xFE}));
    EXPECT_EQ(MKVWriter::size(16383), (Bytes{0x20, 0x3F, 0xFF}));
    for (std::size_t width = 1; width <= 8; width++) {
        const std::uint64_t most = (std::uint64_t{1} << (7 * width)) - 2;
        EXPECT_EQ(EBML::readSize(MKVWriter::size(most), 0), (EBML::Size{most, width, false}));
    }
    const Bytes unknown = {0x01, 255, 255, 255, 255, 255, 255, 255};
    EXPECT_EQ(MKVWriter::size((std::uint64_t{1} << 56) - 1), unknown);
    EXPECT_EQ(MKVWriter::size(0xFFFFFFFFFFFFFFFFU), unknown);
}

TEST(MKVWriter, NumbersAreAsShortAsTheirValueAllows) {
    EXPECT_EQ(MKVWriter::number(0xE7, 0), (Bytes{0xE7, 0x81, 0}));
    EXPECT_EQ(MKVWriter::number(0xE7, 255), (Bytes{0xE7, 0x81, 255}));
    EXPECT_EQ(MKVWriter::number(0x2AD7B1, 1'000'000),
              (Bytes{0x2A, 0xD7, 0xB1, 0x83, 0x0F, 0x42, 0x40}));
}

TEST(MKVWriter, TheFrontIsHeaderOpenSegmentInfoAndOneTrack) {
    const Bytes expected = joined(
        {Bytes{0x1A, 0x45, 0xDF, 0xA3, 0xA3},
         Bytes{0x42, 0x86, 0x81, 1, 0x42, 0xF7, 0x81, 1, 0x42, 0xF2, 0x81, 4, 0x42, 0xF3, 0x81, 8},
         Bytes{0x42, 0x82, 0x88}, bytesOf("matroska"), Bytes{0x42, 0x87, 0x81, 4},
         Bytes{0x42, 0x85, 0x81, 2},
         Bytes{0x18, 0x53, 0x80, 0x67, 0x01, 255, 255, 255, 255, 255, 255, 255},
         Bytes{0x15, 0x49, 0xA9, 0x66, 0x99, 0x2A, 0xD7, 0xB1, 0x83, 0x0F, 0x42, 0x40},
         Bytes{0x4D, 0x80, 0x86}, bytesOf("Marlet"), Bytes{0x57, 0x41, 0x86}, bytesOf("Marlet"),
         Bytes{0x16, 0x54, 0xAE, 0x6B, 0xA2, 0xAE, 0xA0},
         Bytes{0xD7, 0x81, 1, 0x73, 0xC5, 0x81, 1, 0x83, 0x81, 2, 0x86, 0x85}, bytesOf("A_AC3"),
         Bytes{0xE1, 0x8D, 0xB5, 0x88}, be64(0x40E5888000000000), Bytes{0x9F, 0x81, 2}});
    EXPECT_EQ(toHex(MKVWriter::front(track())), toHex(expected));
}

TEST(MKVWriter, TellsTheDecoderAllThatTheSourceTold) {
    MKVTrack full = track("A_OPUS");
    full.codecPrivate = bytesOf("OpusHead");
    full.codecDelayNs = 6'500'000;
    full.seekPreRollNs = 80'000'000;
    full.bitDepth = 24;
    full.channels = 6;
    full.sampleRate = 192'000;
    const OpenMKV file(fileOf({{0}}, full));
    full.number = 1;
    full.uid = 1;
    full.type = 2;
    EXPECT_EQ(file->tracks().at(0), full);
}

TEST(MKVWriter, ATrackThatTellsNoRateAndNoChannelsGetsTheUsualOnes) {
    MKVTrack bare = track();
    bare.sampleRate = 0;
    bare.channels = 0;
    const OpenMKV file(fileOf({{0}}, bare));
    EXPECT_EQ(file->tracks().at(0).sampleRate, 48000);
    EXPECT_EQ(file->tracks().at(0).channels, 1);
    EXPECT_FALSE(file->tracks().at(0).bitDepth);
}

TEST(MKVWriter, FramesComeBackWithTheirTimes) {
    const std::vector<Bytes> frames = {bytesOf("a"), Bytes(20'000, 'b'), Bytes{}};
    const OpenMKV file(fileOf({{0, {frames[0]}}, {32, {frames[1]}}, {64, {frames[2]}}}));
    EXPECT_EQ(file.frames(), frames);
    EXPECT_EQ(file.milliseconds(), (Times{0, 32, 64}));
    for (const MKVBlock& block : file.blocks()) EXPECT_TRUE(block.isKeyframe);
}

TEST(MKVWriter, FramesOfALacedBlockComeAMillisecondApart) {
    const std::vector<Bytes> three = {bytesOf("a"), bytesOf("b"), bytesOf("c")};
    const OpenMKV file(fileOf({{1000, three}}));
    EXPECT_EQ(file.milliseconds(), (Times{1000, 1001, 1002}));
    EXPECT_EQ(file.frames(), three);
}

TEST(MKVWriter, ABlockIsTrackOneWithARelativeTimeAndAKeyframe) {
    EXPECT_EQ(clustersOf({{7, {bytesOf("x")}}, {8, {bytesOf("y")}}}),
              joined({Bytes{0x1F, 0x43, 0xB6, 0x75, 0x91, 0xE7, 0x81, 7},
                      Bytes{0xA3, 0x85, 0x81, 0, 0, 0x80, 'x'},
                      Bytes{0xA3, 0x85, 0x81, 0, 1, 0x80, 'y'}}));
}

TEST(MKVWriter, NegativeTimesAreZero) {
    const OpenMKV file(fileOf({{-40}, {-1}, {3}}));
    EXPECT_EQ(file.milliseconds(), (Times{0, 0, 3}));
}

TEST(MKVWriter, BlocksBeyondFiveSecondsOfTheirClusterOpenANewOne) {
    const auto clusterStarts = [](const std::vector<Block>& blocks) {
        const Bytes file = fileOf(blocks);
        Times starts;
        const Bytes id = {0x1F, 0x43, 0xB6, 0x75};
        auto at = file.begin();
        while ((at = std::search(at, file.end(), id.begin(), id.end())) != file.end()) {
            const auto width = static_cast<std::ptrdiff_t>(at[6] & 0x0F);  // E7 8x ...
            std::int64_t start = 0;
            for (std::ptrdiff_t i = 0; i < width; i++) start = start << 8 | at[7 + i];
            starts.push_back(start);
            at += 4;
        }
        return starts;
    };
    EXPECT_EQ(clusterStarts({{100}, {5100}}), Times{100});
    EXPECT_EQ(clusterStarts({{100}, {5101}}), (Times{100, 5101}));
    EXPECT_EQ(clusterStarts({{100}, {5101}, {10101}, {10102}}), (Times{100, 5101, 10102}));
    EXPECT_EQ(clusterStarts({{60'000}, {50'000}}), Times{60'000}) << "a time that goes back";
}

TEST(MKVWriter, RelativeTimesAreHeldIn16Bits) {
    const OpenMKV file(fileOf({{100'000}, {50'000}}));
    EXPECT_EQ(file.milliseconds(), (Times{100'000, 100'000 - 32'768}));
    const std::vector<Bytes> many(40'000, bytesOf("x"));
    EXPECT_EQ(OpenMKV(fileOf({{0, many}})).milliseconds().back(), 32'767);
}

TEST(MKVWriter, TimesThatStandStillDoNotGatherAllInMemory) {
    const std::vector<Bytes> large(3, Bytes(std::size_t{33} << 20));
    const TempFolder folder;
    MKVWriter::SoundFile file(folder / "a.mkv", track());
    file.add(0, large);
    file.add(0, {bytesOf("x")});
    EXPECT_GT(std::filesystem::file_size(folder / "a.mkv"), std::size_t{99} << 20);
    file.finish();
}

TEST(MKVWriter, ATrackWithoutBlocksIsAFailure) {
    const TempFolder folder;
    MKVWriter::SoundFile file(folder / "a.mkv", track());
    try {
        file.finish();
        FAIL() << "no failure";
    } catch (const MFError& failure) {
        EXPECT_EQ(failure.description(), "the sound track has no frames");
    }
}

TEST(MKVWriter, AFailedWriteIsPassedOn) {
    const TempFolder folder;
    const auto path = folder / "a.mkv";
    MKVWriter::SoundFile file(path, track());
    file.add(0, {bytesOf("a")});
    {
        const Sys::Fault fault(Sys::Call::Write, EIO, 1, true, path);
        EXPECT_THROW(file.add(6'000'000'000, {bytesOf("b")}), MFError);
    }
    const Sys::Fault fault(Sys::Call::Open, EACCES, 1, false, path);
    EXPECT_THROW(MKVWriter::SoundFile(path, track()), MFError);
}

TEST(MKVWriter, OtherProgramsReadTheFile) {
    const TempFolder folder;
    const auto source = folder / "source.mkv";
    ffmpeg(
        {"-f", "lavfi", "-i", "sine=sample_rate=48000:duration=7", "-c:a", "ac3", source.string()});
    const auto from = MKVFile::open(source);
    const auto target = folder / "target.mkv";
    MKVWriter::SoundFile file(target, from->tracks()[0]);
    from->forEachBlock({}, {}, [&](const MKVBlock& block) {
        file.add(block.timeNs, from->data(block));
        return true;
    });
    file.finish();
    EXPECT_EQ(packetHashes(target), packetHashes(source));
    EXPECT_EQ(probeValue(target, "stream=codec_name"), "ac3");
    const std::string told = runTool({"env", "LC_ALL=C.UTF-8", "mkvmerge", "-J", target.string()});
    EXPECT_NE(told.find("\"codec_id\": \"A_AC3\""), std::string::npos) << told;
    EXPECT_NE(told.find("\"muxing_application\": \"Marlet\""), std::string::npos);
}

}  // namespace
}  // namespace marlet::test
