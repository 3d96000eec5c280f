// Whether a run without a mode, or with one, is to end the program.

#include "app/headless.h"
#include "app/model_fixture.h"

namespace marlet::test {
namespace {

using Arguments = std::vector<std::string>;

class Modes : public ModelTest {
protected:
    Headless::Run run(const Arguments& arguments) {
        testing::internal::CaptureStdout();
        const Headless::Run run =
            Async::wait(Headless::runIfRequested(*model, Headless::parse(arguments)));
        printed = testing::internal::GetCapturedStdout();
        return run;
    }
    std::string printed;
};

TEST_F(Modes, WithoutAModeNothingIsDoneAndTheProgramStaysOpen) {
    for (const Arguments& arguments :
         {Arguments{}, Arguments{"--scan"}, Arguments{"--scan", "--json"}, Arguments{"--quit"},
          Arguments{"--tag", "--quit"}, Arguments{"--report", "r.tsv"}}) {
        const Headless::Run ran = run(arguments);
        EXPECT_FALSE(ran.end) << testing::PrintToString(arguments);
        EXPECT_EQ(ran.ended, RunEnd::done);
        EXPECT_EQ(printed, "");
    }
    EXPECT_EQ(model->fileCount(), 0);
    EXPECT_EQ(server.requestCount("."), 0);
}

TEST_F(Modes, AScanEndsTheProgramOnlyWhenToldToAndADiagnosisAlways) {
    const std::string film = file("Charade (1963).mp4").string();
    EXPECT_FALSE(run({"--scan", film}).end);
    EXPECT_EQ(model->fileCount(), 1);
    EXPECT_TRUE(run({"--scan", film, "--quit"}).end);
    EXPECT_TRUE(run({"--mkv-in", film}).end);
    EXPECT_EQ(printed, "not readable\n");
    EXPECT_TRUE(run({"--restore-last-batch"}).end);
    EXPECT_EQ(printed, "no run in History\n");
}

}  // namespace
}  // namespace marlet::test
