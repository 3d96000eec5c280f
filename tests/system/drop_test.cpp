// Leaving tracks out from the command line.

#include <gtest/gtest.h>

#include <filesystem>

#include "foundation/file_ops.h"
#include "mp4/summary.h"
#include "support/bundle.h"
#include "support/media.h"
#include "system/program_run.h"

namespace marlet::test {
namespace {

namespace fs = std::filesystem;

class DropRun : public testing::Test {
protected:
    DropRun() {
        makeMovie(file_, {.soundTracks = 2, .soundLanguages = {"eng", "fre"}});
        before_ = readFile(file_);
        date_ = *FileOps::mtime(file_);
    }
    ProgramRun::Result tag(const std::string& drop) {
        return run_.marlet({"--tag", file_.string(), "--confirm-all", "--quit", drop,
                            "--output-dir=" + output_.path().string()});
    }
    void expectUntouched() {
        EXPECT_EQ(readFile(file_), before_);
        EXPECT_EQ(FileOps::mtime(file_), date_);
    }

    ProgramRun run_;
    TempFolder output_;
    fs::path file_ = run_.library() / "Charade (1963).mp4";
    Bytes before_;
    FileTime date_;
};

TEST_F(DropRun, MakesANewFileWithoutTheTracksAndLeavesTheOriginalsBytesAndDate) {
    const auto result = tag("--drop=Charade:1");
    EXPECT_EQ(result
                  .lines("RESULT done: Charade | New file Charade (1963).m4v · 1 track left out, "
                         "the original is untouched | ")
                  .size(),
              1U)
        << result.output;
    expectUntouched();

    const fs::path made = output_ / "Charade (1963).m4v";
    const auto tracks = parseSummary(loadMoov(made), made, Detail::Yes).tracks;
    ASSERT_EQ(tracks.size(), 2U);
    EXPECT_EQ(tracks[0].handler, "vide");
    EXPECT_EQ(tracks[1].language, "fre");
    EXPECT_EQ(tracks[1].tkhdFlags & 1U, 1U) << "the only sound plays by itself";
    auto kept = packetHashes(file_);
    kept.erase(kept.begin() + 1);
    auto now = packetHashes(made);
    ASSERT_EQ(now.size(), kept.size() + 1) << "FFmpeg counts the new cover as a stream";
    now.pop_back();
    for (std::size_t i = 0; i < now.size(); i++)  // without the stream's number
        EXPECT_EQ(now[i].substr(1), kept[i].substr(1));
    EXPECT_EQ(probeValue(made, "format_tags=title"), "Charade");
}

TEST_F(DropRun, ATrackThatIsNotThereWritesNothing) {
    const auto result = tag("--drop=Charade:7");
    EXPECT_EQ(result.output,
              "--drop=Charade:7: Charade (1963).mp4 has no sound or subtitle track 7\n");
    EXPECT_EQ(result.status, 0);
    expectUntouched();
    EXPECT_TRUE(fs::is_empty(output_.path()));
}

TEST_F(DropRun, AWrongValueOrNameWritesNothing) {
    EXPECT_EQ(tag("--drop=Charade").output, "--drop=Charade: not \"PART OF A NAME:TRACK,TRACK\"\n");
    EXPECT_EQ(tag("--drop=Detour:1").output, "--drop=Detour:1: no file of that name\n");
    expectUntouched();
}

}  // namespace
}  // namespace marlet::test
