// Pictures of text are read as text: whole tracks, single pictures, and what can't be read.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "convert/cue_printing.h"
#include "convert/pgs_ocr.h"
#include "convert/pgs_reading.h"
#include "convert/picture_reader.h"
#include "convert/reading_crew.h"
#include "foundation/errors.h"
#include "foundation/paths.h"
#include "support/subtitle_pictures.h"
#include "support/temp_folder.h"

namespace marlet::test {
namespace {

using namespace pgs;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

constexpr Plane plane{1920, 1080};

Placed drawn(const std::string& text, const SubtitleStyle& style = {}) {
    return renderLines(text, style, plane.width, plane.height);
}
/// Nothing that could be read: a square without a letter's shape would do as well.
Placed unreadable() {
    Placed placed{.picture = {200, 60, Bytes(200 * 60 * 4)}, .x = 800, .y = 900};
    return placed;
}
Line shownAt(std::int64_t ms, Placed picture, bool forced = false) {
    picture.forced = forced;
    return {ms, ms + 800, {std::move(picture)}};
}

std::vector<Cue> cuesOf(const std::vector<Line>& lines, const std::string& language = "eng",
                        bool forcedOnly = false) {
    const OpenPictures film(stream(lines, plane));
    RunControl control;
    return PGSOCR::cues(*film.mkv, *film.mkv->track(1), language, forcedOnly, control);
}
std::string failureOf(const std::vector<Line>& lines, const std::string& language = "eng") {
    try {
        cuesOf(lines, language);
    } catch (const MFError& failure) {
        return failure.description();
    }
    return "none";
}
std::string textOf(const Placed& picture, const std::string& language = "en-US") {
    const auto events = eventsOf(stream({shownAt(1000, picture)}, plane));
    const auto image = PGSOCR::image(events.at(0));
    if (!image) return "no image";
    const auto result = PGSOCR::read(*image, {language});
    return result ? result->text : "nothing";
}

TEST(PGSCues, AreTheLinesWithTheirTimesInOrder) {
    EXPECT_THAT(cuesOf({shownAt(1000, drawn("The train leaves at 7:45.")),
                        shownAt(2000, drawn("- Who's there?\n- It's only me.")),
                        shownAt(3500, drawn("Far away", {.colour = 0xFFFF00, .italic = true})),
                        shownAt(5000, drawn("I think I'll stay."))}),
                ElementsAre(Cue{1000, 1800, "The train leaves at 7:45."},
                            Cue{2000, 2800, "- Who's there?\n- It's only me."},
                            Cue{3500, 4300, "Far away"}, Cue{5000, 5800, "I think I'll stay."}));
}

TEST(PGSCues, OfManyPicturesKeepTheirOrder) {
    std::vector<Line> lines;
    std::vector<Cue> meant;
    for (int i = 0; i < 12; i++) {
        const std::string text = "Chapter " + std::to_string(100 + i);
        lines.push_back(shownAt(1000 * i + 1000, drawn(text)));
        meant.push_back({1000 * i + 1000, 1000 * i + 1800, text});
    }
    EXPECT_EQ(cuesOf(lines), meant);
}

TEST(PGSCues, OfAPictureShownTwiceAreTwo) {
    const Placed same = drawn("Again and again");
    EXPECT_THAT(
        cuesOf({shownAt(1000, same), shownAt(3000, same)}),
        ElementsAre(Cue{1000, 1800, "Again and again"}, Cue{3000, 3800, "Again and again"}));
}

TEST(PGSCues, OfLinesThatOverlapAreWhatIsOnTheScreenTogether) {
    Placed above = drawn("Far above");
    above.y = 80;
    EXPECT_THAT(cuesOf({{1000, 3000, {drawn("Down here")}}, {2000, 4000, {above}}}),
                ElementsAre(Cue{1000, 2000, "Down here"}, Cue{2000, 3000, "Far above\nDown here"},
                            Cue{3000, 4000, "Far above"}));
}

TEST(PGSCues, OfATrackWithoutPicturesAreNone) {
    EXPECT_THAT(cuesOf({}), IsEmpty());
}

TEST(PGSCues, OfALanguageOutsideTheTableFail) {
    EXPECT_EQ(PGSOCR::visionLanguages("heb"), std::nullopt);
    EXPECT_EQ(failureOf({}, "heb"),
              "Apple's text recognition doesn't support Hebrew yet; these picture subtitles are "
              "left out");
}

TEST(PGSCues, OfALanguageWhoseDataIsNotInstalledFailAndTheLogTellsWhatToInstall) {
    const OwnHome home;
    const TempFolder nothing;
    const ScopedEnv data("TESSDATA_PREFIX", nothing.path().string());
    EXPECT_EQ(PGSOCR::visionLanguages("tha"), std::nullopt);
    testing::internal::CaptureStderr();
    EXPECT_EQ(failureOf({}, "tha"),
              "Apple's text recognition doesn't support Thai yet; these picture subtitles are left "
              "out");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_THAT(marlet::textOf(readFile(Paths::logsDir() / "tools.log")),
                HasSubstr("can't read picture subtitles in Thai: install the package "
                          "tesseract-ocr-tha (tha.traineddata)"));
}

TEST(PGSCues, FailWhenFourOfTenWereRead) {
    std::vector<Line> lines;
    for (int i = 0; i < 10; i++)
        lines.push_back(
            shownAt(1000 * i, i < 4 ? drawn("Line " + std::to_string(i)) : unreadable()));
    EXPECT_EQ(failureOf(lines), "only 4 of 10 picture subtitles could be read as text; left out");
}

TEST(PGSCues, AreFiveWhenFiveOfTenWereRead) {
    std::vector<Line> lines;
    for (int i = 0; i < 10; i++)
        lines.push_back(
            shownAt(1000 * i, i % 2 == 0 ? drawn("Line " + std::to_string(i)) : unreadable()));
    EXPECT_THAT(cuesOf(lines), SizeIs(5));
}

TEST(PGSCues, OfForcedLinesOnlyLeaveTheOthers) {
    const std::vector<Line> lines{shownAt(1000, drawn("Of everyone")),
                                  shownAt(2000, drawn("Of strangers"), true),
                                  shownAt(3000, drawn("Of everyone"))};
    EXPECT_THAT(cuesOf(lines, "eng", true), ElementsAre(Cue{2000, 2800, "Of strangers"}));
    EXPECT_THAT(cuesOf(lines), SizeIs(3));
}

TEST(PGSCues, OfForcedLinesOnlyKeepTheWholeScreenOfOne) {
    Placed above = drawn("Far above");
    above.y = 80;
    above.forced = true;
    EXPECT_THAT(cuesOf({{1000, 2000, {drawn("Down here"), above}}}, "eng", true),
                ElementsAre(Cue{1000, 2000, "Far above\nDown here"}));
}

TEST(PGSCues, EndWithACancel) {
    const OpenPictures film(stream({shownAt(1000, drawn("Too late"))}, plane));
    RunControl control;
    control.cancel();
    EXPECT_THROW(PGSOCR::cues(*film.mkv, *film.mkv->track(1), "eng", false, control), CancelError);
}

TEST(PGSCues, StopBeingReadWithACancel) {
    const auto events = eventsOf(stream({shownAt(1000, drawn("Too late"))}, plane));
    RunControl control;
    ReadingCrew crew("en-US", control);
    control.cancel();
    crew.hand(events.at(0));
    EXPECT_THROW(crew.finish(), CancelError);
}

TEST(PGSCues, OfAPictureFullOfLinesStopBetweenTwo) {
    const auto events = eventsOf(stream({shownAt(1000, drawn("One\nTwo"))}, plane));
    const auto reader = PictureReader::open("en-US");
    ASSERT_TRUE(reader);
    RunControl control;
    const auto image = PGSOCR::image(events.at(0));
    EXPECT_EQ(reader->read(*image, &control).value().text, "One\nTwo");
    control.cancel();
    EXPECT_THROW(reader->read(*image, &control), CancelError);
}

TEST(PGSCues, AreReadWithoutAWordOnTheConsole) {
    // What draws the picture may have its own to say.
    const auto picture = drawn("Quiet!");
    testing::internal::CaptureStderr();
    testing::internal::CaptureStdout();
    EXPECT_THAT(cuesOf({shownAt(1000, picture)}), SizeIs(1));
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
}

TEST(PGSLanguages, AreThoseOfTheTable) {
    EXPECT_THAT(PGSOCR::visionLanguages("eng").value(), ElementsAre("en-US"));
    EXPECT_THAT(PGSOCR::visionLanguages("fre").value(), ElementsAre("fr-FR"));
    EXPECT_THAT(PGSOCR::visionLanguages("fra").value(), ElementsAre("fr-FR"));
    EXPECT_THAT(PGSOCR::visionLanguages("ger").value(), ElementsAre("de-DE"));
    EXPECT_THAT(PGSOCR::visionLanguages("spa").value(), ElementsAre("es-ES"));
    EXPECT_EQ(PGSOCR::visionLanguages(""), std::nullopt);
    EXPECT_EQ(PGSOCR::visionLanguages("en"), std::nullopt);
}

TEST(PGSRead, GivesTheTextAndHowSureItIs) {
    const auto events = eventsOf(stream({shownAt(1000, drawn("Tomorrow, at noon."))}, plane));
    const auto result = PGSOCR::read(*PGSOCR::image(events.at(0)), {"en-US"});
    ASSERT_TRUE(result.has_value());
    EXPECT_EQ(result->text, "Tomorrow, at noon.");
    EXPECT_GT(result->confidence, 0.8F);
    EXPECT_LE(result->confidence, 1.0F);
}

TEST(PGSRead, OfFourLanguages) {
    EXPECT_EQ(textOf(drawn("Où étais-tu hier soir, François ?"), "fr-FR"),
              "Où étais-tu hier soir, François ?");
    EXPECT_EQ(textOf(drawn("Süßes oder Saures? Ich weiß nicht."), "de-DE"),
              "Süßes oder Saures? Ich weiß nicht.");
    EXPECT_EQ(textOf(drawn("¿Quién habló del niño?"), "es-ES"), "¿Quién habló del niño?");
    EXPECT_EQ(textOf(drawn("Who knew?"), "en-US"), "Who knew?");
}

TEST(PGSRead, KnowsALoneIAndMusicNotes) {
    EXPECT_EQ(textOf(drawn("If I were you, I would go.\nI can't.")),
              "If I were you, I would go.\nI can't.");
    EXPECT_EQ(textOf(drawn("♪ Down by the river ♪")), "♪ Down by the river ♪");
}

TEST(PGSRead, KnowsDegreesAndTheSignOfANumber) {
    EXPECT_EQ(textOf(drawn("It's 40° outside")), "It's 40° outside");
    EXPECT_EQ(textOf(drawn("Appartement n°12"), "fr-FR"), "Appartement n°12");
}

TEST(PGSRead, IsAboutLettersWhateverStandsAroundThem) {
    EXPECT_EQ(textOf(drawn("Blue around white", {.outlineColour = 0x2040FF, .outline = 5})),
              "Blue around white");
    EXPECT_EQ(textOf(drawn("Nothing around it", {.outline = 0})), "Nothing around it");
    Placed boxed = drawn("White on grey", {.outline = 0});
    for (std::size_t i = 0; i < boxed.picture.rgba.size(); i += 4) {
        std::uint8_t* const pixel = &boxed.picture.rgba[i];
        for (int c = 0; c < 3; c++)
            pixel[c] =
                static_cast<std::uint8_t>((pixel[c] * pixel[3] + 96 * (255 - pixel[3])) / 255);
        pixel[3] = 255;
    }
    EXPECT_EQ(textOf(boxed), "White on grey");
}

TEST(PGSRead, OfAPictureWithoutLettersIsNothing) {
    EXPECT_EQ(textOf(unreadable()), "nothing");
}

TEST(PGSRead, InNoLanguageOrAnUnknownOneIsNothing) {
    const auto events = eventsOf(stream({shownAt(1000, drawn("Words"))}, plane));
    const auto image = PGSOCR::image(events.at(0));
    EXPECT_EQ(PGSOCR::read(*image, {}), std::nullopt);
    EXPECT_EQ(PGSOCR::read(*image, {"he-IL"}), std::nullopt);
}

PGSParser::Event eventWith(const PGSParser::Bitmap& bitmap, std::uint32_t colour) {
    PGSParser::Event event;
    event.palette[1] = colour;
    event.objects = {{.id = 3, .x = 50, .y = 70}};
    event.bitmaps[3] = bitmap;
    return event;
}
std::vector<int> pixelOf(const PGSOCR::Image& image, int x, int y) {
    const std::size_t at = static_cast<std::size_t>(y * image.width + x) * 4;
    return {image.rgba[at], image.rgba[at + 1], image.rgba[at + 2], image.rgba[at + 3]};
}

TEST(PGSImage, IsTwiceTheSizeWithABlackBorderOfTwelvePixels) {
    const auto image = PGSOCR::image(eventWith({10, 6, Bytes(60, 1)}, 0xFF0000FF));
    ASSERT_TRUE(image.has_value());
    EXPECT_EQ(image->width, (10 + 24) * 2);
    EXPECT_EQ(image->height, (6 + 24) * 2);
    EXPECT_THAT(pixelOf(*image, 0, 0), ElementsAre(0, 0, 0, 255));
    EXPECT_THAT(pixelOf(*image, 34, 30), ElementsAre(255, 0, 0, 255));
    EXPECT_THAT(pixelOf(*image, 20, 30), ElementsAre(0, 0, 0, 255)) << "within the border";
    EXPECT_THAT(pixelOf(*image, 67, 59), ElementsAre(0, 0, 0, 255));
}

TEST(PGSImage, BlendsByAlpha) {
    const auto image = PGSOCR::image(eventWith({10, 10, Bytes(100, 1)}, 0x80C86400));
    EXPECT_THAT(pixelOf(*image, 34, 34), ElementsAre(0, 100 * 128 / 255, 200 * 128 / 255, 255));
    const auto clear = PGSOCR::image(eventWith({10, 10, Bytes(100, 1)}, 0x00FFFFFF));
    EXPECT_THAT(pixelOf(*clear, 34, 34), ElementsAre(0, 0, 0, 255));
}

TEST(PGSImage, HoldsAllObjectsAtTheirPlaces) {
    PGSParser::Event event = eventWith({10, 10, Bytes(100, 1)}, 0xFFFFFFFF);
    event.objects.push_back({.id = 3, .x = 150, .y = 20});
    event.objects.push_back({.id = 9, .x = 5000, .y = 5000});  // has no picture
    const auto image = PGSOCR::image(event);
    EXPECT_EQ(image->width, (110 + 24) * 2);
    EXPECT_EQ(image->height, (60 + 24) * 2);
    EXPECT_THAT(pixelOf(*image, 2 * 17, 2 * 67), ElementsAre(255, 255, 255, 255));
    EXPECT_THAT(pixelOf(*image, 2 * 117, 2 * 17), ElementsAre(255, 255, 255, 255));
    EXPECT_THAT(pixelOf(*image, 2 * 17, 2 * 17), ElementsAre(0, 0, 0, 255));
}

TEST(PGSImage, OfAnEventWithoutPicturesIsNothing) {
    EXPECT_EQ(PGSOCR::image({}), std::nullopt);
    PGSParser::Event lying = eventWith({10, 10, Bytes(99, 1)}, 0xFFFFFFFF);
    EXPECT_EQ(PGSOCR::image(lying), std::nullopt) << "fewer pixels than it says";
}

TEST(PGSImage, BeyondAnyScreenIsNothing) {
    EXPECT_EQ(PGSOCR::image(eventWith({8000, 3000, Bytes(24'000'000, 1)}, 0xFFFFFFFF)),
              std::nullopt);
}

TEST(PGSImage, OfAnObjectFarBeyondTheScreenHoldsTheOthers) {
    PGSParser::Event event = eventWith({10, 6, Bytes(60, 1)}, 0xFFFFFFFF);
    event.objects.insert(event.objects.begin() + 1, {.id = 3, .x = 65'000, .y = 65'000});
    event.objects.push_back({.id = 3, .x = 50, .y = 90});
    const auto image = PGSOCR::image(event);
    ASSERT_TRUE(image.has_value());
    EXPECT_EQ(image->width, (10 + 24) * 2);
    EXPECT_EQ(image->height, (26 + 24) * 2);
}

TEST(PGSImage, OfALargeScreenIsLargeEnoughAsItIs) {
    PGSParser::Event event = eventWith({10, 10, Bytes(100, 1)}, 0xFFFFFFFF);
    event.objects.push_back({.id = 3, .x = 3800, .y = 2000});
    const auto image = PGSOCR::image(event);
    EXPECT_EQ(image->width, 3760 + 24);
    EXPECT_EQ(image->height, 1940 + 24);
}

}  // namespace
}  // namespace marlet::test
