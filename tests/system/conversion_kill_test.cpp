// A conversion is killed at any moment: while the sound is converted, while the media tool builds,
// while it proves and while the new file is copied. After the next start nothing of it is left, or
// the new file is there whole; the original is what it was.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>

#include <filesystem>
#include <functional>
#include <memory>
#include <nlohmann/json.hpp>
#include <random>
#include <thread>

#include "foundation/paths.h"
#include "mp4/sound_layout.h"
#include "support/bundle.h"
#include "support/media.h"
#include "support/process.h"
#include "support/temp_folder.h"
#include "system/film_to_convert.h"

namespace marlet::test {
namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;
using Seconds = std::chrono::duration<double>;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;
using Tools = Bundle::Tools;

constexpr int killsEach = 30;
constexpr int killsOfGpac = 15;  // its tools take a while to start

bool holdsPart(const fs::path& folder) {
    for (const std::string& name : namesIn(folder))
        if (name.find(".part") != std::string::npos) return true;
    return false;
}

/// The one job's folder, once it is there.
fs::path jobFolder() {
    const auto names = namesIn(Paths::workDir());
    return names.empty() ? fs::path("/nowhere") : Paths::workDir() / names.front();
}

bool makesSound() {
    for (const std::string& name : namesIn(jobFolder() / "sound"))
        if (name.ends_with(".making")) return true;
    return false;
}
bool builds() {
    return fs::exists(jobFolder() / "tool");
}
bool proves() {
    return fs::exists(jobFolder() / "built.mp4");
}

class KilledConversion : public testing::TestWithParam<std::tuple<Tools, unsigned>> {
protected:
    void SetUp() override {
        // Some megabytes, so that saving takes a while.
        writeFile(source_, filmToConvert({.quantiser = 6}));
        bytes_ = readFile(source_);
        date_ = fs::last_write_time(source_);
        request_ = folder_.write("request.json", nlohmann::json{{"mode", "convert"},
                                                                {"file", source_.string()},
                                                                {"outputDir", output_.string()},
                                                                {"details", {{"title", "Charade"}}}}
                                                     .dump());
    }
    std::unique_ptr<Process> start(const std::string& argument) const {
        return std::make_unique<Process>(bundle_.program("one_job"),
                                         std::vector<std::string>{argument});
    }
    void killAt(const std::function<bool()>& moment, Seconds behindIt) const {
        const auto process = start(request_.string());
        while (!process->hasEnded() && !moment())
            std::this_thread::sleep_for(std::chrono::microseconds(500));
        std::this_thread::sleep_for(behindIt);
        process->signal(SIGKILL);
        process->wait();
        EXPECT_THAT(processesLeftAt(home_.path()), IsEmpty()) << "a media tool outlived it";
    }
    void expectOriginal() const {
        ASSERT_EQ(readFile(source_), bytes_);
        ASSERT_EQ(fs::last_write_time(source_), date_);
        ASSERT_EQ(namesIn(source_.parent_path()).size(), 1U);
    }

    OwnHome home_;
    TempFolder folder_;
    fs::path source_ = folder_.write("films/Charade.mkv", "");
    fs::path output_ = folder_ / "output";
    fs::path made_ = output_ / "Charade.m4v";
    fs::path request_;
    Bundle bundle_{toolsOrSkip(std::get<0>(GetParam()))};
    Bytes bytes_;
    fs::file_time_type date_;
};

TEST_P(KilledConversion, LeavesNothingOrTheWholeNewFileAfterTheNextStart) {
    const auto begun = Clock::now();
    {
        const auto process = start(request_.string());
        ASSERT_EQ(process->wait(), 0);
        ASSERT_THAT(process->output(), StartsWith("RESULT done: "));
    }
    const Seconds took = Clock::now() - begun;
    const auto size = fs::file_size(made_);
    const auto frames = packetHashes(made_);
    fs::remove(made_);

    std::mt19937 random(std::get<1>(GetParam()));
    const auto upTo = [&](double seconds) {
        return Seconds(std::uniform_real_distribution<double>(0, seconds)(random));
    };
    const auto atOnce = [] { return true; };
    const auto saves = [&] { return holdsPart(output_); };
    int withPart = 0;
    int withFolder = 0;
    int delivered = 0;
    const int kills = std::get<0>(GetParam()) == Tools::gpac ? killsOfGpac : killsEach;
    for (int i = 0; i < kills; i++) {
        SCOPED_TRACE("kill number " + std::to_string(i));
        switch (i % 5) {
            case 0:
                killAt(atOnce, upTo(took.count() * 1.1));
                break;
            case 1:
                killAt(makesSound, upTo(0.06));
                break;
            case 2:
                killAt(builds, upTo(0.03));
                break;
            case 3:
                killAt(proves, upTo(0.02));
                break;
            default:
                killAt(saves, upTo(0.02));
        }
        withPart += holdsPart(output_) ? 1 : 0;
        withFolder += namesIn(Paths::workDir()).empty() ? 0 : 1;
        ASSERT_NO_FATAL_FAILURE(expectOriginal());

        const auto next = start("--start");
        ASSERT_EQ(next->wait(), 0);
        ASSERT_EQ(next->output(), "");
        ASSERT_NO_FATAL_FAILURE(expectOriginal());
        ASSERT_THAT(namesIn(Paths::workDir()), IsEmpty());
        ASSERT_THAT(namesIn(Paths::workDir().parent_path() / "work-doorstep"), IsEmpty());
        if (namesIn(output_).empty()) continue;
        ASSERT_THAT(namesIn(output_), ElementsAre("Charade.m4v"));
        ASSERT_EQ(fs::file_size(made_), size);
        ASSERT_EQ(packetHashes(made_), frames);
        fs::remove(made_);
        delivered++;
    }
    // Kills that all fell before the first byte, or behind the last, would prove little.
    EXPECT_GT(withFolder, kills / 4);
    EXPECT_GT(withPart, 0);
    EXPECT_LT(delivered, kills / 2);
}

std::string nameOf(const testing::TestParamInfo<std::tuple<Tools, unsigned>>& info) {
    const bool isGpac = std::get<0>(info.param) == Tools::gpac;
    return (isGpac ? "Gpac" : "Own") + std::to_string(std::get<1>(info.param));
}
// Seeds apart, so that they can run side by side.
INSTANTIATE_TEST_SUITE_P(Own, KilledConversion,
                         testing::Combine(testing::Values(Tools::own), testing::Values(401u, 402u)),
                         nameOf);
INSTANTIATE_TEST_SUITE_P(Gpac, KilledConversion,
                         testing::Combine(testing::Values(Tools::gpac), testing::Values(403u)),
                         nameOf);

}  // namespace
}  // namespace marlet::test
