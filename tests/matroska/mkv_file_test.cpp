#include "matroska/mkv_file.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cerrno>

#include "matroska/mkv_reading.h"
#include "support/box_builder.h"
#include "support/temp_folder.h"

namespace marlet::test {
namespace {

using namespace mkv;

/// A file with one track, of which these are the children of its entry.
MKVTrack trackOf(std::initializer_list<Bytes> children) {
    const OpenMKV file(joined({header(), segment({tracks({element(0xAE, children)})})}));
    return file->tracks().at(0);
}

TEST(MKVFile, TellsTheSegmentsPlaceScaleLengthAndTitle) {
    const Bytes bytes =
        joined({header(), segment({element(0x1549A966, {real(0x4489, 5000), text(0x7BA9, "Film"),
                                                        number(0x2AD7B1, 500'000)}),
                                   tracks({entry(1, 1, "V_TEST")})})});
    const OpenMKV file(bytes);
    ASSERT_TRUE(file);
    EXPECT_EQ(file->size(), bytes.size());
    EXPECT_EQ(file->segmentEnd(), bytes.size());
    EXPECT_EQ(file->segmentStart(), header().size() + 5);
    EXPECT_EQ(file->timecodeScale(), 500'000U);
    EXPECT_EQ(file->durationSeconds(), 2.5) << "the scale stands behind the duration";
    EXPECT_EQ(file->title(), "Film");
    EXPECT_FALSE(file->firstClusterOffset());
    EXPECT_TRUE(file.blocks().empty());
}

TEST(MKVFile, ATickIsAMillisecondAndAFileHasNoLengthUntilInfoSaysSo) {
    const OpenMKV file(joined({header(), segment({tracks({entry(1, 2, "A_AC3")})})}));
    EXPECT_EQ(file->timecodeScale(), 1'000'000U);
    EXPECT_FALSE(file->durationSeconds());
    EXPECT_FALSE(file->title());
}

TEST(MKVFile, ReadsDurationsOfFourAndEightBytesAndNoneOfAnotherLength) {
    const auto lengthOf = [](const Bytes& duration) {
        const OpenMKV file(joined(
            {header(), segment({element(0x1549A966, {duration}), tracks({entry(1, 2, "A")})})}));
        return file->durationSeconds();
    };
    EXPECT_EQ(lengthOf(element(0x4489, be32(0x44FA0000))), 2.0);
    EXPECT_EQ(lengthOf(real(0x4489, 2000)), 2.0);
    EXPECT_EQ(lengthOf(element(0x4489, Bytes{1, 2, 3})), 0.0);
    EXPECT_EQ(lengthOf(element(0x4489, be32(0x7FC00000))), 0.0) << "no number";
}

TEST(MKVFile, ASegmentWithoutTracksIsRefused) {
    EXPECT_FALSE(OpenMKV(joined({header(), segment({info()})})));
    EXPECT_FALSE(OpenMKV(joined({header(), segment({info(), tracks({})})})));
}

TEST(MKVFile, ASegmentWithoutAHeaderIsAccepted) {
    EXPECT_TRUE(OpenMKV(segment({tracks({entry(1, 2, "A_AC3")})})));
}

TEST(MKVFile, WhatStandsBeforeTheSegmentIsSteppedOverByItsSize) {
    EXPECT_TRUE(OpenMKV(
        joined({header(), element(0xEC, Bytes(5000)), segment({tracks({entry(1, 2, "A_AC3")})})})));
}

TEST(MKVFile, AFileWithoutASegmentIsRefused) {
    const Bytes whole = segment({tracks({entry(1, 2, "A_AC3")})});
    EXPECT_FALSE(OpenMKV(Bytes{}));
    EXPECT_FALSE(OpenMKV(header()));
    EXPECT_FALSE(OpenMKV(bytesOf("RIFF....AVI LIST")));
    EXPECT_FALSE(OpenMKV(joined({endless(0x1A45DFA3, {}), whole}))) << "unknown size before it";
    EXPECT_FALSE(OpenMKV(joined({Bytes{0x00}, whole}))) << "a bad id";
    EXPECT_FALSE(OpenMKV(joined({Bytes{0xEC, 0x00}, whole}))) << "a bad size";
}

TEST(MKVFile, WhatIsNoFileIsRefused) {
    const TempFolder folder;
    EXPECT_FALSE(MKVFile::open(folder / "none.mkv"));
    EXPECT_FALSE(MKVFile::open(folder.path()));
    const auto pipe = folder / "pipe.mkv";
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    EXPECT_FALSE(MKVFile::open(pipe)) << "and nobody waits for its other end";
}

TEST(MKVFile, AFileThatCannotBeOpenedOrAskedForItsSizeIsRefused) {
    const TempFolder folder;
    const auto file = folder.write("a.mkv", soundFile({}));
    EXPECT_TRUE(MKVFile::open(file));
    {
        const Sys::Fault fault(Sys::Call::Open, EACCES, 1, false, file);
        EXPECT_FALSE(MKVFile::open(file));
    }
    const Sys::Fault fault(Sys::Call::Stat, EIO, 1, false, file);
    EXPECT_FALSE(MKVFile::open(file));
}

TEST(MKVFile, ReadsThatGiveLittleAtATimeAreRepeated) {
    const TempFolder folder;
    const auto file =
        folder.write("a.mkv", soundFile({cluster(0, {simpleBlock(1, 0, bytesOf("frame"))})}));
    const Sys::ShortTransfers few(3);
    const auto opened = MKVFile::open(file);
    ASSERT_TRUE(opened);
    std::vector<Bytes> frames;
    opened->forEachBlock({}, {}, [&](const MKVBlock& block) {
        frames = opened->data(block);
        return true;
    });
    EXPECT_EQ(frames, std::vector<Bytes>{bytesOf("frame")});
}

TEST(MKVFile, ASegmentMayHaveAnUnknownSizeAndOneThatIsTooLargeEndsWithTheFile) {
    const Bytes content = joined({info(), tracks({entry(1, 2, "A_AC3")})});
    const Bytes open = joined({header(), endless(0x18538067, content, 8)});
    const Bytes large = joined({header(), lying(0x18538067, 1'000'000, content)});
    for (const Bytes& bytes : {open, large}) {
        const OpenMKV file(bytes);
        ASSERT_TRUE(file);
        EXPECT_EQ(file->segmentEnd(), bytes.size());
        EXPECT_EQ(file->durationSeconds(), 1.0);
    }
}

TEST(MKVFile, WhatStandsBehindTheSegmentIsNotRead) {
    const OpenMKV file(joined({soundFile({}), tracks({entry(2, 2, "A_AC3")})}));
    EXPECT_EQ(file->tracks().size(), 1U);
}

TEST(MKVFile, TracksOfSeveralElementsStandInFileOrder) {
    const OpenMKV file(soundFile({cluster(0, {}), tracks({entry(9, 1, "V"), entry(3, 17, "S")})}));
    ASSERT_EQ(file->tracks().size(), 3U);
    EXPECT_EQ(file->tracks()[1].number, 9);
    EXPECT_EQ(file->track(3)->codecID, "S");
    EXPECT_EQ(file->track(4), nullptr);
}

TEST(MKVFile, TracksMayStandBehindTheClusters) {
    const OpenMKV file(joined({header(), segment({cluster(0, {simpleBlock(1, 5, bytesOf("a"))}),
                                                  tracks({entry(1, 2, "A_AC3")})})}));
    ASSERT_TRUE(file);
    EXPECT_EQ(file.milliseconds(), std::vector<std::int64_t>{5});
}

TEST(MKVFile, TheFirstClustersPlaceIsThatOfItsId) {
    const Bytes front = soundFile({});
    const OpenMKV file(soundFile({cluster(0, {}), cluster(1, {})}));
    EXPECT_EQ(file->firstClusterOffset(), front.size());
}

TEST(MKVTrack, IsWhatTheStandardSaysOfAnEntryThatSaysNothing) {
    const MKVTrack track = trackOf({});
    EXPECT_EQ(track, MKVTrack());
    EXPECT_EQ(track.language, "eng");
    EXPECT_TRUE(track.isDefault && track.isEnabled && !track.isForced);
    EXPECT_EQ(track.channels, 0);
}

TEST(MKVTrack, HoldsWhatItsEntryTells) {
    const MKVTrack track = trackOf(
        {number(0xD7, 300), number(0x73C5, 0xFFFFFFFFFFFFFFFFU), number(0x83, 2),
         text(0x86, "A_OPUS"), text(0x22B59C, "ger"), text(0x536E, "Kommentar"), number(0x88, 0),
         number(0x55AA, 1), number(0xB9, 0), element(0x63A2, bytesOf("private")),
         number(0x23E383, 20'000'000), number(0x56AA, 6'500'000), number(0x56BB, 80'000'000),
         element(0xE1, {number(0x9F, 6), real(0xB5, 48000), number(0x6264, 24)})});
    MKVTrack expected;
    expected.number = 300;
    expected.uid = 0xFFFFFFFFFFFFFFFFU;
    expected.type = 2;
    expected.codecID = "A_OPUS";
    expected.language = "ger";
    expected.name = "Kommentar";
    expected.isDefault = false;
    expected.isForced = true;
    expected.isEnabled = false;
    expected.codecPrivate = bytesOf("private");
    expected.defaultDurationNs = 20'000'000;
    expected.codecDelayNs = 6'500'000;
    expected.seekPreRollNs = 80'000'000;
    expected.channels = 6;
    expected.sampleRate = 48000;
    expected.bitDepth = 24;
    EXPECT_EQ(track, expected);
}

TEST(MKVTrack, TextsEndAtTheFirstNulAndBadBytesAreRepaired) {
    const MKVTrack track = trackOf({element(0x86, Bytes{'A', '_', 'X', 0, 'Y'}),
                                    element(0x536E, Bytes{'a', 0xFF, 'b'}), text(0x22B59C, "")});
    EXPECT_EQ(track.codecID, "A_X");
    EXPECT_EQ(track.name, "a\uFFFDb");
    EXPECT_EQ(track.language, "");
}

TEST(MKVTrack, ANewLanguageDoesNotReplaceAnOldOneThatSaysAnother) {
    const auto oldOne = [](std::string_view text_) { return text(0x22B59C, text_); };
    const auto newOne = [](std::string_view text_) { return text(0x22B59D, text_); };
    EXPECT_EQ(trackOf({}).language, "eng");
    EXPECT_EQ(trackOf({newOne("fr"), oldOne("ger")}).language, "ger");
    EXPECT_EQ(trackOf({oldOne("eng"), newOne("en-GB")}).language, "en-GB");
    EXPECT_EQ(trackOf({oldOne("ger"), newOne("en-GB")}).language, "ger");
    EXPECT_EQ(trackOf({oldOne(""), newOne("zh-Hans")}).language, "zh-Hans");
    EXPECT_EQ(trackOf({newOne("fr")}).language, "fr");
}

TEST(MKVTrack, APictureHasItsSizeAndBits) {
    const MKVTrack track = trackOf({element(
        0xE0, {number(0xB0, 3840), number(0xBA, 2160), element(0x55B0, {number(0x55B2, 10)})})});
    EXPECT_EQ(track.pixelWidth, 3840);
    EXPECT_EQ(track.pixelHeight, 2160);
    EXPECT_EQ(track.bitsPerChannel, 10);
    EXPECT_FALSE(track.hasHDRColour);
    const MKVTrack empty = trackOf({element(0xE0, {element(0x55B0, {element(0x55B2, {})})})});
    EXPECT_EQ(empty.bitsPerChannel, 0);
    EXPECT_FALSE(trackOf({}).bitsPerChannel);
}

TEST(MKVTrack, HDRIsToldByItsTransferOrItsMasteringMetadata) {
    const auto isHDR = [](const Bytes& colour) {
        return trackOf({element(0xE0, {element(0x55B0, {colour})})}).hasHDRColour;
    };
    EXPECT_TRUE(isHDR(number(0x55BA, 16)));
    EXPECT_TRUE(isHDR(number(0x55BA, 18)));
    EXPECT_FALSE(isHDR(number(0x55BA, 1)));
    EXPECT_TRUE(isHDR(element(0x55D0, {})));
}

TEST(MKVTrack, DolbyVisionIsToldByItsBlockAddition) {
    const auto isDolby = [](std::uint64_t type) {
        return trackOf({element(0x41E4, {number(0x41E7, type)})}).hasDolbyVisionConfig;
    };
    EXPECT_TRUE(isDolby(0x64766343));
    EXPECT_TRUE(isDolby(0x64767643));
    EXPECT_FALSE(isDolby(0x64766344));
}

TEST(MKVTrack, MastersOfUnknownSizeAreIgnored) {
    const MKVTrack track = trackOf({number(0xD7, 1), endless(0xE1, number(0x9F, 2))});
    EXPECT_EQ(track.channels, 0);
    EXPECT_EQ(track.number, 1);
}

TEST(MKVTrack, NumbersTooLargeForTheirPlaceAreItsGreatest) {
    const MKVTrack track = trackOf({number(0xD7, 0x100000001U)});
    EXPECT_EQ(track.number, 0x7FFFFFFF);
}

}  // namespace
}  // namespace marlet::test
