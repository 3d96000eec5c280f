// Pictures that are read side by side: cancels at any moment leave no thread behind, and pictures
// of no sense take no time worth telling.

#include "convert/reading_crew.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <functional>
#include <random>
#include <thread>

#include "convert/pgs_ocr.h"
#include "convert/pgs_reading.h"
#include "foundation/errors.h"
#include "support/subtitle_pictures.h"

namespace marlet::test {
namespace {

using namespace pgs;
using testing::IsEmpty;
using testing::SizeIs;

std::ptrdiff_t threads() {
    return std::distance(std::filesystem::directory_iterator("/proc/self/task"), {});
}

/// Waits until there are so many: one that was joined takes a moment to disappear. More when some
/// stay for ten seconds.
std::ptrdiff_t threadsLeft(std::ptrdiff_t wanted) {
    for (int i = 0; i < 1000 && threads() > wanted; i++)
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    return threads();
}

/// Pictures that are all different.
std::vector<Line> linesOfText(int count) {
    std::vector<Line> lines;
    for (int i = 0; i < count; i++)
        lines.push_back(
            {1000 * i, 1000 * i + 900, {renderLines("Line " + std::to_string(i), {}, 1920, 1080)}});
    return lines;
}

/// An event of one object in white, whose pixels these are.
PGSParser::Event eventOf(int width, int height, const std::function<bool(int, int)>& isInk) {
    PGSParser::Event event{.startMs = 0, .endMs = 1};
    event.palette[1] = 0xFFFFFFFF;
    event.objects.push_back({.id = 0});
    Bytes indices;
    for (int y = 0; y < height; y++)
        for (int x = 0; x < width; x++) indices.push_back(isInk(x, y) ? 1 : 0);
    event.bitmaps[0] = {width, height, indices};
    return event;
}
std::vector<ReadingCrew::Line> read(const PGSParser::Event& event) {
    RunControl control;
    ReadingCrew crew("en-US", control);
    crew.hand(event);
    return crew.finish();
}

TEST(ReadingCrew, TellsAheadWhetherItCanReadTheLanguage) {
    RunControl control;
    EXPECT_TRUE(ReadingCrew("en-US", control).canRead());
    EXPECT_FALSE(ReadingCrew("xx-XX", control).canRead());
}

TEST(ReadingCrew, ACancelInTheMiddleOfAFilmEndsItAndLeavesNoThread) {
    const OpenPictures film(stream(linesOfText(40)));
    const auto before = threads();
    RunControl control;
    std::thread person([&] {
        // The reader of the first picture is at work, with this thread beside it.
        while (threads() < before + 2) std::this_thread::yield();
        control.cancel();
    });
    EXPECT_THROW(PGSOCR::cues(*film.mkv, *film.mkv->track(1), "eng", false, control), CancelError);
    person.join();
    EXPECT_EQ(threadsLeft(before), before);
}

TEST(ReadingCrew, ACancelFreesWhoeverWaitsForRoom) {
    const auto events = eventsOf(stream(linesOfText(1)));
    RunControl control;
    control.pause();  // so that no picture is ever read
    std::thread person;
    const auto handAll = [&] {
        ReadingCrew crew("en-US", control);
        crew.hand(events.at(0));
        person = std::thread([&] { control.cancel(); });
        for (int i = 0; i < 20; i++) crew.hand(events.at(0));
    };
    EXPECT_THROW(handAll(), CancelError);
    person.join();
}

TEST(ReadingCrew, ACancelOfAPausedReadingEndsIt) {
    const auto events = eventsOf(stream(linesOfText(1)));
    const auto before = threads();
    {
        RunControl control;
        control.pause();
        ReadingCrew crew("en-US", control);
        crew.hand(events.at(0));
        control.cancel();
        EXPECT_THROW(crew.finish(), CancelError);
    }
    EXPECT_EQ(threadsLeft(before), before);
}

TEST(ReadingCrew, AnAbandonedReadingLeavesNoThread) {
    const auto events = eventsOf(stream(linesOfText(3)));
    const auto before = threads();
    {
        RunControl control;
        ReadingCrew crew("en-US", control);
        for (const auto& event : events) crew.hand(event);
    }
    EXPECT_EQ(threadsLeft(before), before);
}

TEST(ReadingCrew, OfNothingHasNoLines) {
    RunControl control;
    ReadingCrew crew("en-US", control);
    EXPECT_THAT(crew.finish(), IsEmpty());
}

TEST(ReadingCrew, OfALanguageThatCannotBeReadHasEmptyLines) {
    RunControl control;
    ReadingCrew crew("he-IL", control);
    for (const auto& event : eventsOf(stream(linesOfText(3)))) crew.hand(event);
    const auto lines = crew.finish();
    ASSERT_THAT(lines, SizeIs(3));
    for (const auto& line : lines) EXPECT_EQ(line.text, "");
}

TEST(ReadingCrew, PicturesOfOnePixelAndOfNoneAreNotText) {
    EXPECT_EQ(read(eventOf(1, 1, [](int, int) { return true; })).at(0).text, "");
    EXPECT_EQ(read({}).at(0).text, "");
    PGSParser::Event lying = eventOf(2, 2, [](int, int) { return true; });
    lying.bitmaps[0].idx.clear();
    EXPECT_EQ(read(lying).at(0).text, "");
    EXPECT_EQ(PGSOCR::read({}, {"en-US"}), std::nullopt);
    EXPECT_EQ(PGSOCR::read({.width = 5, .height = 5, .rgba = Bytes(99)}, {"en-US"}), std::nullopt);
    EXPECT_EQ(PGSOCR::read({.width = -5, .height = -5, .rgba = Bytes(100)}, {"en-US"}),
              std::nullopt);
}

TEST(ReadingCrew, ADashAloneIsNotText) {
    EXPECT_EQ(read(eventOf(60, 8, [](int, int) { return true; })).at(0).text, "");
}

// As large as anything that is drawn at all.
constexpr int wide = 4800;
constexpr int high = 3200;

TEST(ReadingCrew, AScreenFullOfStripesIsNotText) {
    EXPECT_EQ(read(eventOf(wide, high, [](int, int y) { return y % 4 < 2; })).at(0).text, "");
}

TEST(ReadingCrew, AScreenFullOfNoiseIsNotText) {
    std::minstd_rand random(7);
    EXPECT_EQ(read(eventOf(wide, high, [&](int, int) { return random() % 3 == 0; })).at(0).text,
              "");
}

TEST(ReadingCrew, AScreenFullOfSquaresIsNotText) {
    EXPECT_EQ(
        read(eventOf(wide, high, [](int x, int y) { return x % 12 < 8 && y % 12 < 8; })).at(0).text,
        "");
}

TEST(ReadingCrew, AScreenOfTheParsersOwnBoundIsNotText) {
    EXPECT_EQ(read(eventOf(7680, 4320, [](int, int) { return true; })).at(0).text, "");
}

TEST(ReadingCrew, AScreenCoveredManyTimesIsDrawnAFewTimes) {
    PGSParser::Event event = eventOf(wide, high, [](int, int y) { return y % 4 < 2; });
    for (int i = 0; i < 250; i++) event.objects.push_back({.id = 0});
    EXPECT_EQ(read(event).at(0).text, "");
}

}  // namespace
}  // namespace marlet::test
