// Chapters of a QuickTime film, and text that is none.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "convert/quicktime_copy.h"
#include "mp4/box.h"
#include "mp4/summary.h"
#include "support/box_builder.h"
#include "support/media.h"

namespace marlet::test {
namespace {

namespace fs = std::filesystem;
using Status = WriteOutcome::Status;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

constexpr const char* sameChapters =
    "CHAPTER01=00:00:00.000\nCHAPTER01NAME=One\nCHAPTER02=00:00:01.250\nCHAPTER02NAME=Zwei Ä\n";

TEST(QuickTimeCopy, ChaptersAreCarriedOverAsAFileOfThem) {
    Copy film(chapteredMOV());
    film.useTool("exit 1");
    const std::string arguments = film.arguments();
    EXPECT_THAT(arguments, HasSubstr("/source.mov#2\n-chap\n"));
    EXPECT_THAT(arguments, Not(HasSubstr("/source.mov#3")));
    EXPECT_LT(arguments.find("-chap\n"), arguments.find("-inter\n"));
}

TEST(QuickTimeCopy, ChaptersAreThereAsAListAndAsTextOfThePicture) {
    Copy film(chapteredMOV());
    expectDone(film);
    const fs::path made = film.output() / "Movie.m4v";
    EXPECT_EQ(probeValue(made, "chapter=start_time:chapter_tags=title"),
              "0.000000\nOne\n1.250000\nZwei Ä");
    const MP4Summary summary = parseSummary(loadMoov(made), made, Detail::Yes);
    ASSERT_EQ(summary.chpl.size(), 2U);
    EXPECT_EQ(summary.chpl[1], (Chapter{1250, "Zwei Ä"}));
    ASSERT_EQ(summary.tracks.size(), 3U);
    EXPECT_THAT(summary.tracks[0].chapRefs, ElementsAre(summary.tracks[2].id));
}

TEST(QuickTimeCopy, ChaptersMayComeAsAListAlone) {
    // As GPAC's tool writes them: no track of text.
    Copy film(chapteredMOV());
    const TempFolder folder;
    const fs::path both =
        folder.write("both.mp4", builtOf(chapteredMOV(), {1, 2}, 500, sameChapters));
    runTool({builtProgram("marlet-mux").string(), "-tmp", folder.path().string(), "-inter", "500",
             "-moovpad", "9000", "-rem", "3", both.string(), "-out",
             (folder / "list.mp4").string()});
    film.toolMakes({{0, readFile(folder / "list.mp4")}});
    expectDone(film);
    EXPECT_EQ(packetHashes(film.output() / "Movie.m4v").size(), 2U);
}

TEST(QuickTimeCopy, ChaptersOfAListAloneAreCarriedOver) {
    // The track of text isn't named any more: it is text like any other.
    Bytes film = chapteredMOV();
    const Bytes code = bytesOf("chap");
    for (auto at = film.begin();
         (at = std::search(at, film.end(), code.begin(), code.end())) != film.end();)
        *at++ = 'x';
    Copy copy(film);
    expectDone(copy);
    const fs::path made = copy.output() / "Movie.m4v";
    const MP4Summary summary = parseSummary(loadMoov(made), made, Detail::Yes);
    EXPECT_EQ(summary.tracks.size(), 4U);
    EXPECT_EQ(summary.chpl.size(), 2U);
}

TEST(QuickTimeCopy, ChaptersThatWereLostAreNotSaved) {
    Copy film(chapteredMOV());
    film.toolMakes({{0, builtOf(chapteredMOV(), {1, 2})}});
    expectFailure(film, "verification failed: chapters were not carried over");
}

TEST(QuickTimeCopy, ChaptersOfAnotherCountTitleOrStartAreNotSaved) {
    const std::string sentence =
        "verification failed: chapter titles or times differ from the original";
    for (const char* other :
         {"CHAPTER01=00:00:00.000\nCHAPTER01NAME=One\n",
          "CHAPTER01=00:00:00.000\nCHAPTER01NAME=One\nCHAPTER02=00:00:01.250\nCHAPTER02NAME=Zwo\n",
          "CHAPTER01=00:00:00.000\nCHAPTER01NAME=One\nCHAPTER02=00:00:01.261\nCHAPTER02NAME=Zwei "
          "Ä\n"}) {
        Copy film(chapteredMOV());
        film.toolMakes({{0, builtOf(chapteredMOV(), {1, 2}, 500, other)}});
        expectFailure(film, sentence);
    }
    Copy film(chapteredMOV());
    film.toolMakes({{0, builtOf(chapteredMOV(), {1, 2}, 500,
                                "CHAPTER01=00:00:00.000\nCHAPTER01NAME=One\n"
                                "CHAPTER02=00:00:01.259\nCHAPTER02NAME=Zwei Ä\n")}});
    expectDone(film);
}

TEST(QuickTimeCopy, AnotherTrackCannotHideAsChapters) {
    Copy film(chapteredMOV());
    film.toolMakes({{0, builtOf(chapteredMOV(), {1}, 500, sameChapters)}});
    expectFailure(film, "verification failed: track count differs (2 vs 1)");
}

TEST(QuickTimeCopy, TextThatIsNoChapterIsCopied) {
    const TempFolder folder;
    const fs::path lines =
        folder.write("s.srt", std::string_view("1\n00:00:00,500 --> 00:00:01,500\nHello\n"));
    Copy film(movFilm(avc({"-map", "0", "-map", "1", "-map", "3", "-c:a", "aac", "-c:s", "mov_text",
                           "-metadata:s:s:0", "language=eng"}),
                      lines.string()));
    expectDone(film);
    EXPECT_EQ(packetHashes(film.output() / "Movie.m4v").size(), 3U);
    EXPECT_EQ(packetHashes(film.output() / "Movie.m4v"), packetHashes(film.request.source));
}

}  // namespace
}  // namespace marlet::test
