#include <filesystem>

#include "app/model_fixture.h"

namespace marlet::test {
namespace {

namespace fs = std::filesystem;
constexpr const char* charade = "Charade (1963).mp4";
constexpr const char* firstLight = "The Tin Observatory/Season 1/01 First Light.mp4";
constexpr const char* telescope =
    "The Tin Observatory/Season 1/02 The Wrong End of the Telescope.mp4";

class Rematching : public ModelTest {
protected:
    void load(const std::string& name) { Async::wait(model->loadDrafts(*itemOf(name))); }
    void select(const std::string& name) {
        model->reviewID = itemOf(name)->id;
        model->inspectorFile = library / name;
    }
};

TEST_F(Rematching, AChosenFilmTakesThePlaceOfTheOldMatchAndNeedsNoFurtherYes) {
    add({file(charade)});
    load(charade);
    Async::wait(model->rematchMovie(library / charade, 201001));
    const ResolvedFile& now = *find(charade);
    EXPECT_EQ(now.match->title, "Sintel");
    EXPECT_EQ(now.match->tmdbID, 201001);
    EXPECT_EQ(now.match->year, 2010);
    EXPECT_EQ(itemOf(charade)->title, "Sintel");
    EXPECT_TRUE(model->isConfirmed(now));
    EXPECT_EQ(draft(charade), nullptr) << "the old details are nobody's any more";
    load(charade);
    EXPECT_EQ(draft(charade)->details.title, "Sintel");
}

TEST_F(Rematching, NothingOfTheOldMatchRemains) {
    add({file(firstLight)});
    Async::wait(model->rematchMovie(library / firstLight, 201001));
    const ResolvedFile& now = *find(firstLight);
    EXPECT_EQ(now.match, (Match{.tmdbID = 201001,
                                .kind = MediaKind::movie,
                                .title = "Sintel",
                                .year = 2010,
                                .runtimeMinutes = 15,
                                .posterPath = now.match->posterPath}));
    EXPECT_EQ(now.guess, (Guess{.kind = MediaKind::movie, .title = "Sintel", .year = 2010}));
    EXPECT_EQ(itemOf(firstLight)->kind, MediaKind::movie);
}

TEST_F(Rematching, AFilmThatBecomesAnEpisodeMovesIntoItsSeasonAndTheSelectionFollows) {
    add({file(charade), file(firstLight)});
    select(charade);
    Async::wait(model->rematchShow(library / charade, 201750, 1, 2));
    ASSERT_EQ(model->items().size(), 1u);
    EXPECT_EQ(find(charade)->match->episodeTitle, "The Wrong End of the Telescope");
    EXPECT_EQ(model->reviewID, itemOf(charade)->id);
    EXPECT_EQ(model->inspectorFile, library / charade);
}

TEST_F(Rematching, ASelectionElsewhereStays) {
    add({file(charade), file("Sintel (2010).mp4")});
    select("Sintel (2010).mp4");
    const auto before = model->reviewID;
    Async::wait(model->rematchShow(library / charade, 201750, 1, 2));
    EXPECT_EQ(model->reviewID, before);
    EXPECT_EQ(model->inspectorFile, library / "Sintel (2010).mp4");
}

TEST_F(Rematching, AFailedLookUpSaysSoAndChangesNothing) {
    add({file(charade)});
    load(charade);
    const ResolvedFile before = *find(charade);
    const auto unchanged = [&] {
        EXPECT_EQ(model->toast(), "Couldn't reach the database.");
        EXPECT_EQ(*find(charade), before);
        EXPECT_NE(draft(charade), nullptr);
        EXPECT_FALSE(model->isConfirmed(*find(charade)));
        model->say("");
    };
    Async::wait(model->rematchMovie(library / charade, 1));
    unchanged();
    Async::wait(model->rematchShow(library / charade, 201750, 9, 1));
    unchanged();
    Async::wait(model->rematchShow(library / charade, 201750, 1, 99));
    unchanged();
    itunes.fails = true;
    Async::wait(model->rematchExternal(library / charade, &itunes, ExtMovie{}));
    unchanged();
    Async::wait(model->rematchExternal(library / charade, &itunes, ExtShow{}, 1, 1));
    unchanged();
}

TEST_F(Rematching, AWholeSeasonIsChosenAtOnceAndEachFileKeepsItsEpisode) {
    add({file(firstLight), file(telescope)});
    const auto row =
        std::vector<EpisodeChoice>{{library / firstLight, 1, {}}, {library / telescope, 2, {}}};
    EXPECT_TRUE(Async::wait(model->rematchSeason(row, 198750, 1)));
    ASSERT_EQ(model->items().size(), 1u);
    EXPECT_EQ(find(firstLight)->match->tmdbID, 198750);
    EXPECT_EQ(find(firstLight)->match->episode, 1);
    EXPECT_EQ(find(telescope)->match->tmdbID, 198750);
    EXPECT_EQ(find(telescope)->match->episodeTitle, "Mirrors");
    EXPECT_TRUE(model->isConfirmed(*find(telescope)));
}

TEST_F(Rematching, ASeasonThatLacksOneOfTheEpisodesIsTakenForNone) {
    add({file(firstLight), file(telescope)});
    const ResolvedFile before = *find(firstLight);
    const auto row =
        std::vector<EpisodeChoice>{{library / firstLight, 1, {}}, {library / telescope, 99, {}}};
    EXPECT_FALSE(Async::wait(model->rematchSeason(row, 198750, 1)));
    EXPECT_EQ(*find(firstLight), before);
    EXPECT_EQ(model->toast(), "Couldn't reach the database.");
}

TEST_F(Rematching, ADoubleEpisodeStaysOneInTheChosenSeason) {
    add({file(firstLight)});
    const auto row = std::vector<EpisodeChoice>{{library / firstLight, 1, 2}};
    EXPECT_TRUE(Async::wait(model->rematchSeason(row, 201750, 1)));
    const Match& match = *find(firstLight)->match;
    EXPECT_EQ(match.episode, 1);
    EXPECT_EQ(match.episodeEnd, 2);
    EXPECT_EQ(match.episodeTitle, "First Light / The Wrong End of the Telescope");
}

TEST_F(Rematching, AChoiceThatIsCalledOffChangesNothingAndIsSilent) {
    add({file(charade)});
    const ResolvedFile before = *find(charade);
    const CancelToken cancel;
    auto choosing = model->rematchMovie(library / charade, 201001, cancel);
    cancel.cancel();
    EXPECT_FALSE(Async::wait(std::move(choosing)));
    EXPECT_EQ(*find(charade), before);
    EXPECT_FALSE(model->toast());
}

TEST_F(Rematching, AFileThatLeftMeanwhileIsNotBroughtBack) {
    add({file(charade)});
    auto choosing = model->rematchMovie(library / charade, 201001);
    model->removeFromReview({library / charade});
    Async::wait(std::move(choosing));
    EXPECT_EQ(model->fileCount(), 0);
}

TEST_F(Rematching, AnotherSourcesFilmKeepsItsIdentityDetailsAndPictures) {
    add({file(charade)});
    ExtMovie& film = itunes.addFilm("77", "Charade", 1963, 113);
    film.overview = "A widow in Paris.";
    film.tall = {"https://a/600x900bb.jpg"};
    film.directors = {"Stanley Donen"};
    Async::wait(model->rematchExternal(library / charade, &itunes, film));
    const Match& match = *find(charade)->match;
    EXPECT_EQ(match.sourceID(), SourceID::itunes);
    EXPECT_EQ(match.tmdbID, film.pseudoID());
    EXPECT_EQ(match.posterPath, "https://a/300x450bb.jpg");
    EXPECT_EQ(match.manual->description, "A widow in Paris.");
    load(charade);
    EXPECT_EQ(draft(charade)->details.directors, std::vector<std::string>{"Stanley Donen"});
}

TEST_F(Rematching, AnotherSourcesEpisodeTakesTheShowsPicturesWhenItsSeasonHasNone) {
    add({file(charade)});
    ExtEpisode episode;
    episode.number = 3;
    auto& show = itunes.add("9", "Some Show", 2, {episode});
    show.info.tall = {"https://a/t.jpg"};
    show.info.wide = {"https://a/w.jpg"};
    show.info.overview = "About the show.";
    show.info.seasonTall[2] = {};
    Async::wait(model->rematchExternal(library / charade, &itunes, show.show, 2, 3));
    const Match& match = *find(charade)->match;
    EXPECT_EQ(match.sourceID(), SourceID::itunes);
    EXPECT_EQ(match.tmdbID, show.show.pseudoID());
    EXPECT_EQ(match.season, 2);
    EXPECT_EQ(match.episode, 3);
    EXPECT_EQ(match.episodeTitle, "Some Show") << "an episode without a title";
    EXPECT_EQ(match.manual->tall, std::vector<std::string>{"https://a/t.jpg"});
    EXPECT_EQ(match.manual->description, "About the show.");
    EXPECT_EQ(match.posterPath, "https://a/t.jpg");
    EXPECT_EQ(itemOf(charade)->kind, MediaKind::tv);
}

HandTag handTag(const std::string& show, int episode) {
    HandTag hand;
    hand.kind = MediaKind::tv;
    hand.show = show;
    hand.season = 1;
    hand.episode = episode;
    hand.details.title = "Typed " + std::to_string(episode);
    hand.details.description = "My own words.";
    return hand;
}

TEST_F(Rematching, DetailsTypedByHandAreConfirmedAndKeptWithTheShowsPictures) {
    add({file(charade)});
    HandTag hand = handTag("The Tin Observatory", 9);
    hand.tmdbID = 201750;
    model->manualTag(library / charade, hand);
    EXPECT_TRUE(find(charade)->match->byHand());
    EXPECT_TRUE(model->isConfirmed(*find(charade)));
    load(charade);
    EXPECT_EQ(draft(charade)->details.title, "Typed 9");
    EXPECT_EQ(draft(charade)->details.description, "My own words.");
    EXPECT_EQ(draft(charade)->details.show, "The Tin Observatory");
    EXPECT_FALSE(draft(charade)->tall.empty());
}

TEST_F(Rematching, TwoTypedShowsThatNoDatabaseKnowsAreTwoRows) {
    add({file(charade), file("Sintel (2010).mp4"), file("Detour (1945).mp4")});
    model->manualTag(library / charade, handTag("Aunt Vera's Garden", 1));
    model->manualTag(library / "Sintel (2010).mp4", handTag("Aunt Vera's Garden", 2));
    model->manualTag(library / "Detour (1945).mp4", handTag("Uncle Bob's Shed", 1));
    EXPECT_EQ(model->items().size(), 2u);
    EXPECT_EQ(itemOf(charade)->files.size(), 2u);
}

TEST_F(Rematching, AMatroskaFileIsAnalysedAnewAndCanStillBeQueued) {
    parts.planBuilder = [](const auto&) { return convertible(); };
    make();
    add({file("Charade (1963).mkv")});
    Async::wait(model->rematchMovie(library / "Charade (1963).mkv", 201001));
    queueAll();
    ASSERT_EQ(model->queue().jobs().size(), 1u);
    EXPECT_EQ(model->queue().jobs()[0].label, "Sintel");
}

using Refreshing = Rematching;

TEST_F(Refreshing, TheSourcesAreAskedPastTheCacheAndTheDraftsAreReplaced) {
    add({file(charade)});
    load(charade);
    model->drafts().find(library / charade)->details.title = "Edited";
    server.resetStats();
    Async::wait(model->refreshFromTMDB(itemOf(charade)->id));
    EXPECT_EQ(model->toast(), "Refreshed from the sources.");
    EXPECT_EQ(draft(charade)->details.title, "Charade");
    EXPECT_EQ(server.targetCount("append_to_response=credits"), 1);
    EXPECT_GE(server.requestCount("^/3/search/movie"), 1);
}

TEST_F(Refreshing, AWholeSeasonIsRefreshedAndEveryDraftLoaded) {
    add({file(firstLight), file(telescope)});
    Async::wait(model->refreshFromTMDB(itemOf(firstLight)->id));
    EXPECT_EQ(model->toast(), "Refreshed from the sources.");
    EXPECT_EQ(draft(firstLight)->details.title, "First Light");
    EXPECT_EQ(draft(telescope)->details.title, "The Wrong End of the Telescope");
}

TEST_F(Refreshing, AnUnreachableDatabaseIsToldAndChangesNothing) {
    add({file(charade), file(firstLight)});
    load(charade);
    const ResolvedFile film = *find(charade);
    const ResolvedFile episode = *find(firstLight);
    server.fault(R"({"times":0,"status":404})");
    Async::wait(model->refreshFromTMDB(itemOf(charade)->id));
    EXPECT_EQ(model->toast(), "Couldn't reach the database.");
    model->say("");
    Async::wait(model->refreshFromTMDB(itemOf(firstLight)->id));
    EXPECT_EQ(model->toast(), "Couldn't reach the database.");
    EXPECT_EQ(*find(charade), film);
    EXPECT_EQ(*find(firstLight), episode);
    EXPECT_NE(draft(charade), nullptr);
}

TEST_F(Refreshing, AChosenMatchIsRefreshedAndNotUndone) {
    add({file(charade)});
    select(charade);
    Async::wait(model->rematchShow(library / charade, 198750, 1, 2));
    Async::wait(model->refreshFromTMDB(itemOf(charade)->id));
    EXPECT_EQ(model->toast(), "Refreshed from the sources.");
    EXPECT_EQ(find(charade)->match->tmdbID, 198750);
    EXPECT_EQ(find(charade)->match->episode, 2);
    EXPECT_TRUE(model->isConfirmed(*find(charade)));
    EXPECT_EQ(draft(charade)->details.title, "Mirrors");
    EXPECT_EQ(model->reviewID, itemOf(charade)->id);
}

TEST_F(Refreshing, AnotherSourcesMatchIsRefreshedThroughThatSource) {
    add({file(charade)});
    ExtMovie& film = itunes.addFilm("77", "Charade", 1963, {});
    Async::wait(model->rematchExternal(library / charade, &itunes, film));
    film.overview = "New words.";
    itunes.asked.clear();
    Async::wait(model->refreshFromTMDB(itemOf(charade)->id));
    EXPECT_THAT(itunes.asked, testing::Contains("films Charade"));
    EXPECT_EQ(find(charade)->match->sourceID(), SourceID::itunes);
    EXPECT_EQ(draft(charade)->details.description, "New words.");
    itunes.fails = true;
    Async::wait(model->refreshFromTMDB(itemOf(charade)->id));
    EXPECT_EQ(model->toast(), "Couldn't reach the database.");
    EXPECT_EQ(find(charade)->match->sourceID(), SourceID::itunes);
}

TEST_F(Refreshing, WhatWasTypedByHandStays) {
    add({file(charade)});
    model->manualTag(library / charade, handTag("Aunt Vera's Garden", 1));
    Async::wait(model->refreshFromTMDB(itemOf(charade)->id));
    EXPECT_EQ(find(charade)->match->episodeTitle, "Typed 1");
    EXPECT_EQ(draft(charade)->details.title, "Typed 1");
}

TEST_F(Refreshing, AnItemThatIsNotThereIsIgnored) {
    Async::wait(model->refreshFromTMDB("none"));
    EXPECT_FALSE(model->toast());
}

}  // namespace
}  // namespace marlet::test
