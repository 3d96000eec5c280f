#include "app/app_model.h"

#include "app/model_fixture.h"

namespace marlet::test {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;

using Adding = ModelTest;

TEST_F(Adding, TheSameFolderTwiceTellsHowManyAreInReviewAndScansNothing) {
    file("Charade (1963).mp4");
    file("Sintel (2010).mp4");
    add({library.path()});
    ASSERT_EQ(model->fileCount(), 2);
    const int asked = server.requestCount("");
    add({library.path()});
    EXPECT_EQ(model->toast(), "These 2 files are already in Review");
    EXPECT_EQ(model->fileCount(), 2);
    EXPECT_EQ(server.requestCount(""), asked);
}

TEST_F(Adding, TheToastCountsWhatWasInReviewAlready) {
    const fs::path charade = file("Charade (1963).mp4");
    add({charade});
    add({charade});
    EXPECT_EQ(model->toast(), "Charade (1963) is already in Review");
    file("Sintel (2010).mp4");
    add({library.path()});
    EXPECT_EQ(model->toast(), "1 of those was already in Review");
    file("Detour (1945).mp4");
    add({library.path()});
    EXPECT_EQ(model->toast(), "2 of those were already in Review");
    EXPECT_EQ(model->fileCount(), 3);
}

TEST_F(Adding, AFolderWithNothingPlayableSaysSo) {
    library.write("notes.txt", std::string_view("x"));
    add({library.path()});
    EXPECT_EQ(model->toast(), "No movies or episodes found there.");
    EXPECT_EQ(model->phase().kind, AppModel::Phase::Kind::idle);
}

TEST_F(Adding, AScanStartedDuringAScanCancelsTheFirstWhichLeavesReviewAsItWas) {
    add({file("Detour (1945).mp4")});
    model->scan({file("Charade (1963).mp4")});
    model->scan({file("Sintel (2010).mp4")});
    untilScanned();
    EXPECT_NE(find("Detour (1945).mp4"), nullptr);
    EXPECT_EQ(find("Charade (1963).mp4"), nullptr);
    EXPECT_NE(find("Sintel (2010).mp4"), nullptr);
}

TEST_F(Adding, AStoppedScanLeavesReviewAsItWasAndTheNextOneRuns) {
    add({file("Detour (1945).mp4")});
    model->scan({file("Charade (1963).mp4")});
    model->cancelScan();
    EXPECT_EQ(model->phase().kind, AppModel::Phase::Kind::idle);
    add({file("Sintel (2010).mp4")});
    EXPECT_EQ(find("Charade (1963).mp4"), nullptr);
    EXPECT_NE(find("Sintel (2010).mp4"), nullptr);
}

TEST_F(Adding, ALookThroughFoldersCanBeStoppedAndSaysNothing) {
    file("Charade (1963).mp4");
    model->add({library.path()});
    model->add({library.path()});
    model->cancelScan();
    EXPECT_EQ(model->phase().kind, AppModel::Phase::Kind::idle);
    EXPECT_EQ(model->toast(), std::nullopt);
    EXPECT_EQ(model->fileCount(), 0);
    add({library.path()});
    EXPECT_EQ(model->fileCount(), 1);
}

TEST_F(Adding, JudgedFilesCanBePlacedAndOneThatIsThereKeepsItsRecord) {
    ResolvedFile placed;
    placed.file.url = library / "a.mp4";
    placed.match = Match{.title = "A"};
    model->place({placed});
    placed.match->title = "Another";
    model->place({placed});
    ASSERT_EQ(model->fileCount(), 1);
    EXPECT_EQ(find("a.mp4")->match->title, "A");
}

TEST_F(Adding, TheRevisionOfReviewFollowsItsRowsAndConfirmationsAlone) {
    const auto atFirst = model->reviewRevision();
    add({file("Detour (1945).mp4")});
    const auto added = model->reviewRevision();
    EXPECT_NE(added, atFirst);
    model->say("hello");
    EXPECT_EQ(model->reviewRevision(), added);
    model->confirm(library / "Detour (1945).mp4");
    EXPECT_NE(model->reviewRevision(), added);
}

TEST_F(Adding, WhatBringsNothingNewLeavesAScanUnderWayAlone) {
    library.write("empty/notes.txt", std::string_view("x"));
    model->scan({file("Charade (1963).mp4")});
    model->add({library / "empty"});
    untilScanned();
    EXPECT_NE(find("Charade (1963).mp4"), nullptr);
    EXPECT_EQ(model->toast(), "No movies or episodes found there.");
}

TEST_F(Adding, ThePhaseTellsTheWorkAndEndsIdle) {
    std::vector<std::string> messages;
    model->onChanged = [&] {
        const std::string& text = model->phase().message;
        if (messages.empty() || messages.back() != text) messages.push_back(text);
    };
    add({file("Charade (1963).mp4")});
    EXPECT_THAT(messages, ElementsAre("Looking through your files", "Reading 1 files",
                                      "Working out what they are", "Checking Charade", ""));
    EXPECT_EQ(model->phase().kind, AppModel::Phase::Kind::idle);
}

TEST_F(Adding, EveryMatroskaFileThatCameInIsAnalysed) {
    parts.planBuilder = [](const auto&) { return convertible(); };
    make();
    add({file("Charade (1963).mkv"), file("Sintel (2010).mp4")});
    Async::wait(model->plans().finish(library / "Charade (1963).mkv"));
    EXPECT_NE(model->plans().find(library / "Charade (1963).mkv"), nullptr);
    EXPECT_EQ(model->plans().find(library / "Sintel (2010).mp4"), nullptr);
}

TEST_F(Adding, AModelThatGoesInTheMiddleOfAScanIsNotTouchedAfterwards) {
    model->add({file("Charade (1963).mp4")});
    model.reset();
    make();
    model->scan({file("Sintel (2010).mp4")});
    while (server.requestCount("search") == 0) pause();
    model.reset();
    EXPECT_TRUE(Async::settle(20s));
}

/// What the toast says at the moment at which a wait ends.
Task<std::optional<std::string>> toastBehind(Task<> wait, AppModel* model) {
    co_await wait;
    co_return model->toast();
}

TEST(Toast, TextReplacedInTimeIsNotClearedByTheOlderTimer) {
    qtApp();
    const OwnHome home;
    HistoryStore history;
    AppModel::Parts parts;
    parts.history = &history;
    parts.toastTime = std::chrono::milliseconds(120);
    AppModel model(parts);
    model.say("one");
    Async::wait(Async::sleep(20ms));
    // Due behind the timer of the first text and before that of the second.
    auto behindTheFirst = toastBehind(Async::sleep(parts.toastTime), &model);
    model.say("two");
    EXPECT_EQ(Async::wait(std::move(behindTheFirst)), "two");
    while (model.toast()) Async::wait(Async::sleep(1ms));
}

class Lock : public ModelTest {
protected:
    static ResolvedFile at(const std::string& path) {
        ResolvedFile file;
        file.file.url = path;
        file.match = Match{.tmdbID = 1};
        file.verdict = Verdict::certain();
        return file;
    }
};

TEST_F(Lock, AFileInAMediaLibraryIsLockedUntilTheSettingAllowsIt) {
    const ResolvedFile film = at("/Volumes/Media Library/Films/a.mp4");
    EXPECT_TRUE(model->isLocked(film));
    EXPECT_FALSE(model->isLocked(at("/Volumes/My Media Library/a.mp4"))) << "another name";
    EXPECT_FALSE(model->isLocked(at("/Films/Media Library.mp4")));
    Preferences::current().setBoolean("allowLibraryWrites", true);
    EXPECT_FALSE(model->isLocked(film));
}

TEST_F(Lock, AMatroskaFileThereIsLockedOnlyWhenItsNewFileLandsThere) {
    const ResolvedFile film = at("/Media Library/a.mkv");
    EXPECT_FALSE(model->isLocked(film));
    EXPECT_FALSE(model->isLocked(at("/Media Library/a.mov")));
    Preferences::current().setBoolean("outputSameFolder", true);
    EXPECT_TRUE(model->isLocked(film));
    Preferences::current().setBoolean("outputSameFolder", false);
    Preferences::current().setText("outputFolder", "/Media Library/New");
    EXPECT_TRUE(model->isLocked(at("/elsewhere/a.mkv")));
    AppModel::outputOverride = "/out";
    EXPECT_FALSE(model->isLocked(film));
}

TEST_F(Lock, AScriptedRunKnowsNoLock) {
    RunMode::setArguments({"--quit"});
    EXPECT_FALSE(model->isLocked(at("/Media Library/a.mp4")));
}

TEST_F(Lock, LockedFilesAreCountedAndMakeNoItemReady) {
    addConfirmed({"Media Library/Charade (1963).mp4"});
    EXPECT_EQ(model->readyCount(), 1);
    EXPECT_EQ(model->lockedCount(), 1);
    EXPECT_EQ(model->readyItemCount(), 0);
}

TEST_F(Lock, NewFilesGoToTheRunsFolderElseTheSettingsElseTheDesktop) {
    EXPECT_EQ(AppModel::outputFolder(), home.path() / "Desktop");
    Preferences::current().setText("outputFolder", "");
    EXPECT_EQ(AppModel::outputFolder(), home.path() / "Desktop") << "an empty text counts as none";
    Preferences::current().setText("outputFolder", "/new");
    EXPECT_EQ(AppModel::outputFolder(), "/new");
    AppModel::outputOverride = "/run";
    EXPECT_EQ(AppModel::outputFolder(), "/run");
}

using Reviewing = ModelTest;

TEST_F(Reviewing, CountsFollowMatchesVerdictsAndConfirmations) {
    add({file("Charade (1963).mp4"), file("qqqq zzzz.mp4")});
    EXPECT_EQ(model->fileCount(), 2);
    EXPECT_EQ(model->readyCount(), 0);
    EXPECT_EQ(model->needsCheckingCount(), 2);
    model->confirm(library / "Charade (1963).mp4");
    model->confirm(library / "qqqq zzzz.mp4");
    EXPECT_EQ(model->readyCount(), 1) << "a file without a match is never ready";
    EXPECT_EQ(model->readyItemCount(), 1);
    EXPECT_EQ(model->needsCheckingCount(), 0);
}

TEST_F(Reviewing, ARemovedItemTakesItsDraftConfirmationAndSelectionAlong) {
    addConfirmed({"Charade (1963).mp4", "Sintel (2010).mp4"});
    const LibraryItem item = *itemOf("Charade (1963).mp4");
    Async::wait(model->loadDrafts(item));
    model->reviewID = item.id;
    model->inspectorFile = library / "Charade (1963).mp4";
    model->removeItem(item.id);
    EXPECT_EQ(model->fileCount(), 1);
    EXPECT_EQ(draft("Charade (1963).mp4"), nullptr);
    EXPECT_FALSE(model->reviewID || model->inspectorFile);
    add({library / "Charade (1963).mp4"});
    EXPECT_FALSE(model->isConfirmed(*find("Charade (1963).mp4")));
    model->removeItem("no such item");
}

TEST_F(Reviewing, ADraftIsLoadedOnceAndIsWhatTheSourcesSay) {
    add({file("Charade (1963).mp4")});
    Async::wait(model->loadDrafts(*itemOf("Charade (1963).mp4")));
    EXPECT_EQ(draft("Charade (1963).mp4")->details.title, "Charade");
    model->drafts().find(library / "Charade (1963).mp4")->details.title = "Mine";
    Async::wait(model->loadDrafts(*itemOf("Charade (1963).mp4")));
    EXPECT_EQ(draft("Charade (1963).mp4")->details.title, "Mine");
}

TEST_F(Reviewing, WhoeverAsksForDraftsThatLoadAlreadyWaitsForThem) {
    add({file("Charade (1963).mp4")});
    const LibraryItem item = *itemOf("Charade (1963).mp4");
    auto first = model->loadDrafts(item);
    EXPECT_TRUE(model->drafts().isLoading(library / "Charade (1963).mp4"));
    Async::wait(model->loadDrafts(item));
    EXPECT_NE(draft("Charade (1963).mp4"), nullptr);
    Async::wait(std::move(first));
    EXPECT_EQ(server.targetCount("append_to_response=credits"), 1);
}

TEST_F(Reviewing, AFileThatGetsNoDraftStaysWithoutOneAndLoadsNoMore) {
    add({file("Charade (1963).mp4")});
    server.fault(R"({"path":"^/3/movie/","times":0,"status":404})");
    Async::wait(model->loadDrafts(*itemOf("Charade (1963).mp4")));
    EXPECT_EQ(draft("Charade (1963).mp4"), nullptr);
    EXPECT_FALSE(model->drafts().anyLoading());
}

TEST_F(Reviewing, ADraftOfAFileThatWasTakenAwayMeanwhileIsDropped) {
    add({file("Charade (1963).mp4")});
    auto loading = model->loadDrafts(*itemOf("Charade (1963).mp4"));
    model->removeFromReview({library / "Charade (1963).mp4"});
    Async::wait(std::move(loading));
    EXPECT_EQ(draft("Charade (1963).mp4"), nullptr);
}

class SeasonArt : public ModelTest {
protected:
    SeasonArt() {
        add({file(first), file(second)});
        load(first);
    }
    void load(const std::string& name) {
        LibraryItem item = *itemOf(name);
        item.files = {*find(name)};
        Async::wait(model->loadDrafts(item));
    }
    ArtworkOption anOption() {
        const FileDraft& loaded = *draft(first);
        return {ArtworkOption::Shape::wide, loaded.wide.back().path + "?other", {}, false};
    }
    const std::string first = "The Tin Observatory/Season 1/01 First Light.mp4";
    const std::string second = "The Tin Observatory/Season 1/02 The Wrong End of the Telescope.mp4";
};

TEST_F(SeasonArt, AnEpisodeWhoseDraftLoadsLaterShowsTheSharedCover) {
    ASSERT_EQ(model->items().size(), 1u);
    model->pickArtwork(anOption(), library / first);
    EXPECT_EQ(draft(second), nullptr);
    load(second);
    EXPECT_EQ(draft(second)->chosenWide, anOption());
}

TEST_F(SeasonArt, WithSharingOffAPickChangesOnlyThatDraft) {
    load(second);
    const auto before = draft(second)->chosenWide;
    model->setShareSeason(false, *draft(first)->seasonKey, library / first);
    model->pickArtwork(anOption(), library / first);
    EXPECT_EQ(draft(first)->chosenWide, anOption());
    EXPECT_EQ(draft(second)->chosenWide, before);
    model->setShareSeason(true, *draft(first)->seasonKey, library / first);
    EXPECT_EQ(draft(second)->chosenWide, anOption());
}

}  // namespace
}  // namespace marlet::test
