// Streams that lie or are cut: what could be read stays, and nothing grows beyond bounds.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>

#include <algorithm>

#include "convert/pgs_objects.h"
#include "convert/pgs_parser.h"
#include "convert/pgs_reading.h"

namespace marlet::test {
namespace {

using namespace pgs;
using PGSParser::Bitmap;
using testing::Each;
using testing::IsEmpty;
using testing::SizeIs;

Bytes tiny(int id, std::uint8_t colour = 1) {
    return objectStart(id, 2, 1, Bytes{colour, 2});
}
/// What is shown of this object.
std::map<int, Bitmap> bitmapsOf(const std::vector<Bytes>& objects,
                                const std::vector<Row>& rows = {{0}}) {
    std::vector<Bytes> segments{compositionSegment(rows)};
    segments.insert(segments.end(), objects.begin(), objects.end());
    segments.push_back(endSegment());
    const auto events = shown(segments);
    return events.size() == 1 ? events[0].bitmaps : std::map<int, Bitmap>{{-1, {}}};
}
std::size_t pixelsOf(const std::map<int, Bitmap>& bitmaps) {
    std::size_t pixels = 0;
    for (const auto& [id, bitmap] : bitmaps) {
        EXPECT_EQ(bitmap.idx.size(),
                  static_cast<std::size_t>(bitmap.w) * static_cast<std::size_t>(bitmap.h));
        pixels += bitmap.idx.size();
    }
    return pixels;
}
Bytes repeated(const Bytes& what, int times) {
    Bytes all;
    for (int i = 0; i < times; i++) append(all, what);
    return all;
}

TEST(HostilePGS, ASegmentThatRunsPastItsFrameEndsIt) {
    const Bytes good = together({compositionSegment({{0}}), tiny(0), endSegment()});
    Bytes cut = good;
    append(cut, lyingSegment(Type::composition, 12, compositionSegment({})));
    append(cut, endSegment());
    Bytes lie = good;
    append(lie, lyingSegment(Type::composition, 0xFFFF, Bytes(11)));
    append(lie, endSegment());
    for (const Bytes& frame : {cut, lie}) {
        const auto events = eventsOf({{1000, frame}, clearAt(2000)});
        ASSERT_THAT(events, SizeIs(1));
        EXPECT_EQ(events[0].endMs, 2000);
    }
}

TEST(HostilePGS, FramesCutAnywhereKeepWhatWasSent) {
    const Bytes whole =
        together({compositionSegment({{0}}), windowSegment({{0, 0, 2, 1}}),
                  paletteSegment({{1, 235, 128, 128, 255}}), tiny(0), endSegment()});
    for (std::size_t length = 0; length < whole.size(); length++) {
        const Bytes cut(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(length));
        // The end of the next display set takes the first one's place.
        EXPECT_THAT(eventsOf({{1000, cut}, clearAt(2000)}), IsEmpty()) << length;
    }
    EXPECT_THAT(eventsOf({{1000, whole}, clearAt(2000)}), SizeIs(1));
}

TEST(HostilePGS, SegmentsTooShortForTheirTypeArePassedOver) {
    const auto events =
        shown({compositionSegment({{0}}), tiny(0), segment(Type::composition, Bytes(10)),
               segment(Type::object, Bytes{0, 0, 0}),
               segment(Type::object, Bytes{0, 0, 0, 0xC0, 0, 0, 4, 0, 9, 0}),
               segment(Type::palette, Bytes{0, 0, 1, 235, 128, 128}),
               segment(Type::palette, Bytes{}), endSegment()});
    ASSERT_THAT(events, SizeIs(1));
    EXPECT_EQ(events[0].bitmaps.at(0), (Bitmap{2, 1, {1, 2}}));
    EXPECT_THAT(events[0].palette, Each(0U));
}

TEST(HostilePGS, CompositionsThatPromiseMoreObjectsShowThoseThatAreThere) {
    Bytes composition = compositionSegment({{0, 5, 6, true}});
    composition[13] = 200;
    const auto events = shown({composition, tiny(0), endSegment()});
    ASSERT_THAT(events, SizeIs(1));
    EXPECT_THAT(events[0].objects, SizeIs(1));
    EXPECT_TRUE(events[0].forced);

    Bytes empty = compositionSegment({});
    empty[13] = 200;
    EXPECT_THAT(shown({empty, tiny(0), endSegment()}), IsEmpty());
}

TEST(HostilePGS, ACropThatIsCutOffCropsNothing) {
    Bytes composition = compositionSegment({{0, 5, 6, false, true}});
    composition.resize(composition.size() - 8);
    composition[2] = static_cast<std::uint8_t>(composition.size() - 3);
    const auto events = shown({composition, tiny(0), endSegment()});
    ASSERT_THAT(events, SizeIs(1));
    EXPECT_THAT(events[0].objects, SizeIs(1));
}

TEST(HostilePGS, WithoutAPaletteAllIsTransparent) {
    const auto events = shown({compositionSegment({{0}}), tiny(0), endSegment()});
    ASSERT_THAT(events, SizeIs(1));
    EXPECT_THAT(events[0].palette, Each(0U));
    EXPECT_THAT(events[0].bitmaps, SizeIs(1));
}

TEST(HostilePGS, ObjectsThatAreMissingLeaveTheEvent) {
    const auto bitmaps = bitmapsOf({tiny(0)}, {{0}, {1}, {0xFFFF}});
    EXPECT_THAT(bitmaps, SizeIs(1));
    EXPECT_THAT(bitmapsOf({}), IsEmpty());
}

TEST(HostilePGS, APartWithoutItsBeginningIsNoPicture) {
    EXPECT_THAT(bitmapsOf({objectPart(0, Bytes{1, 2}, last)}), IsEmpty());
    EXPECT_THAT(
        bitmapsOf({objectPart(0, Bytes{1, 2}, 0), objectStart(0, 1, 1, Bytes{7})}).at(0).idx,
        testing::ElementsAre(7));
}

TEST(HostilePGS, PicturesOfNoPixelsAreNone) {
    EXPECT_THAT(bitmapsOf({objectStart(0, 0, 50, Bytes{1})}), IsEmpty());
    EXPECT_THAT(bitmapsOf({objectStart(0, 50, 0, Bytes{1})}), IsEmpty());
    EXPECT_THAT(bitmapsOf({tiny(0), objectStart(0, 0, 0, Bytes{1})}), IsEmpty())
        << "the later one counts";
}

TEST(HostilePGS, ObjectsLargerThanTheScreenAreWhole) {
    const auto bitmaps = bitmapsOf({objectStart(0, 4000, 1500, Bytes{1, 0, 0, 2})});
    EXPECT_EQ(bitmaps.at(0).w, 4000);
    EXPECT_EQ(bitmaps.at(0).h, 1500);
    EXPECT_EQ(bitmaps.at(0).idx[4000], 2);
}

TEST(HostilePGS, SizesBeyondAnyScreenShrinkToWhatWasSent) {
    const auto bitmaps = bitmapsOf({objectStart(0, 65'535, 65'535, Bytes{1, 2, 0, 0, 3})});
    EXPECT_EQ(bitmaps.at(0), (Bitmap{2, 2, {1, 2, 3, 0}}));
    EXPECT_THAT(bitmapsOf({objectStart(0, 65'535, 65'535, {})}), IsEmpty());
}

TEST(HostilePGS, PicturesBeyondAllMeasureLoseTheirLowestRows) {
    const Bytes row{0x00, 0xFF, 0xFF, 7,    0x00, 0xFF, 0xFF, 7, 0x00, 0xFF, 0xFF,
                    7,    0x00, 0xFF, 0xFF, 7,    7,    7,    7, 0x00, 0x00};
    const Bytes runs = repeated(row, 3000);
    const auto bitmaps = bitmapsOf({objectSegments(0, 65'535, 65'535, runs)});
    EXPECT_EQ(bitmaps.at(0).w, 65'535);
    EXPECT_EQ(bitmaps.at(0).h, static_cast<int>(PGSParser::mostPixels / 65'535));
    EXPECT_TRUE(bitmaps.at(0).idx == Bytes(bitmaps.at(0).idx.size(), 7));
}

TEST(HostilePGS, AnEventHoldsNoMorePixelsThanAScreen) {
    std::vector<Bytes> objects;
    std::vector<Row> rows;
    for (int id = 0; id < 255; id++) {
        objects.push_back(objectStart(id, 3840, 2160, Bytes{5}));
        rows.push_back({id});
    }
    const auto bitmaps = bitmapsOf(objects, rows);
    EXPECT_THAT(bitmaps, SizeIs(4));
    EXPECT_LE(pixelsOf(bitmaps), PGSParser::mostPixels);
}

TEST(HostilePGS, OneObjectShownManyTimesIsHeldOnce) {
    const auto events = shown({compositionSegment(std::vector<Row>(255, Row{0})),
                               objectStart(0, 3840, 2160, Bytes{5}), endSegment()});
    ASSERT_THAT(events, SizeIs(1));
    EXPECT_THAT(events[0].objects, SizeIs(255));
    EXPECT_THAT(events[0].bitmaps, SizeIs(1));
}

TEST(HostilePGS, TenThousandObjectsOfAnEpochThatNeverEndsAreAllRead) {
    std::vector<Timed> sets;
    for (int id = 0; id < 10'000; id++)
        sets.push_back(
            {id * 10, together({compositionSegment({{id}}, normal),
                                tiny(id, static_cast<std::uint8_t>(1 + id % 200)), endSegment()})});
    // All are still there at the end.
    for (int id = 0; id < 10'000; id += 100)
        sets.push_back(
            {200'000 + id, together({compositionSegment({{id}}, normal), endSegment()})});
    sets.push_back(clearAt(400'000));
    const auto events = eventsOf(sets);
    ASSERT_THAT(events, SizeIs(10'100));
    for (std::size_t i = 0; i < events.size(); i++) {
        const std::size_t id = i < 10'000 ? i : (i - 10'000) * 100;
        ASSERT_EQ(events[i].bitmaps.at(static_cast<int>(id)).idx[0], 1 + id % 200) << i;
    }
}

/// What is held of objects that together are larger than the bounds: the latest ones.
TEST(HostilePGS, AnEpochThatOverflowsForgetsItsOldestObjects) {
    PGSObjects objects;
    const Bytes runs(std::size_t{1} << 20, 1);
    const auto add = [&](int id) {
        objects.add(
            {.id = id, .isFirst = true, .isLast = true, .width = 9, .height = 9, .runs = runs});
    };
    for (int id = 0; id < 64; id++) add(id);
    for (int id = 0; id < 64; id++) EXPECT_TRUE(objects.picture(id)) << id;
    add(0);  // anew: now the latest
    add(64);
    EXPECT_TRUE(objects.picture(0));
    EXPECT_FALSE(objects.picture(1));
    EXPECT_TRUE(objects.picture(2));
    for (int id = 65; id < 1000; id++) add(id);
    EXPECT_TRUE(objects.picture(999));
    EXPECT_FALSE(objects.picture(900));
}

TEST(HostilePGS, AnObjectThatNeverEndsIsCollectedUpToABound) {
    PGSObjects objects;
    const Bytes runs(std::size_t{1} << 20, 1);
    objects.add({.id = 3, .isFirst = true, .width = 9, .height = 9, .runs = runs});
    for (int i = 0; i < 500; i++) objects.add({.id = 3, .isLast = true, .runs = runs});
    ASSERT_TRUE(objects.picture(3));
    EXPECT_EQ(objects.picture(3)->collected()->size(), PGSObjects::mostBytes);
    EXPECT_EQ(objects.picture(3)->bitmap(PGSParser::mostPixels).w, 9);
}

TEST(HostilePGS, CompositionsThatRepeatWithinAFrameDecodeNothing) {
    // A hundred thousand displays of one time: each would be a screen of pixels.
    Bytes frame = together({compositionSegment({{0}}), objectStart(0, 3840, 2160, Bytes{5})});
    append(frame, repeated(together({endSegment(), compositionSegment({{0}}, normal)}), 100'000));
    append(frame, endSegment());
    rusage before{};
    getrusage(RUSAGE_SELF, &before);
    const auto events = eventsOf({{1000, frame}, clearAt(2000)});
    rusage after{};
    getrusage(RUSAGE_SELF, &after);
    ASSERT_THAT(events, SizeIs(1));
    EXPECT_THAT(events[0].bitmaps, SizeIs(1));
    // Each page of a decoded picture is a fault: 2025 of them a display.
    EXPECT_LT(after.ru_minflt - before.ru_minflt, 100'000);
}

}  // namespace
}  // namespace marlet::test
