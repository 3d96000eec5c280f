#include "write/in_place_delivery.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <cerrno>
#include <thread>

#include "foundation/errors.h"
#include "foundation/file_ops.h"
#include "foundation/paths.h"
#include "foundation/work_area.h"
#include "write/film_job.h"
#include "write/job_end.h"
#include "write/other_copy.h"
#include "write/tag_writer.h"

namespace marlet::test {

namespace {

namespace fs = std::filesystem;
using testing::StartsWith;
using Shape = FilmJob::Shape;
using Status = WriteOutcome::Status;

/// The journal, and all that a recovery needs, is there; the recovery then ends with the file
/// holding these bytes.
void expectKept(const FilmJob& job, const WriteOutcome& outcome, const std::string& failure,
                const std::string& copyName = "candidate.mp4") {
    EXPECT_EQ(outcome.status, Status::stopped);
    ASSERT_TRUE(job.hasWorkFolders());
    EXPECT_EQ(outcome.message, "writing failed (" + failure + "). The verified copy is kept at " +
                                   (job.workFolder() / copyName).string() +
                                   "; Marlet finishes it the next time it opens");
    EXPECT_TRUE(job.hasJournal());
    EXPECT_FALSE(RunControl::criticalActive());
}

void expectRecovered(const FilmJob& job, const Bytes& bytes) {
    // A launch: first the recovery, then the clean-up.
    EXPECT_EQ(TagWriter::recoverInterruptedWrite(),
              "A previous write to Film.mp4 was interrupted. It has been finished and checked byte "
              "for byte.");
    WorkArea::cleanUp(WorkArea::DryRun::No);
    EXPECT_EQ(job.now(), bytes);
    EXPECT_TRUE(job.isTidy());
}

/// What the film is after a write of the new details that goes well.
Bytes goodResult(Shape shape = Shape::FrontWithRoom) {
    FilmJob job(shape);
    EXPECT_EQ(job.write().status, Status::done);
    return job.now();
}

void expectFailed(const WriteOutcome& outcome, const std::string& message) {
    EXPECT_EQ(outcome.status, Status::failed);
    EXPECT_EQ(outcome.message, message);
}

// --- before the first byte
// ------------------------------------------------------------------------

TEST(InPlaceWrite, AFileThatChangedMeanwhileIsLeftAlone) {
    FilmJob job;
    Bytes changed;
    job.at("Checked", [&] {
        flipByte(job.file(), 5000);
        changed = job.now();
    });
    expectFailed(job.write(), "the file changed while it was being processed; left untouched");
    EXPECT_EQ(job.now(), changed);
    EXPECT_TRUE(job.isTidy());
}

TEST(InPlaceWrite, AFileThatWasReplacedMeanwhileIsLeftAlone) {
    FilmJob job;
    job.at("Checked", [&] {
        // Of the same size and date, as a backup tool puts a file back.
        const auto date = FileOps::mtime(job.file());
        const fs::path other = job.file().parent_path() / "other";
        writeFile(other, job.original());
        Sys::setModified(other, *date);
        fs::rename(other, job.file());
    });
    expectFailed(job.write(), "the file changed while it was being processed; left untouched");
    EXPECT_EQ(job.now(), job.original());
}

TEST(InPlaceWrite, AProgramThatStartedToWriteStopsTheRun) {
    FilmJob job;
    std::unique_ptr<OtherProgram> other;
    job.at("Checked", [&] {
        other = std::make_unique<OtherProgram>(job.file(), OtherProgram::Holds::ForWriting);
    });
    const WriteOutcome outcome = job.write();
    EXPECT_EQ(outcome.status, Status::stopped);
    EXPECT_EQ(outcome.message, "another program started writing to this file; left untouched");
    EXPECT_EQ(job.now(), job.original());
    EXPECT_TRUE(job.isTidy());
}

TEST(InPlaceWrite, AProgramThatStartedToWriteWhileAnotherCopyHadTheTurnStopsTheRun) {
    FilmJob job;
    OtherCopysTurn turn;
    std::unique_ptr<OtherProgram> other;
    std::atomic<bool> isOver = false;
    std::thread meanwhile([&] {
        while (!turn.isWaitedFor() && !isOver) std::this_thread::yield();
        other = std::make_unique<OtherProgram>(job.file(), OtherProgram::Holds::ForWriting);
        turn.end();
    });
    const WriteOutcome outcome = job.write();
    isOver = true;
    meanwhile.join();
    EXPECT_EQ(outcome.status, Status::stopped);
    EXPECT_EQ(outcome.message, "another program started writing to this file; left untouched");
    EXPECT_EQ(job.now(), job.original());
    EXPECT_TRUE(job.isTidy());
}

TEST(InPlaceWrite, ARegionThatChangedIsLeftAlone) {
    FilmJob job;
    Bytes changed;
    job.at("Checked", [&] {
        const std::size_t inRegion = textOf(job.original()).find("mvhd");
        flipByte(job.file(), inRegion, Date::Keep);
        changed = job.now();
    });
    expectFailed(job.write(), "the part of the file to be replaced changed; left untouched");
    EXPECT_EQ(job.now(), changed);
    EXPECT_TRUE(job.isTidy());
}

TEST(InPlaceWrite, WithoutAJournalNothingIsWritten) {
    FilmJob job;
    // The temporary file's rename to its name.
    const Sys::Fault fault(Sys::Call::Rename, EIO, 1, true, Paths::journalFile());
    const WriteOutcome outcome = job.write();
    EXPECT_EQ(outcome.status, Status::failed);
    EXPECT_THAT(outcome.message, testing::EndsWith("Input/output error"));
    EXPECT_EQ(job.now(), job.original());
    EXPECT_TRUE(job.isTidy());
}

TEST(InPlaceWrite, WithACopyThatCannotBeLookedAtNothingIsWritten) {
    FilmJob job;
    std::optional<Sys::Fault> fault;
    job.at("Checked", [&] {
        fault.emplace(Sys::Call::Stat, EIO, 1, true, job.workFolder() / "candidate.mp4");
    });
    expectFailed(job.write(), "the verified copy can't be read");
    EXPECT_EQ(job.now(), job.original());
    EXPECT_TRUE(job.isTidy());
}

TEST(InPlaceWrite, AJournalThatWasSavedButNotFlushedIsTakenBack) {
    FilmJob job;
    // The folder's flush behind the rename fails; those of the restore point went well.
    std::optional<Sys::Fault> fault;
    job.at("Checked",
           [&] { fault.emplace(Sys::Call::Flush, EIO, 1, false, Paths::documentsDir()); });
    const WriteOutcome outcome = job.write();
    EXPECT_EQ(outcome.status, Status::failed);
    EXPECT_EQ(job.now(), job.original());
    EXPECT_TRUE(job.isTidy());
}

TEST(InPlaceWrite, AJournalThatStaysUnflushedIsFinishedByARecovery) {
    FilmJob job;
    std::optional<Sys::Fault> flush;
    std::optional<Sys::Fault> unlink;
    job.at("Checked", [&] {
        flush.emplace(Sys::Call::Flush, EIO, 1, true, Paths::documentsDir());
        unlink.emplace(Sys::Call::Unlink, EIO, 1, true, Paths::journalFile());
    });
    const WriteOutcome outcome = job.write();
    EXPECT_EQ(outcome.status, Status::stopped);
    EXPECT_THAT(outcome.message, StartsWith("writing failed ("));
    flush.reset();
    unlink.reset();
    expectRecovered(job, goodResult());
}

// --- the region edit
// -------------------------------------------------------------------------------

TEST(RegionEdit, TheJournalNamesTheCandidateWhileItRuns) {
    FilmJob job;
    for (const char* label : {"Writing details", "Comparing the result"})
        job.at(label, [&] {
            const fs::path candidate = job.workFolder() / "candidate.mp4";
            EXPECT_EQ(WriteJournal::load(),
                      (WriteJournal{job.file(), candidate, FileOps::size(candidate)}));
        });
    EXPECT_EQ(job.write().status, Status::done);
    EXPECT_FALSE(job.hasJournal());
}

TEST(RegionEdit, AFileThatCannotBeOpenedIsStillTheOriginal) {
    FilmJob job;
    std::optional<Sys::Fault> fault;
    job.at("Writing details",
           [&] { fault.emplace(Sys::Call::Open, EACCES, 1, false, job.file()); });
    expectFailed(job.write(), "cannot open the file to write the tags: Permission denied");
    EXPECT_EQ(job.now(), job.original());
    EXPECT_TRUE(job.isTidy());
}

TEST(RegionEdit, AWriteThatFailsAtOnceIsStillTheOriginal) {
    FilmJob job;
    const Sys::Fault fault(Sys::Call::Write, EIO, 1, true, job.file());
    expectFailed(job.write(), "short write of the tag region");
    EXPECT_EQ(job.now(), job.original());
    EXPECT_TRUE(job.isTidy());
}

TEST(RegionEdit, AHalfWrittenRegionIsFinishedAtTheNextStart) {
    FilmJob job;
    std::optional<Sys::ShortTransfers> half;
    job.at("Writing details", [&] { half.emplace(1000); });
    const WriteOutcome outcome = job.write();
    half.reset();
    expectKept(job, outcome, "short write of the tag region");
    EXPECT_NE(job.now(), job.original());
    expectRecovered(job, goodResult());
}

TEST(RegionEdit, AWriteWithoutItsTruncateIsFinishedAtTheNextStart) {
    FilmJob job(Shape::Last);
    const Sys::Fault fault(Sys::Call::Truncate, EIO, 1, true, job.file());
    // The candidate is another file: its own truncate goes well.
    const WriteOutcome outcome = job.write();
    expectKept(job, outcome, "cannot set the final size");
}

TEST(RegionEdit, AResultThatCannotBeReadIsFinishedAtTheNextStart) {
    FilmJob job;
    std::optional<Sys::Fault> fault;
    job.at("Comparing the result",
           [&] { fault.emplace(Sys::Call::Read, EIO, 1, true, job.file()); });
    const WriteOutcome outcome = job.write();
    fault.reset();
    expectKept(job, outcome, "read failed: Input/output error");
    expectRecovered(job, goodResult());
}

TEST(RegionEdit, AResultThatCannotBeReadOnceButIsTheOriginalIsNoWrite) {
    FilmJob job;
    // The write never reached the file; the first reading of it fails, the second shows that.
    std::optional<Sys::Fault> fault;
    job.at("Comparing the result", [&] {
        writeFile(job.file(), job.original());
        fault.emplace(Sys::Call::Read, EIO, 1, false, job.file());
    });
    expectFailed(job.write(), "read failed: Input/output error");
    EXPECT_EQ(job.now(), job.original());
    EXPECT_TRUE(job.isTidy());
}

TEST(RegionEdit, AWrittenRegionUnlikeTheVerifiedOneIsPutBack) {
    for (Shape shape : {Shape::FrontWithRoom, Shape::Last, Shape::LastWithRoom}) {
        FilmJob job(shape);
        job.at("Comparing the result",
               [&] { flipByte(job.file(), textOf(job.now()).find("mvhd")); });
        expectFailed(job.write(),
                     "the written file didn't match the verified copy; the original was put back");
        EXPECT_EQ(job.now(), job.original());
        EXPECT_TRUE(job.isTidy());
    }
}

TEST(RegionEdit, WhatAnUndoCannotPutBackIsFinishedAtTheNextStart) {
    FilmJob job;
    job.at("Comparing the result", [&] { flipByte(job.file(), FileOps::size(job.file()) - 1); });
    const WriteOutcome outcome = job.write();
    expectKept(job, outcome, "the written file didn't match the verified copy");
    expectRecovered(job, goodResult());
}

TEST(RegionEdit, AnUndoThatFailsIsFinishedAtTheNextStart) {
    FilmJob job;
    std::optional<Sys::Fault> fault;
    job.at("Comparing the result", [&] {
        flipByte(job.file(), textOf(job.now()).find("mvhd"));
        fault.emplace(Sys::Call::Write, EIO, 1, true, job.file());
    });
    const WriteOutcome outcome = job.write();
    fault.reset();
    expectKept(job, outcome, "the written file didn't match the verified copy");
    expectRecovered(job, goodResult());
}

TEST(RegionEdit, AJournalThatCannotBeRemovedStopsTheRun) {
    FilmJob job;
    std::optional<Sys::Fault> fault;
    fault.emplace(Sys::Call::Unlink, EIO, 1, true, Paths::journalFile());
    const WriteOutcome outcome = job.write();
    EXPECT_EQ(outcome.status, Status::stopped);
    EXPECT_THAT(outcome.message, StartsWith("writing failed ("));
    EXPECT_THAT(outcome.message,
                testing::HasSubstr("Input/output error). The verified copy is kept at " +
                                   (job.workFolder() / "candidate.mp4").string()));
    EXPECT_EQ(job.now(), goodResult());
    fault.reset();
    expectRecovered(job, goodResult());
}

TEST(RegionEdit, ARemovalOfTheJournalThatCannotBeFlushedKeepsItForTheNextStart) {
    FilmJob job;
    std::optional<Sys::Fault> fault;
    job.at("Comparing the result",
           [&] { fault.emplace(Sys::Call::Flush, EIO, 1, false, Paths::documentsDir()); });
    const WriteOutcome outcome = job.write();
    expectKept(job, outcome, "cannot flush folder: Input/output error");
    EXPECT_EQ(job.now(), goodResult());
    expectRecovered(job, goodResult());
}

TEST(RegionEdit, AFileReplacedDuringTheWriteIsTold) {
    FilmJob job;
    job.at("Comparing the result", [&] {
        const fs::path other = job.file().parent_path() / "other";
        writeFile(other, job.now());
        fs::rename(other, job.file());
    });
    expectFailed(job.write(), "the file's identity changed during the write; check it");
    EXPECT_TRUE(job.isTidy());
}

// --- the layout behind the write
// ---------------------------------------------------------------------

/// A film over the limit, and no fix wanted: it is written, measured, and put back.
class LayoutPutBack : public testing::Test {
protected:
    LayoutPutBack() {
        job_.storeSoundTogether(20);
        job_.request.fixLayout = false;
    }
    std::string staged() const { return (job_.workFolder() / "Film.mp4").string(); }
    /// The place that a sentence ends with.
    fs::path placeIn(const std::string& message) const {
        return message.substr(std::min(message.size(), notPutBack.size()));
    }
    const std::string notPutBack =
        "after writing, the sound layout measured 2.0 s and the original could not be put back; "
        "the original copy is at ";
    FilmJob job_;
};

TEST_F(LayoutPutBack, AFilmOverTheLimitIsPutBack) {
    expectFailed(job_.write(),
                 "after writing, the sound layout measured 2.0 s; the original was put back");
    EXPECT_EQ(job_.now(), job_.original());
    EXPECT_TRUE(job_.isTidy());
}

TEST_F(LayoutPutBack, AFailingPutBackKeepsTheOriginalForTheNextStart) {
    // The first write is the edit's.
    std::optional<Sys::Fault> fault;
    fault.emplace(Sys::Call::Write, EIO, 2, true, job_.file());
    const WriteOutcome outcome = job_.write();
    EXPECT_EQ(outcome.status, Status::stopped);
    EXPECT_EQ(outcome.message,
              "after writing, the sound layout measured 2.0 s and the original could not be put "
              "back; the original copy is at " +
                  staged());
    EXPECT_EQ(WriteJournal::load(), (WriteJournal{job_.file(), staged(), job_.original().size()}));
    EXPECT_EQ(readFile(staged()), job_.original());
    fault.reset();
    expectRecovered(job_, job_.original());
}

TEST_F(LayoutPutBack, WithoutAJournalTheOriginalIsNotPutBackAndItsCopyIsKept) {
    // The first journal is the edit's.
    const Sys::Fault fault(Sys::Call::Rename, EIO, 2, true, Paths::journalFile());
    const WriteOutcome outcome = job_.write();
    EXPECT_EQ(outcome.status, Status::stopped);
    const fs::path copy = placeIn(outcome.message);
    EXPECT_EQ(outcome.message, notPutBack + copy.string());
    EXPECT_EQ(readFile(copy), job_.original());
    EXPECT_FALSE(job_.hasJournal());
}

TEST_F(LayoutPutBack, ACopyThatIsKeptWithoutAJournalOutlastsEveryStart) {
    std::optional<Sys::Fault> fault;
    fault.emplace(Sys::Call::Rename, EIO, 2, true, Paths::journalFile());
    const fs::path copy = placeIn(job_.write().message);
    fault.reset();
    const Bytes written = job_.now();
    for (int start = 0; start < 2; start++) {
        EXPECT_EQ(TagWriter::recoverInterruptedWrite(), std::nullopt);
        EXPECT_EQ(WorkArea::cleanUp(WorkArea::DryRun::No), WorkArea::Report());
    }
    EXPECT_EQ(readFile(copy), job_.original());
    EXPECT_EQ(job_.now(), written);
    EXPECT_TRUE(job_.isTidy());
}

TEST_F(LayoutPutBack, AJournalThatWasSavedButNotFlushedIsTakenBack) {
    // The flushes behind the edit's journal and its removal go well.
    std::optional<Sys::Fault> fault;
    job_.at("Checked",
            [&] { fault.emplace(Sys::Call::Flush, EIO, 3, false, Paths::documentsDir()); });
    const WriteOutcome outcome = job_.write();
    const fs::path copy = placeIn(outcome.message);
    EXPECT_EQ(outcome.message, notPutBack + copy.string());
    EXPECT_TRUE(job_.isTidy());
    EXPECT_EQ(readFile(copy), job_.original());
}

TEST_F(LayoutPutBack, AJournalThatStaysUnflushedIsFinishedByARecovery) {
    std::optional<Sys::Fault> flush;
    std::optional<Sys::Fault> unlink;
    job_.at("Checked", [&] {
        flush.emplace(Sys::Call::Flush, EIO, 3, true, Paths::documentsDir());
        unlink.emplace(Sys::Call::Unlink, EIO, 2, true, Paths::journalFile());
    });
    const WriteOutcome outcome = job_.write();
    EXPECT_EQ(outcome.message, notPutBack + staged());
    flush.reset();
    unlink.reset();
    expectRecovered(job_, job_.original());
}

TEST_F(LayoutPutBack, AJournalThatStaysKeepsTheOriginalForTheNextStart) {
    // The first removal is the edit's.
    std::optional<Sys::Fault> fault;
    fault.emplace(Sys::Call::Unlink, EIO, 2, true, Paths::journalFile());
    const WriteOutcome outcome = job_.write();
    EXPECT_EQ(outcome.status, Status::stopped);
    EXPECT_THAT(outcome.message,
                testing::HasSubstr("The verified copy is kept at " + staged() + "; "));
    fault.reset();
    expectRecovered(job_, job_.original());
}

TEST_F(LayoutPutBack, AResultThatCannotBeMeasuredKeepsTheCandidatesMeasure) {
    job_.storeSoundTogether(5);
    std::optional<Sys::Fault> fault;
    // The first opening from here on is the comparison's, the next the measure's.
    job_.at("Comparing the result",
            [&] { fault.emplace(Sys::Call::Open, EIO, 2, true, job_.file()); });
    const WriteOutcome outcome = job_.write();
    EXPECT_EQ(outcome.message, "Details written");
    EXPECT_EQ(outcome.after, 0.5);
}

// --- the whole file
// ------------------------------------------------------------------------------------

/// The way of a rebuilt candidate: any other whole file.
class Overwrite : public testing::Test {
protected:
    Overwrite() {
        job_.folder.create();
        job_.reference = FileMark::of(film_.file());
        job_.outcome.before = 2.0;
        job_.outcome.rebuilt = true;
        writeFile(job_.staged, film_.original());
        FilmJob other;
        other.storeSoundTogether(5);
        result_ = other.original();
        writeFile(job_.candidate, result_);
    }
    void deliver() { InPlaceDelivery(job_, candidate_).run(); }
    std::string failure() {
        try {
            deliver();
            return "";
        } catch (const std::exception& error) {
            return error.what();
        }
    }

    FilmJob film_;
    StepProgress progress_ = [this](const std::string& label, double) {
        labels_.insert(label);
        if (atEachStep_) atEachStep_(label);
    };
    WriteJob job_{film_.request, film_.control, progress_};
    Candidate candidate_;
    Bytes result_;
    std::set<std::string> labels_;
    std::function<void(const std::string& label)> atEachStep_;
};

TEST_F(Overwrite, TheFileHoldsTheResultAndKeepsItsIdentity) {
    const auto inode = Sys::stat(film_.file())->inode;
    deliver();
    EXPECT_EQ(film_.now(), result_);
    EXPECT_EQ(Sys::stat(film_.file())->inode, inode);
    EXPECT_EQ(job_.outcome.message, "Details written; sound layout fixed (2.00 s to 0.50 s)");
    EXPECT_EQ(labels_,
              (std::set<std::string>{"Writing the rebuilt file", "Comparing the result", "Done"}));
    EXPECT_FALSE(film_.hasJournal());
}

TEST_F(Overwrite, AFailingWriteIsTriedAgain) {
    const Sys::Fault fault(Sys::Call::Truncate, EIO, 1, false, film_.file());
    deliver();
    EXPECT_EQ(film_.now(), result_);
}

TEST_F(Overwrite, AfterThreeFailuresTheOriginalIsPutBack) {
    // Every attempt opens the candidate; only the way back needs the other copy.
    const Sys::Fault fault(Sys::Call::Open, EIO, 1, true, job_.candidate);
    EXPECT_EQ(failure(),
              "writing failed (cannot open rebuilt file: Input/output error); the original was "
              "put back");
    EXPECT_EQ(film_.now(), film_.original());
    EXPECT_FALSE(film_.hasJournal());
}

TEST_F(Overwrite, AResultThatReadsBackDifferentlyEachTimeIsPutBack) {
    atEachStep_ = [&](const std::string& label) {
        if (label == "Comparing the result") flipByte(film_.file(), 100);
    };
    EXPECT_EQ(failure(),
              "writing failed (the result didn't match the rebuilt copy); the original was put "
              "back");
    EXPECT_EQ(film_.now(), film_.original());
    EXPECT_FALSE(film_.hasJournal());
}

TEST_F(Overwrite, WhatCannotBePutBackIsKeptForTheNextStart) {
    const Sys::Fault fault(Sys::Call::Write, EIO, 1, true, film_.file());
    EXPECT_EQ(failure(),
              "writing failed (write failed: Input/output error). The verified copy is "
              "kept at " +
                  job_.candidate.string() + "; Marlet finishes it the next time it opens");
    EXPECT_TRUE(film_.hasJournal());
}

// --- judging
// -------------------------------------------------------------------------------------------

std::string judgement(bool fixLayout, double before, double after, bool rebuilt = false) {
    WriteRequest request;
    request.fixLayout = fixLayout;
    try {
        judge(request, before, after, rebuilt);
        return "";
    } catch (const MFError& error) {
        return error.description();
    }
}

TEST(Judge, ACandidateOverTheLimitIsRefusedWhereAFixIsWanted) {
    EXPECT_EQ(judgement(true, 0.9, 1.01),
              "it would still measure 1.0 s (limit 1.0 s); left untouched");
    EXPECT_EQ(judgement(true, 3, 2.26),
              "it would still measure 2.3 s (limit 1.0 s); left untouched");
    EXPECT_EQ(judgement(true, 3, 1.0), "");
    EXPECT_EQ(judgement(false, 3, 3), "");
}

TEST(Judge, AWorseLayoutIsRefusedUnlessItWasRebuilt) {
    EXPECT_EQ(judgement(false, 0.5, 0.56),
              "the sound layout would get worse (0.5 s to 0.6 s); left untouched");
    EXPECT_EQ(judgement(false, 0.5, 0.55), "");
    EXPECT_EQ(judgement(false, 0.5, 0.9, true), "");
}

}  // namespace
}  // namespace marlet::test
