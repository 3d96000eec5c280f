#include "write/tag_writer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>

#include "foundation/file_ops.h"
#include "foundation/paths.h"
#include "foundation/preferences.h"
#include "foundation/run_mode.h"
#include "foundation/work_area.h"
#include "support/box_reader.h"
#include "support/media.h"
#include "write/film_job.h"
#include "write/journal.h"
#include "write/restore_points.h"

namespace marlet::test {

namespace {

namespace fs = std::filesystem;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;
using Shape = FilmJob::Shape;
using Status = WriteOutcome::Status;

constexpr const char* inUse =
    "downloader has this file open for writing (a download or another app); left untouched. Try "
    "again when it has finished.";
constexpr const char* noTool =
    "the media tool (MP4Box) is missing from this copy of Marlet, so the Apple TV fix can't run";

std::string titleOf(const fs::path& file) {
    for (const Atom& atom : IlstEditor::currentIlst(file))
        if (atom.name == "©nam") return IlstEditor::textValue(atom).value_or("");
    return "";
}

bool hasAtom(const fs::path& file, const std::string& name) {
    for (const Atom& atom : IlstEditor::currentIlst(file))
        if (atom.name == name) return true;
    return false;
}

/// The write ended so, said this, and left the file as it was.
void expectUntouched(const FilmJob& job, const WriteOutcome& outcome, Status status,
                     const std::string& message) {
    EXPECT_EQ(name(outcome.status), name(status));
    EXPECT_EQ(outcome.message, message);
    EXPECT_EQ(job.now(), job.original());
    EXPECT_TRUE(job.isTidy());
    EXPECT_FALSE(RunControl::criticalActive());
}

// --- the good way --------------------------------------------------------------------------------

class WritesDetails : public testing::TestWithParam<Shape> {};

TEST_P(WritesDetails, IntoEveryShapeOfFileAndNothingElseChanges) {
    FilmJob job(GetParam());
    const WriteOutcome outcome = job.write();
    ASSERT_EQ(outcome.message, "Details written");
    EXPECT_EQ(outcome.status, Status::done);
    EXPECT_EQ(outcome.output, job.file());
    EXPECT_EQ(outcome.before, 0.1);
    EXPECT_EQ(outcome.after, 0.1);
    EXPECT_FALSE(outcome.rebuilt);
    EXPECT_EQ(outcome.size, FileOps::size(job.file()));
    EXPECT_THAT(outcome.changes, Contains("title: Old → A much longer title than the file had"));
    EXPECT_EQ(titleOf(job.file()), "A much longer title than the file had");
    for (int track : {0, 1})
        EXPECT_EQ(samplesOf(job.now(), track), samplesOf(job.original(), track));
    EXPECT_TRUE(job.isTidy());
    EXPECT_FALSE(RunControl::criticalActive());
}

TEST_P(WritesDetails, AndPutsTheOriginalTagsBack) {
    FilmJob job(GetParam());
    const auto before = IlstEditor::currentIlst(job.file());
    ASSERT_EQ(job.write().status, Status::done);
    const WriteOutcome outcome = job.restore();
    EXPECT_EQ(outcome.message, "Original details restored");
    EXPECT_EQ(outcome.status, Status::done);
    EXPECT_EQ(IlstEditor::currentIlst(job.file()), before);
    EXPECT_TRUE(job.isTidy());
}

INSTANTIATE_TEST_SUITE_P(Shapes, WritesDetails,
                         testing::Values(Shape::FrontWithRoom, Shape::Last, Shape::LastWithRoom));

TEST(TagWriterWrite, ReportsItsStepsInOrder) {
    FilmJob job;
    job.write();
    EXPECT_THAT(job.labels, ElementsAre("Reading the file", "Checking the copy",
                                        "Preparing the new details", "Verifying", "Checked",
                                        "Writing details", "Comparing the result", "Done"));
    EXPECT_TRUE(std::ranges::is_sorted(job.fractions));
    EXPECT_EQ(job.fractions.front(), 0);
    EXPECT_EQ(job.fractions.back(), 1);
    for (double told : {0.34, 0.45, 0.64, 0.7, 0.85}) EXPECT_THAT(job.fractions, Contains(told));
}

TEST(TagWriterWrite, TheSameDetailsTwiceAreDoneBothTimesAndTheFirstRestorePointStays) {
    FilmJob job;
    ASSERT_EQ(job.write().status, Status::done);
    const fs::path saved = RestorePoints::folder(job.file()) / "ilst.bin";
    const Bytes first = readFile(saved);
    const Bytes written = job.now();
    EXPECT_EQ(job.write().status, Status::done);
    EXPECT_EQ(job.now(), written);
    EXPECT_EQ(readFile(saved), first);
}

TEST(TagWriterWrite, TheFileKeepsItsIdentity) {
    FilmJob job;
    const auto before = Sys::stat(job.file())->inode;
    job.write();
    EXPECT_EQ(Sys::stat(job.file())->inode, before);
}

TEST(TagWriterWrite, AFileCalledLikeTheCandidateIsWrittenToo) {
    for (const char* name : {"candidate.mp4", "candidate.M4V", "candidate 2.mp4"}) {
        FilmJob job(Shape::FrontWithRoom, name);
        EXPECT_EQ(job.write().message, "Details written") << name;
    }
}

TEST(TagWriterWrite, NamesThatAreNoTextAndLongNamesAreWritten) {
    for (const std::string& name : {std::string("\xFF\xFE.mp4"), std::string("a\tb\nc.mp4"),
                                    std::string(251, 'n') + ".mp4"}) {
        FilmJob job(Shape::FrontWithRoom, name);
        EXPECT_EQ(job.write().message, "Details written");
        EXPECT_TRUE(job.isTidy());
    }
}

TEST(TagWriterWrite, ALinkToTheFileIsFollowed) {
    FilmJob job;
    const fs::path film = job.file();
    const fs::path link = film.parent_path() / "link.mp4";
    fs::create_symlink(film, link);
    job.request.file = link;
    EXPECT_EQ(job.write().status, Status::done);
    EXPECT_TRUE(fs::is_symlink(link));
    EXPECT_EQ(titleOf(film), "A much longer title than the file had");
}

// --- the gate ------------------------------------------------------------------------------------

TEST(TagWriterWrite, OtherKindsOfFilesAreSkipped) {
    FilmJob mkv(Shape::FrontWithRoom, "Film.mkv");
    expectUntouched(mkv, mkv.write(), Status::skipped,
                    "MKV files can't be tagged in place yet (conversion comes in Phase 3)");
    EXPECT_THAT(mkv.labels, IsEmpty());
    FilmJob bare(Shape::FrontWithRoom, "Film");
    expectUntouched(bare, bare.write(), Status::skipped,
                    " files can't be tagged in place yet (conversion comes in Phase 3)");
}

TEST(TagWriterWrite, ExtensionsAreTakenInAnyCase) {
    for (const char* name : {"Film.MP4", "Film.m4v", "Film.M4v"}) {
        FilmJob job(Shape::FrontWithRoom, name);
        EXPECT_EQ(job.write().status, Status::done) << name;
    }
}

constexpr const char* protectedPlace =
    "This file is in your Media Library and “Allow changes to my Media Library” is off in Settings";

TEST(TagWriterWrite, AFileInTheMediaLibraryFailsBeforeAnyWork) {
    FilmJob job(Shape::FrontWithRoom, "Media Library/Film.mp4");
    expectUntouched(job, job.write(), Status::failed, protectedPlace);
    EXPECT_FALSE(fs::exists(Paths::workDir()));
    // Also for a copy elsewhere.
    job.request.copyTo = job.file().parent_path().parent_path() / "copies";
    expectUntouched(job, job.write(), Status::failed, protectedPlace);
}

TEST(TagWriterWrite, ACopyIntoTheMediaLibraryFails) {
    FilmJob job;
    job.request.copyTo = job.file().parent_path() / "Media Library";
    expectUntouched(job, job.write(), Status::failed, protectedPlace);
    EXPECT_FALSE(fs::exists(*job.request.copyTo));
}

TEST(TagWriterWrite, LeavingTracksOutNeedsAFolder) {
    FilmJob job;
    job.request.dropTracks = {1};
    expectUntouched(job, job.write(), Status::failed, "no output folder for the new file");
}

TEST(TagWriterWrite, TheOutputFolderMayNotBeInTheMediaLibrary) {
    FilmJob job;
    job.request.dropTracks = {1};
    job.request.outputDir = job.file().parent_path() / "Media Library";
    expectUntouched(job, job.write(), Status::failed, protectedPlace);
}

TEST(TagWriterWrite, AFileThatIsGoneOrEmptyFails) {
    FilmJob job;
    fs::remove(job.file());
    EXPECT_EQ(job.write().message, "file is empty or missing");
    job.request.dropTracks = {1};
    job.request.outputDir = job.file().parent_path();
    EXPECT_EQ(job.write().message, "the original can't be read");
    job.request.dropTracks = {};
    writeFile(job.file(), {});
    const WriteOutcome outcome = job.write();
    EXPECT_EQ(outcome.message, "file is empty or missing");
    EXPECT_EQ(outcome.status, Status::failed);
    EXPECT_EQ(outcome.before, std::nullopt);
}

TEST(TagWriterWrite, WhatIsNoFilmFailsInASentence) {
    FilmJob job;
    const Bytes film = job.original();
    for (std::size_t size : {1UL, 7UL, 8UL, 40UL, 200UL, film.size() / 2, film.size() - 1}) {
        writeFile(job.file(), ByteView(film).first(size));
        const Bytes before = job.now();
        const WriteOutcome outcome = job.write();
        EXPECT_EQ(outcome.status, Status::failed) << size;
        EXPECT_NE(outcome.message, "") << size;
        EXPECT_EQ(job.now(), before) << size;
        EXPECT_TRUE(job.isTidy()) << size;
    }
}

TEST(TagWriterWrite, AProgramThatWritesTheFileStopsTheRun) {
    FilmJob job;
    const OtherProgram other(job.file(), OtherProgram::Holds::ForWriting);
    expectUntouched(job, job.write(), Status::stopped, inUse);
}

TEST(TagWriterWrite, AnEarlierWriteThatIsNotFinishedIsNotPutAtRisk) {
    FilmJob job;
    const TempFolder folder;
    const WriteJournal pending{"/films/Other.mp4", folder.write("copy.mp4", "copy"), 4};
    pending.save();
    const WriteOutcome outcome = job.write();
    EXPECT_EQ(outcome.status, Status::stopped);
    EXPECT_EQ(outcome.message,
              "an earlier write to Other.mp4 isn't finished; left untouched. Marlet finishes it "
              "the next time it opens");
    EXPECT_EQ(job.now(), job.original());
    EXPECT_EQ(WriteJournal::load(), pending);
    // A journal that appears later, from another running copy, is left alone as well.
    WriteJournal::remove();
    job.at("Checked", [&] { pending.save(); });
    EXPECT_EQ(job.write().status, Status::stopped);
    EXPECT_EQ(job.now(), job.original());
    EXPECT_EQ(WriteJournal::load(), pending);
    WriteJournal::remove();
}

TEST(TagWriterWrite, AJournalWhoseCopyIsGoneIsNoHindrance) {
    FilmJob job;
    WriteJournal{"/films/Other.mp4", "/nowhere/copy.mp4", 4}.save();
    EXPECT_EQ(job.write().status, Status::done);
    EXPECT_FALSE(job.hasJournal());
}

TEST(TagWriterWrite, AFullDiskStopsTheRun) {
    FilmJob job;
    // The media data's box is made as large as the disk's free space; the file is sparse.
    const auto size = static_cast<std::uint64_t>(FileOps::freeSpace(job.file(), true));
    Movie movie = smallMovie();
    Bytes film = buildMovie(movie);
    const std::size_t mdat = textOf(film).find("mdat") - 4;
    // A size of 0: the box runs to the end of the file.
    film = patched(film, mdat, be32(0));
    writeFile(job.file(), film);
    std::error_code failed;
    fs::resize_file(job.file(), size, failed);
    if (failed) GTEST_SKIP() << "this file system has no sparse files of that size";
    const WriteOutcome outcome = job.write();
    EXPECT_EQ(outcome.status, Status::stopped);
    EXPECT_THAT(outcome.message,
                StartsWith("Not enough free space on the internal disk for the temporary files: "
                           "need "));
    EXPECT_EQ(FileOps::size(job.file()), size);
    EXPECT_TRUE(job.isTidy());
}

// --- the private copy ----------------------------------------------------------------------------

constexpr const char* changedWhileRead = "the file changed while it was being read; left untouched";

TEST(TagWriterWrite, AFileThatGrowsDuringTheCopyIsLeftAlone) {
    FilmJob job;
    job.at("Reading the file", [&] {
        Bytes longer = job.original();
        longer.push_back(0);
        writeFile(job.file(), longer);
    });
    const WriteOutcome outcome = job.write();
    EXPECT_EQ(outcome.status, Status::failed);
    EXPECT_EQ(outcome.message, changedWhileRead);
    EXPECT_TRUE(job.isTidy());
}

TEST(TagWriterWrite, AFileWhoseDateChangesDuringTheCopyIsLeftAlone) {
    FilmJob job;
    job.at("Reading the file", [&] {
        Sys::setModified(job.file(), Sys::stat(job.file())->mtime + std::chrono::seconds(2));
    });
    expectUntouched(job, job.write(), Status::failed, changedWhileRead);
}

TEST(TagWriterWrite, ACopyThatIsNotWhatWasReadIsRefused) {
    FilmJob job;
    job.at("Checking the copy", [&] { flipByte(job.workFolder() / "Film.mp4", 5000); });
    expectUntouched(job, job.write(), Status::failed,
                    "the internal copy doesn't match what was read; left untouched");
}

TEST(TagWriterWrite, TheCopyHasTheFilesDate) {
    FilmJob job;
    job.at("Checking the copy", [&] {
        EXPECT_EQ(FileOps::mtime(job.workFolder() / "Film.mp4"), FileOps::mtime(job.file()));
    });
    EXPECT_EQ(job.write().status, Status::done);
}

TEST(TagWriterWrite, ADiskThatFailsDuringTheCopyIsTold) {
    FilmJob job;
    const Sys::Fault fault(Sys::Call::Write, ENOSPC, 1, true);
    expectUntouched(job, job.write(), Status::failed, "write failed: No space left on device");
}

// --- leaving tracks out --------------------------------------------------------------------------

TEST(TagWriterWrite, TracksAreLeftOutOnlyWithDetails) {
    FilmJob job;
    job.request.dropTracks = {1};
    job.request.outputDir = job.file().parent_path();
    expectUntouched(job, job.restore(), Status::failed,
                    "tracks can only be left out together with a details write");
}

TEST(TagWriterWrite, LeavingTracksOutNeedsTheMediaTool) {
    FilmJob job;
    job.request.dropTracks = {1};
    job.request.outputDir = job.file().parent_path();
    expectUntouched(job, job.write(), Status::failed,
                    "the media tool (MP4Box) is missing from this copy of Marlet, so tracks can't "
                    "be removed");
    EXPECT_FALSE(RestorePoints::exists(job.file()));
}

// --- what to write -------------------------------------------------------------------------------

TEST(TagWriterWrite, AccountTagsAreRefusedInARequestAndKeptInAFile) {
    FilmJob job;
    for (const std::string& name : IlstEditor::personal) {
        job.request.mode = WriteRequest::WriteDetails{{IlstEditor::text(name, "somebody")}};
        expectUntouched(job, job.write(), Status::failed, "refusing to write an account tag");
    }
    job.request.mode = WriteRequest::WriteDetails{newDetails()};
    ASSERT_EQ(job.write().status, Status::done);
    EXPECT_TRUE(hasAtom(job.file(), "apID"));
    EXPECT_TRUE(hasAtom(job.file(), "hdvd"));
}

TEST(TagWriterWrite, AConversionIsNoInPlaceWrite) {
    FilmJob job;
    job.request.mode = ConvertRequest{};
    expectUntouched(job, job.write(), Status::failed, "a conversion is not an in-place write");
}

TEST(TagWriterWrite, RestoringNeedsARestorePoint) {
    FilmJob job;
    expectUntouched(job, job.restore(), Status::failed, "there is no saved original for this file");
}

TEST(TagWriterWrite, ADamagedRestorePointIsNotPutBack) {
    FilmJob job;
    ASSERT_EQ(job.write().status, Status::done);
    const Bytes written = job.now();
    flipByte(RestorePoints::folder(job.file()) / "ilst.bin", 12);
    EXPECT_EQ(job.restore().message, "the saved original is damaged");
    EXPECT_EQ(job.now(), written);
}

TEST(TagWriterWrite, WithoutARestorePointNothingIsWritten) {
    FilmJob job;
    ASSERT_EQ(job.write().status, Status::done);
    writeFile(job.file(), job.original());
    flipByte(RestorePoints::folder(job.file()) / "ilst.bin", 12);
    expectUntouched(job, job.write(), Status::failed,
                    "a restore point couldn't be saved and verified (the saved original is "
                    "damaged); nothing was written");
    // The same for a copy.
    job.request.copyTo = job.file().parent_path() / "copies";
    expectUntouched(job, job.write(), Status::failed,
                    "a restore point couldn't be saved and verified (the saved original is "
                    "damaged); nothing was written");
}

TEST(TagWriterWrite, ARestorePointThatCannotBeSavedIsTold) {
    FilmJob job;
    fs::create_directories(Paths::documentsDir());
    writeFile(Paths::restoreDir(), viewOf("no folder"));
    const WriteOutcome outcome = job.write();
    EXPECT_EQ(outcome.status, Status::failed);
    EXPECT_THAT(outcome.message, StartsWith("a restore point couldn't be saved and verified ("));
    EXPECT_THAT(outcome.message, testing::EndsWith("); nothing was written"));
    EXPECT_EQ(job.now(), job.original());
    EXPECT_TRUE(job.isTidy());
}

// --- the candidate -------------------------------------------------------------------------------

TEST(TagWriterWrite, NoRoomNamesBothRemediesAndLeavesTheRestorePoint) {
    FilmJob job(Shape::FrontWithoutRoom);
    job.request.fixLayout = false;
    const WriteOutcome outcome = job.write();
    EXPECT_EQ(outcome.status, Status::failed);
    EXPECT_THAT(
        outcome.message,
        testing::MatchesRegex(
            "There's no room for the new details in this file \\(the tag block grew by [0-9]+ "
            "bytes "
            "and the padding beside it is 0 bytes\\)\\. Turn on “Fix for Apple TV” or “Save a copy "
            "instead”\\."));
    EXPECT_EQ(job.now(), job.original());
    EXPECT_TRUE(RestorePoints::exists(job.file()));
    EXPECT_TRUE(job.isTidy());
}

TEST(TagWriterWrite, NoRoomNeedsTheMediaToolWhereARebuildIsAllowed) {
    FilmJob job(Shape::FrontWithoutRoom);
    expectUntouched(job, job.write(), Status::failed, noTool);
    EXPECT_THAT(job.labels, Contains("Rebuilding for Apple TV"));
    job.request.fixLayout = false;
    job.request.copyTo = job.file().parent_path() / "copies";
    expectUntouched(job, job.write(), Status::failed, noTool);
}

TEST(TagWriterWrite, SoundOverTheLimitNeedsTheMediaTool) {
    FilmJob job;
    job.storeSoundTogether(11);
    const WriteOutcome outcome = job.write();
    EXPECT_EQ(outcome.before, 1.1);
    expectUntouched(job, outcome, Status::failed, noTool);
}

TEST(TagWriterWrite, SoundAtTheLimitIsFine) {
    FilmJob job;
    job.storeSoundTogether(10);
    const WriteOutcome outcome = job.write();
    EXPECT_EQ(outcome.before, 1.0);
    EXPECT_EQ(outcome.message, "Details written");
}

TEST(TagWriterWrite, ACandidateThatDiffersElsewhereIsRefused) {
    FilmJob job;
    job.at("Verifying", [&] {
        const fs::path candidate = job.workFolder() / "candidate.mp4";
        flipByte(candidate, FileOps::size(candidate) - 1);
    });
    expectUntouched(job, job.write(), Status::failed, "verification failed: media data differs");
    job.at("Verifying", [&] {
        const fs::path candidate = job.workFolder() / "candidate.mp4";
        flipByte(candidate, FileOps::size(candidate) - 1);
        flipByte(candidate, 9);
    });
    expectUntouched(job, job.write(), Status::failed,
                    "verification failed: the file header differs; media data differs");
}

// --- a copy --------------------------------------------------------------------------------------

class SavesACopy : public testing::Test {
protected:
    SavesACopy() { job_.request.copyTo = job_.file().parent_path() / "My/Copies"; }
    fs::path target() const { return *job_.request.copyTo / "Film (Marlet).mp4"; }
    FilmJob job_;
};

TEST_F(SavesACopy, AndTheOriginalsBytesAndDateStay) {
    const auto date = FileOps::mtime(job_.file());
    const WriteOutcome outcome = job_.write();
    EXPECT_EQ(outcome.status, Status::done);
    EXPECT_EQ(outcome.message, "Saved a copy next to the original");
    EXPECT_EQ(outcome.output, target());
    EXPECT_EQ(outcome.size, FileOps::size(target()));
    EXPECT_EQ(titleOf(target()), "A much longer title than the file had");
    EXPECT_EQ(job_.now(), job_.original());
    EXPECT_EQ(FileOps::mtime(job_.file()), date);
    EXPECT_THAT(job_.labels, Contains("Saving a copy"));
    EXPECT_TRUE(job_.isTidy());
    EXPECT_TRUE(RestorePoints::exists(job_.file()));
    // Nothing else in the folder.
    EXPECT_EQ(std::distance(fs::directory_iterator(*job_.request.copyTo), {}), 1);
}

TEST_F(SavesACopy, ButNeverOverAnotherFile) {
    fs::create_directories(*job_.request.copyTo);
    writeFile(target(), viewOf("mine"));
    expectUntouched(job_, job_.write(), Status::failed,
                    "Film (Marlet).mp4 already exists in the copy folder; nothing written");
    EXPECT_EQ(textOf(readFile(target())), "mine");
}

TEST_F(SavesACopy, AlsoWhenTheNameIsTakenMeanwhile) {
    job_.at("Saving a copy", [&] { writeFile(target(), viewOf("mine")); });
    expectUntouched(job_, job_.write(), Status::failed,
                    "Film (Marlet).mp4 already exists in the copy folder; nothing written");
    EXPECT_EQ(textOf(readFile(target())), "mine");
}

TEST_F(SavesACopy, OfAFileThatAnotherProgramStartsToWriteLater) {
    std::unique_ptr<OtherProgram> other;
    job_.at("Checked", [&] {
        other = std::make_unique<OtherProgram>(job_.file(), OtherProgram::Holds::ForWriting);
    });
    EXPECT_EQ(job_.write().status, Status::done);
}

TEST_F(SavesACopy, AndACancelLeavesNothingThere) {
    job_.at("Saving a copy", [&] { job_.control.cancel(); });
    expectUntouched(job_, job_.write(), Status::cancelled,
                    "cancelled; the file was left untouched");
    EXPECT_TRUE(fs::is_empty(*job_.request.copyTo));
}

TEST_F(SavesACopy, AndOneThatIsNotTheSameIsRemoved) {
    const auto spoil = [&](const std::string& label, double fraction) {
        if (label != "Saving a copy" || fraction <= 0.64) return;
        for (const auto& item : fs::directory_iterator(*job_.request.copyTo))
            flipByte(item.path(), 100);
    };
    expectUntouched(job_, TagWriter::write(job_.request, job_.control, spoil), Status::failed,
                    "the copy didn't match; removed");
    EXPECT_TRUE(fs::is_empty(*job_.request.copyTo));
}

TEST_F(SavesACopy, AndAFolderThatCannotBeMadeIsTold) {
    writeFile(job_.file().parent_path() / "My", viewOf("a file"));
    expectUntouched(job_, job_.write(), Status::failed,
                    "cannot create the copy folder: Not a directory");
}

TEST_F(SavesACopy, EvenWhereItsSoundIsOverTheLimitAndNoFixIsWanted) {
    job_.storeSoundTogether(20);
    job_.request.fixLayout = false;
    const WriteOutcome outcome = job_.write();
    EXPECT_EQ(outcome.message, "Saved a copy next to the original");
    EXPECT_EQ(outcome.after, 2.0);
}

TEST_F(SavesACopy, OfRestoredDetails) {
    const auto copies = job_.request.copyTo;
    job_.request.copyTo.reset();
    ASSERT_EQ(job_.write().status, Status::done);
    const Bytes written = job_.now();
    job_.request.copyTo = copies;
    EXPECT_EQ(job_.restore().message, "Saved a copy next to the original");
    EXPECT_EQ(titleOf(target()), "Old");
    EXPECT_EQ(job_.now(), written);
}

// --- cancel and pause ----------------------------------------------------------------------------

TEST(TagWriterWrite, ACancelBeforeTheWriteLeavesTheFileAlone) {
    for (const char* label : {"Reading the file", "Checking the copy", "Preparing the new details",
                              "Verifying", "Checked"}) {
        FilmJob job;
        job.at(label, [&] { job.control.cancel(); });
        expectUntouched(job, job.write(), Status::cancelled,
                        "cancelled; the file was left untouched");
    }
}

TEST(TagWriterWrite, ACancelDuringTheWriteComesTooLate) {
    for (const char* label : {"Writing details", "Comparing the result"}) {
        FilmJob job;
        job.at(label, [&] {
            EXPECT_TRUE(RunControl::criticalActive());
            job.control.cancel();
        });
        EXPECT_EQ(job.write().message, "Details written");
        EXPECT_FALSE(RunControl::criticalActive());
    }
}

// --- real files ----------------------------------------------------------------------------------

struct RealCase {
    const char* name;
    bool indexFirst;
    int padding;
};

class WritesRealFiles : public testing::TestWithParam<RealCase> {};

TEST_P(WritesRealFiles, AndFFmpegReadsTheTagsAndTheSamePackets) {
    const OwnHome home;
    const TempFolder folder;
    const fs::path file = folder / "Real Film.m4v";
    RealMovie movie;
    movie.indexFirst = GetParam().indexFirst;
    movie.padding = GetParam().padding;
    movie.tags = {{"title", "Old"}};
    movie.accountTags = true;
    makeMovie(file, movie);
    const auto packets = packetHashes(file);

    WriteRequest request;
    request.file = file;
    request.mode = WriteRequest::WriteDetails{newDetails()};
    RunControl control;
    const WriteOutcome outcome = TagWriter::write(request, control, {});
    ASSERT_EQ(outcome.message, "Details written");
    EXPECT_EQ(packetHashes(file), packets);
    EXPECT_EQ(probeValue(file, "format_tags=title"), "A much longer title than the file had");
    EXPECT_TRUE(hasAtom(file, "apID"));

    request.mode = WriteRequest::RestoreOriginal{};
    ASSERT_EQ(TagWriter::write(request, control, {}).message, "Original details restored");
    EXPECT_EQ(packetHashes(file), packets);
    EXPECT_EQ(probeValue(file, "format_tags=title"), "Old");
}

INSTANTIATE_TEST_SUITE_P(Files, WritesRealFiles,
                         testing::Values(RealCase{"IndexLast", false, 0},
                                         RealCase{"IndexFirstWithRoom", true, 4096}),
                         [](const auto& each) { return std::string(each.param.name); });

}  // namespace
}  // namespace marlet::test
