// A service token goes through the whole program and is left nowhere.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>

#include <chrono>
#include <thread>

#include "support/bad_films.h"
#include "support/bundle.h"
#include "support/media.h"
#include "system/program_run.h"
#include "system/token_search.h"

namespace marlet::test {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;
using Tools = Bundle::Tools;

constexpr const char* token = "tkn-5e0b7f3a-nobody-may-read-this";

class KeySecrecy : public testing::Test {
protected:
    KeySecrecy() {
        run_.environment["MARLET_TMDB_TOKEN"] = token;
        // Qt tells all that it would ever tell.
        run_.environment["QT_LOGGING_RULES"] = "*=true";
    }
    void useTools(Tools tools) {
        bundle_ = std::make_unique<Bundle>(tools);
        run_.programs = bundle_->program("marlet").parent_path();
    }
    /// A film that the media tool has to lay out anew.
    fs::path film() {
        const BadFilm bad = badFilms().front();
        const fs::path file = run_.library() / ("Charade (1963)" + bad.extension);
        makeBadFilm(bad, file);
        return file;
    }
    /// The program while its media tool stands still.
    std::unique_ptr<Process> held() {
        useTools(Tools::none);
        bundle_->putScript("exec sleep 600");
        auto process =
            run_.start("marlet", {"--tag", film().string(), "--confirm-all", "--trace", "--quit"});
        for (int i = 0; i < 10000 && descendantsOf(process->pid()).empty(); i++)
            std::this_thread::sleep_for(std::chrono::milliseconds(2));
        return process;
    }
    void expectNoToken(const std::string& text) { EXPECT_THAT(text, Not(HasSubstr(token))); }
    void expectNoTokenLeft() {
        EXPECT_THAT(filesHolding(homeFolder(), token), IsEmpty());
        EXPECT_THAT(filesHolding(homeFolder(), "Bearer"), IsEmpty());
        EXPECT_THAT(filesHolding(run_.library(), token), IsEmpty());
        EXPECT_EQ(run_.catalogue().targetCount(token), 0) << "no address holds it";
        EXPECT_GT(run_.catalogue().totalWithToken(), 0) << "though it was used";
    }

    ProgramRun run_;
    std::unique_ptr<Bundle> bundle_;
};

TEST_F(KeySecrecy, AScanAndAWriteLeaveTheTokenInNoFileNoLogAndNoAddress) {
    useTools(Tools::own);
    const fs::path file = film();
    const auto scanned = run_.marlet({"--scan", run_.library().string(), "--report",
                                      (run_.library() / "r.tsv").string(), "--trace", "--quit"});
    const auto tagged = run_.marlet({"--tag", file.string(), "--confirm-all", "--progress",
                                     "--art-report", "--trace", "--quit"});
    ASSERT_THAT(tagged.lines("RESULT done"), SizeIs(1)) << tagged.output << tagged.errors;
    for (const auto& result : {scanned, tagged}) {
        expectNoToken(result.output);
        expectNoToken(result.errors);
    }
    expectNoTokenLeft();
    EXPECT_THAT(filesHolding(homeFolder(), "Charade"), Not(IsEmpty())) << "the search does find";
}

TEST_F(KeySecrecy, ATokenThatIsRejectedIsLeftNowhereEither) {
    run_.catalogue().fault(R"({"times":0,"status":401})");
    const fs::path file = film();
    const auto result = run_.marlet({"--tag", file.string(), "--confirm-all", "--trace", "--quit"});
    expectNoToken(result.output + result.errors);
    expectNoTokenLeft();
}

TEST_F(KeySecrecy, NoMediaToolSeesTheTokenInItsArgumentsOrItsEnvironment) {
    const auto process = held();
    const auto tools = descendantsOf(process->pid());
    ASSERT_FALSE(tools.empty()) << process->output() << process->errors();
    for (const pid_t tool : tools) {
        const std::string face = publicFaceOf(tool);
        EXPECT_THAT(face, HasSubstr("PATH=")) << "the environment was read";
        expectNoToken(face);
    }
    // The program itself was given it by whoever started it, and by its environment alone.
    const std::string own = publicFaceOf(process->pid());
    expectNoToken(own.substr(0, own.find('\n')));
    EXPECT_THAT(own, HasSubstr(token)) << "so a tool's would have been found";
}

TEST_F(KeySecrecy, ACrashTellsNothingAndLeavesNoImageOfTheMemory) {
    const auto process = held();
    const std::string limits =
        textOf(readFile("/proc/" + std::to_string(process->pid()) + "/limits"));
    EXPECT_THAT(limits, testing::ContainsRegex("Max core file size +1 +1 "));
    process->signal(SIGSEGV);
    EXPECT_EQ(process->wait(), 128 + SIGSEGV);
    expectNoToken(process->output() + process->errors());
    expectNoTokenLeft();
}

}  // namespace
}  // namespace marlet::test
