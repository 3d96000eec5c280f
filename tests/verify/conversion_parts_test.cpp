#include "verify/conversion_parts.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "foundation/digest.h"
#include "mp4/track_parser.h"
#include "support/box_reader.h"
#include "support/memory_file.h"
#include "verify/conversion_films.h"
#include "verify/film_edits.h"

namespace marlet::test {
namespace {

using namespace ConvertVerify;
using testing::ElementsAre;

std::string hex(const FrameDigest& digest) {
    return toHex(digest);
}

TEST(NalFilter, LeavesOutSetsAndDelimitersOfItsCodec) {
    const auto skipped = [](std::string_view codec) {
        std::vector<int> types;
        for (int first = 0; first < 256; first++)
            if (nalFilter(codec)(static_cast<std::uint8_t>(first))) types.push_back(first);
        return types;
    };
    std::vector<int> avc;
    std::vector<int> hevc;
    for (int first = 0; first < 256; first++) {
        if ((first & 31) >= 7 && (first & 31) <= 9) avc.push_back(first);
        if ((first >> 1 & 63) >= 32 && (first >> 1 & 63) <= 35) hevc.push_back(first);
    }
    EXPECT_EQ(skipped("V_MPEG4/ISO/AVC"), avc);
    EXPECT_EQ(skipped("V_MPEGH/ISO/HEVC"), hevc);
    EXPECT_EQ(skipped("V_THEORA"), avc);
}

TEST(FrameDigest, WithoutAFilterOrLengthsItIsOfAllBytes) {
    const Bytes frame = joined({nalUnit(sequenceUnit, "set"), nalUnit(idr, "picture")});
    EXPECT_EQ(hex(frameDigest(frame, nullptr, 4)), sha256Hex(frame));
    EXPECT_EQ(hex(frameDigest(frame, nalFilter("V_MPEG4/ISO/AVC"), 0)), sha256Hex(frame));
    EXPECT_EQ(hex(frameDigest({}, nullptr, 0)), sha256Hex({}));
}

TEST(FrameDigest, TakesUnitsWithoutTheirLengths) {
    const Bytes frame = joined({nalUnit(delimiter, "x"), nalUnit(sequenceUnit, "set"),
                                nalUnit(idr, "one"), nalUnit(idr, "two")});
    EXPECT_EQ(hex(frameDigest(frame, nalFilter("V_MPEG4/ISO/AVC"), 4)),
              sha256Hex(viewOf("eoneetwo")));
}

TEST(FrameDigest, WhatNoLengthTellsIsTakenAsItStands) {
    const NALFilter filter = nalFilter("V_MPEG4/ISO/AVC");
    const Bytes unit = nalUnit(idr, "one");
    for (const Bytes& rest : {be32(0), be32(9), Bytes{0, 0}, joined({be32(5), Bytes{1, 2, 3, 4}})})
        EXPECT_EQ(hex(frameDigest(joined({unit, rest}), filter, 4)),
                  sha256Hex(joined({bytesOf("eone"), rest})));
}

TEST(LengthSize, ComesFromTheDecodersConfiguration) {
    MKVTrack track;
    track.codecID = "V_MPEG4/ISO/AVC";
    track.codecPrivate = Bytes{1, 100, 0, 40};
    EXPECT_EQ(lengthSize(track), 0U);
    track.codecPrivate.push_back(0xFD);
    EXPECT_EQ(lengthSize(track), 2U);
    track.codecID = "V_MPEGH/ISO/HEVC";
    EXPECT_EQ(lengthSize(track), 0U);
    track.codecPrivate = Bytes(21);
    EXPECT_EQ(lengthSize(track), 0U);
    track.codecPrivate.push_back(3);
    EXPECT_EQ(lengthSize(track), 4U);
    track.codecID = "V_MPEG4/ISO/ASP";
    EXPECT_EQ(lengthSize(track), 0U);
}

TEST(Packed, ThreeLettersAreFiveBitsEach) {
    EXPECT_EQ(packed("eng"), 0x15C7);
    EXPECT_EQ(packed("und"), 0x55C4);
    for (const char* other : {"", "en", "engl", "EN1", "e g", "ENG"}) EXPECT_EQ(packed(other), 0);
}

TEST(Refs, FollowTheChunksAndSumUpTheTimes) {
    Track track;
    track.sizes = {10, 20, 0, 40};
    track.durations = {5, 5, 5, 5};
    track.ctts = {10, -5, 0, 0};
    track.chunks = {{1000, 0, 2}, {500, 2, 2}};
    EXPECT_THAT(refs(track), ElementsAre(Ref{1000, 10, 10}, Ref{1010, 20, 0}, Ref{500, 0, 10},
                                         Ref{500, 40, 15}));
}

Bytes moovOf(const Bytes& file) {
    const ByteView moov = payloadOf(file, "moov");
    return {moov.begin(), moov.end()};
}

TEST(TrakDetails, TellNumbersLengthsChannelsFlagsAndEdits) {
    Movie movie = builtFilm(sourceFilm());
    movie.timescale = 600;
    movie.tracks[1].edits = {{30, -1}, {320, 7}};
    MovieTrack subtitle = evenTrack("sbtl", 1, 10, 320);
    subtitle.codec = "tx3g";
    subtitle.entry = joined({Bytes(8), be32(0x40000000), Bytes(26)});
    movie.tracks.push_back(subtitle);
    Bytes file = buildMovie(movie);
    file = edited(file, trackPath(1, {{"tkhd"}}), 20, be32(350));
    const Bytes moov = moovOf(file);
    EXPECT_EQ(movieTimescale(moov), 600U);
    const auto details = trakDetails(moov);
    ASSERT_EQ(details.size(), 3U);
    EXPECT_EQ(details[1], (TrakDetail{.id = 2,
                                      .duration = 350,
                                      .channels = 6,
                                      .displayFlags = {},
                                      .leadIn = 30,
                                      .editStart = 7,
                                      .editLength = 320,
                                      .realEdits = 1}));
    EXPECT_FALSE(details[0].channels);
    EXPECT_EQ(details[2].displayFlags, 0x40000000U);
}

TEST(TrakDetails, ReadWideHeadersAndForgiveCutOnes) {
    Bytes header(96);
    header[0] = 1;
    header[23] = 9;
    header[35] = 77;
    const auto details = trakDetails(joined(
        {box("trak", {box("tkhd", header)}), box("trak", {boxHeader("tkhd", 500)}), be32(3)}));
    ASSERT_EQ(details.size(), 2U);
    EXPECT_EQ(details[0].id, 9U);
    EXPECT_EQ(details[0].duration, 77U);
    EXPECT_EQ(movieTimescale({}), 1U);
}

class Span : public testing::Test {
protected:
    double spanOf(std::initializer_list<Bytes> blocks, std::initializer_list<Bytes> entry = {}) {
        Bytes cluster = mkv::number(0xE7, 0);
        for (const Bytes& block : blocks) append(cluster, block);
        const MemoryFile memory;
        const auto file =
            MKVFile::open(memory.write(mkv::soundFile({mkv::element(0x1F43B675, cluster)}, entry)));
        return mkvSpan(*file, 1);
    }
    Bytes lace(std::int16_t time, std::size_t frames) {
        return mkv::lacedBlock(1, time, mkv::Lace::Fixed, std::vector<Bytes>(frames, Bytes(4)));
    }
};

TEST_F(Span, EndsWithTheLastBlocksLength) {
    const Bytes group = mkv::element(
        0xA0, {mkv::element(0xA1, mkv::blockBody(1, 100, 0, Bytes(4))), mkv::number(0x9B, 50)});
    EXPECT_DOUBLE_EQ(spanOf({mkv::simpleBlock(1, 20, Bytes(4)), group}), 0.13);
}

TEST_F(Span, WithoutALengthTheLastFrameIsAsLongAsTheOthers) {
    EXPECT_DOUBLE_EQ(spanOf({mkv::simpleBlock(1, 20, Bytes(4)), mkv::simpleBlock(1, 50, Bytes(4)),
                             mkv::simpleBlock(1, 80, Bytes(4))}),
                     0.09);
    EXPECT_DOUBLE_EQ(spanOf({mkv::simpleBlock(1, 20, Bytes(4))}), 0);
    EXPECT_DOUBLE_EQ(spanOf({}), 0);
}

TEST_F(Span, AShortLastLaceEndsWithItsOwnLastFrame) {
    EXPECT_DOUBLE_EQ(spanOf({lace(0, 8), lace(256, 8), lace(512, 2)}), 0.576);
    EXPECT_DOUBLE_EQ(spanOf({lace(0, 8), lace(256, 2)}, {mkv::number(0x23E383, 32'000'000)}), 0.32);
}

TEST(Compare, TellsItsLabel) {
    const SourceFilm source = sourceFilm();
    const MemoryFile sourceFile;
    const MemoryFile builtFile;
    const auto mkv = MKVFile::open(sourceFile.write(mkvBytes(source)));
    const auto path = builtFile.write(buildMovie(builtFilm(source)));
    const FileHandle handle = FileHandle::open(path, O_RDONLY, "cannot open");
    const MP4Summary summary = parseSummary(loadMoov(path), path, Detail::Yes);
    RunControl control;
    Report report;
    const MKVTrack& track = *mkv->track(1);
    compare(*mkv, track, summary.tracks[0], handle.get(), nalFilter(track.codecID),
            lengthSize(track), "video", control, report);
    EXPECT_TRUE(report.reasons.empty());
    EXPECT_THAT(report.notes, ElementsAre("video: 8 frames identical to the original"));
}

}  // namespace
}  // namespace marlet::test
