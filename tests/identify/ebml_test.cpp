#include <gtest/gtest.h>

#include <bit>

#include "identify/probe.h"
#include "support/box_builder.h"
#include "support/temp_folder.h"

namespace marlet::test {
namespace {

using Kind = TrackInfo::Kind;

Bytes idOf(std::uint32_t id) {
    Bytes bytes = be32(id);
    while (bytes.front() == 0) bytes.erase(bytes.begin());
    return bytes;
}

/// With a size of four bytes.
Bytes element(std::uint32_t id, const Bytes& content) {
    return joined(
        {idOf(id), be32(0x10000000U | static_cast<std::uint32_t>(content.size())), content});
}
Bytes endless(std::uint32_t id, const Bytes& content) {
    return joined({idOf(id), Bytes{0xFF}, content});
}
Bytes textElement(std::uint32_t id, std::string_view text) {
    return element(id, bytesOf(text));
}
Bytes wideDuration(double units) {
    return element(0x4489, be64(std::bit_cast<std::uint64_t>(units)));
}

Bytes header() {
    return element(0x1A45DFA3, textElement(0x4282, "matroska"));
}
Bytes segment(const Bytes& content) {
    return element(0x18538067, content);
}
Bytes info(const Bytes& content) {
    return element(0x1549A966, content);
}
Bytes tracks(const Bytes& content) {
    return element(0x1654AE6B, content);
}
Bytes entry(const Bytes& content) {
    return element(0xAE, content);
}
Bytes soundEntry() {
    return entry(joined({element(0x83, Bytes{2}), textElement(0x86, "A_AC3"),
                         textElement(0x22B59C, "ger"), textElement(0x536E, "Commentary")}));
}

TEST(LightMatroska, AWideDurationIsInUnitsOfTheTimecodeScale) {
    const Bytes content = info(joined({element(0x2AD7B1, be32(1'000'000)), wideDuration(90'000)}));
    EXPECT_EQ(EBML::parse(segment(content))->duration, 90.0);
}

TEST(LightMatroska, TheTimecodeScaleIsAMillionWhenItIsMissing) {
    EXPECT_EQ(EBML::parse(segment(info(wideDuration(90'000))))->duration, 90.0);
}

TEST(LightMatroska, TheScaleMayComeBehindTheDuration) {
    const Bytes content = info(joined({wideDuration(90), element(0x2AD7B1, be32(500'000'000))}));
    EXPECT_EQ(EBML::parse(segment(content))->duration, 45.0);
}

TEST(LightMatroska, ADurationMayBeAFloatOfFourBytes) {
    const Bytes content = info(element(0x4489, be32(std::bit_cast<std::uint32_t>(1500.0F))));
    EXPECT_EQ(EBML::parse(segment(content))->duration, 1.5);
}

TEST(LightMatroska, ADurationOfAnotherLengthIsAbsent) {
    for (const std::size_t length : {0U, 3U, 10U}) {
        const Bytes content = joined({info(element(0x4489, Bytes(length))), tracks(soundEntry())});
        const auto found = EBML::parse(segment(content));
        ASSERT_TRUE(found) << length;
        EXPECT_FALSE(found->duration) << length;
    }
}

TEST(LightMatroska, ADurationThatIsNoNumberIsAbsent) {
    EXPECT_FALSE(EBML::parse(segment(info(element(0x4489, be32(0x7FC00000))))));
}

TEST(LightMatroska, ReadsEveryTrackEntry) {
    const Bytes video =
        entry(joined({element(0x83, Bytes{1}), textElement(0x86, "V_MPEGH/ISO/HEVC")}));
    const Bytes subtitle = entry(element(0x83, Bytes{17}));
    const Bytes buttons = entry(element(0x83, Bytes{18}));
    const auto found =
        EBML::parse(segment(tracks(joined({video, soundEntry(), subtitle, buttons}))));
    ASSERT_TRUE(found);
    EXPECT_EQ(found->tracks,
              (std::vector<TrackInfo>{{Kind::video, "V_MPEGH/ISO/HEVC", std::nullopt, std::nullopt},
                                      {Kind::audio, "A_AC3", "ger", "Commentary"},
                                      {Kind::subtitle, "?", std::nullopt, std::nullopt},
                                      {Kind::other, "?", std::nullopt, std::nullopt}}));
}

TEST(LightMatroska, RepairsTextsAndDropsTheirPadding) {
    const Bytes padded = joined({bytesOf("A\xFFZ"), Bytes(3)});
    const Bytes content = info(joined({element(0x7BA9, padded), wideDuration(1)}));
    EXPECT_EQ(EBML::parse(segment(content))->title, "A\uFFFDZ");
}

TEST(LightMatroska, SkipsTheHeaderAndEveryOtherElement) {
    const Bytes content = joined({element(0x114D9B74, Bytes(20)), element(0xEC, Bytes(5)),
                                  info(joined({element(0x4D80, Bytes(9)), wideDuration(2'000)}))});
    EXPECT_EQ(EBML::parse(joined({header(), segment(content)}))->duration, 2.0);
}

TEST(LightMatroska, ASegmentOfUnknownSizeRunsToTheEnd) {
    EXPECT_EQ(EBML::parse(endless(0x18538067, info(wideDuration(2'000))))->duration, 2.0);
}

TEST(LightMatroska, AClusterOfUnknownSizeEndsTheWalk) {
    const Bytes content =
        joined({info(wideDuration(2'000)), endless(0x1F43B675, Bytes()), tracks(soundEntry())});
    const auto found = EBML::parse(segment(content));
    ASSERT_TRUE(found);
    EXPECT_EQ(found->duration, 2.0);
    EXPECT_TRUE(found->tracks.empty());
}

TEST(LightMatroska, WithoutADurationFurtherSegmentsAreRead) {
    const Bytes second = segment(info(wideDuration(2'000)));
    const auto found = EBML::parse(joined({segment(tracks(soundEntry())), second}));
    ASSERT_TRUE(found);
    EXPECT_EQ(found->duration, 2.0);
    EXPECT_EQ(found->tracks.size(), 1U);
}

TEST(LightMatroska, WithADurationTheWalkEndsAtThatSegment) {
    const Bytes first = segment(info(wideDuration(1'000)));
    const Bytes second = segment(info(wideDuration(2'000)));
    EXPECT_EQ(EBML::parse(joined({first, second}))->duration, 1.0);
}

TEST(LightMatroska, NeitherDurationNorTrackIsNothing) {
    EXPECT_FALSE(EBML::parse(Bytes()));
    EXPECT_FALSE(EBML::parse(header()));
    EXPECT_FALSE(EBML::parse(segment(info(textElement(0x7BA9, "A title alone")))));
}

TEST(LightMatroska, AnIDOfMoreThanFourBytesEndsTheWalk) {
    const Bytes content = joined({info(wideDuration(1'000)), Bytes{0x08}, tracks(soundEntry())});
    EXPECT_TRUE(EBML::parse(segment(content))->tracks.empty());
}

TEST(LightMatroska, ASizeThatStartsWith0EndsTheWalk) {
    const Bytes content =
        joined({info(wideDuration(1'000)), Bytes{0xEC, 0x00}, tracks(soundEntry())});
    EXPECT_TRUE(EBML::parse(segment(content))->tracks.empty());
}

TEST(LightMatroska, CutAnywhereItGivesWhatCameBefore) {
    const Bytes whole =
        joined({header(), segment(joined({info(wideDuration(1'000)),
                                          tracks(joined({soundEntry(), soundEntry()}))}))});
    std::size_t most = 0;
    for (std::size_t length = 0; length <= whole.size(); length++) {
        const auto found = EBML::parse(ByteView(whole).first(length));
        const std::size_t count = found ? found->tracks.size() : 0;
        EXPECT_GE(count, most) << length;
        most = count;
    }
    EXPECT_EQ(most, 2U);
}

TEST(LightMatroska, AMillionEmptyTracksAreCutToABoundedList) {
    Bytes entries;
    for (int i = 0; i < 1'000'000; i++) append(entries, Bytes{0xAE, 0x80});
    EXPECT_EQ(EBML::parse(segment(tracks(entries)))->tracks.size(), 65'536U);
}

TEST(LightMatroska, ReadsOnlyTheFirst4MiBOfAFile) {
    const TempFolder folder;
    const Bytes front = info(wideDuration(1'000));
    const Bytes gap = element(0xEC, Bytes(4'194'304));
    const auto found =
        EBML::read(folder.write("a.mkv", segment(joined({front, gap, tracks(soundEntry())}))));
    ASSERT_TRUE(found);
    EXPECT_EQ(found->duration, 1.0);
    EXPECT_TRUE(found->tracks.empty());
}

TEST(LightMatroska, AFileOf16BytesOrFewerIsNothing) {
    const TempFolder folder;
    // A segment with one empty track, of 16 and of 17 bytes.
    const Bytes small = joined({idOf(0x18538067), Bytes{0x8B}, idOf(0x1654AE6B),
                                Bytes{0x82, 0xAE, 0x80}, Bytes{0xEC, 0x81, 0x00, 0xEC}});
    ASSERT_EQ(small.size(), 16U);
    ASSERT_TRUE(EBML::parse(small));
    EXPECT_FALSE(EBML::read(folder.write("a.mkv", small)));
    EXPECT_TRUE(EBML::read(folder.write("b.mkv", joined({small, Bytes{0x80}}))));
    EXPECT_FALSE(EBML::read(folder / "none.mkv"));
}

}  // namespace
}  // namespace marlet::test
