#include "convert/film_stages.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cerrno>
#include <memory>

#include "convert/held_tools.h"
#include "convert/mkv_files.h"
#include "foundation/paths.h"
#include "support/media.h"

namespace marlet::test {

namespace fs = std::filesystem;

namespace {

Bytes makeSurroundFilm() {
    const TempFolder folder;
    ffmpeg({"-f", "lavfi", "-i", "testsrc=size=64x36:rate=25:duration=1", "-f", "lavfi", "-i",
            "anoisesrc=duration=1:sample_rate=48000:amplitude=0.4,pan=5.1|c0=c0|c1=c0|c2=c0|c3=c0|"
            "c4=c0|c5=c0",
            "-c:v", "libx264", "-bf", "2", "-pix_fmt", "yuv420p", "-c:a", "ac3",
            (folder / "raw.mkv").string()});
    folder.write("s.srt", std::string_view("1\n00:00:00,200 --> 00:00:00,800\nHello\n"));
    folder.write("c.txt", std::string_view("CHAPTER01=00:00:00.000\nCHAPTER01NAME=One\n"
                                           "CHAPTER02=00:00:00.500\nCHAPTER02NAME=Two\n"));
    merge(folder / "film.mkv",
          {"--chapters", (folder / "c.txt").string(), "--language", "1:eng",
           (folder / "raw.mkv").string(), "--language", "0:eng", (folder / "s.srt").string()});
    return readFile(folder / "film.mkv");
}

}  // namespace

const Bytes& surroundFilm() {
    static const Bytes film = makeSurroundFilm();
    return film;
}

std::vector<Stage> allStages() {
    return {
        {.name = "CheckOfTheTracks", .tool = "-info"},
        {.name = "Preparing", .label = "Preparing the tracks"},
        {.name = "Sound", .label = "Converting sound (English)", .isOfStereo = true},
        {.name = "Decoding", .tool = "/t2.mkv", .isOfStereo = true},
        {.name = "SurroundEncoding", .tool = "c=ac3", .isOfSurround = true},
        {.name = "Mixing", .label = "Converting sound (English)", .from = 0.06, .isOfStereo = true},
        {.name = "StereoEncoding", .tool = "c=aac", .isOfStereo = true},
        {.name = "Subtitles", .label = "Preparing subtitles"},
        {.name = "BeforeTheBuild", .label = "Building the new file"},
        {.name = "Build", .tool = "-new"},
        {.name = "Details", .label = "Writing details"},
        {.name = "Proof", .label = "Verifying"},
        {.name = "Saving", .label = "Saving the new file"}};
}

bool isSaving(const Stage& stage) {
    return stage.name == "Saving";
}

bool isWhileToolsRead(const Stage& stage) {
    return !isSaving(stage) && stage.name != "Details" && stage.name != "Proof";
}

StagedConversion::StagedConversion(const Stage& stage)
    : FilmConversion("Movie.mkv", surroundFilm()) {
    useOwnTools();
    ConvertPlanSnapshot::Audio& sound = plan().audio.at(0);
    sound.copy = !stage.isOfSurround && !stage.isOfStereo;
    sound.makeSurround = stage.isOfSurround;
    sound.makeStereo = stage.isOfStereo;
}

WriteOutcome StagedConversion::runWith(const Stage& stage,
                                       const std::function<void(pid_t tool)>& act) {
    bool came = false;
    const auto note = [&](pid_t tool) {
        came = true;
        act(tool);
    };
    WriteOutcome outcome;
    {
        std::unique_ptr<HeldTools> tools;
        if (stage.tool.empty())
            at(
                stage.label, [&] { note(0); }, stage.from);
        else
            tools = std::make_unique<HeldTools>(MP4BoxLocator::helpersDir(), stage.tool, note);
        outcome = run();
    }
    EXPECT_TRUE(came) << "the stage never came; it ended with: " << outcome.message;
    return outcome;
}

void StagedConversion::expectTidy() const {
    EXPECT_FALSE(hasWorkFolders());
    const fs::path doorstep = Paths::workDir().parent_path() / "work-doorstep";
    EXPECT_TRUE(!fs::exists(doorstep) || fs::is_empty(doorstep));
    if (fs::is_directory(output())) {
        for (const std::string& name : delivered())
            EXPECT_THAT(name, testing::Not(testing::HasSubstr(".part")));
    }
    EXPECT_EQ(::waitpid(-1, nullptr, WNOHANG), -1) << "a tool is left";
    EXPECT_EQ(errno, ECHILD);
    EXPECT_FALSE(RunControl::criticalActive());
}

}  // namespace marlet::test
