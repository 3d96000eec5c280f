#include "app/virtual_run.h"

#include "app/headless.h"
#include "app/model_fixture.h"
#include "foundation/text.h"

namespace marlet::test {
namespace {

using VirtualMap::Entry;
using Entries = std::vector<Entry>;

TEST(VirtualMap, ALineIsAFakeNameAndARealOne) {
    EXPECT_EQ(VirtualMap::parse("a.mkv\tMovies/A.m4v\nb.mkv\tMovies/B.m4v\r\n"),
              (Entries{{"a.mkv", "Movies/A.m4v"}, {"b.mkv", "Movies/B.m4v"}}));
}

TEST(VirtualMap, ALineThatStartsWithAHashAndALineWithOneFieldAreSkipped) {
    EXPECT_TRUE(VirtualMap::parse("#a\tb\n#\tb\nalone\n\n\n").empty());
    EXPECT_EQ(VirtualMap::parse("a#\t#b"), (Entries{{"a#", "#b"}}));
}

TEST(VirtualMap, AByteOrderMarkHidesNeitherAHashNorAName) {
    EXPECT_TRUE(VirtualMap::parse("\xEF\xBB\xBF# fake\treal\n").empty());
    EXPECT_EQ(VirtualMap::parse("\xEF\xBB\xBF"
                                "a\tb"),
              (Entries{{"a", "b"}}));
}

TEST(VirtualMap, AThirdFieldOfOneExpectsToBeAskedAndAnyOtherDoesNot) {
    EXPECT_TRUE(VirtualMap::parse("a\tb\t1")[0].expectAsk);
    EXPECT_TRUE(VirtualMap::parse("a\tb\t1\tmore")[0].expectAsk);
    for (const char* line :
         {"a\tb", "a\tb\t", "a\tb\t0", "a\tb\t11", "a\tb\tyes", "a\tb\t 1", "a\tb\t\t1"})
        EXPECT_FALSE(VirtualMap::parse(line)[0].expectAsk) << line;
}

TEST(VirtualMap, EmptyFieldsAreKept) {
    EXPECT_EQ(VirtualMap::parse("\tb"), (Entries{{"", "b"}}));
    EXPECT_EQ(VirtualMap::parse("a\t"), (Entries{{"a", ""}}));
}

ResolvedFile guessed(std::optional<Guess> guess, bool certain = false) {
    ResolvedFile file;
    file.file.url = "fake.mkv";
    file.guess = std::move(guess);
    file.verdict = certain ? Verdict::certain() : Verdict::needsLook({"why"});
    return file;
}

TEST(ReadingLabel, IsNoneWhenTheFakeNameSaysJustWhatTheRealOneSaysOrNothingIsThere) {
    EXPECT_EQ(Headless::readingLabel({"x", "Alien (1979).m4v"},
                                     guessed(Guess{.title = "Alien", .year = 1979})),
              "READ_NONE");
    EXPECT_EQ(Headless::readingLabel({"x", ""}, guessed({})), "READ_NONE");
}

TEST(ReadingLabel, TellsARightReadingFromAWrongOneAndFromNone) {
    const Entry entry{"x", "Alien (1979).m4v"};
    EXPECT_EQ(Headless::readingLabel(entry, guessed(Guess{.title = "alien", .year = 1980})),
              "READ_OK");
    EXPECT_EQ(Headless::readingLabel(entry, guessed(Guess{.title = "Aliens", .year = 1979})),
              "READ_WRONG");
    EXPECT_EQ(Headless::readingLabel(entry, guessed({})), "READ_WRONG");
}

TEST(ReadingLabel, IsNotAskedForWhereNobodyCouldKnow) {
    EXPECT_EQ(Headless::readingLabel({"x", "Alien (1979).m4v", true}, guessed({})), "n/a");
}

TEST(VirtualText, CountsReadingsGuardsModelsAndOutcomesHighestFirstAndTiesByName) {
    Guess model{.title = "Alien", .year = 1978, .source = Guess::Source::ai};
    model.conflict = "the name says otherwise";
    ResolvedFile asked = guessed(model);
    ResolvedFile sure = guessed(std::nullopt, true);
    const std::string text = Headless::virtualText(
        {{"fake.mkv", "Alien (1979).m4v"}, {"fake.mkv", "x.m4v", true}, {"fake.mkv", "y", true}},
        {asked, sure, guessed({})});
    EXPECT_EQ(text,
              "TOTAL 3\n"
              "n/a 2\n"
              "AI_GUARD_FLAGGED 1\n"
              "AI_READING_USED 1\n"
              "ASKED_CORRECTLY 1\n"
              "ASKED_NO_MATCH 1\n"
              "READ_OK 1\n"
              "WRONG_CERTAIN(should ask) 1\n"
              "\n"
              "ASKED_NO_MATCH\tfake.mkv\ttruth: Alien (1979)\tgot: -\t[ai] Alien (1978)\twhy\n"
              "WRONG_CERTAIN(should ask)\tfake.mkv\ttruth: x (0)\tgot: -\t[rules] -\t\n"
              "ASKED_CORRECTLY\tfake.mkv\ttruth: y (0)\tgot: -\t[rules] -\twhy");
}

TEST(VirtualText, ANameWithoutAResultWasLeftToThePersonAndTakesNobodyElses) {
    ResolvedFile known = guessed(Guess{.title = "Alien", .year = 1979});
    known.file.url = "b.mkv";
    const std::string text = Headless::virtualText({{"a.mkv", "Aliens (1986).m4v"},
                                                    {"b.mkv", "Alien (1979).m4v"},
                                                    {"c.mkv", "Alien (1979).m4v", true},
                                                    {"b.mkv", "Alien (1979).m4v"}},
                                                   {known});
    EXPECT_THAT(
        text, testing::EndsWith(
                  "\nASKED_NO_MATCH\ta.mkv\ttruth: Aliens (1986)\tgot: -\t[rules] -\t\n"
                  "ASKED_NO_MATCH\tb.mkv\ttruth: Alien (1979)\tgot: -\t[rules] Alien (1979)\twhy\n"
                  "ASKED_CORRECTLY\tc.mkv\ttruth: Alien (1979)\tgot: -\t[rules] -\t\n"
                  "ASKED_NO_MATCH\tb.mkv\ttruth: Alien (1979)\tgot: -\t[rules] -\t"));
}

class VirtualRun : public ModelTest {
protected:
    VirtualRun() : root_("MARLET_TEST_LIBRARY", library.path().string() + "/") {}
    std::string run(const std::string& map, bool expected = true) {
        testing::internal::CaptureStdout();
        const bool isDone = Async::wait(
            Headless::runVirtual(library.write("names.map", std::string_view(map)), report_));
        EXPECT_EQ(isDone, expected);
        return testing::internal::GetCapturedStdout();
    }
    ScopedEnv root_;
    std::optional<std::filesystem::path> report_;
};

TEST_F(VirtualRun, JudgesTheFakeNamesInTheOrderOfTheMapAndAsksTmdbAlone) {
    file("TV Shows/The Tin Observatory/Season 1/01 First Light.mp4");
    report_ = library / "scored.txt";
    const std::string out =
        run("# fake\treal\n"
            "qqqq zzzz.mkv\tMovies/Charade (1963).mp4\t1\n"
            "Charade.1963.1080p.WEB.x264-GRP.mkv\tMovies/Charade (1963).mp4\n"
            "tin.observatory.s01e01.first.light.mkv\t"
            "TV Shows/The Tin Observatory/Season 1/01 First Light.mp4\n");
    const auto lines = Text::split(out, '\n');
    ASSERT_GT(lines.size(), 4u) << out;
    EXPECT_EQ(lines[0], "TOTAL 3");
    const std::size_t gap = out.find("\n\n");
    ASSERT_NE(gap, std::string::npos);
    const auto rows = Text::words(out.substr(gap), '\n');
    ASSERT_EQ(rows.size(), 3u);
    EXPECT_THAT(rows[0], testing::StartsWith("ASKED_CORRECTLY\tqqqq zzzz.mkv\t"));
    EXPECT_THAT(rows[1], testing::HasSubstr("\tCharade.1963.1080p.WEB.x264-GRP.mkv\ttruth: Charade "
                                            "(1963)\tgot: Charade (1963) id"));
    EXPECT_THAT(rows[1], testing::HasSubstr("\t[rules] Charade (1963)\t"));
    EXPECT_THAT(rows[2], testing::HasSubstr("\ttruth: The Tin Observatory S1E1 First Light\t"));
    EXPECT_EQ(textOf(readFile(*report_)) + "\n", out);
    EXPECT_TRUE(server.log("/itunes/").empty());
    EXPECT_TRUE(server.log("/uts/").empty());
}

TEST_F(VirtualRun, AMapThatCannotBeReadEndsTheMode) {
    EXPECT_EQ(run("a\tb\n\xff", false), "can't read map\n") << "not UTF-8";
    testing::internal::CaptureStdout();
    EXPECT_FALSE(Async::wait(Headless::runVirtual(library / "none.map", {})));
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "can't read map\n");
}

TEST_F(VirtualRun, AnEmptyMapHasATotalOfNone) {
    EXPECT_EQ(run("# nothing\n"), "TOTAL 0\n\n");
}

}  // namespace
}  // namespace marlet::test
