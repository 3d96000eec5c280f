// When in a run pictures are taken, and how such a run ends.

#include "app/headless.h"
#include "app/model_fixture.h"

namespace marlet::test {
namespace {

using Moment = Headless::Shots::Moment;
using testing::ElementsAre;
using testing::IsEmpty;
using Arguments = std::vector<std::string>;

/// Notes when it is asked, and what there was.
class NotingShots : public Headless::Shots {
public:
    explicit NotingShots(AppModel& model) : model_(model) {}
    Task<bool> take(Moment moment) override {
        moments.push_back(moment);
        inReview.push_back(model_.fileCount());
        waiting.push_back(model_.queue().waitingCount());
        co_return moment != fails;
    }
    std::vector<Moment> moments;
    std::vector<int> inReview;
    std::vector<int> waiting;
    std::optional<Moment> fails;

private:
    AppModel& model_;
};

class ShotModes : public ModelTest {
protected:
    Headless::Run run(const Arguments& arguments) {
        testing::internal::CaptureStdout();
        const auto ended =
            Async::wait(Headless::runIfRequested(*model, Headless::parse(arguments), &shots_));
        testing::internal::GetCapturedStdout();
        return ended;
    }
    std::string film() { return file("Charade (1963).mp4").string(); }
    NotingShots& shots() { return shots_; }

private:
    NotingShots shots_{*model};
};

TEST_F(ShotModes, AScanIsSeenBeforeAnythingIsAddedAndWhenAllIsJudged) {
    EXPECT_TRUE(run({"--scan", film(), "--snapshots", "s", "--quit"}).end);
    EXPECT_THAT(shots().moments, ElementsAre(Moment::empty, Moment::reviewed));
    EXPECT_THAT(shots().inReview, ElementsAre(0, 1));
}

TEST_F(ShotModes, AWriteIsSeenBeforeTheRunAndAfterItToo) {
    run({"--tag", film(), "--confirm-all", "--shots", "s", "--quit"});
    EXPECT_THAT(shots().moments,
                ElementsAre(Moment::empty, Moment::reviewed, Moment::queued, Moment::written));
    EXPECT_THAT(shots().waiting, ElementsAre(0, 0, 1, 0));
    EXPECT_EQ(worker->requests().size(), 1U);
}

TEST_F(ShotModes, WithShotsOnlyNothingIsQueued) {
    const auto ended =
        run({"--tag", film(), "--confirm-all", "--shots", "s", "--shots-only", "--quit"});
    EXPECT_THAT(shots().moments, ElementsAre(Moment::empty, Moment::reviewed));
    EXPECT_THAT(worker->requests(), IsEmpty());
    EXPECT_TRUE(ended.end);
}

TEST_F(ShotModes, AboutComesBeforeAWriteAndAScanWhichThenDontHappen) {
    const auto ended =
        run({"--snapshot-about", "a.png", "--tag", film(), "--scan", library.path().string()});
    EXPECT_THAT(shots().moments, ElementsAre(Moment::about));
    EXPECT_EQ(model->fileCount(), 0);
    EXPECT_TRUE(ended.end);
}

TEST_F(ShotModes, ADiagnosisComesBeforeAbout) {
    EXPECT_TRUE(run({"--snapshot-about-window", "a.png", "--mkv-in", film()}).end);
    EXPECT_THAT(shots().moments, IsEmpty());
}

TEST_F(ShotModes, PicturesWithoutFilesEndTheProgramUnlessItIsToStayOpen) {
    for (const char* option : {"--empty-shots=e", "--picker-demo=d", "--shots=s"}) {
        shots().moments.clear();
        EXPECT_TRUE(run({option}).end) << option;
        EXPECT_THAT(shots().moments, ElementsAre(Moment::empty, Moment::reviewed)) << option;
        EXPECT_FALSE(run({option, "--keep-open"}).end) << option;
    }
    EXPECT_TRUE(run({"--snapshot-about=a.png"}).end);
    EXPECT_FALSE(run({"--snapshot-about=a.png", "--keep-open"}).end);
    EXPECT_FALSE(run({"--scan", film(), "--snapshots", "s"}).end);
}

TEST_F(ShotModes, APictureThatFailsIsAFailureOfTheRunWhichGoesOn) {
    int number = 0;
    for (const Moment moment : {Moment::empty, Moment::reviewed, Moment::queued, Moment::written}) {
        shots().moments.clear();
        shots().fails = moment;
        const auto film = file(std::to_string(++number) + "/Charade (1963).mp4");
        EXPECT_EQ(run({"--tag", film.string(), "--confirm-all", "--shots", "s"}).ended,
                  RunEnd::failed);
        EXPECT_EQ(shots().moments.size(), 4U);
    }
}

TEST_F(ShotModes, WithoutWindowsTheOptionsAreTakenAndNothingComesOfThem) {
    const auto ended = Async::wait(Headless::runIfRequested(
        *model, Headless::parse({"--empty-shots", "e", "--snapshot-about", "a.png"})));
    EXPECT_EQ(ended.ended, RunEnd::done);
    EXPECT_TRUE(ended.end);
}

}  // namespace
}  // namespace marlet::test
