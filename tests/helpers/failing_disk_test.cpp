// An output comes to exist whole or not at all.

#include <gtest/gtest.h>
#include <signal.h>

#include <cerrno>
#include <filesystem>

#include "foundation/errors.h"
#include "foundation/syscalls.h"
#include "helpers/laid_out.h"
#include "support/process.h"
#include "support/temp_folder.h"

namespace marlet::test {

namespace {

namespace fs = std::filesystem;

class FailingDisk : public testing::Test {
protected:
    std::string failure() {
        try {
            Relayout::run({.input = input_, .output = folder_ / "out.mp4"});
        } catch (const MFError& error) {
            return error.description();
        }
        return {};
    }
    int files() const {
        return static_cast<int>(std::distance(fs::directory_iterator(folder_.path()), {}));
    }

    TempFolder folder_;
    fs::path input_ = folder_.write("in.mp4", buildMovie(badlyLaidOut()));
};

std::vector<std::string> rebuild(const fs::path& input, const fs::path& output) {
    return {"-tmp", "/tmp",         "-inter", "500",          "-moovpad",
            "4096", input.string(), "-out",   output.string()};
}

}  // namespace

TEST_F(FailingDisk, ThatIsFullLeavesNoOutput) {
    const Sys::Fault fault(Sys::Call::Write, ENOSPC);
    EXPECT_EQ(failure(), "write failed: No space left on device");
    EXPECT_EQ(files(), 1);
}

TEST_F(FailingDisk, ThatCantBeReadLeavesNoOutput) {
    // The first reads are those of the top level and the index.
    const Sys::Fault fault(Sys::Call::Read, EIO, 5, true, input_);
    EXPECT_EQ(failure(), "read failed: Input/output error");
    EXPECT_EQ(files(), 1);
}

TEST_F(FailingDisk, ThatRefusesTheNameLeavesNoOutput) {
    const Sys::Fault fault(Sys::Call::Rename, EACCES);
    EXPECT_EQ(failure(), "cannot create the output: Permission denied");
    EXPECT_EQ(files(), 1);
}

TEST_F(FailingDisk, ThatHasNoSuchFolderIsTold) {
    try {
        Relayout::run({.input = input_, .output = folder_ / "none/out.mp4"});
        FAIL();
    } catch (const MFError& error) {
        EXPECT_EQ(error.description(), "cannot create the output: No such file or directory");
    }
}

TEST_F(FailingDisk, ThatTakesFewBytesAtATimeGetsTheSameFile) {
    const Bytes whole = laidOut(readFile(input_));
    const Sys::ShortTransfers few(777);
    EXPECT_EQ(failure(), "");
    EXPECT_EQ(readFile(folder_ / "out.mp4"), whole);
}

TEST_F(FailingDisk, KeepsAnOlderOutputWhenTheNewOneFails) {
    const fs::path output = folder_.write("out.mp4", "an earlier try");
    const Sys::Fault fault(Sys::Call::Write, ENOSPC);
    EXPECT_EQ(failure(), "write failed: No space left on device");
    EXPECT_EQ(textOf(readFile(output)), "an earlier try");
}

TEST_F(FailingDisk, GivesTheProgramOneLineAndStatus1) {
    Process tool(builtProgram("marlet-mux"), rebuild(input_, folder_ / "none/out.mp4"));
    EXPECT_EQ(tool.wait(), 1);
    EXPECT_EQ(tool.errors(), "marlet-mux: cannot create the output: No such file or directory\n");
}

TEST_F(FailingDisk, DoesNotDisturbTheProgramsProgress) {
    Process tool(builtProgram("marlet-mux"), rebuild(input_, folder_ / "out.mp4"));
    ASSERT_EQ(tool.wait(), 0) << tool.errors();
    EXPECT_NE(tool.output().find("(100/100)\r"), std::string::npos) << tool.output();
    EXPECT_EQ(readFile(folder_ / "out.mp4"), laidOut(readFile(input_), {.padding = 4096}));
}

}  // namespace marlet::test
