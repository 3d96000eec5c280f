#include "verify/sample_descriptions.h"

#include <gtest/gtest.h>

#include "mp4/summary.h"
#include "support/avc_builder.h"
#include "support/box_builder.h"
#include "support/media.h"
#include "support/temp_folder.h"

namespace marlet::test {
namespace {

using Reasons = std::vector<std::string>;

constexpr AVCFormat high{100, 1, 8, 8};
const Bytes chroma1Depth8 = {0xFD, 0xF8, 0xF8, 0x00};

Bytes stsd(const std::vector<Bytes>& entries) {
    return joined({Bytes(4), be32(static_cast<std::uint32_t>(entries.size())), joined(entries)});
}

Bytes picture(std::string_view type, const std::vector<Bytes>& boxes) {
    return box(type, joined({Bytes(78), joined(boxes)}));
}
Bytes sound(std::string_view type, const std::vector<Bytes>& boxes) {
    return box(type, joined({Bytes(28), joined(boxes)}));
}

Bytes avcC(const Bytes& extension = {}) {
    return box("avcC", avcRecord(high, extension));
}
const Bytes colr = box("colr", bytesOf("nclx1"));
const Bytes pasp = box("pasp", Bytes{0, 0, 0, 1, 0, 0, 0, 1});

Reasons compared(const Bytes& original, const Bytes& rebuilt) {
    return compareSampleDescriptions(stsd({original}), stsd({rebuilt}));
}

TEST(SampleDescriptions, EqualBytesAreEquivalentWhateverTheyAre) {
    EXPECT_EQ(compared(picture("avc1", {avcC()}), picture("avc1", {avcC()})), Reasons{});
    EXPECT_EQ(compareSampleDescriptions({}, {}), Reasons{});
    EXPECT_EQ(compareSampleDescriptions(Bytes{1, 2, 3}, Bytes{1, 2, 3}), Reasons{});
}

TEST(SampleDescriptions, AnotherCountIsTheOnlyReason) {
    const Bytes entry = picture("avc1", {avcC()});
    EXPECT_EQ(compareSampleDescriptions(stsd({entry, entry}), stsd({sound("mp4a", {})})),
              Reasons{"sample description count differs (2 vs 1)"});
    EXPECT_EQ(compareSampleDescriptions(stsd({entry}), stsd({})),
              Reasons{"sample description count differs (1 vs 0)"});
}

TEST(SampleDescriptions, AStatedCountMayNotChange) {
    const Bytes payload = stsd({picture("avc1", {avcC()})});
    EXPECT_EQ(compareSampleDescriptions(payload, patched(payload, 4, be32(7))),
              Reasons{"sample description count differs (1 vs 7)"});
}

TEST(SampleDescriptions, WhatStandsAroundTheEntriesMayNotChange) {
    const Bytes payload = stsd({picture("avc1", {avcC()})});
    EXPECT_EQ(compareSampleDescriptions(payload, patched(payload, 0, Bytes{1})),
              Reasons{"sample description version differs"});
    EXPECT_EQ(compareSampleDescriptions(payload, joined({payload, Bytes(3)})),
              Reasons{"bytes behind the sample descriptions differ"});
    EXPECT_FALSE(compareSampleDescriptions(payload, ByteView(payload).first(6)).empty());
}

TEST(SampleDescriptions, AnotherTypeIsRefused) {
    EXPECT_EQ(compared(picture("avc1", {avcC()}), picture("avc3", {avcC()})),
              Reasons{"sample entry type differs (avc1 vs avc3)"});
}

TEST(SampleDescriptions, ATypeOfUnknownFieldsMayNotChangeAtAll) {
    EXPECT_EQ(compared(box("zzzz", Bytes(40)), box("zzzz", Bytes(40, 1))),
              Reasons{"zzzz sample entry differs"});
    EXPECT_EQ(compared(box("avc1", Bytes(20)), box("avc1", Bytes(20, 1))),
              Reasons{"avc1 sample entry differs"})
        << "an entry too short for its fields";
    EXPECT_EQ(compared(sound("mp4a", {}), box("mp4a", Bytes(27))),
              Reasons{"mp4a sample entry differs"});
}

TEST(SampleDescriptions, FixedFieldsMayNotChange) {
    const Bytes entry = picture("avc1", {avcC()});
    for (const std::size_t at : {8U, 15U, 40U, 85U})
        EXPECT_EQ(compared(entry, patched(entry, at, Bytes{9})),
                  Reasons{"avc1 sample entry header fields differ"})
            << at;
    EXPECT_EQ(compared(entry, patched(entry, 86 + 7, Bytes{'X'})),
              Reasons{"avc1: box 'avcC' missing in rebuilt file"})
        << "the first byte behind the fields is a box's";
}

TEST(SampleDescriptions, QuickTimeSoundHasMoreFixedFields) {
    const Bytes fields = patched(Bytes(44), 8, be16(1));
    const Bytes entry = box("mp4a", joined({fields, box("wave", Bytes(4))}));
    EXPECT_EQ(compared(entry, patched(entry, 8 + 43, Bytes{9})),
              Reasons{"mp4a sample entry header fields differ"});
    EXPECT_EQ(compared(entry, box("mp4a", joined({Bytes(28), box("wave", Bytes(4))}))),
              Reasons{"mp4a sample entry header fields differ"});
}

TEST(SampleDescriptions, AMissingBoxIsRefused) {
    EXPECT_EQ(compared(picture("avc1", {avcC(), colr}), picture("avc1", {avcC()})),
              Reasons{"avc1: box 'colr' missing in rebuilt file"});
    EXPECT_EQ(compared(picture("avc1", {pasp, pasp}), picture("avc1", {pasp})),
              Reasons{"avc1: box 'pasp' missing in rebuilt file"});
}

TEST(SampleDescriptions, AChangedBoxIsRefused) {
    const Bytes other = box("colr", bytesOf("nclx9"));
    EXPECT_EQ(compared(picture("avc1", {avcC(), colr}), picture("avc1", {avcC(), other})),
              Reasons{"avc1: box 'colr' differs"});
}

TEST(SampleDescriptions, AnExtraBoxIsRefusedAndShown) {
    const Bytes btrt = box("btrt", Bytes{0, 0, 0, 0, 0, 1, 0x38, 0x80, 0, 1, 0x38, 0x80});
    EXPECT_EQ(compared(sound("mp4a", {}), sound("mp4a", {btrt})),
              Reasons{"mp4a: extra box 'btrt' in rebuilt file (20 bytes: "
                      "0000001462747274000000000001388000013880)"});
}

TEST(SampleDescriptions, TheFirstExtraBoxInTheFileIsShown) {
    const Reasons reasons =
        compared(picture("avc1", {avcC()}), picture("avc1", {avcC(), pasp, colr}));
    ASSERT_EQ(reasons.size(), 1U);
    EXPECT_TRUE(reasons[0].starts_with("avc1: extra box 'pasp' in rebuilt file (16 bytes: "));
}

TEST(SampleDescriptions, AHugeExtraBoxIsShownInPart) {
    const Reasons reasons =
        compared(sound("mp4a", {}), sound("mp4a", {box("huge", Bytes(1'000'000))}));
    ASSERT_EQ(reasons.size(), 1U);
    EXPECT_TRUE(reasons[0].starts_with("mp4a: extra box 'huge' in rebuilt file (1000008 bytes: "));
    EXPECT_TRUE(reasons[0].ends_with("00…)"));
    EXPECT_LT(reasons[0].size(), 200'000U);
}

TEST(SampleDescriptions, TheOrderOfBoxesOfDifferentTypesMeansNothing) {
    EXPECT_EQ(
        compared(picture("avc1", {avcC(), colr, pasp}), picture("avc1", {pasp, avcC(), colr})),
        Reasons{});
}

TEST(SampleDescriptions, BoxesOfOneTypeArePairedInTheirOrder) {
    const Bytes other = box("colr", bytesOf("prof"));
    EXPECT_EQ(compared(picture("avc1", {colr, other}), picture("avc1", {other, colr})),
              Reasons{"avc1: box 'colr' differs"});
}

TEST(SampleDescriptions, KnownRewritesAreJudgedByWhatTheyMean) {
    EXPECT_EQ(
        compared(picture("avc1", {avcC(), colr}), picture("avc1", {avcC(chroma1Depth8), colr})),
        Reasons{});
    EXPECT_EQ(
        compared(picture("avc1", {avcC()}), picture("avc1", {avcC({0xFE, 0xF8, 0xF8, 0x00})})),
        Reasons{"avcC: extension (chroma 2, depth 8/8) disagrees with the SPS (chroma 1, depth "
                "8/8)"});
    EXPECT_EQ(compared(picture("hvc1", {box("hvcC", Bytes(23))}),
                       picture("hvc1", {box("hvcC", patched(Bytes(23), 16, Bytes{0xFC}))})),
              Reasons{});
    EXPECT_EQ(compared(picture("hvc1", {box("hvcC", Bytes(23))}),
                       picture("hvc1", {box("hvcC", Bytes(24))})),
              Reasons{"hvcC differs in length or is too short to compare"});
    EXPECT_EQ(
        compared(sound("mp4a", {box("esds", Bytes(4))}), sound("mp4a", {box("esds", Bytes(5))})),
        Reasons{"esds could not be decoded"});
}

TEST(SampleDescriptions, OnlyTheFirstReasonIsTold) {
    EXPECT_EQ(compared(picture("avc1", {colr, pasp}), picture("avc1", {})),
              Reasons{"avc1: box 'colr' missing in rebuilt file"});
    const Bytes changed = picture("avc1", {box("colr", Bytes(1))});
    EXPECT_EQ(compareSampleDescriptions(stsd({picture("avc1", {colr}), sound("mp4a", {})}),
                                        stsd({changed, sound("ac-3", {})})),
              Reasons{"avc1: box 'colr' differs"});
}

TEST(SampleDescriptions, EveryPairOfEntriesIsCompared) {
    const Bytes first = picture("avc1", {avcC()});
    EXPECT_EQ(compareSampleDescriptions(
                  stsd({first, picture("avc1", {pasp})}),
                  stsd({picture("avc1", {avcC(chroma1Depth8)}), picture("avc1", {colr})})),
              Reasons{"avc1: box 'pasp' missing in rebuilt file"});
}

TEST(SampleDescriptions, ATerminatorMayBeLeftOut) {
    const Bytes terminated = box("avc1", joined({Bytes(78), avcC(), Bytes(4)}));
    EXPECT_EQ(compared(terminated, picture("avc1", {avcC()})), Reasons{});
    EXPECT_EQ(compared(picture("avc1", {avcC()}), terminated), Reasons{});
}

TEST(SampleDescriptions, OtherBytesBehindTheBoxesMayNotChange) {
    const Reasons refused = {"avc1: bytes behind its boxes differ"};
    const auto withTail = [](const Bytes& tail) {
        return box("avc1", joined({Bytes(78), avcC(), tail}));
    };
    EXPECT_EQ(compared(withTail({0, 0, 0, 1}), withTail({0, 0, 0, 2})), refused);
    EXPECT_EQ(compared(withTail({0, 0, 0, 1}), withTail({})), refused);
    // A size of 3 ends the list of boxes: what lies behind it is no box, and yet not nothing.
    const Bytes lying = boxHeader("evil", 3);
    EXPECT_EQ(
        compared(withTail(joined({lying, Bytes(20, 1)})), withTail(joined({lying, Bytes(20)}))),
        refused);
}

TEST(SampleDescriptions, ManyBoxesAreComparedInTime) {
    std::vector<Bytes> many;
    for (std::uint32_t i = 0; i < 100'000; i++) many.push_back(box("colr", be32(i)));
    std::vector<Bytes> more = many;
    more.push_back(pasp);
    EXPECT_EQ(compared(picture("avc1", many), picture("avc1", more)).size(), 1U);
}

TEST(SampleDescriptions, OfARealFilmAreEquivalentWithTheExtensionThatFFmpegWrote) {
    const TempFolder folder;
    const auto file = folder / "film.mp4";
    RealMovie movie;
    movie.soundTracks = 0;
    movie.seconds = 1;
    // The 8x8 transform makes it the High profile.
    movie.extraArguments = {"-x264-params", "8x8dct=1", "-profile:v", "high"};
    makeMovie(file, movie);
    const Bytes with = parseSummary(loadMoov(file), file, Detail::Yes).tracks.at(0).stsd;

    const auto box = find(with, 8 + 8 + 78, static_cast<std::int64_t>(with.size()), {"avcC"});
    ASSERT_TRUE(box.has_value());
    const ByteView record = slice(with, box->start, box->end);
    ASSERT_EQ(record[1], 100);
    ASSERT_EQ(toHex(record.last(4)), "fdf8f800");
    Bytes cut = with;
    const auto end = cut.begin() + box->end;
    cut.erase(end - 4, end);
    const auto shrink = [&](std::size_t at) {
        cut = patched(cut, at, be32(BigEndian::u32(cut, static_cast<std::int64_t>(at)) - 4));
    };
    shrink(8);
    shrink(static_cast<std::size_t>(box->boxStart));

    EXPECT_EQ(compareSampleDescriptions(cut, with), Reasons{});
    EXPECT_EQ(compareSampleDescriptions(with, cut),
              Reasons{"avcC differs: the original already has extension bytes that changed"});
}

}  // namespace
}  // namespace marlet::test
