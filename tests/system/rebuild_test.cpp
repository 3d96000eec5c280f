// Real films whose sound lies in long stretches go through the real program, with each kind of
// media tool.

#include <gtest/gtest.h>

#include <filesystem>

#include "mp4/sound_layout.h"
#include "mp4/summary.h"
#include "support/bad_films.h"
#include "support/bundle.h"
#include "support/media.h"
#include "system/program_run.h"

namespace marlet::test {
namespace {

namespace fs = std::filesystem;
using Tools = Bundle::Tools;

struct Case {
    Tools tools;
    BadFilm film;
};
void PrintTo(const Case& which, std::ostream* out) {
    *out << which.film.name;
}

class Rebuild : public testing::TestWithParam<Case> {
protected:
    void SetUp() override {
        run_.programs = bundle_.program("marlet").parent_path();
        file_ = run_.library() / ("Charade (1963)" + GetParam().film.extension);
        makeBadFilm(GetParam().film, file_);
        original_ = originals_ / ("Charade" + GetParam().film.extension);
        fs::copy_file(file_, original_);
    }

    ProgramRun run_;
    TempFolder originals_;
    Bundle bundle_{toolsOrSkip(GetParam().tools)};
    fs::path file_;
    fs::path original_;
};

void expectSameHeaders(const fs::path& a, const fs::path& b) {
    const MP4Summary before = parseSummary(loadMoov(a), a, Detail::Yes);
    const MP4Summary after = parseSummary(loadMoov(b), b, Detail::Yes);
    ASSERT_EQ(before.tracks.size(), after.tracks.size());
    for (std::size_t i = 0; i < before.tracks.size(); i++) {
        const Track& was = before.tracks[i];
        const Track& is = after.tracks[i];
        EXPECT_EQ(was.language, is.language);
        EXPECT_EQ(was.tkhdCreated, is.tkhdCreated);
        EXPECT_EQ(was.tkhdModified, is.tkhdModified);
        EXPECT_EQ(was.mdhdCreated, is.mdhdCreated);
        EXPECT_EQ(was.mdhdModified, is.mdhdModified);
        EXPECT_EQ(was.tkhdFlags, is.tkhdFlags);
        EXPECT_EQ(was.elstDigest, is.elstDigest);
        EXPECT_EQ(was.chapRefs, is.chapRefs);
    }
    EXPECT_EQ(before.chpl, after.chpl);
}

TEST_P(Rebuild, LaysTheSoundOutAnewInTheSameFileAndKeepsAllElse) {
    const std::uint64_t inode = inodeOf(file_);
    const auto packets = packetHashes(file_);
    ASSERT_GT(measureInterleave(file_), 1.0);
    ASSERT_GT(longestSoundStretch(file_), 1.0);

    const auto result = run_.marlet({"--tag", file_.string(), "--confirm-all", "--quit"});

    ASSERT_EQ(result.lines("RESULT done: Charade | Details written; sound layout fixed (").size(),
              1U)
        << result.output;
    EXPECT_LE(measureInterleave(file_), 1.0);
    EXPECT_LE(longestSoundStretch(file_), 1.0);
    auto now = packetHashes(file_);
    ASSERT_EQ(now.size(), packets.size() + 1) << "FFmpeg counts the new cover as a stream";
    now.pop_back();
    EXPECT_EQ(now, packets);
    EXPECT_EQ(inodeOf(file_), inode);
    EXPECT_EQ(probeValue(file_, "format_tags=title"), "Charade");
    expectSameHeaders(original_, file_);
}

TEST_P(Rebuild, AFileThatWasFixedOnceIsLeftInItsLayout) {
    const std::vector<std::string> arguments = {"--tag", file_.string(), "--confirm-all", "--quit"};
    ASSERT_EQ(run_.marlet(arguments).lines("RESULT done").size(), 1U);
    const auto again = run_.marlet(arguments);
    EXPECT_EQ(again.lines("RESULT done: Charade | Details written | ").size(), 1U) << again.output;
    EXPECT_LE(measureInterleave(file_), 1.0);
}

TEST(FlatFilms, ThatGpacStoredTrackByTrackAreFixedByEachTool) {
    const auto gpac = gpacOnPath();
    if (!gpac) GTEST_SKIP() << "no GPAC 2.2 or newer on the PATH";
    const TempFolder films;
    makeBadFilm(badFilms().front(), films / "film.mp4");
    runTool({(*gpac / "MP4Box").string(), "-quiet", "-flat", films / "film.mp4", "-out",
             films / "flat.mp4"});
    for (const Tools tools : {Tools::own, Tools::gpac}) {
        ProgramRun run;
        const Bundle bundle(tools);
        run.programs = bundle.program("marlet").parent_path();
        const fs::path file = run.library() / "Charade (1963).mp4";
        fs::copy_file(films / "flat.mp4", file);
        ASSERT_GT(longestSoundStretch(file), 1.0);
        const auto result = run.marlet({"--tag", file.string(), "--confirm-all", "--quit"});
        EXPECT_EQ(result.lines("RESULT done").size(), 1U) << result.output;
        EXPECT_LE(longestSoundStretch(file), 1.0);
    }
}

std::vector<Case> casesWith(Tools tools) {
    std::vector<Case> cases;
    for (const BadFilm& film : badFilms()) cases.push_back({tools, film});
    return cases;
}

std::string nameOf(const testing::TestParamInfo<Case>& info) {
    return info.param.film.name;
}

INSTANTIATE_TEST_SUITE_P(Own, Rebuild, testing::ValuesIn(casesWith(Tools::own)), nameOf);
INSTANTIATE_TEST_SUITE_P(Gpac, Rebuild, testing::ValuesIn(casesWith(Tools::gpac)), nameOf);

}  // namespace
}  // namespace marlet::test
