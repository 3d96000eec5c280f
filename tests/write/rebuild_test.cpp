#include "write/rebuild.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "foundation/file_ops.h"
#include "foundation/tool_sandbox.h"
#include "mp4/sound_layout.h"
#include "mp4/summary.h"
#include "support/box_builder.h"
#include "verify/rebuild_verifier.h"
#include "write/film_job.h"
#include "write/restore_points.h"

namespace marlet::test {

namespace {

namespace fs = std::filesystem;
using testing::Contains;
using testing::ContainsRegex;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;
using Shape = FilmJob::Shape;
using Status = WriteOutcome::Status;

/// A job on a film whose sound lies in stretches of 1.5 s.
class RebuildTest : public testing::Test {
protected:
    RebuildTest() { job_.storeSoundTogether(15); }

    void expectUntouched(const WriteOutcome& outcome, Status status, const std::string& message) {
        EXPECT_EQ(name(outcome.status), name(status));
        EXPECT_EQ(outcome.message, message);
        EXPECT_EQ(job_.now(), job_.original());
        EXPECT_TRUE(job_.isTidy());
        EXPECT_FALSE(RunControl::criticalActive());
    }
    static Bytes changedIn(Bytes bytes, std::string_view what, std::string_view with) {
        const std::string text = textOf(bytes);
        const std::size_t at = text.find(what);
        EXPECT_NE(at, std::string::npos);
        return patched(std::move(bytes), at, viewOf(with));
    }

    FilmJob job_;
};

// --- the good way --------------------------------------------------------------------------------

TEST_F(RebuildTest, ALongStretchOfSoundIsLaidOutAnewInTheSameFile) {
    job_.toolMakes({{0, buildMovie(laidOut(5))}});
    const auto inode = Sys::stat(job_.file())->inode;
    const WriteOutcome outcome = job_.write();
    EXPECT_EQ(outcome.message, "Details written; sound layout fixed (1.50 s to 0.50 s)");
    EXPECT_EQ(name(outcome.status), "done");
    EXPECT_TRUE(outcome.rebuilt);
    EXPECT_EQ(outcome.before, 1.5);
    EXPECT_EQ(outcome.after, 0.5);
    EXPECT_EQ(outcome.size, FileOps::size(job_.file()));
    EXPECT_EQ(Sys::stat(job_.file())->inode, inode);
    EXPECT_EQ(measureInterleave(job_.file()), 0.5);
    EXPECT_TRUE(job_.isTidy());
    EXPECT_TRUE(RestorePoints::exists(job_.file()));
}

TEST_F(RebuildTest, TheLabelsComeInOrderAndTheFractionsNeverFall) {
    job_.toolMakes({{0, buildMovie(laidOut(5))}});
    job_.write();
    EXPECT_THAT(
        job_.labels,
        ElementsAre("Reading the file", "Checking the copy", "Rebuilding for Apple TV", "Verifying",
                    "Checked", "Writing the rebuilt file", "Comparing the result", "Done"));
    EXPECT_TRUE(std::ranges::is_sorted(job_.fractions));
}

TEST_F(RebuildTest, FinerSlicesAreTriedUntilTheSoundIsUnderTheLimit) {
    job_.toolMakes({{500, buildMovie(laidOut(12))}, {0, buildMovie(laidOut(4))}});
    const WriteOutcome outcome = job_.write();
    EXPECT_EQ(name(outcome.status), "done") << outcome.message;
    EXPECT_THAT(outcome.changes,
                Contains("sound interleaved in 250 ms slices to stay under the limit"));
    EXPECT_THAT(job_.labels, Contains("Rebuilding with finer sound slices (250 ms)"));
    EXPECT_THAT(job_.labels, Not(Contains("Rebuilding with finer sound slices (100 ms)")));
}

TEST_F(RebuildTest, AnAttemptBeginsWithNothingOfTheOneBefore) {
    // The space that is asked for at the start holds one result beside the private copy.
    job_.useTool(
        "work=${out%/*}; ls \"$work\" \"$work/tmp\" >&2; [ $slice = 500 ] || exit 7\n"
        ": > \"$work/left\"; : > \"$work/tmp/left\"; cat \"$in\" > \"$out\"");
    std::vector<std::string> names;
    job_.at("Rebuilding with finer sound slices (250 ms)", [&] {
        for (const auto& entry : fs::directory_iterator(job_.workFolder()))
            names.push_back(entry.path().filename().string());
    });
    const WriteOutcome outcome = job_.write();
    EXPECT_THAT(names, testing::UnorderedElementsAre(".lock", "Film.mp4", "rebuild"));
    EXPECT_THAT(outcome.message, StartsWith("MP4Box failed (exit 7): "));
    EXPECT_THAT(outcome.message, Not(HasSubstr("left")));
    EXPECT_EQ(job_.now(), job_.original());
    EXPECT_TRUE(job_.isTidy());
}

TEST_F(RebuildTest, TheFirstSliceNeedsNoNote) {
    job_.toolMakes({{0, buildMovie(laidOut(5))}});
    EXPECT_THAT(job_.write().changes, Not(Contains(StartsWith("sound interleaved"))));
}

TEST_F(RebuildTest, DatesAndLanguagesThatTheToolRewroteAreTheOriginalsAgain) {
    Movie movie = laidOut(5);
    movie.tracks[1].language = "fre";
    job_.toolMakes({{0, buildMovie(movie)}});
    const WriteOutcome outcome = job_.write();
    EXPECT_EQ(name(outcome.status), "done") << outcome.message;
    EXPECT_THAT(outcome.changes, Contains(HasSubstr("restored language (")));
    EXPECT_EQ(parseSummary(loadMoov(job_.file()), Detail::Yes).tracks.at(1).language, "und");
}

TEST_F(RebuildTest, TagsThatTheToolChangedAreCarriedOverUnchanged) {
    Movie movie = laidOut(5);
    movie.tags[0] = textItem("©nam", "The tool's own idea");
    job_.toolMakes({{0, buildMovie(movie)}});
    // Putting back what is there already changes nothing about the tags.
    const auto before = IlstEditor::currentIlst(job_.file());
    RestorePoints::saveIfMissing(job_.file(), before, FileOps::size(job_.file()));
    const WriteOutcome outcome = job_.restore();
    EXPECT_EQ(name(outcome.status), "done") << outcome.message;
    EXPECT_EQ(IlstEditor::currentIlst(job_.file()), before);
}

TEST_F(RebuildTest, TheAccountTagsSurvive) {
    job_.toolMakes({{0, buildMovie(laidOut(5))}});
    job_.write();
    EXPECT_THAT(IlstEditor::currentIlst(job_.file()),
                Contains(testing::Field(&Atom::name, "apID")));
}

TEST_F(RebuildTest, TheOriginalDetailsCanBePutBackIntoARebuiltFile) {
    job_.toolMakes({{0, buildMovie(laidOut(5))}});
    const auto before = IlstEditor::currentIlst(job_.file());
    job_.write();
    const WriteOutcome outcome = job_.restore();
    EXPECT_EQ(outcome.message, "Original details restored");
    EXPECT_EQ(IlstEditor::currentIlst(job_.file()), before);
    EXPECT_EQ(measureInterleave(job_.file()), 0.5);
}

TEST_F(RebuildTest, ARestoreOfAFileOverTheLimitIsFixedToo) {
    job_.request.fixLayout = false;
    RestorePoints::saveIfMissing(job_.file(), IlstEditor::currentIlst(job_.file()),
                                 FileOps::size(job_.file()));
    job_.request.fixLayout = true;
    job_.toolMakes({{0, buildMovie(laidOut(5))}});
    EXPECT_EQ(job_.restore().message,
              "Original details restored; sound layout fixed (1.50 s to 0.50 s)");
}

TEST(Rebuild, AFileWithoutRoomIsRebuiltWithFixForAppleTVOn) {
    FilmJob job(Shape::FrontWithoutRoom);
    job.toolMakes({{0, buildMovie(laidOut(1))}});
    const WriteOutcome outcome = job.write();
    EXPECT_EQ(name(outcome.status), "done") << outcome.message;
    EXPECT_TRUE(outcome.rebuilt);
}

TEST(Rebuild, AFileWithoutRoomIsRebuiltForACopyAndStaysAsItIs) {
    FilmJob job(Shape::FrontWithoutRoom);
    job.toolMakes({{0, buildMovie(laidOut(1))}});
    job.request.fixLayout = false;
    job.request.copyTo = job.file().parent_path() / "copies";
    const WriteOutcome outcome = job.write();
    EXPECT_EQ(name(outcome.status), "done") << outcome.message;
    EXPECT_EQ(outcome.output, *job.request.copyTo / "Film (Marlet).mp4");
    EXPECT_EQ(job.now(), job.original());
}

TEST(Rebuild, TheToolThatStandsInForMP4BoxDoesTheWholeJob) {
    FilmJob job;
    job.storeSoundTogether(40);
    job.useOwnTool();
    const WriteOutcome outcome = job.write();
    EXPECT_EQ(name(outcome.status), "done") << outcome.message;
    EXPECT_LE(measureInterleave(job.file()), 1.0);
}

TEST(Rebuild, AnOriginalNamedLikeTheWorkFilesIsRebuiltAsWell) {
    for (const char* name : {"candidate.rebuilt.mp4", "candidate.mp4", "made.mp4"}) {
        FilmJob job(Shape::FrontWithRoom, name);
        job.storeSoundTogether(15);
        job.toolMakes({{0, buildMovie(laidOut(5))}});
        const WriteOutcome outcome = job.write();
        EXPECT_EQ(marlet::name(outcome.status), "done") << name << ": " << outcome.message;
    }
}

// --- what the tool does wrong --------------------------------------------------------------------

TEST_F(RebuildTest, AToolThatFailsIsQuotedWhole) {
    job_.useTool("printf '%500s\\n' x; echo 'no such track'; exit 3");
    const WriteOutcome outcome = job_.write();
    expectUntouched(outcome, Status::failed,
                    "MP4Box failed (exit 3): " + std::string("x\nno such track"));
}

TEST_F(RebuildTest, AToolThatMakesNothingFails) {
    job_.useTool(":");
    expectUntouched(job_.write(), Status::failed, "MP4Box produced no output");
    job_.useTool(": > \"$out\"");
    expectUntouched(job_.write(), Status::failed, "MP4Box produced no output");
}

TEST_F(RebuildTest, AToolThatCanNotBeStartedFailsWithTheSystemsWords) {
    job_.useTool("");
    const fs::path tool = *TagWriter::mp4box();
    writeFile(tool, viewOf("#!/nonexistent/shell\n"));
    const WriteOutcome outcome = job_.write();
    EXPECT_EQ(name(outcome.status), "failed");
    EXPECT_THAT(outcome.message, HasSubstr("No such file or directory"));
    EXPECT_EQ(job_.now(), job_.original());
}

TEST_F(RebuildTest, SoundThatStaysTogetherEvenInTheFinestSlicesIsGivenUp) {
    job_.toolMakes({{0, buildMovie(laidOut(13))}});
    expectUntouched(
        job_.write(), Status::failed,
        "Marlet could not make this file Apple TV-safe: even with the sound stored in 0.5, 0.25 "
        "and 0.1 s slices the longest stretch with sound stored together is still 1.30 s (the "
        "limit is 1.0 s). This usually means the file's sound and picture are not timed together "
        "in the usual way. The original was left untouched.");
    EXPECT_THAT(job_.labels, Contains("Rebuilding with finer sound slices (100 ms)"));
}

TEST_F(RebuildTest, AChangedSampleIsRefused) {
    Bytes made = buildMovie(laidOut(5));
    made.back() ^= 0xFF;
    job_.toolMakes({{0, made}});
    expectUntouched(job_.write(), Status::failed,
                    "verification failed: track 2 (soun mp4a): sample data differs");
}

TEST_F(RebuildTest, AnotherTableIsRefused) {
    Movie movie = laidOut(5);
    movie.tracks[1].durations[7]++;
    job_.toolMakes({{0, buildMovie(movie)}});
    expectUntouched(job_.write(), Status::failed,
                    "verification failed: track 2 (soun mp4a): sample timing differs");
}

TEST_F(RebuildTest, AFileThatIsNoFilmAnyMoreIsRefused) {
    job_.useTool("echo rubbish > \"$out\"");
    const WriteOutcome outcome = job_.write();
    EXPECT_EQ(name(outcome.status), "failed");
    EXPECT_EQ(job_.now(), job_.original());
    EXPECT_TRUE(job_.isTidy());
}

TEST_F(RebuildTest, TheToolCanNotWriteThePrivateCopyNorTheOriginal) {
    if (ToolSandbox::landlockVersion() < 1) GTEST_SKIP() << "this kernel has no Landlock";
    const std::string script = "echo spoiled > '" + job_.file().string() +
                               "' && echo original; echo spoiled > \"$in\" && echo copy; exit 9";
    job_.useTool(script);
    const WriteOutcome outcome = job_.write();
    EXPECT_EQ(job_.now(), job_.original());
    EXPECT_THAT(outcome.message, StartsWith("MP4Box failed (exit 9): "));
    EXPECT_THAT(outcome.message, Not(ContainsRegex("\n(original|copy)")));
}

TEST_F(RebuildTest, AResultThatAProcessOfTheToolsCanStillChangeIsRefused) {
    job_.toolMakes({{0, buildMovie(laidOut(5))}});
    const fs::path tool = *TagWriter::mp4box();
    std::string script = textOf(readFile(tool));
    // In a group of its own it outlives the tool, and it has to have come so far before that ends.
    script +=
        "exec 3<> \"$out\"\nsetsid sh -c ': > \"$1\"; exec sleep 2' sh \"${out%/*}/away\" &\n"
        "while ! [ -e \"${out%/*}/away\" ]; do :; done\n";
    writeFile(tool, viewOf(script));
    expectUntouched(job_.write(), Status::failed,
                    "MP4Box still has the rebuilt file open for writing; left untouched");
}

TEST_F(RebuildTest, ACancelWhileTheToolRunsLeavesTheFileAndNoFolder) {
    job_.useTool("sleep 60");
    job_.at("Rebuilding for Apple TV", [&] { job_.control.cancel(); });
    expectUntouched(job_.write(), Status::cancelled, "cancelled; the file was left untouched");
}

TEST_F(RebuildTest, ATagBlockThatIsNotTheIntendedOneIsRefused) {
    job_.toolMakes({{0, buildMovie(laidOut(5))}});
    // Equal length, so that nothing but the tags differs; allowed as such, but not what was meant.
    job_.at("Verifying", [&] {
        const fs::path candidate = job_.workFolder() / "candidate.mp4";
        writeFile(candidate, changedIn(readFile(candidate), "A much longer", "A much larger"));
    });
    expectUntouched(job_.write(), Status::failed,
                    "the rebuilt file's tags are not exactly the intended ones; left untouched");
}

}  // namespace
}  // namespace marlet::test
