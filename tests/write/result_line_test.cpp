#include "write/result_line.h"

#include <gtest/gtest.h>

#include "foundation/file_ops.h"
#include "write/outcome_wording.h"
#include "write/write_gate.h"

namespace marlet::test {

namespace {

TEST(ResultLine, TellsTheOutcomeAndWhatChanged) {
    WriteOutcome outcome;
    outcome.message = "Details written";
    outcome.before = 0.5;
    outcome.after = 0.456;
    outcome.changes = {"title: A → B", "cast and crew updated"};
    EXPECT_EQ(resultLine("done", "Alien", outcome),
              "RESULT done: Alien | Details written | layout before 0.50 after 0.46 | title: A → "
              "B; cast and crew updated");
}

TEST(ResultLine, WhatIsUnknownIsADash) {
    WriteOutcome outcome;
    outcome.message = "file is empty or missing";
    EXPECT_EQ(resultLine("failed", "Alien", outcome),
              "RESULT failed: Alien | file is empty or missing | layout before - after -");
}

TEST(ResultLine, IsOneLine) {
    EXPECT_EQ(resultLine("failed", "A\nB", {}), "RESULT failed: A B |  | layout before - after -");
}

TEST(OutcomeStatus, HasANameForEachCase) {
    using Status = WriteOutcome::Status;
    EXPECT_EQ(name(Status::done), "done");
    EXPECT_EQ(name(Status::failed), "failed");
    EXPECT_EQ(name(Status::skipped), "skipped");
    EXPECT_EQ(name(Status::cancelled), "cancelled");
    EXPECT_EQ(name(Status::stopped), "stopped");
}

TEST(Wording, SpaceIsToldInWords) {
    EXPECT_EQ(Wording::noSpace(2'400'000'000, 1'000'000),
              "Not enough free space on the internal disk for the temporary files: need 2.4 GB, "
              "have 1 MB.");
}

TEST(Wording, NoRoomAloneHasNoRemedy) {
    EXPECT_EQ(Wording::noRoom("too big"),
              "There's no room for the new details in this file (too big)");
}

TEST(WriteGate, ARebuildNeedsTwiceTheSpaceOfAnEdit) {
    using WriteGate::Way;
    // Between what an edit and what a rebuild of this size would need.
    const auto free = static_cast<double>(FileOps::freeSpace("/", true));
    const auto size = static_cast<std::uint64_t>(free / 1.8);
    EXPECT_EQ(WriteGate::spaceProblem(size, Way::Edit, "/"), std::nullopt);
    EXPECT_NE(WriteGate::spaceProblem(size, Way::Rebuild, "/"), std::nullopt);
}

}  // namespace
}  // namespace marlet::test
