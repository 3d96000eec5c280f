#include <filesystem>
#include <future>

#include "app/model_fixture.h"
#include "app/settings.h"
#include "foundation/errors.h"
#include "foundation/text.h"
#include "write/ilst_editor.h"

namespace marlet::test {
namespace {

namespace fs = std::filesystem;
using State = WriteQueue::Job::State;
using testing::ElementsAre;
using testing::HasSubstr;

class Queueing : public ModelTest {
protected:
    const WriteQueue::Job& onlyJob() {
        EXPECT_EQ(model->queue().jobs().size(), 1u);
        return model->queue().jobs().at(0);
    }
    /// The bytes of one item of a job's tags; empty when it has none of that name.
    static std::string tag(const WriteQueue::Job& job, const std::string& name) {
        const auto* details = std::get_if<WriteRequest::WriteDetails>(&job.request.mode);
        const auto* convert = std::get_if<ConvertRequest>(&job.request.mode);
        for (const Atom& atom : details ? details->atoms : convert->atoms)
            if (atom.name == name) return textOf(atom.bytes);
        return {};
    }
};

TEST_F(Queueing, WithoutAKeyTheToastSaysSoAndNothingMoves) {
    addConfirmed({"Charade (1963).mp4"});
    RunMode::setArguments({"--unattended"});  // or else the keyring is asked
    const ScopedEnv none("MARLET_TMDB_TOKEN", "");
    model->notice = "stays";
    queueAll();
    EXPECT_EQ(model->toast(), "Add your TMDB key in Settings first.");
    EXPECT_EQ(model->notice, "stays");
    EXPECT_EQ(model->fileCount(), 1);
    EXPECT_TRUE(model->queue().jobs().empty());
    EXPECT_FALSE(model->isAdding());
}

TEST_F(Queueing, OfTwoFilesOfAnItemOneUnconfirmedMakesOneJobAndANoticeWithTheFixedPluralVerb) {
    const std::string first = "The Tin Observatory/Season 1/01 First Light.mp4";
    const std::string second = "The Tin Observatory/Season 1/02 Something Else.mp4";
    add({file(first), file(second)});
    ASSERT_EQ(model->items().size(), 1u);
    ASSERT_FALSE(model->isConfirmed(*find(second)));
    ASSERT_TRUE(model->isConfirmed(*find(first))) << "it needs no yes";
    queueAll();
    EXPECT_EQ(onlyJob().label, "The Tin Observatory · S1E1");
    EXPECT_EQ(model->notice, "1 file still need a look and weren't added. 1 added to the queue.");
    EXPECT_EQ(model->toast(), "Added to Queue");
    EXPECT_NE(find(second), nullptr);
    EXPECT_EQ(find(first), nullptr);
    EXPECT_TRUE(model->queuedFiles().contains(library / first));
}

TEST_F(Queueing, SeveralAreCountedInTheNoticeAndTheToast) {
    add({file("Charade (1963).mp4"), file("Sintel (2010).mp4"), file("Detour (1945).mp4"),
         file("Faust (1926).mp4")});
    model->confirm(library / "Charade (1963).mp4");
    model->confirm(library / "Sintel (2010).mp4");
    queueAll();
    EXPECT_EQ(model->notice, "2 files still need a look and weren't added. 2 added to the queue.");
    EXPECT_EQ(model->toast(), "2 added to Queue");
}

TEST_F(Queueing, ThereIsNoNoticeWhenAllWentWell) {
    addConfirmed({"Charade (1963).mp4"});
    model->notice = "old";
    queueAll();
    EXPECT_FALSE(model->notice);
    EXPECT_FALSE(model->queue().active()) << "starting is the person's";
}

TEST_F(Queueing, AJobHoldsEverythingThatTheWriterNeeds) {
    addConfirmed({"Charade (1963).mp4"});
    queueAll();
    const WriteQueue::Job& job = onlyJob();
    EXPECT_EQ(job.title, "Charade");
    EXPECT_TRUE(job.isMovie);
    EXPECT_EQ(job.year, 1963);
    EXPECT_EQ(job.size, fs::file_size(library / "Charade (1963).mp4"));
    EXPECT_EQ(job.how, "Changed in place");
    EXPECT_EQ(job.summary, "details and cover art");
    EXPECT_TRUE(job.request.fixLayout);
    EXPECT_EQ(job.request.outputDir, home.path() / "Desktop");
    EXPECT_THAT(tag(job, "©nam"), HasSubstr("Charade"));
    EXPECT_FALSE(tag(job, "covr").empty());
    ASSERT_TRUE(job.posterPath);
    EXPECT_TRUE(fs::exists(*job.posterPath));
}

TEST_F(Queueing, TheSettingsOfThatMomentGoIntoTheJob) {
    addConfirmed({"Charade (1963).mp4"});
    Preferences::current().setBoolean("fixForAppleTV", false);
    Preferences::current().setBoolean("outputSameFolder", true);
    queueAll();
    Preferences::current().setBoolean("fixForAppleTV", true);
    EXPECT_FALSE(onlyJob().request.fixLayout);
    EXPECT_EQ(onlyJob().request.outputDir, library.path());
}

TEST_F(Queueing, ALaterEditOfADraftDoesNotReachTheJob) {
    addConfirmed({"Charade (1963).mp4"});
    queueAll();
    model->drafts().find(library / "Charade (1963).mp4")->details.title = "Changed";
    EXPECT_THAT(tag(onlyJob(), "©nam"), HasSubstr("Charade"));
}

TEST_F(Queueing, WhatThePersonEditedAndPickedIsWhatIsWritten) {
    addConfirmed({"Charade (1963).mp4"});
    Async::wait(model->loadDrafts(*itemOf("Charade (1963).mp4")));
    FileDraft& mine = *model->drafts().find(library / "Charade (1963).mp4");
    mine.details.title = "My Title";
    mine.styleOverride = ArtworkStyle::tall;
    server.resetStats();
    queueAll();
    EXPECT_EQ(onlyJob().label, "My Title");
    EXPECT_EQ(server.requestCount("^/t/p/w780" + mine.chosenTall->path), 1);
    EXPECT_EQ(server.requestCount("^/t/p/w1280"), 0);
}

TEST_F(Queueing, TheStoredStyleDecidesWhichCoverIsFetched) {
    addConfirmed({"Charade (1963).mp4"});
    Async::wait(model->loadDrafts(*itemOf("Charade (1963).mp4")));
    const FileDraft loaded = *draft("Charade (1963).mp4");
    ASSERT_TRUE(loaded.chosenTall && loaded.chosenWide);
    const auto fetched = [&](const std::string& size, const ArtworkOption& option) {
        return server.requestCount("^/t/p/" + size + option.path);
    };
    queueAll();
    EXPECT_EQ(fetched("w1280", *loaded.chosenWide), 1) << "wide, unless something is stored";
    EXPECT_EQ(server.requestCount("^/t/p/w780"), 0);
    const std::string wide = tag(onlyJob(), "covr");

    model->queue().remove(onlyJob().id);
    Settings::setArtworkStyle(ArtworkStyle::tall);
    server.resetStats();
    queueAll();
    EXPECT_EQ(fetched("w780", *loaded.chosenTall), 1);
    EXPECT_EQ(server.requestCount("^/t/p/w1280"), 0);
    EXPECT_NE(tag(onlyJob(), "covr"), wide);
}

TEST_F(Queueing, APictureThatCannotBeHadIsLeftOutAndTheDetailsAreStillWritten) {
    addConfirmed({"Charade (1963).mp4"});
    server.fault(R"({"path":"^/t/p/","times":0,"status":404})");
    queueAll();
    EXPECT_TRUE(tag(onlyJob(), "covr").empty());
    EXPECT_FALSE(onlyJob().posterPath);
    EXPECT_FALSE(model->notice);
}

TEST_F(Queueing, AnEpisodeIsLabelledByItsShowAndNumber) {
    addConfirmed({"The Tin Observatory/Season 1/01 First Light.mp4"});
    queueAll();
    EXPECT_EQ(onlyJob().label, "The Tin Observatory · S1E1");
    EXPECT_EQ(onlyJob().title, "First Light");
    EXPECT_EQ(onlyJob().show, "The Tin Observatory");
    EXPECT_EQ(onlyJob().season, 1);
    EXPECT_EQ(onlyJob().episode, 1);
    EXPECT_FALSE(onlyJob().isMovie);
}

TEST_F(Queueing, LabelsFallBackOnTheTitleAndTheFilesName) {
    Details details;
    EXPECT_EQ(AppModel::label(details, "/a/b.mp4"), "b");
    details.title = "T";
    EXPECT_EQ(AppModel::label(details, "/a/b.mp4"), "T");
    details.kind = MediaKind::tv;
    details.show = "S";
    EXPECT_EQ(AppModel::label(details, "/a/b.mp4"), "S · T");
    details.season = 1;
    details.episode = 5;
    details.episodeEnd = 6;
    EXPECT_EQ(AppModel::label(details, "/a/b.mp4"), "S · S1E5-6");
}

TEST_F(Queueing, AFileInALockedMediaLibraryIsSilentlyPassedOver) {
    addConfirmed({"Media Library/Charade (1963).mp4", "Sintel (2010).mp4"});
    queueAll();
    EXPECT_EQ(onlyJob().label, "Sintel");
    EXPECT_FALSE(model->notice);
    EXPECT_EQ(model->toast(), "Added to Queue");
    EXPECT_NE(find("Media Library/Charade (1963).mp4"), nullptr);
}

TEST_F(Queueing, AConfirmedFileWithoutAMatchIsPassedOver) {
    addConfirmed({"qqqq zzzz.mp4"});
    queueAll();
    EXPECT_TRUE(model->queue().jobs().empty());
    EXPECT_FALSE(model->notice || model->toast());
}

class Converting : public Queueing {
protected:
    static ConvertPlan refused(const std::string& words) {
        ConvertPlan plan = *convertible();
        plan.videoVerdict = VideoVerdict::unsupported(words);
        return plan;
    }
    void planned(std::optional<ConvertPlan> plan) {
        parts.planBuilder = [plan](const auto&) { return plan; };
        make();
    }
};

TEST_F(Converting, AMatroskaFileWithoutAPlanCannotBeRead) {
    planned({});
    addConfirmed({"Charade (1963).mkv", "Sintel (2010).mp4"});
    queueAll();
    EXPECT_EQ(model->notice,
              "Not added: Charade (1963).mkv: this file can't be read 1 added to the queue.");
    EXPECT_EQ(model->toast(), "Not added: Charade (1963).mkv: this file can't be read");
    EXPECT_EQ(onlyJob().label, "Sintel");
    EXPECT_NE(find("Charade (1963).mkv"), nullptr);
}

TEST_F(Converting, APlanThatRefusesGivesItsReasonAndReasonsGoBehindTheNotice) {
    planned(refused("Apple TV can't play it"));
    addConfirmed({"Charade (1963).mkv", "Sintel (2010).mkv"});
    add({file("Detour (1945).mp4")});
    queueAll();
    EXPECT_EQ(model->notice,
              "1 file still need a look and weren't added. Not added: Charade (1963).mkv: Apple TV "
              "can't play it Sintel (2010).mkv: Apple TV can't play it");
}

TEST_F(Converting, ARefusalWithoutWordsSaysThatItCannotBeConverted) {
    planned(refused(""));
    addConfirmed({"Charade (1963).mkv"});
    queueAll();
    EXPECT_EQ(model->notice, "Not added: Charade (1963).mkv: can't be converted");
}

TEST_F(Converting, AnAnalysisThatThrowsIsAFileThatCannotBeRead) {
    parts.planBuilder = [](const auto&) -> std::optional<ConvertPlan> { throw MFError("broken"); };
    make();
    addConfirmed({"Charade (1963).mkv"});
    queueAll();
    EXPECT_THAT(*model->notice, HasSubstr("this file can't be read"));
    EXPECT_FALSE(model->isAdding());
}

TEST_F(Converting, AConversionBecomesANewFileInTheOutputFolder) {
    planned(convertible());
    addConfirmed({"Charade (1963).mkv", "Sintel (2010).mov"});
    AppModel::outputOverride = "/new";
    queueAll();
    ASSERT_EQ(model->queue().jobs().size(), 2u);
    for (const WriteQueue::Job& job : model->queue().jobs()) {
        ASSERT_TRUE(job.request.isConvert());
        EXPECT_EQ(std::get<ConvertRequest>(job.request.mode).outputDir, "/new");
        EXPECT_EQ(std::get<ConvertRequest>(job.request.mode).source, job.request.file);
        EXPECT_EQ(job.how, "New .m4v");
        EXPECT_EQ(job.summary, "details and cover art");
        EXPECT_FALSE(tag(job, "©nam").empty());
    }
}

TEST_F(Converting, AFileWithoutVideoIsRefusedInThePlansWords) {
    planned(ConvertPlan{});
    addConfirmed({"Charade (1963).mkv"});
    queueAll();
    EXPECT_EQ(model->notice, "Not added: Charade (1963).mkv: no video track");
}

TEST_F(Converting, AFileThatIsNoMatroskaFileCannotBeRead) {
    addConfirmed({"Charade (1963).mkv"});  // the real builder
    queueAll();
    EXPECT_EQ(model->notice, "Not added: Charade (1963).mkv: this file can't be read");
}

TEST_F(Converting, TheJobCarriesThePlanWithWhatThePersonTicked) {
    ConvertPlan plan = *convertible();
    plan.audio.push_back({.track = {.number = 2, .type = 2, .codecID = "A_AAC", .channels = 2},
                          .keep = true,
                          .canCopy = true});
    plan.audio.push_back({.track = {.number = 3, .type = 2, .codecID = "A_AAC", .channels = 2},
                          .keep = true,
                          .canCopy = true});
    plan.subs.push_back({.id = "mkv4", .track = MKVTrack{.number = 4}});
    planned(plan);
    addConfirmed({"Charade (1963).mkv"});
    const auto file = library / "Charade (1963).mkv";
    Async::wait(model->plans().finish(file));
    ASSERT_TRUE(model->plans().setKeepSound(file, 3, false));
    queueAll();
    const auto& request = std::get<ConvertRequest>(onlyJob().request.mode);
    ASSERT_TRUE(request.plan);
    EXPECT_EQ(request.plan->video, 1);
    ASSERT_EQ(request.plan->audio.size(), 1u);
    EXPECT_EQ(request.plan->audio[0].track, 2);
    EXPECT_EQ(onlyJob().summary, "1 sound, 1 subtitle removed");
}

TEST_F(Converting, ASummaryTellsWhatIsLeftOut) {
    ConvertPlan plan;
    EXPECT_EQ(AppModel::summary(plan), "");
    plan.audio.resize(3);
    plan.audio[0].keep = true;
    EXPECT_EQ(AppModel::summary(plan), "2 sound removed");
    plan.subs.push_back({.id = "side:a.srt", .sidecar = "a.srt"});
    EXPECT_EQ(AppModel::summary(plan), "2 sound removed") << "it stays beside the film";
    plan.subs.push_back({.id = "mkv4", .track = MKVTrack{}});
    EXPECT_EQ(AppModel::summary(plan), "2 sound, 1 subtitle removed");
    plan.subs.push_back({.id = "pgsforced5", .track = MKVTrack{}, .splitForced = true});
    EXPECT_EQ(AppModel::summary(plan), "2 sound, 1 subtitle removed") << "no track of its own";
    plan.subs.push_back({.id = "mkv6", .track = MKVTrack{}});
    EXPECT_EQ(AppModel::summary(plan), "2 sound, 2 subtitle removed");
    plan.audio.clear();
    EXPECT_EQ(AppModel::summary(plan), "2 subtitle removed");
}

using Returning = Queueing;

TEST_F(Returning, ARemovedJobsFileReturnsToReviewWithItsDraftAsItWas) {
    addConfirmed({"Charade (1963).mp4"});
    Async::wait(model->loadDrafts(*itemOf("Charade (1963).mp4")));
    model->drafts().find(library / "Charade (1963).mp4")->details.title = "Mine";
    queueAll();
    ASSERT_EQ(model->fileCount(), 0);
    model->queue().remove(onlyJob().id);
    ASSERT_NE(find("Charade (1963).mp4"), nullptr);
    EXPECT_EQ(draft("Charade (1963).mp4")->details.title, "Mine");
    EXPECT_EQ(model->readyCount(), 1);
    EXPECT_TRUE(model->queuedFiles().empty());
}

TEST_F(Returning, TheSelectionIsClearedWhenItsItemHasLeft) {
    addConfirmed({"Charade (1963).mp4"});
    model->reviewID = itemOf("Charade (1963).mp4")->id;
    queueAll();
    EXPECT_FALSE(model->reviewID);
}

TEST_F(Returning, AFinishedFileIsGoneFromEverything) {
    addConfirmed({"Charade (1963).mp4"});
    queueAll();
    runQueue();
    EXPECT_EQ(onlyJob().state, State::done);
    EXPECT_TRUE(model->queuedFiles().empty());
    EXPECT_EQ(draft("Charade (1963).mp4"), nullptr);
    add({library / "Charade (1963).mp4"});
    ASSERT_EQ(model->fileCount(), 1);
    EXPECT_FALSE(model->isConfirmed(*find("Charade (1963).mp4")));
}

TEST_F(Returning, AFailedFileComesBackWhenTheResultsAreDismissed) {
    worker->outcomes = {{"Charade (1963).mp4", WriteOutcome::Status::failed}};
    addConfirmed({"Charade (1963).mp4", "Sintel (2010).mp4"});
    queueAll();
    runQueue();
    EXPECT_EQ(model->fileCount(), 0);
    model->queue().dismiss();
    ASSERT_EQ(model->fileCount(), 1);
    EXPECT_NE(draft("Charade (1963).mp4"), nullptr);
}

TEST_F(Returning, AFileAddedAgainWhileItWaitsIsOneRowWhenItsJobIsRemoved) {
    addConfirmed({"Charade (1963).mp4"});
    queueAll();
    add({library / "Charade (1963).mp4"});
    ASSERT_EQ(model->fileCount(), 1) << "it is found new again";
    model->queue().remove(onlyJob().id);
    EXPECT_EQ(model->fileCount(), 1);
}

TEST_F(Returning, AFileQueuedAgainWhileItWaitsIsOneJob) {
    addConfirmed({"Charade (1963).mp4"});
    queueAll();
    add({library / "Charade (1963).mp4"});
    model->confirm(library / "Charade (1963).mp4");
    queueAll();
    EXPECT_EQ(model->queue().jobs().size(), 1u);
    EXPECT_EQ(model->fileCount(), 0);
}

TEST_F(Returning, WhileTheQueueRunsNothingIsAddedAndTheFilesStayInReview) {
    auto hold = std::make_shared<std::promise<void>>();
    parts.worker = [held = hold->get_future().share()](const auto&, auto&, const auto&) {
        held.wait();
        return WriteOutcome{.status = WriteOutcome::Status::done};
    };
    make();
    addConfirmed({"Charade (1963).mp4"});
    queueAll();
    model->queue().start();
    addConfirmed({"Sintel (2010).mp4"});
    queueAll();
    EXPECT_NE(find("Sintel (2010).mp4"), nullptr);
    EXPECT_EQ(model->toast(),
              "Not added: the queue is running. Add these files when it's finished.");
    hold->set_value();
    while (model->queue().active()) pause();
    queueAll();
    EXPECT_EQ(onlyJob().label, "Sintel");
}

TEST_F(Returning, AFileTakenAwayOrMatchedAnewWhileItIsPreparedIsNotQueued) {
    addConfirmed({"Charade (1963).mp4", "Sintel (2010).mp4", "Detour (1945).mp4"});
    auto adding = model->addToQueueNow(model->items());
    EXPECT_TRUE(model->isAdding());
    model->removeFromReview({library / "Charade (1963).mp4"});
    HandTag hand;
    hand.details.title = "Mine";
    model->manualTag(library / "Detour (1945).mp4", hand);
    Async::wait(std::move(adding));
    EXPECT_EQ(onlyJob().label, "Sintel");
    EXPECT_EQ(find("Detour (1945).mp4")->match->title, "Mine");
    EXPECT_FALSE(model->isAdding());
}

TEST_F(Returning, DraftsThatLoadForSomebodyElseAreWaitedFor) {
    addConfirmed({"Charade (1963).mp4"});
    auto opened = model->loadDrafts(*itemOf("Charade (1963).mp4"));
    queueAll();
    EXPECT_EQ(onlyJob().label, "Charade");
    Async::wait(std::move(opened));
}

TEST_F(Returning, AFileThatVanishedAfterTheScanFailsWithASentenceAndComesBack) {
    parts.worker = {};
    make();
    addConfirmed({"Charade (1963).mp4"});
    fs::remove(library / "Charade (1963).mp4");
    queueAll();
    runQueue();
    EXPECT_EQ(onlyJob().state, State::failed);
    EXPECT_FALSE(onlyJob().outcome->message.empty());
    model->queue().dismiss();
    EXPECT_NE(find("Charade (1963).mp4"), nullptr);
}

TEST_F(Returning, AModelThatGoesInTheMiddleOfAQueueingIsNotTouchedAfterwards) {
    addConfirmed({"Charade (1963).mp4", "Sintel (2010).mkv"});
    auto adding = model->addToQueueNow(model->items());
    auto loading = model->loadDrafts(*itemOf("Charade (1963).mp4"));
    model.reset();
    EXPECT_TRUE(adding.isReady());
    EXPECT_TRUE(loading.isReady());
}

}  // namespace
}  // namespace marlet::test
