#include "screens/picker_fixture.h"

namespace marlet::test {
namespace {

TEST_F(Picker, OpensForAFileAndSearchesAtOnceForWhatItsNameSays) {
    EXPECT_FALSE(picker->isOpen());
    openFilm("Charade");
    EXPECT_TRUE(picker->isOpen());
    EXPECT_EQ(picker->fileName(), charade);
    EXPECT_EQ(picker->fileFacts(), "113 min");
    EXPECT_EQ(pane().query(), "Charade");
    EXPECT_FALSE(pane().isTV());
    untilIdle();
    EXPECT_EQ(results(), std::vector<std::string>{"Charade"});
    EXPECT_EQ(pane().result(), 0);
    EXPECT_EQ(pane().prompt(), "Search the database");
}

TEST_F(Picker, AFileThatLeavesReviewTakesItsSheetAlong) {
    openFilm("Charade");
    model->removeFromReview({library / charade});
    picker->refresh();
    EXPECT_FALSE(picker->isOpen());
    EXPECT_FALSE(model->matchPickerURL);
}

TEST_F(Picker, ARowWhoseLengthFitsTheFileIsMarkedOnceItsRecordTellsIt) {
    openFilm("Dr. Jekyll and Mr. Hyde", 79);
    untilIdle();
    ASSERT_GE(pane().results()->rowCount(), 2);
    EXPECT_EQ(server.requestCount("^/3/movie/"), 0) << "no record before its row is seen";
    for (int row = 0; row < pane().results()->rowCount(); ++row) pane().seen(row);
    const auto marked = [&] {
        std::vector<std::string> facts;
        for (int row = 0; row < pane().results()->rowCount(); ++row)
            if (cell(pane().results(), row, "fits") == "true")
                facts.push_back(cell(pane().results(), row, "facts"));
        return facts;
    };
    until([&] { return !marked().empty(); });
    ASSERT_EQ(marked().size(), 1u);
    EXPECT_TRUE(marked()[0].starts_with("1920 · ")) << marked()[0];
}

TEST_F(Picker, AChosenFilmIsTakenAndTheSheetCloses) {
    openFilm("Sintel");
    untilIdle();
    pane().use();
    until([&] { return !picker->isOpen(); });
    EXPECT_EQ(find(charade)->match->title, "Sintel");
    EXPECT_TRUE(model->isConfirmed(*find(charade)));
    EXPECT_FALSE(model->matchPickerURL);
}

TEST_F(Picker, WhatTheFileIsTakenForNowIsChosenAmongTheResults) {
    ResolvedFile file = placed(library / charade, {}, 79);
    file.guess->title = "Dr. Jekyll and Mr. Hyde";
    file.match = Match{.tmdbID = 191201, .title = "Dr. Jekyll and Mr. Hyde"};
    model->place({file});
    open(charade);
    untilIdle();
    EXPECT_EQ(cell(pane().results(), pane().result(), "key"), "191201");
}

TEST_F(Picker, NothingFoundIsToldWithWhatToDo) {
    openFilm("No Such Film At All");
    untilIdle();
    EXPECT_TRUE(pane().isNothing());
    EXPECT_EQ(pane().nothingTitle(), "Nothing found");
    EXPECT_EQ(pane().nothingLine(), "Try fewer words, or the title as it appears on the poster.");
    EXPECT_FALSE(pane().canUse());
}

TEST_F(Picker, ADatabaseOutOfReachIsToldInTheSheetAndAsAToast) {
    server.fault(R"({"times":0,"status":500})");
    openFilm("Charade");
    untilIdle();
    EXPECT_EQ(pane().failure(), "Couldn't reach the database.");
    EXPECT_EQ(model->toast(), "Couldn't reach the database.");
    EXPECT_FALSE(pane().isNothing());
    server.clearFaults();
    pane().search();
    untilIdle();
    EXPECT_EQ(pane().failure(), "");
    EXPECT_EQ(results(), std::vector<std::string>{"Charade"});
}

TEST_F(Picker, AChoiceThatFailsLeavesTheSheetOpenAndTheFileAsItWas) {
    openFilm("Charade");
    untilIdle();
    server.fault(R"({"times":0,"status":500})");
    pane().use();
    untilIdle();
    EXPECT_TRUE(picker->isOpen());
    EXPECT_EQ(pane().failure(), "Couldn't reach the database.");
    EXPECT_FALSE(find(charade)->match);
}

TEST_F(Picker, WithoutAKeyTheSheetSaysWhereOneGoes) {
    const ScopedEnv none("MARLET_TMDB_TOKEN", "");
    openFilm("Charade");
    untilIdle();
    EXPECT_EQ(pane().failure(), "Add your TMDB key in Settings first.");
}

TEST_F(Picker, ANewSearchEndsTheOldOneWhoseAnswerNeverShows) {
    server.fault(R"({"path":"search/movie","times":1,"delayMs":400})");
    openFilm("Charade");
    pane().type("Sintel");
    pane().search();
    untilIdle();
    EXPECT_EQ(results(), std::vector<std::string>{"Sintel"});
    Async::wait(Async::sleep(600ms));
    EXPECT_EQ(results(), std::vector<std::string>{"Sintel"});
}

TEST_F(Picker, ClosingEndsWhatIsBeingAsked) {
    openFilm("Charade");
    EXPECT_TRUE(pane().isAsking());
    picker->close();
    EXPECT_FALSE(pane().isAsking());
    EXPECT_TRUE(results().empty());
}

TEST_F(Picker, ClosingCallsOffAChoiceThatIsOnItsWay) {
    openFilm("Charade");
    untilIdle();
    pane().use();
    picker->close();
    EXPECT_TRUE(Async::settle(20s));
    EXPECT_FALSE(find(charade)->match);
}

TEST_F(Picker, TypingAsksTheDatabaseAfterAPauseAndAShopOnReturnAlone) {
    openFilm("Charade");
    untilIdle();
    pane().type("Sin");
    pane().type("Sintel");
    until([&] { return results() == std::vector<std::string>{"Sintel"}; });
    EXPECT_EQ(server.targetCount("query=Sin&"), 0);
    useTab("iTunes Store");
    itunes.addFilm("7", "Sintel", 2010, 15);
    untilIdle();
    EXPECT_EQ(pane().query(), "Sintel") << "a person's words go along";
    itunes.asked.clear();
    pane().type("Sintel 2");
    Async::wait(Async::sleep(600ms));
    EXPECT_TRUE(itunes.asked.empty());
    pane().search();
    EXPECT_EQ(itunes.asked, std::vector<std::string>{"films Sintel 2"});
}

TEST_F(Picker, AYearInBracketsNarrowsTheSearchForAFilm) {
    openFilm("Dr. Jekyll and Mr. Hyde (1912)");
    untilIdle();
    ASSERT_EQ(pane().results()->rowCount(), 1);
    EXPECT_EQ(cell(pane().results(), 0, "facts"), "1912");
}

TEST_F(Picker, AShowOpensAtTheFilesSeasonWithItsOwnEpisodeChosen) {
    openShow({episode(3)}, 3);
    EXPECT_TRUE(pane().isTV());
    EXPECT_EQ(show().title(), "The Tin Observatory");
    EXPECT_EQ(show().seasons().first(), "Season 1");
    EXPECT_EQ(show().seasons().last(), "Specials");
    EXPECT_EQ(show().seasonNumber(), 1);
    ASSERT_EQ(show().episode(), 2);
    EXPECT_EQ(episodes()[2], "Cloud Cover");
    EXPECT_EQ(cell(show().episodes(), 2, "number"), "3");
    EXPECT_EQ(cell(show().episodes(), 2, "facts"), "22 min · 28 Sep 2017");
    show().use();
    until([&] { return !picker->isOpen(); });
    EXPECT_EQ(find(episodeName(3))->match->episodeTitle, "Cloud Cover");
}

TEST_F(Picker, SpecialsAreSeasonZero) {
    openShow({episode(1)}, 1);
    show().pickSeason(static_cast<int>(show().seasons().indexOf("Specials")));
    untilIdle();
    EXPECT_EQ(episodes(),
              (std::vector<std::string>{"The Longest Night", "Behind the Tin", "Perihelion"}));
    show().setEpisode(2);
    show().use();
    until([&] { return !picker->isOpen(); });
    EXPECT_EQ(find(episodeName(1))->match->season, 0);
    EXPECT_EQ(find(episodeName(1))->match->episode, 3);
}

TEST_F(Picker, ASeasonThatStopsBeforeTheFilesEpisodeIsTold) {
    openShow({episode(47)}, 47);
    const auto last = std::to_string(show().episodes()->rowCount());
    EXPECT_EQ(fromQt(show().note()),
              "The database stops at episode " + last + "; this file says episode 47");
    EXPECT_FALSE(show().canUse()) << "no other is chosen in its place";
    show().pickSeason(static_cast<int>(show().seasons().indexOf("Specials")));
    untilIdle();
    EXPECT_EQ(show().note(), "") << "its number says nothing about another season";
}

TEST_F(Picker, ASeasonWithoutEpisodesIsTold) {
    model->place({episode(1)});
    open(episodeName(1));
    untilIdle();
    choose("198750");
    pane().use();
    untilIdle();
    show().pickSeason(static_cast<int>(show().seasons().indexOf("Specials")));
    untilIdle();
    EXPECT_EQ(show().emptyTitle(), "This season has no episodes in the database.");
}

TEST_F(Picker, TheSearchAcrossAShowFindsEpisodesOfAllSeasonsAndSpecials) {
    openShow({episode(2)}, 2);
    show().search("the");
    untilIdle();
    EXPECT_EQ(cell(show().episodes(), 0, "number"), "S00E01");
    show().search("wrong telescope");
    ASSERT_EQ(episodes(), std::vector<std::string>{"The Wrong End of the Telescope"});
    EXPECT_EQ(cell(show().episodes(), 0, "number"), "S01E02");
    show().search("submarine");
    EXPECT_EQ(show().emptyTitle(), "No episode in any season or Specials has those words.");
    show().search("perihelion");
    show().use();
    until([&] { return !picker->isOpen(); });
    EXPECT_EQ(find(episodeName(2))->match->season, 0);
    EXPECT_EQ(find(episodeName(2))->match->episodeTitle, "Perihelion");
}

TEST_F(Picker, RefreshAsksPastWhatWasSavedAndSaysSo) {
    openShow({episode(1)}, 1);
    server.resetStats();
    show().refresh();
    untilIdle();
    EXPECT_EQ(server.requestCount("^/3/tv/201750$"), 1);
    EXPECT_EQ(server.requestCount("^/3/tv/201750/season/1$"), 1);
    EXPECT_EQ(model->toast(), "Refreshed from TMDB.");
    model->say("");
    server.fault(R"({"times":0,"status":500})");
    show().refresh();
    untilIdle();
    EXPECT_EQ(model->toast(), "Couldn't reach the database.");
    EXPECT_FALSE(episodes().empty()) << "what was there stays";
}

TEST_F(Picker, OneChoiceForAWholeSeasonKeepsEachFilesOwnEpisode) {
    model->place({episode(1), episode(2), episode(3)});
    open(episodeName(2));
    untilIdle();
    choose("198750");
    pane().use();
    untilIdle();
    EXPECT_EQ(show().wholeText(), "Use this show for all 3 episodes of this season");
    show().setWhole(true);
    EXPECT_EQ(cell(show().episodes(), 0, "file"), "tin 1.mp4");
    EXPECT_EQ(show().wholeNote(), "Each file keeps its own episode number.");
    show().use();
    until([&] { return !picker->isOpen(); });
    EXPECT_EQ(find(episodeName(1))->match->episodeTitle, "Sheds");
    EXPECT_EQ(find(episodeName(2))->match->episodeTitle, "Mirrors");
    EXPECT_EQ(find(episodeName(3))->match->episodeTitle, "The Women of Hut Nine");
    EXPECT_TRUE(model->isConfirmed(*find(episodeName(3))));
}

TEST_F(Picker, FilesWhoseNumbersTheSeasonLacksStayAsTheyAre) {
    openShow({episode(1), episode(2), episode(47)}, 1);
    show().setWhole(true);
    EXPECT_EQ(show().wholeNote(), "1 file says a number that this season doesn't have; it stays.");
    show().pickSeason(static_cast<int>(show().seasons().indexOf("Specials")));
    untilIdle();
    show().use();
    until([&] { return !picker->isOpen(); });
    EXPECT_EQ(find(episodeName(2))->match->episodeTitle, "Behind the Tin");
    EXPECT_EQ(find(episodeName(47))->match->season, 1);
}

TEST_F(Picker, ASingleFileHasNoChoiceForItsSeason) {
    openShow({episode(1)}, 1);
    EXPECT_EQ(show().wholeCount(), 0);
    openFilm("Charade");
    EXPECT_EQ(show().wholeCount(), 0);
}

TEST_F(Picker, OneStepBackLeadsFromTheFormToTheShowToTheResultsAndOut) {
    openShow({episode(1)}, 1);
    picker->tagByHand();
    picker->back();
    EXPECT_FALSE(hand().isOpen());
    EXPECT_TRUE(show().isOpen());
    picker->back();
    EXPECT_FALSE(show().isOpen());
    EXPECT_TRUE(picker->isOpen());
    picker->back();
    EXPECT_FALSE(picker->isOpen());
}

}  // namespace
}  // namespace marlet::test
