// A disk that fails during the overwrite, at every call on the person's file in turn: whatever the
// outcome says about the file is true, and what a start finds it finishes.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>

#include "foundation/paths.h"
#include "foundation/work_area.h"
#include "support/box_builder.h"
#include "write/film_job.h"
#include "write/tag_writer.h"

namespace marlet::test {

namespace {

namespace fs = std::filesystem;
using testing::EndsWith;
using testing::HasSubstr;
using Status = WriteOutcome::Status;

constexpr const char* finished =
    "A previous write to Film.mp4 was interrupted. It has been finished and checked byte for byte.";

/// More than a run makes of any one kind on the film, and on the journal.
constexpr int mostCalls[] = {16, 6};

struct FaultCase {
    Sys::Call call;
    int error;
    bool forever;
};

class FailingOverwrite : public testing::TestWithParam<FaultCase> {
protected:
    /// The journal's folder fails as well as the film: both are what the person can lose.
    static std::vector<fs::path> placesOf(const FilmJob& job) {
        return {job.file(), Paths::journalFile()};
    }
    static Bytes goodResult() {
        FilmJob job;
        begin(job);
        EXPECT_EQ(job.write().status, Status::done);
        return job.now();
    }
    static void begin(FilmJob& job) {
        job.storeSoundTogether(15);
        job.toolMakes({{0, buildMovie(laidOut(5))}});
    }
    void check(const FilmJob& job, const WriteOutcome& outcome, const Bytes& result);
};

void FailingOverwrite::check(const FilmJob& job, const WriteOutcome& outcome, const Bytes& result) {
    const Bytes now = job.now();
    if (outcome.status == Status::done) {
        EXPECT_EQ(now, result);
        EXPECT_TRUE(job.isTidy());
    } else if (outcome.status == Status::failed) {
        // Each of these sentences promises that the file is as it was.
        EXPECT_EQ(now, job.original()) << outcome.message;
        EXPECT_FALSE(job.hasJournal());
    } else {
        ASSERT_EQ(outcome.status, Status::stopped);
        EXPECT_THAT(outcome.message, HasSubstr("). The verified copy is kept at "));
        EXPECT_THAT(outcome.message, EndsWith("; Marlet finishes it the next time it opens"));
        ASSERT_TRUE(job.hasWorkFolders());
        EXPECT_EQ(readFile(job.workFolder() / "candidate.mp4"), result);
        EXPECT_TRUE(job.hasJournal());
    }
    EXPECT_FALSE(RunControl::criticalActive());
}

TEST_P(FailingOverwrite, EverySentenceIsTrueAndTheNextStartFinishesWhatWasPromised) {
    const auto [call, error, forever] = GetParam();
    const Bytes result = goodResult();
    int met = 0;
    for (const bool atJournal : {false, true}) {
        for (int nth = 1; nth <= mostCalls[atJournal ? 1 : 0]; nth++) {
            FilmJob job;
            begin(job);
            WriteOutcome outcome;
            SCOPED_TRACE("call number " + std::to_string(nth) + (atJournal ? " (journal)" : ""));
            {
                const Sys::Fault fault(call, error, nth, forever, placesOf(job)[atJournal ? 1 : 0]);
                outcome = job.write();
                check(job, outcome, result);
            }
            const bool waits = job.hasJournal();
            const auto message = TagWriter::recoverInterruptedWrite();
            EXPECT_EQ(message.value_or(""), waits ? finished : "");
            WorkArea::cleanUp(WorkArea::DryRun::No);
            if (waits) {
                EXPECT_EQ(job.now(), result);
            }
            EXPECT_TRUE(job.now() == result || job.now() == job.original());
            EXPECT_TRUE(job.isTidy());
            if (HasFailure()) return;
            met += outcome.status == Status::done ? 0 : 1;
            // A single fault may be overcome by another attempt, so that a run that went well is
            // the end of the sweep only for one that stays.
            if (outcome.status == Status::done && forever) break;
        }
    }
    // One that comes once may be overcome by the next attempt.
    if (forever) {
        EXPECT_GT(met, 0) << "no fault was met";
    }
}

std::string nameOf(const testing::TestParamInfo<FaultCase>& info) {
    static const std::map<Sys::Call, std::string> calls = {
        {Sys::Call::Open, "Open"},         {Sys::Call::Read, "Read"},
        {Sys::Call::Write, "Write"},       {Sys::Call::Flush, "Flush"},
        {Sys::Call::Truncate, "Truncate"}, {Sys::Call::Rename, "Rename"},
        {Sys::Call::Unlink, "Unlink"}};
    const FaultCase& which = info.param;
    return calls.at(which.call) + (which.error == ENOSPC ? "WithoutSpace" : "Broken") +
           (which.forever ? "ForGood" : "Once");
}

INSTANTIATE_TEST_SUITE_P(
    Disk, FailingOverwrite,
    testing::Values(
        FaultCase{Sys::Call::Write, ENOSPC, false}, FaultCase{Sys::Call::Write, ENOSPC, true},
        FaultCase{Sys::Call::Write, EIO, false}, FaultCase{Sys::Call::Write, EIO, true},
        FaultCase{Sys::Call::Truncate, EIO, false}, FaultCase{Sys::Call::Truncate, EIO, true},
        FaultCase{Sys::Call::Flush, EIO, false}, FaultCase{Sys::Call::Flush, EIO, true},
        FaultCase{Sys::Call::Read, EIO, false}, FaultCase{Sys::Call::Read, EIO, true},
        FaultCase{Sys::Call::Open, EIO, false}, FaultCase{Sys::Call::Open, EIO, true},
        FaultCase{Sys::Call::Rename, EIO, true}, FaultCase{Sys::Call::Unlink, EIO, true}),
    nameOf);

TEST(ShortOverwrite, WritesThatMoveOnlySomeOfTheirBytesStillEndWell) {
    FilmJob job;
    job.storeSoundTogether(15);
    job.toolMakes({{0, buildMovie(laidOut(5))}});
    std::optional<Sys::ShortTransfers> few;
    job.at("Writing the rebuilt file", [&] { few.emplace(1000); });
    EXPECT_EQ(job.write().message, "Details written; sound layout fixed (1.50 s to 0.50 s)");
}

}  // namespace
}  // namespace marlet::test
