#include "screens/picker_fixture.h"

namespace marlet::test {
namespace {

using PickerHandForm = Picker;

TEST_F(PickerHandForm, KeepsWhatAPersonTypesWithTheShowsPictures) {
    openShow({episode(47, 1, "The Lost Lens")}, 47);
    picker->tagByHand();
    EXPECT_EQ(fromQt(hand().intro()),
              "The database has no such episode of The Tin Observatory. Type what you know; Marlet "
              "keeps your words and uses the show's and season's artwork. It stays marked “Check "
              "this” until you say it's right.");
    EXPECT_EQ(hand().property("season"), "1");
    EXPECT_EQ(hand().property("episode"), "47");
    EXPECT_EQ(hand().title(), "The Lost Lens");
    hand().setProperty("description", "Juno drops it.");
    hand().setProperty("date", "2019-01-02");
    hand().tag();
    EXPECT_FALSE(picker->isOpen());
    const Match& match = *find(episodeName(47))->match;
    EXPECT_TRUE(match.byHand());
    EXPECT_EQ(match.tmdbID, observatory);
    EXPECT_EQ(match.episode, 47);
    EXPECT_EQ(match.episodeTitle, "The Lost Lens");
    EXPECT_EQ(match.manual->description, "Juno drops it.");
    EXPECT_EQ(match.manual->releaseDate, "2019-01-02");
    EXPECT_TRUE(match.posterPath);
}

TEST_F(PickerHandForm, WantsATitleNumbersAndADateThatIsOneOrNone) {
    openShow({episode(47)}, 47);
    picker->tagByHand();
    EXPECT_FALSE(hand().canTag()) << "no title";
    hand().setTitle("The Lost Lens");
    EXPECT_TRUE(hand().canTag());
    for (const char* date : {"2019", "2019-13-01", "02.01.2019", "2019-1-2"}) {
        hand().setProperty("date", date);
        EXPECT_FALSE(hand().canTag()) << date;
    }
    hand().setProperty("date", "");
    hand().setProperty("episode", "two");
    EXPECT_FALSE(hand().canTag());
    hand().setProperty("episode", "0");
    hand().setProperty("season", "0");
    EXPECT_TRUE(hand().canTag());
}

TEST_F(PickerHandForm, AFilmOfThatNameIsOfferedAndFillsTheForm) {
    openShow({episode(47, 1, "The Kid")}, 47);
    picker->tagByHand();
    until([&] { return !hand().film().isEmpty(); });
    EXPECT_EQ(hand().film(), "The Kid");
    hand().useFilm();
    untilIdle();
    EXPECT_EQ(hand().film(), "") << "taken";
    EXPECT_FALSE(hand().property("description").toString().isEmpty());
    EXPECT_TRUE(hand().property("date").toString().startsWith("1921-"));
    hand().tag();
    EXPECT_THAT(find(episodeName(47))->match->manual->cast, testing::Contains("Charlie Chaplin"));
}

TEST_F(PickerHandForm, AnotherTitleEndsTheOffer) {
    openShow({episode(47, 1, "The Kid")}, 47);
    picker->tagByHand();
    until([&] { return !hand().film().isEmpty(); });
    hand().setTitle("The Kid Who Wasn't");
    until([&] { return hand().film().isEmpty(); });
}

TEST_F(PickerHandForm, AFilmThatNobodyListsIsTaggedByHandToo) {
    openFilm("Our Garden");
    untilIdle();
    picker->tagByHand();
    EXPECT_FALSE(hand().isTV());
    EXPECT_EQ(hand().title(), "Our Garden");
    hand().setProperty("date", "1994-05-01");
    hand().tag();
    EXPECT_TRUE(find(charade)->match->byHand());
    EXPECT_EQ(find(charade)->match->year, 1994);
    EXPECT_EQ(find(charade)->match->kind, MediaKind::movie);
}

class ShopPicker : public Picker {
protected:
    void openShop(const std::string& name) {
        open(name);
        untilIdle();
        useTab("iTunes Store");
        untilIdle();
    }
    ScriptedSource::Show& addShow() {
        auto& added = itunes.add("9", "The Tin Observatory", 1,
                                 {{1, 1, "A Night", "Rain.", "2017-09-14", 22},
                                  {1, 3, "A Day", "More rain.", "2017-09-28", 22}});
        added.seasons[0] = {};
        return added;
    }
};

TEST_F(ShopPicker, TabsAreTheSourcesInUseInThePersonsOrder) {
    openFilm("Charade");
    EXPECT_EQ(picker->tabs(), (QStringList{"TMDB", "iTunes Store"}));
    picker->close();
    Preferences::current().setBoolean("sourceOn.appleTV", true);
    open(charade);
    EXPECT_EQ(picker->tabs(), (QStringList{"Apple TV", "TMDB", "iTunes Store"}));
    EXPECT_EQ(pane().name(), "TMDB");
    useTab("Apple TV");
    EXPECT_EQ(pane().prompt(), "Search Apple TV");
    EXPECT_EQ(pane().foot(), "Details and artwork from Apple");
    EXPECT_EQ(pane().nothingTitle(), "Nothing found on Apple TV");
}

TEST_F(ShopPicker, AFilmOfAShopIsTakenUnderItsName) {
    itunes.addFilm("77", "Charade", 1963, 113);
    openFilm("Charade");
    openShop(charade);
    EXPECT_EQ(pane().foot(), "Details and artwork from Apple's iTunes Store");
    EXPECT_EQ(cell(pane().results(), 0, "fits"), "true");
    pane().use();
    until([&] { return !picker->isOpen(); });
    EXPECT_EQ(find(charade)->match->sourceID(), SourceID::itunes);
    open(charade);
    EXPECT_EQ(pane().name(), "iTunes Store") << "the tab of the source that it is from";
}

TEST_F(ShopPicker, NothingFoundNamesTheShop) {
    openFilm("Charade");
    openShop(charade);
    EXPECT_TRUE(pane().isNothing());
    EXPECT_EQ(pane().nothingTitle(), "Nothing found on iTunes Store");
    EXPECT_EQ(pane().nothingLine(), "Try fewer words, or look in another tab.");
}

TEST_F(ShopPicker, AShowHasSeasonsAndEpisodes) {
    addShow();
    model->place({episode(1), episode(3)});
    openShop(episodeName(3));
    pane().use();
    untilIdle();
    EXPECT_EQ(show().seasons(), (QStringList{"Season 1", "Specials"}));
    EXPECT_EQ(episodes(), (std::vector<std::string>{"A Night", "A Day"}));
    EXPECT_EQ(show().episode(), 1);
    EXPECT_FALSE(show().searchesAll());
    show().pickSeason(1);
    untilIdle();
    EXPECT_EQ(show().emptyTitle(), "This season has no episodes on iTunes Store");
    show().pickSeason(0);
    untilIdle();
    show().setWhole(true);
    show().use();
    until([&] { return !picker->isOpen(); });
    EXPECT_EQ(find(episodeName(1))->match->episodeTitle, "A Night");
    EXPECT_EQ(find(episodeName(3))->match->sourceID(), SourceID::itunes);
}

TEST_F(ShopPicker, AShopOutOfReachIsTold) {
    itunes.fails = true;
    openFilm("Charade");
    openShop(charade);
    EXPECT_EQ(pane().failure(), "Couldn't reach the database.");
    EXPECT_EQ(model->toast(), "Couldn't reach the database.");
}

TEST_F(ShopPicker, AnEpisodeThatAShopDoesNotListIsTaggedByHandWithTheDatabasesPictures) {
    addShow();
    model->place({episode(2)});
    openShop(episodeName(2));
    pane().use();
    untilIdle();
    EXPECT_FALSE(show().canUse());
    picker->tagByHand();
    hand().setTitle("An Evening");
    until([&] { return server.requestCount("^/3/search/tv") > 0; });
    EXPECT_TRUE(Async::settle(20s));
    Async::wait(Async::sleep(200ms));
    hand().tag();
    EXPECT_EQ(find(episodeName(2))->match->title, "The Tin Observatory");
    EXPECT_TRUE(find(episodeName(2))->match->byHand());
    EXPECT_GT(find(episodeName(2))->match->tmdbID, 0);
}

}  // namespace
}  // namespace marlet::test
