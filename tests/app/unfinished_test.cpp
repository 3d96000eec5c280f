// What a person has begun outlives the program.

#include <sys/stat.h>

#include <filesystem>
#include <future>
#include <regex>

#include "app/model_fixture.h"
#include "app/unfinished_shelf.h"
#include "foundation/paths.h"
#include "support/box_builder.h"
#include "write/restore_points.h"

namespace marlet::test {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::IsEmpty;
using State = WriteQueue::Job::State;

constexpr const char* charade = "Charade (1963).mp4";
constexpr const char* sintel = "Sintel (2010).mp4";
constexpr const char* firstLight = "The Tin Observatory/Season 1/01 First Light.mp4";
constexpr const char* telescope =
    "The Tin Observatory/Season 1/02 The Wrong End of the Telescope.mp4";

class Unfinished : public ModelTest {
protected:
    Unfinished() { open(); }
    void open() { Async::wait(model->openUnfinished()); }
    /// The program ends as QuitGate ends it, and starts anew.
    void restart() {
        model->keepUnfinished();
        dieAndStart();
    }
    /// It ends without a word.
    void dieAndStart() {
        model.reset();
        ASSERT_TRUE(Async::settle(20s));
        make();
        open();
    }
    void resume() {
        ASSERT_TRUE(model->unfinishedOffer());
        Async::wait(model->resumeUnfinished());
        untilScanned();
    }
    void load(const std::string& name) { Async::wait(model->loadDrafts(*itemOf(name))); }
    void queue(const std::string& name) { Async::wait(model->addToQueueNow({*itemOf(name)})); }
    FileDraft& edit(const std::string& name) { return *model->drafts().find(library / name); }
    std::vector<std::string> waiting() {
        std::vector<std::string> names;
        for (const WriteQueue::Job& job : model->queue().jobs())
            if (job.state == State::waiting) names.push_back(job.request.file.filename().string());
        return names;
    }
    static fs::path keptFile() { return Paths::documentsDir() / "unfinished.json"; }
    static std::string withoutTimes(const std::string& text) {
        return std::regex_replace(text, std::regex(R"("since":\d+)"), "");
    }
    static std::vector<std::string> keptFiles() {
        std::vector<std::string> names;
        for (const std::string& name : namesIn(Paths::documentsDir()))
            if (name.ends_with(".json") && name.starts_with("unfinished")) names.push_back(name);
        return names;
    }
};

TEST_F(Unfinished, WhatWaitsAndWhatWasCorrectedIsOfferedAtTheNextStart) {
    EXPECT_FALSE(model->unfinishedOffer());
    addConfirmed({charade, sintel});
    add({file("Detour (1945).mp4")});
    queue(charade);
    restart();
    ASSERT_TRUE(model->unfinishedOffer());
    EXPECT_EQ(model->unfinishedOffer()->queued, 1);
    EXPECT_EQ(model->unfinishedOffer()->corrected, 1);
    EXPECT_THAT(model->unfinishedOffer()->names, ElementsAre(charade, sintel));
    EXPECT_EQ(model->unfinishedOffer()->sentence,
              "2 files from last time are still waiting: 1 in the queue, 1 corrected in Review.");
    EXPECT_EQ(model->fileCount(), 0) << "nothing comes back unasked";
    EXPECT_THAT(waiting(), IsEmpty());
}

TEST(UnfinishedOfferTest, TheSentenceCountsOneAndSeveral) {
    EXPECT_EQ(UnfinishedOffer::of(1, 0).sentence,
              "1 file from last time is still waiting in the queue.");
    EXPECT_EQ(UnfinishedOffer::of(0, 2).sentence,
              "2 files from last time are still waiting, corrected in Review.");
}

TEST_F(Unfinished, TheQueueComesBackInItsOrderAndIsNotStarted) {
    addConfirmed({charade, sintel, firstLight});
    queue(sintel);
    queue(firstLight);
    queue(charade);
    restart();
    resume();
    EXPECT_FALSE(model->unfinishedOffer());
    EXPECT_THAT(waiting(), ElementsAre(sintel, "01 First Light.mp4", charade));
    EXPECT_FALSE(model->queue().active());
    EXPECT_EQ(model->fileCount(), 0);
    EXPECT_THAT(worker->requests(), IsEmpty());
}

TEST_F(Unfinished, AChosenMatchComesBackWithoutAskingAnew) {
    addConfirmed({charade});
    Async::wait(model->rematchMovie(library / charade, 201001));
    const ResolvedFile before = *find(charade);
    restart();
    const int asked = server.requestCount(".*");
    resume();
    ASSERT_NE(find(charade), nullptr);
    EXPECT_EQ(*find(charade), before);
    EXPECT_TRUE(model->isConfirmed(*find(charade)));
    EXPECT_EQ(server.requestCount(".*"), asked);
}

TEST_F(Unfinished, EditedDetailsAndPickedArtworkComeBackWithTheDraft) {
    add({file(charade)});
    load(charade);
    const ArtworkOption other{.path = "/picked.jpg", .language = "de"};
    model->pickArtwork(other, library / charade);
    edit(charade).details.title = "Mine";
    edit(charade).details.description.clear();
    edit(charade).styleOverride = ArtworkStyle::tall;
    const FileDraft before = *draft(charade);
    restart();
    resume();
    load(charade);
    EXPECT_EQ(*draft(charade), before);
    EXPECT_FALSE(model->isConfirmed(*find(charade))) << "an edit is no yes to the match";
}

TEST_F(Unfinished, WhatIsQueuedAgainIsWrittenWithItsCorrections) {
    addConfirmed({charade});
    load(charade);
    edit(charade).details.title = "Mine";
    queue(charade);
    restart();
    resume();
    ASSERT_THAT(waiting(), ElementsAre(charade));
    EXPECT_EQ(model->queue().jobs()[0].title, "Mine");
}

TEST_F(Unfinished, ASeasonThatSharesItsArtworkSharesItAgain) {
    add({file(firstLight), file(telescope)});
    load(firstLight);
    const ArtworkOption picked{.shape = ArtworkOption::Shape::tall, .path = "/picked.jpg"};
    model->pickArtwork(picked, library / firstLight);
    restart();
    resume();
    ASSERT_NE(itemOf(firstLight), nullptr);
    load(firstLight);
    EXPECT_EQ(draft(firstLight)->chosenTall, picked);
    EXPECT_EQ(draft(telescope)->chosenTall, picked);
}

TEST_F(Unfinished, TracksThatWereUntickedAreUntickedAgain) {
    Movie movie;
    movie.tracks = {evenTrack("vide", 10, 60, 100), evenTrack("soun", 10, 20, 100),
                    evenTrack("soun", 10, 20, 100)};
    for (const char* name : {charade, sintel}) library.write(name, buildMovie(movie));
    add({library / charade, library / sintel});
    for (const char* name : {charade, sintel}) {
        model->confirm(library / name);
        Async::wait(model->tracks().load(library / name));
        model->tracks().setKeep(library / name, 2, false);
    }
    queue(charade);
    restart();
    resume();
    ASSERT_THAT(waiting(), ElementsAre(charade));
    EXPECT_THAT(model->queue().jobs()[0].request.dropTracks, ElementsAre(2));
    EXPECT_EQ(model->queue().jobs()[0].how, "New .m4v");
    queue(sintel);
    EXPECT_THAT(model->queue().jobs()[1].request.dropTracks, ElementsAre(2))
        << "also without a look at its tracks";
}

TEST_F(Unfinished, TicksOfAPlanComeBackWithThePlan) {
    ConvertPlan plan = *convertible();
    plan.audio.push_back({.track = {.number = 2, .type = 2}, .keep = true, .canCopy = true});
    plan.audio.push_back({.track = {.number = 3, .type = 2}, .keep = true, .canCopy = true});
    plan.subs.push_back({.id = "t4", .keep = false});
    parts.planBuilder = [plan](const auto&) { return plan; };
    restart();
    addConfirmed({"Charade (1963).mkv"});
    const fs::path film = library / "Charade (1963).mkv";
    Async::wait(model->planFor(film));
    ASSERT_TRUE(model->plans().setKeepSound(film, 3, false));
    ASSERT_TRUE(model->plans().setKeepSubtitle(film, "t4", true));
    restart();
    resume();
    const auto again = Async::wait(model->planFor(film));
    ASSERT_TRUE(again);
    EXPECT_TRUE(again->audio[0].keep);
    EXPECT_FALSE(again->audio[1].keep);
    EXPECT_TRUE(again->subs[0].keep);
}

TEST_F(Unfinished, ATickMadeSinceHoldsAgainstTheWish) {
    ConvertPlan plan = *convertible();
    plan.audio.push_back({.track = {.number = 2, .type = 2}, .keep = true, .canCopy = true});
    PlanStore plans([plan](const auto&) { return plan; });
    plans.wish("/a.mkv", {.sounds = {{2, false}, {9, true}}, .subtitles = {}});
    EXPECT_EQ(plans.ticks("/a.mkv").sounds, (std::map<int, bool>{{2, false}, {9, true}}));
    Async::wait(plans.planFor("/a.mkv"));
    EXPECT_FALSE(plans.find("/a.mkv")->audio[0].keep);
    ASSERT_TRUE(plans.setKeepSound("/a.mkv", 2, true));
    EXPECT_EQ(plans.ticks("/a.mkv").sounds, (std::map<int, bool>{{2, true}, {9, true}}));
}

TEST_F(Unfinished, AnOfferThatIsNeitherTakenNorDeclinedStaysForTheStartAfter) {
    addConfirmed({charade});
    restart();
    ASSERT_TRUE(model->unfinishedOffer());
    // Other work in between.
    addConfirmed({sintel});
    restart();
    ASSERT_TRUE(model->unfinishedOffer());
    EXPECT_THAT(model->unfinishedOffer()->names, ElementsAre(charade, sintel));
}

TEST_F(Unfinished, DeclinedWorkIsNotOfferedAgain) {
    addConfirmed({charade});
    restart();
    ASSERT_TRUE(model->unfinishedOffer());
    model->discardUnfinished();
    EXPECT_FALSE(model->unfinishedOffer());
    restart();
    EXPECT_FALSE(model->unfinishedOffer());
    EXPECT_THAT(keptFiles(), IsEmpty());
}

TEST_F(Unfinished, AFileThatChangedOrWentAwayIsLeftOut) {
    addConfirmed({charade, sintel, firstLight});
    model->keepUnfinished();
    library.write(charade, std::string_view("another film altogether"));
    fs::remove(library / sintel);
    dieAndStart();
    ASSERT_TRUE(model->unfinishedOffer());
    EXPECT_THAT(model->unfinishedOffer()->names, ElementsAre("01 First Light.mp4"));
    library.write(firstLight, std::string_view("changed after the offer was made"));
    resume();
    EXPECT_EQ(model->fileCount(), 0);
    restart();
    EXPECT_FALSE(model->unfinishedOffer());
}

TEST_F(Unfinished, CorrectionsOutliveADeathInTheMiddleOfAResume) {
    addConfirmed({charade});
    load(charade);
    edit(charade).details.title = "Mine";
    queue(charade);
    restart();
    // Its details can't be loaded, so it gets no further than Review.
    server.fault(R"({"times":0,"status":404})");
    fs::remove_all(Paths::tmdbCacheDir());
    resume();
    EXPECT_NE(find(charade), nullptr);
    EXPECT_THAT(waiting(), IsEmpty());
    restart();
    server.clearFaults();
    ASSERT_TRUE(model->unfinishedOffer());
    EXPECT_EQ(model->unfinishedOffer()->queued, 1) << "it still wants to be written";
    resume();
    ASSERT_THAT(waiting(), ElementsAre(charade));
    EXPECT_EQ(model->queue().jobs()[0].title, "Mine");
}

TEST_F(Unfinished, AFileWithoutAMatchIsScannedAnew) {
    add({file("qqqq zzzz.mp4")});
    ASSERT_FALSE(find("qqqq zzzz.mp4")->match);
    model->confirm(library / "qqqq zzzz.mp4");
    restart();
    resume();
    EXPECT_NE(find("qqqq zzzz.mp4"), nullptr);
}

TEST_F(Unfinished, WhatThePersonHasDoneSinceIsNewerThanTheOffer) {
    addConfirmed({charade, sintel});
    restart();
    add({library / charade, library / sintel});
    Async::wait(model->rematchMovie(library / charade, 201001));
    resume();
    EXPECT_EQ(find(charade)->match->tmdbID, 201001);
    EXPECT_TRUE(model->isConfirmed(*find(sintel))) << "seen again, but with nothing done to it";
    EXPECT_EQ(model->fileCount(), 2);
}

TEST_F(Unfinished, AJobThatWasRunningCountsAsWaitingAndOneThatIsDoneIsNotKept) {
    std::promise<void> began;
    std::promise<void> mayEnd;
    const std::shared_future<void> end(mayEnd.get_future());
    parts.worker = [&began, end](const WriteRequest& request, auto&, const auto&) {
        if (request.file.filename() == sintel) {
            began.set_value();
            end.wait();
        }
        return WriteOutcome{.status = WriteOutcome::Status::done};
    };
    restart();
    addConfirmed({charade, sintel});
    queue(charade);
    queue(sintel);
    model->queue().start();
    auto running = began.get_future();
    while (running.wait_for(0s) != std::future_status::ready) pause();
    model->keepUnfinished();
    mayEnd.set_value();
    dieAndStart();
    ASSERT_TRUE(model->unfinishedOffer());
    EXPECT_THAT(model->unfinishedOffer()->names, ElementsAre(sintel));
    EXPECT_EQ(model->unfinishedOffer()->queued, 1);
}

TEST_F(Unfinished, AWaitingRestoreComesBackAndIsNotStarted) {
    const fs::path restored = file(sintel);
    RestorePoints::saveIfMissing(restored, {}, 1);
    addConfirmed({charade});
    queue(charade);
    Async::wait(model->restoreOriginal(restored));
    const std::string label = model->queue().jobs()[1].label;
    restart();
    ASSERT_TRUE(model->unfinishedOffer());
    EXPECT_EQ(model->unfinishedOffer()->queued, 2);
    resume();
    ASSERT_EQ(model->queue().jobs().size(), 2U);
    EXPECT_TRUE(model->queue().jobs()[0].request.isRestore());
    EXPECT_EQ(model->queue().jobs()[0].label, label);
    EXPECT_FALSE(model->queue().active());
}

TEST_F(Unfinished, WhileTheQueueRunsNothingIsResumedAndTheOfferStays) {
    addConfirmed({charade});
    std::promise<void> mayEnd;
    const std::shared_future<void> end(mayEnd.get_future());
    parts.worker = [end](const WriteRequest&, auto&, const auto&) {
        end.wait();
        return WriteOutcome{.status = WriteOutcome::Status::done};
    };
    restart();
    addConfirmed({sintel});
    queue(sintel);
    model->queue().start();
    Async::wait(model->resumeUnfinished());
    EXPECT_EQ(model->toast(), "The queue is running. Resume when it's finished.");
    EXPECT_TRUE(model->unfinishedOffer());
    mayEnd.set_value();
    while (model->queue().active()) pause();
}

TEST_F(Unfinished, AnAutomatedRunNeitherOffersNorKeeps) {
    addConfirmed({charade});
    model->keepUnfinished();
    const Bytes before = readFile(keptFile());
    RunMode::setArguments({"--scan"});
    dieAndStart();
    EXPECT_FALSE(model->unfinishedOffer());
    addConfirmed({sintel});
    model->keepUnfinished();
    EXPECT_EQ(readFile(keptFile()), before);
}

TEST_F(Unfinished, AChangeIsKeptSoonWithoutBeingAskedFor) {
    parts.unfinishedPause = 1ms;
    restart();
    addConfirmed({charade});
    while (keptFiles().empty()) pause();
    dieAndStart();
    ASSERT_TRUE(model->unfinishedOffer());
    EXPECT_THAT(model->unfinishedOffer()->names, ElementsAre(charade));
}

TEST_F(Unfinished, AJobThatStartsIsKeptAtOnce) {
    parts.unfinishedPause = 1h;
    restart();
    addConfirmed({charade});
    queue(charade);
    while (keptFiles().empty()) pause();
}

TEST_F(Unfinished, OnlyItsOwnerMayReadTheFile) {
    addConfirmed({charade});
    model->keepUnfinished();
    struct stat found {};
    ASSERT_EQ(::stat(keptFile().c_str(), &found), 0);
    EXPECT_EQ(found.st_mode & 0777U, 0600U);
}

TEST_F(Unfinished, ADamagedOlderOrTooBigFileIsIgnoredAndReplaced) {
    parts.unfinishedPause = 1h;
    restart();
    addConfirmed({charade});
    model->keepUnfinished();
    const std::string good = textOf(readFile(keptFile()));
    for (const std::string& bad :
         {good.substr(0, good.size() - 5), std::string(R"({"version":0,"work":[]})"),
          good + std::string(UnfinishedShelf::maxFileSize, ' ')}) {
        model.reset();
        ASSERT_TRUE(Async::settle(20s));
        writeFile(keptFile(), viewOf(bad));
        make();
        open();
        EXPECT_FALSE(model->unfinishedOffer());
        add({library / charade});
        model->confirm(library / charade);
        model->keepUnfinished();
        EXPECT_EQ(withoutTimes(textOf(readFile(keptFile()))), withoutTimes(good));
    }
}

TEST_F(Unfinished, TwoRunningCopiesKeepTheirOwnAndTheNextStartOffersBoth) {
    addConfirmed({charade});
    model->keepUnfinished();
    {
        AppModel other(parts);
        Async::wait(other.openUnfinished());
        EXPECT_FALSE(other.unfinishedOffer()) << "the first copy is still at it";
        other.add({file(sintel)});
        while (other.isWorking()) pause();
        other.confirm(library / sintel);
        other.keepUnfinished();
        EXPECT_THAT(keptFiles(),
                    testing::UnorderedElementsAre("unfinished.json", "unfinished 2.json"));
    }
    restart();
    ASSERT_TRUE(model->unfinishedOffer());
    EXPECT_THAT(model->unfinishedOffer()->names, testing::UnorderedElementsAre(charade, sintel));
    resume();
    model->keepUnfinished();
    EXPECT_THAT(keptFiles(), ElementsAre("unfinished.json")) << "it holds all of it now";
    EXPECT_EQ(model->fileCount(), 2);
}

TEST_F(Unfinished, WhereNothingCanBeKeptTheWorkGoesOn) {
    const Sys::Fault fault(Sys::Call::Rename, ENOSPC, 1, true, keptFile());
    addConfirmed({charade});
    model->keepUnfinished();
    EXPECT_THAT(keptFiles(), IsEmpty());
    queue(charade);
    EXPECT_THAT(waiting(), ElementsAre(charade));
}

}  // namespace
}  // namespace marlet::test
