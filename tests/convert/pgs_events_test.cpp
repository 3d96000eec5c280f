// From the segments of a stream to what was on the screen, and when.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "convert/pgs_parser.h"
#include "convert/pgs_reading.h"
#include "foundation/errors.h"
#include "support/mkv_builder.h"

namespace marlet::test {
namespace {

using namespace pgs;
using PGSParser::Event;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

/// A picture of two by one, of the colours 1 and 2.
Bytes tiny(int id, std::uint8_t colour = 1) {
    return objectStart(id, 2, 1, Bytes{colour, 2});
}
Bytes shows(const std::vector<Row>& rows, std::uint8_t state = epochStart) {
    return compositionSegment(rows, state);
}
Timed at(std::int64_t ms, const std::vector<Bytes>& segments) {
    return {ms, together(segments)};
}
std::vector<std::pair<std::int64_t, std::int64_t>> times(const std::vector<Event>& events) {
    std::vector<std::pair<std::int64_t, std::int64_t>> all;
    for (const Event& event : events) all.emplace_back(event.startMs, event.endMs);
    return all;
}
std::uint32_t colourOf(const Entry& entry) {
    const auto events = shown({shows({{0}}), paletteSegment({entry}), tiny(0), endSegment()});
    return events.at(0).palette[entry.index];
}

TEST(PGSEvents, TellWhenWhatAndWhere) {
    const auto events = shown({shows({{7, 100, 900}}), windowSegment({{100, 900, 2, 1}}),
                               paletteSegment({{1, 235, 128, 128, 255}}), tiny(7), endSegment()});
    ASSERT_THAT(events, SizeIs(1));
    EXPECT_EQ(events[0].startMs, 1000);
    EXPECT_EQ(events[0].endMs, 2000);
    EXPECT_FALSE(events[0].forced);
    EXPECT_THAT(events[0].objects, ElementsAre(PGSParser::Obj{7, 100, 900, false}));
    EXPECT_EQ(events[0].palette[1], 0xFFFFFFFFU);
    EXPECT_EQ(events[0].palette[2], 0U);
    ASSERT_THAT(events[0].bitmaps, SizeIs(1));
    EXPECT_EQ(events[0].bitmaps.at(7), (PGSParser::Bitmap{2, 1, {1, 2}}));
}

TEST(PGSEvents, WithTwoObjectsOfWhichOneIsForcedAreForced) {
    const auto events =
        shown({shows({{0, 10, 10, false}, {1, 10, 50, true}}), tiny(0), tiny(1), endSegment()});
    ASSERT_THAT(events, SizeIs(1));
    EXPECT_TRUE(events[0].forced);
    EXPECT_THAT(events[0].objects,
                ElementsAre(PGSParser::Obj{0, 10, 10, false}, PGSParser::Obj{1, 10, 50, true}));
    EXPECT_THAT(events[0].bitmaps, SizeIs(2));
}

TEST(PGSEvents, EndWithACompositionWithoutObjects) {
    EXPECT_THAT(times(eventsOf({at(1000, {shows({{0}}), tiny(0), endSegment()}), clearAt(2500),
                                at(4000, {shows({{0}}), tiny(0), endSegment()}), clearAt(5000)})),
                ElementsAre(std::pair(1000, 2500), std::pair(4000, 5000)));
}

TEST(PGSEvents, EndWithTheNextComposition) {
    EXPECT_THAT(times(eventsOf({at(1000, {shows({{0}}), tiny(0), endSegment()}),
                                at(1500, {shows({{0}}, normal), endSegment()}), clearAt(2000)})),
                ElementsAre(std::pair(1000, 1500), std::pair(1500, 2000)));
}

TEST(PGSEvents, AreNoneWithoutAnEnd) {
    EXPECT_THAT(eventsOf({at(1000, {shows({{0}}), tiny(0), endSegment()})}), IsEmpty());
    EXPECT_THAT(eventsOf({at(1000, {shows({{0}}), tiny(0)}), at(2000, {shows({})}),
                          at(3000, {endSegment()})}),
                IsEmpty())
        << "no end of a display set: nothing was ever shown";
}

TEST(PGSEvents, OfNoLengthAreNone) {
    EXPECT_THAT(times(eventsOf({at(1000, {shows({{0}}), tiny(0), endSegment()}),
                                at(1000, {shows({{0}}), tiny(0), endSegment()}), clearAt(2000)})),
                ElementsAre(std::pair(1000, 2000)));
}

TEST(PGSEvents, ThatWouldEndBeforeTheyBeginAreNone) {
    EXPECT_THAT(eventsOf({at(0, {}), at(5000, {shows({{0}}), tiny(0), endSegment()})}), IsEmpty());
    Bytes film = mkv::header();
    const auto block = [](std::int16_t time, const Bytes& data) {
        return mkv::simpleBlock(1, time, data);
    };
    append(film, mkv::segment(
                     {mkv::info(), mkv::tracks({mkv::entry(1, 17, "S_HDMV/PGS")}),
                      mkv::cluster(5000, {block(0, together({shows({{0}}), tiny(0), endSegment()})),
                                          block(-1000, displaySet({}))})}));
    EXPECT_THAT(OpenPictures(film).events(), IsEmpty());
}

TEST(PGSEvents, OfAnObjectInThreeSegmentsHaveItOnlyAfterTheLast) {
    const Bytes start = objectStart(0, 3, 2, Bytes{1}, first);
    const Bytes middle = objectPart(0, Bytes{2, 3, 0}, 0);
    const Bytes ending = objectPart(0, Bytes{0, 4}, last);
    const auto before = shown({shows({{0}}), start, middle, endSegment(), ending});
    ASSERT_THAT(before, SizeIs(1));
    EXPECT_THAT(before[0].bitmaps, IsEmpty());
    const auto after = shown({shows({{0}}), start, middle, ending, endSegment()});
    ASSERT_THAT(after, SizeIs(1));
    EXPECT_EQ(after[0].bitmaps.at(0), (PGSParser::Bitmap{3, 2, {1, 2, 3, 4, 0, 0}}));
}

TEST(PGSEvents, OfAnObjectAcrossFramesHaveItWhole) {
    const auto events =
        eventsOf({at(1000, {shows({{0}}), objectStart(0, 2, 1, Bytes{1}, first)}),
                  at(1000, {objectPart(0, Bytes{2}, last), endSegment()}), clearAt(2000)});
    ASSERT_THAT(events, SizeIs(1));
    EXPECT_EQ(events[0].bitmaps.at(0).idx, (Bytes{1, 2}));
}

TEST(PGSEvents, KeepThePictureUntilTheNextOneIsWhole) {
    const auto events = eventsOf(
        {at(1000, {shows({{0}}), tiny(0, 1), objectStart(0, 2, 1, Bytes{9}, first), endSegment()}),
         at(2000, {shows({{0}}, normal), objectPart(0, Bytes{9}, last), endSegment()}),
         clearAt(3000)});
    ASSERT_THAT(events, SizeIs(2));
    EXPECT_EQ(events[0].bitmaps.at(0).idx, (Bytes{1, 2}));
    EXPECT_EQ(events[1].bitmaps.at(0).idx, (Bytes{9, 9}));
}

TEST(PGSEvents, ShowWhatWasThereWhenTheyBegan) {
    const auto events =
        eventsOf({at(1000, {shows({{0}}), paletteSegment({{1, 235, 128, 128, 255}}), tiny(0, 1),
                            endSegment()}),
                  at(1500, {paletteSegment({{1, 16, 128, 128, 255}}), tiny(0, 5)}), clearAt(2000)});
    ASSERT_THAT(events, SizeIs(1));
    EXPECT_EQ(events[0].palette[1], 0xFFFFFFFFU);
    EXPECT_EQ(events[0].bitmaps.at(0).idx, (Bytes{1, 2}));
}

TEST(PGSEvents, OfANewEpochKnowNothingOfTheOld) {
    const auto events = eventsOf(
        {at(1000, {shows({{0}}), paletteSegment({{1, 235, 128, 128, 255}}), tiny(0), endSegment()}),
         at(2000, {shows({{0}}, acquisition), endSegment()}),
         at(3000, {shows({{0}}, epochStart), endSegment()}), clearAt(4000)});
    ASSERT_THAT(events, SizeIs(3));
    EXPECT_EQ(events[1].palette[1], 0xFFFFFFFFU) << "an acquisition point keeps what there is";
    EXPECT_THAT(events[1].bitmaps, SizeIs(1));
    EXPECT_EQ(events[2].palette[1], 0U);
    EXPECT_THAT(events[2].bitmaps, IsEmpty());
}

TEST(PGSEvents, HoldNoPicturesOfObjectsThatAreNotShown) {
    const auto events = shown({shows({{1}}), tiny(0), tiny(1), tiny(2), endSegment()});
    ASSERT_THAT(events, SizeIs(1));
    ASSERT_THAT(events[0].bitmaps, SizeIs(1));
    EXPECT_TRUE(events[0].bitmaps.contains(1));
}

TEST(PGSEvents, OfCroppedObjectsFindTheNextObject) {
    const auto events =
        shown({shows({{0, 1, 2, false, true}, {1, 3, 4, true}}), tiny(0), tiny(1), endSegment()});
    ASSERT_THAT(events, SizeIs(1));
    EXPECT_THAT(events[0].objects,
                ElementsAre(PGSParser::Obj{0, 1, 2, false}, PGSParser::Obj{1, 3, 4, true}));
}

TEST(PGSEvents, PassOverSegmentsOfOtherTypes) {
    EXPECT_THAT(
        shown({segment(99, Bytes(50, 1)), shows({{0}}), segment(0, {}), tiny(0), endSegment()}),
        SizeIs(1));
}

TEST(PGSEvents, GoByTheTimesOfTheirBlocks) {
    EXPECT_THAT(times(eventsOf({at(0, {shows({{0}}), tiny(0), endSegment()}), clearAt(5'400'001)})),
                ElementsAre(std::pair(0, 5'400'001)));
}

TEST(PGSEvents, OfOtherTracksStayAway) {
    const Bytes film = pgs::film(
        {Track{.sets = {at(1000, {shows({{0}}), tiny(0), endSegment()}), clearAt(2000)}},
         Track{.sets = {at(1500, {shows({{0}}), tiny(0), endSegment()}), clearAt(2500)}}});
    const OpenPictures open(film);
    EXPECT_THAT(times(open.events(1)), ElementsAre(std::pair(1000, 2000)));
    EXPECT_THAT(times(open.events(2)), ElementsAre(std::pair(1500, 2500)));
}

TEST(PGSEvents, ComeOneByOneAsTheyEnd) {
    const OpenPictures open(stream({{1000, 2000, {{{1, 1, {255, 255, 255, 255}}, 5, 5, false}}},
                                    {3000, 4000, {{{1, 1, {255, 255, 255, 255}}, 5, 5, false}}}}));
    RunControl control;
    struct Enough {};
    int count = 0;
    EXPECT_THROW(PGSParser::forEachEvent(*open.mkv, *open.mkv->track(1), control,
                                         [&](const Event&) {
                                             count++;
                                             throw Enough();
                                         }),
                 Enough);
    EXPECT_EQ(count, 1);
}

TEST(PGSEvents, StopWithTheJob) {
    std::vector<Timed> sets;
    for (int i = 0; i < 300; i++)
        sets.push_back(at(1000 * i, {shows({{0}}), tiny(0), endSegment()}));
    const OpenPictures open(sets);
    RunControl control;
    int count = 0;
    EXPECT_THROW(PGSParser::forEachEvent(*open.mkv, *open.mkv->track(1), control,
                                         [&](const Event&) {
                                             if (++count == 10) control.cancel();
                                         }),
                 CancelError);
    EXPECT_LT(count, 200);
}

TEST(PGSColours, AreThoseOfVideoLevels) {
    EXPECT_EQ(colourOf({1, 16, 128, 128, 255}), 0xFF000000U);
    EXPECT_EQ(colourOf({1, 235, 128, 128, 255}), 0xFFFFFFFFU);
    EXPECT_EQ(colourOf({1, 126, 128, 128, 64}), 0x40808080U);
    // y 116.4; red 116.4 + 35.86, green 116.4 - 4.26 - 10.66, blue 116.4 + 42.24
    EXPECT_EQ(colourOf({1, 116, 148, 148, 255}), 0xFF9F6598U);
    EXPECT_EQ(colourOf({1, 0, 128, 128, 0}), 0U) << "blacker than black";
    EXPECT_EQ(colourOf({1, 255, 255, 0, 255}), 0xFF08EEFFU);
}

TEST(PGSColours, ComeBackWithinTheirRounding) {
    for (int red = 0; red < 256; red += 51)
        for (int green = 0; green < 256; green += 51)
            for (int blue = 0; blue < 256; blue += 51) {
                const auto level = [](int value) { return static_cast<std::uint8_t>(value); };
                const std::uint32_t got =
                    colourOf(entryOf(9, level(red), level(green), level(blue), 200));
                EXPECT_NEAR(static_cast<int>(got & 0xFF), red, 2);
                EXPECT_NEAR(static_cast<int>(got >> 8 & 0xFF), green, 2);
                EXPECT_NEAR(static_cast<int>(got >> 16 & 0xFF), blue, 2);
                EXPECT_EQ(got >> 24, 200U);
            }
}

TEST(PGSColours, OfALaterPaletteReplaceTheirsAlone) {
    const auto events = shown(
        {shows({{0}}), paletteSegment({{1, 235, 128, 128, 255}, {2, 235, 128, 128, 255}}),
         paletteSegment({{2, 16, 128, 128, 128}, {2, 16, 128, 128, 255}}), tiny(0), endSegment()});
    ASSERT_THAT(events, SizeIs(1));
    EXPECT_EQ(events[0].palette[1], 0xFFFFFFFFU);
    EXPECT_EQ(events[0].palette[2], 0xFF000000U);
}

}  // namespace
}  // namespace marlet::test
