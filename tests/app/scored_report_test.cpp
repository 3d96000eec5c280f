#include "app/scored_report.h"

#include "app/headless.h"
#include "app/model_fixture.h"
#include "foundation/text.h"

namespace marlet::test {
namespace {

using Headless::scoredClass;

ResolvedFile judged(bool certain, bool matched) {
    ResolvedFile file;
    file.verdict = certain ? Verdict::certain() : Verdict::needsLook({"why"});
    if (matched) file.match = Match{};
    return file;
}

TEST(ScoredClass, TellsWhetherTheAnswerWasRightAndWhetherThePersonWasAsked) {
    EXPECT_EQ(scoredClass(judged(true, true), true), "RIGHT_NO_ASK");
    EXPECT_EQ(scoredClass(judged(true, true), false), "WRONG_CERTAIN");
    EXPECT_EQ(scoredClass(judged(false, true), true), "RIGHT_BUT_ASKED");
    EXPECT_EQ(scoredClass(judged(false, true), false), "ASKED_WRONG_GUESS");
    EXPECT_EQ(scoredClass(judged(false, false), false), "ASKED_NO_MATCH");
}

class ScoredReport : public ModelTest {
protected:
    ScoredReport() : root_("MARLET_TEST_LIBRARY", library.path().string() + "/") {}
    ScopedEnv root_;
};

TEST_F(ScoredReport, CountsTheClassesInTheirOrderThenGivesARowForEachFile) {
    add({file("TV Shows/The Tin Observatory/Season 1/01 First Light.mp4"),
         file("Movies/Charade (1963).mp4"), file("Movies/qqqq zzzz.mp4"),
         file("Movies/Sintel (1963).mp4")});
    const auto lines = Text::split(Headless::scoredReport(*model), '\n');
    ASSERT_GE(lines.size(), 6u);
    EXPECT_EQ(lines[0], "TOTAL 4");
    EXPECT_EQ(lines[1], "ASKED_NO_MATCH 1");
    EXPECT_EQ(lines[2], "ASKED_WRONG_GUESS 1");
    EXPECT_EQ(lines[3], "RIGHT_BUT_ASKED 1");
    EXPECT_EQ(lines[4], "RIGHT_NO_ASK 1");
    EXPECT_EQ(lines[5], "");
    EXPECT_EQ(lines.size(), 10u);
    EXPECT_THAT(lines, testing::Contains(testing::AllOf(
                           testing::StartsWith("RIGHT_BUT_ASKED\tMovies/Charade (1963).mp4\t"
                                               "truth: Charade (1963)\tgot: Charade (1963) id"),
                           testing::EndsWith("\t\tCouldn't compare the length"))));
    EXPECT_THAT(lines,
                testing::Contains(testing::StartsWith(
                    "ASKED_NO_MATCH\tMovies/qqqq zzzz.mp4\ttruth: qqqq zzzz (0)\tgot: -\t\t")));
    EXPECT_THAT(lines,
                testing::Contains(testing::AllOf(
                    testing::StartsWith("RIGHT_NO_ASK\tTV Shows/The Tin Observatory/"),
                    testing::HasSubstr("\ttruth: The Tin Observatory S1E1 First Light\tgot: The "
                                       "Tin Observatory (2017) id"),
                    testing::HasSubstr(" S1E1 First Light\t"))));
}

TEST_F(ScoredReport, WithoutFilesItIsTheTotalAlone) {
    EXPECT_EQ(Headless::scoredReport(*model), "TOTAL 0\n");
}

TEST_F(ScoredReport, OneThatCannotBeWrittenIsPrintedAllTheSame) {
    testing::internal::CaptureStdout();
    EXPECT_FALSE(Headless::writeScoredReport(library / "no such folder" / "r.txt", *model));
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "TOTAL 0\n\n");
    testing::internal::CaptureStdout();
    EXPECT_TRUE(Headless::writeScoredReport(library / "r.txt", *model));
    testing::internal::GetCapturedStdout();
    EXPECT_EQ(textOf(readFile(library / "r.txt")), "TOTAL 0\n");
}

}  // namespace
}  // namespace marlet::test
