// Films with the picture subtitles of Blu-ray discs, put together by mkvmerge, become M4Vs with
// text through the real program, with each kind of media tool.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "support/media.h"
#include "support/subtitle_pictures.h"
#include "system/conversion_run.h"
#include "system/film_readers.h"

namespace marlet::test {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;

constexpr pgs::Plane plane{1920, 1080};

pgs::Placed drawn(const std::string& text, bool forced = false) {
    pgs::Placed placed = renderLines(text, {}, plane.width, plane.height);
    placed.forced = forced;
    return placed;
}
pgs::Placed atTheTop(pgs::Placed placed) {
    placed.y = 60;
    return placed;
}
/// Nothing to be seen.
pgs::Placed blank() {
    return {.picture = {300, 80, Bytes(300 * 80 * 4)}, .x = 700, .y = 900};
}

struct Subtitles {
    std::string language;
    std::vector<pgs::Line> lines;
};

struct Made {
    std::string language, name;
    bool isDefault = false;
    std::string srt;
};

class PictureSubtitles : public testing::TestWithParam<Bundle::Tools> {
protected:
    /// Eight seconds of picture, sound in these languages, and the picture subtitles.
    void makeFilm(const std::vector<std::string>& sounds, const std::vector<Subtitles>& subtitles) {
        const TempFolder parts;
        const auto part = [&](const std::string& name) { return (parts / name).string(); };
        ffmpeg({"-f", "lavfi", "-i", "testsrc=size=64x36:rate=25:duration=8", "-c:v", "libx264",
                "-pix_fmt", "yuv420p", part("v.mp4")});
        ffmpeg({"-f", "lavfi", "-i", "sine=500:duration=8:sample_rate=48000", "-ac", "2", "-c:a",
                "aac", part("a.aac")});
        std::vector<std::string> arguments{part("v.mp4")};
        for (const std::string& sound : sounds)
            arguments.insert(arguments.end(), {"--language", "0:" + sound, part("a.aac")});
        for (const Subtitles& each : subtitles) {
            const fs::path sup = parts.write(std::to_string(arguments.size()) + ".sup",
                                             pgs::sup(pgs::stream(each.lines, plane)));
            arguments.insert(arguments.end(), {"--language", "0:" + each.language, sup.string()});
        }
        mkvmerge(film_.source(), arguments);
    }

    /// Converts it, with subtitles of these languages.
    std::string convert(const std::vector<std::string>& languages) {
        return film_.convertKeeping(languages).output;
    }

    static std::vector<Made> made(const fs::path& file) {
        std::vector<Made> all;
        for (const Stream& stream : streamsOf(file, "s"))
            all.push_back({stream.language, stream.name, stream.isDefault,
                           shownLines(file, "s:" + std::to_string(all.size()))});
        return all;
    }

    ConversionRun film_{GetParam()};
    const fs::path new_ = film_.made();
};

TEST_P(PictureSubtitles, OfFourLanguagesBecomeTextWithTheirTimes) {
    makeFilm({"eng"}, {{"eng",
                        {{1000, 2500, {drawn("I think it's him.")}},
                         {3000, 5000, {drawn("- Who's there?\n- Only me.")}}}},
                       {"fre", {{1000, 2500, {drawn("Où étais-tu, François ?")}}}},
                       {"ger", {{1200, 2600, {drawn("Süßes oder Saures?")}}}},
                       {"spa", {{1500, 3250, {drawn("¿Quién habló del niño?")}}}}});
    const std::string told = convert({"English", "French", "German", "Spanish"});
    ASSERT_TRUE(fs::exists(new_)) << told;
    const auto subtitles = made(new_);
    ASSERT_EQ(subtitles.size(), 4U) << told;
    EXPECT_EQ(subtitles[0].language, "eng");
    EXPECT_EQ(subtitles[0].srt,
              "1\n00:00:01,000 --> 00:00:02,500\nI think it's him.\n\n"
              "2\n00:00:03,000 --> 00:00:05,000\n- Who's there?\n- Only me.\n\n");
    EXPECT_EQ(subtitles[1].language, "fre");
    EXPECT_EQ(subtitles[1].srt, "1\n00:00:01,000 --> 00:00:02,500\nOù étais-tu, François ?\n\n");
    EXPECT_EQ(subtitles[2].language, "ger");
    EXPECT_EQ(subtitles[2].srt, "1\n00:00:01,200 --> 00:00:02,600\nSüßes oder Saures?\n\n");
    EXPECT_EQ(subtitles[3].language, "spa");
    EXPECT_EQ(subtitles[3].srt, "1\n00:00:01,500 --> 00:00:03,250\n¿Quién habló del niño?\n\n");
    for (const Made& each : subtitles) EXPECT_FALSE(each.isDefault) << each.name;
}

TEST_P(PictureSubtitles, ThatOverlapBecomeWhatIsOnTheScreenTogether) {
    makeFilm(
        {"eng"},
        {{"eng",
          {{1000, 3000, {drawn("Down here")}}, {2000, 4000, {atTheTop(drawn("Far above"))}}}}});
    const std::string told = convert({"English"});
    ASSERT_TRUE(fs::exists(new_)) << told;
    ASSERT_EQ(made(new_).size(), 1U);
    EXPECT_EQ(made(new_)[0].srt,
              "1\n00:00:01,000 --> 00:00:02,000\nDown here\n\n"
              "2\n00:00:02,000 --> 00:00:03,000\nFar above\nDown here\n\n"
              "3\n00:00:03,000 --> 00:00:04,000\nFar above\n\n");
}

TEST_P(PictureSubtitles, OfWhichSomeAreForcedGiveThoseATrackOfTheirOwn) {
    makeFilm({"eng"}, {{"eng",
                        {{1000, 2000, {drawn("Of everyone")}},
                         {3000, 4000, {drawn("Of strangers", true)}},
                         {5000, 6000, {drawn("Of everyone again")}}}}});
    const std::string told = convert({"English"});
    ASSERT_TRUE(fs::exists(new_)) << told;
    const auto subtitles = made(new_);
    ASSERT_EQ(subtitles.size(), 2U) << told;
    EXPECT_EQ(subtitles[0].name, "English");
    EXPECT_FALSE(subtitles[0].isDefault);
    EXPECT_EQ(subtitles[0].srt,
              "1\n00:00:01,000 --> 00:00:02,000\nOf everyone\n\n"
              "2\n00:00:03,000 --> 00:00:04,000\nOf strangers\n\n"
              "3\n00:00:05,000 --> 00:00:06,000\nOf everyone again\n\n");
    EXPECT_EQ(subtitles[1].name, "English · Foreign parts only");
    EXPECT_TRUE(subtitles[1].isDefault) << "forced lines show by themselves";
    EXPECT_EQ(subtitles[1].srt, "1\n00:00:03,000 --> 00:00:04,000\nOf strangers\n\n");
}

TEST_P(PictureSubtitles, OfWhichAllAreForcedAreForeignPartsOnly) {
    makeFilm({"eng"}, {{"eng",
                        {{1000, 2000, {drawn("Of strangers", true)}},
                         {3000, 4000, {drawn("Of others", true)}}}}});
    const std::string told = convert({"English"});
    ASSERT_TRUE(fs::exists(new_)) << told;
    const auto subtitles = made(new_);
    ASSERT_EQ(subtitles.size(), 1U) << told;
    EXPECT_EQ(subtitles[0].name, "English · Foreign parts only");
    EXPECT_TRUE(subtitles[0].isDefault);
    EXPECT_EQ(subtitles[0].srt,
              "1\n00:00:01,000 --> 00:00:02,000\nOf strangers\n\n"
              "2\n00:00:03,000 --> 00:00:04,000\nOf others\n\n");
}

TEST_P(PictureSubtitles, ThatCannotBeReadLeaveNotesAndTheFilmIsDelivered) {
    makeFilm(
        {"eng"},
        {{"eng", {{1000, 2000, {drawn("Read me")}}}},
         {"heb", {{1000, 2000, {drawn("abc")}}}},
         {"ger",
          {{1000, 2000, {drawn("Ein Satz")}}, {2100, 3000, {blank()}}, {3100, 4000, {blank()}}}}});
    const std::string told = convert({"English", "Hebrew", "German"});
    ASSERT_TRUE(fs::exists(new_)) << told;
    EXPECT_THAT(told, HasSubstr("Hebrew: Apple's text recognition doesn't support Hebrew yet; "
                                "these picture subtitles are left out"));
    EXPECT_THAT(told, HasSubstr("German: only 1 of 3 picture subtitles could be read as text; left "
                                "out"));
    const auto subtitles = made(new_);
    ASSERT_EQ(subtitles.size(), 1U);
    EXPECT_EQ(subtitles[0].srt, "1\n00:00:01,000 --> 00:00:02,000\nRead me\n\n");
}

TEST_P(PictureSubtitles, OfAFilmAreFoundAndReadByThePlainCommand) {
    makeFilm(
        {"eng"},
        {{"eng",
          {{1000, 2000, {drawn("Of everyone")}}, {3000, 4000, {drawn("Of strangers", true)}}}}});
    const auto result = film_.convert();
    ASSERT_EQ(result.lines("RESULT done: Charade").size(), 1U) << result.output;
    const auto subtitles = made(new_);
    ASSERT_EQ(subtitles.size(), 2U) << result.output;
    EXPECT_THAT(subtitles[0].srt, HasSubstr("Of everyone"));
    EXPECT_EQ(subtitles[1].srt, "1\n00:00:03,000 --> 00:00:04,000\nOf strangers\n\n");
}

INSTANTIATE_TEST_SUITE_P(Own, PictureSubtitles, testing::Values(Bundle::Tools::own));
INSTANTIATE_TEST_SUITE_P(Gpac, PictureSubtitles, testing::Values(Bundle::Tools::gpac));

}  // namespace
}  // namespace marlet::test
