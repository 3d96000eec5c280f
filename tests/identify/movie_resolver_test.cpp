#include "identify/movie_resolver.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "foundation/errors.h"
#include "identify/made_up_files.h"
#include "identify/matcher.h"
#include "identify/tmdb_stub.h"
#include "sources/clock.h"
#include "support/qt_app.h"

namespace marlet {
namespace {

using test::fileOf;
using test::filmGuess;
using test::TmdbStub;
using testing::Contains;
using testing::ElementsAre;
using testing::Not;

std::string search(const std::string& query, std::optional<int> year = {}) {
    return TmdbStub::searchTarget(query, year);
}

class FilmFromTMDB : public testing::Test {
protected:
    FilmFromTMDB() { test::qtApp(); }

    ResolvedFile resolve(const Guess& guess, std::optional<double> minutes = {},
                         const std::string& path = "/x/film.mp4") {
        return Async::wait(
            MovieResolver::fromTMDB(tmdb.client(), fileOf(path, minutes), guess, {}));
    }

    TmdbStub tmdb;
};

TEST_F(FilmFromTMDB, AMatchCarriesTheFilmAndIsCertain) {
    tmdb.film({5, "Heat", "1995-12-15", 170});
    tmdb.finds("Heat", {5});
    const ResolvedFile result = resolve(filmGuess("Heat", 1995), 171);
    EXPECT_TRUE(result.verdict.isCertain());
    EXPECT_FALSE(result.ambiguous);
    Match expected;
    expected.tmdbID = 5;
    expected.kind = MediaKind::movie;
    expected.title = "Heat";
    expected.year = 1995;
    expected.runtimeMinutes = 170;
    expected.posterPath = "/film5.jpg";
    EXPECT_EQ(result.match, expected);
    EXPECT_EQ(result.guess, filmGuess("Heat", 1995));
    EXPECT_THAT(tmdb.asked(), ElementsAre(search("Heat"), "/movie/5"))
        << "a title found exactly ends the searching";
}

TEST_F(FilmFromTMDB, WithoutAKeyNothingIsChecked) {
    const auto result =
        Async::wait(MovieResolver::fromTMDB({}, fileOf("/x.mp4"), filmGuess("Heat"), {}));
    EXPECT_FALSE(result.match);
    EXPECT_THAT(result.verdict.reasons(),
                ElementsAre("Not checked against the database (no TMDB key)"));
}

TEST_F(FilmFromTMDB, QueriesGoByTitleThenBlankForColonThenYear) {
    const ResolvedFile result = resolve(filmGuess("3:10 to Yuma", 2007), 120);
    EXPECT_FALSE(result.match);
    EXPECT_THAT(result.verdict.reasons(),
                ElementsAre("No movie called “3:10 to Yuma” in the database"));
    EXPECT_THAT(tmdb.asked(),
                ElementsAre(search("3:10 to Yuma"), search("3 10 to Yuma"),
                            search("3:10 to Yuma 2007"), search("3:10 to Yuma", 2007),
                            search("3 10 to", 2007), search("3 10", 2007), search("3", 2007)));
}

TEST_F(FilmFromTMDB, ATitleWithAColonIsFoundByABlankInItsPlace) {
    tmdb.film({8, "3:10 to Yuma", "2007-09-06", 122});
    tmdb.finds("3 10 to Yuma", {8});
    EXPECT_TRUE(resolve(filmGuess("3:10 to Yuma", 2007), 122).verdict.isCertain());
    EXPECT_THAT(tmdb.asked(),
                ElementsAre(search("3:10 to Yuma"), search("3 10 to Yuma"), "/movie/8"));
}

TEST_F(FilmFromTMDB, WithAKnownYearTheLastSearchIsNarrowedToIt) {
    tmdb.film({8, "Heat", "1995-12-15", 170});
    tmdb.finds("Heat", {8}, 1995);
    EXPECT_TRUE(resolve(filmGuess("Heat", 1995), 170).verdict.isCertain());
    EXPECT_THAT(tmdb.asked(),
                ElementsAre(search("Heat"), search("Heat 1995"), search("Heat", 1995), "/movie/8"));
}

TEST_F(FilmFromTMDB, HitsOfAllQueriesJoin) {
    tmdb.film({1, "Great Heat Wave", "1990-01-01", 90});
    tmdb.film({2, "Great Heat", "1995-01-01", 100});
    tmdb.finds("Great Heat Waves", {2, 1});
    tmdb.finds("Great Heat Waves 1995", {2});
    resolve(filmGuess("Great Heat Waves", 1995), 100);
    EXPECT_THAT(tmdb.asked(), Contains("/movie/2").Times(1)) << "each film is looked at once";
}

TEST_F(FilmFromTMDB, OnlySixAreLookedAtWithoutAYearAndFourWithOne) {
    std::vector<std::int64_t> ids;
    for (int id = 1; id <= 9; id++) {
        tmdb.film({id, "Heat", "1995-01-01", 170});
        ids.push_back(id);
    }
    tmdb.finds("Heat", ids);
    resolve(filmGuess("Heat"));
    EXPECT_EQ(tmdb.asked().size(), 1U + 6U);
    resolve(filmGuess("Heat", 1995));
    EXPECT_EQ(tmdb.asked().size(), 1U + 6U + 1U + 4U);
}

TEST_F(FilmFromTMDB, NothingFoundWithoutAYearIsSaidAtOnce) {
    const ResolvedFile result = resolve(filmGuess("Three Words Long"));
    EXPECT_THAT(result.verdict.reasons(),
                ElementsAre("No movie called “Three Words Long” in the database"));
    EXPECT_THAT(tmdb.asked(), ElementsAre(search("Three Words Long")));
}

TEST_F(FilmFromTMDB, AFailedSearchThatFindsNothingSaysOutOfReach) {
    tmdb.fails("/search/movie", 500);
    EXPECT_THAT(resolve(filmGuess("Heat")).verdict.reasons(),
                ElementsAre("Couldn't reach the database"));
    EXPECT_THAT(resolve(filmGuess("Heat Wave", 1995)).verdict.reasons(),
                ElementsAre("Couldn't reach the database"));
}

TEST_F(FilmFromTMDB, AServiceThatIsDownSaysTheSame) {
    const test::ScopedEnv nowhere("MARLET_TMDB_API", "http://127.0.0.1:1/3");
    EXPECT_THAT(resolve(filmGuess("Heat")).verdict.reasons(),
                ElementsAre("Couldn't reach the database"));
}

Task<> noSleep(std::chrono::milliseconds, CancelToken) {
    co_return;
}

TEST_F(FilmFromTMDB, AServiceThatKeepsRefusingSaysTheSame) {
    const Clock::Hooks hooks({}, {}, noSleep);
    tmdb.fails("/search/movie", 429);
    EXPECT_THAT(resolve(filmGuess("Heat")).verdict.reasons(),
                ElementsAre("Couldn't reach the database"));
}

TEST_F(FilmFromTMDB, AFilmThatCantBeFetchedIsSkipped) {
    tmdb.film({1, "Heat", "1995-12-15", 170});
    tmdb.film({2, "Heat", "1995-12-15", 170});
    tmdb.finds("Heat", {1, 2});
    tmdb.fails("/movie/1", 500);
    const ResolvedFile result = resolve(filmGuess("Heat", 1995), 170);
    EXPECT_EQ(result.match->tmdbID, 2);
    EXPECT_TRUE(result.verdict.isCertain());
}

TEST_F(FilmFromTMDB, WhenNoFilmCanBeFetchedTheDatabaseIsOutOfReach) {
    tmdb.film({1, "Heat", "1995-12-15", 170});
    tmdb.finds("Heat", {1});
    tmdb.fails("/movie/1", 500);
    EXPECT_THAT(resolve(filmGuess("Heat")).verdict.reasons(),
                ElementsAre("Couldn't reach the database"));
}

TEST_F(FilmFromTMDB, AFailureBesideAFindIsNoReason) {
    tmdb.film({1, "Heat", "1995-12-15", 170});
    tmdb.fails(search("Heat"), 500);
    tmdb.finds("Heat 1995", {1});
    EXPECT_TRUE(resolve(filmGuess("Heat", 1995), 170).verdict.isCertain());
}

TEST_F(FilmFromTMDB, ALongerCutIsNamedAfterTheFile) {
    tmdb.film({1, "Gladiator", "2000-05-01", 155});
    tmdb.finds("Gladiator", {1});
    const Guess guess = filmGuess("Gladiator", 2000);
    const auto extended = resolve(guess, 170, "/x/Gladiator.2000.Extended.Cut.mkv");
    EXPECT_EQ(extended.match->cut, "Extended cut");
    EXPECT_TRUE(extended.verdict.isCertain());
    EXPECT_EQ(resolve(guess, 170, "/x/Gladiator.Unrated.mkv").match->cut, "Unrated cut");
    EXPECT_EQ(resolve(guess, 170, "/x/Gladiator.mkv").match->cut, "Extended cut");
    EXPECT_EQ(resolve(guess, 155, "/x/Gladiator.Unrated.mkv").match->cut, std::nullopt);
}

TEST_F(FilmFromTMDB, AFileFarLongerThanTheFilmHasALengthReason) {
    tmdb.film({1, "Gladiator", "2000-05-01", 100});
    tmdb.finds("Gladiator", {1});
    const auto result = resolve(filmGuess("Gladiator", 2000), 170);
    EXPECT_TRUE(result.match);
    EXPECT_THAT(result.verdict.reasons(),
                ElementsAre("Length differs: file 170 min, database 100 min"));
}

TEST_F(FilmFromTMDB, NamesakesWithoutAYearAreAmbiguousWithBothYears) {
    tmdb.film({1, "Heat", "2005-01-01", 117, 9});
    tmdb.film({2, "Heat", "1999-01-01", 170, 3});
    tmdb.finds("Heat", {2, 1});
    const auto result = resolve(filmGuess("Heat"), 50, "/dl/my heat.mp4");
    EXPECT_TRUE(result.ambiguous);
    EXPECT_EQ(result.match->tmdbID, 1);
    EXPECT_THAT(
        result.verdict.reasons(),
        ElementsAre("More than one film is called “Heat” (1999, 2005). Check which one this is."));
    EXPECT_EQ(Matcher::group({result})[0].title, "my heat");
}

TEST_F(FilmFromTMDB, TheNamesakeThatFitsByLengthIsTakenWhenPopularEnough) {
    tmdb.film({1, "Heat", "2005-01-01", 117, 10});
    tmdb.film({2, "Heat", "1999-01-01", 170, 2});
    tmdb.finds("Heat", {1, 2});
    const auto result = resolve(filmGuess("Heat"), 170);
    EXPECT_FALSE(result.ambiguous);
    EXPECT_EQ(result.match->tmdbID, 2);
    EXPECT_TRUE(result.verdict.isCertain());
}

TEST_F(FilmFromTMDB, UnderAFifthOfThePopularityItIsAmbiguousAllTheSame) {
    tmdb.film({1, "Heat", "2005-01-01", 117, 10});
    tmdb.film({2, "Heat", "1999-01-01", 170, 1});
    tmdb.finds("Heat", {1, 2});
    EXPECT_TRUE(resolve(filmGuess("Heat"), 170).ambiguous);
}

TEST_F(FilmFromTMDB, AYearOneOffIsFineAndTwoOffIsTold) {
    tmdb.film({1, "Heat", "1995-12-15", 170});
    tmdb.finds("Heat", {1});
    EXPECT_TRUE(resolve(filmGuess("Heat", 1996), 170).verdict.isCertain());
    EXPECT_THAT(resolve(filmGuess("Heat", 1997), 170).verdict.reasons(),
                ElementsAre("Year differs: file 1997, database 1995"));
}

TEST_F(FilmFromTMDB, ABeginningOfALongerNameHasNoNameReasonInItsYear) {
    tmdb.film({1, "13 Hours: The Secret Soldiers of Benghazi", "2016-01-14", 144});
    tmdb.finds("13 Hours", {1});
    EXPECT_TRUE(resolve(filmGuess("13 Hours", 2016), 144).verdict.isCertain());
}

TEST_F(FilmFromTMDB, ANameThatIsOnlyCloseIsToldAsSuch) {
    tmdb.film({1, "Great Heat Wave", "1990-01-01", 90});
    tmdb.finds("Great Heat Waves", {1});
    tmdb.finds("Great Heat Wave Long", {1});
    EXPECT_THAT(resolve(filmGuess("Great Heat Wave Long"), 90).verdict.reasons(),
                ElementsAre("Closest match is “Great Heat Wave”, which isn't an exact name match"));
}

TEST_F(FilmFromTMDB, AFilmWithoutAKnownLengthIsLookedAt) {
    tmdb.film({1, "Heat", "1995-12-15", std::nullopt});
    tmdb.finds("Heat", {1});
    EXPECT_THAT(resolve(filmGuess("Heat", 1995), 170).verdict.reasons(),
                ElementsAre("Couldn't compare the length"));
}

TEST_F(FilmFromTMDB, ShorterBeginningsOfTheTitleAreTriedWithTheYear) {
    tmdb.film({1, "Heat Wave", "1995-12-15", 170});
    tmdb.finds("heat wave", {1}, 1995);
    const auto result = resolve(filmGuess("Heat Wave Restored by Fans", 1995), 170);
    EXPECT_EQ(result.match->tmdbID, 1);
    EXPECT_TRUE(result.verdict.isCertain());
    const auto asked = tmdb.asked();
    EXPECT_EQ(asked.back(), "/movie/1");
    EXPECT_THAT(asked, Contains(search("heat wave restored by", 1995)));
    EXPECT_THAT(asked, Not(Contains(search("heat", 1995)))) << "the first count that gives ends it";
}

TEST_F(FilmFromTMDB, AShorterTitleMustBeTheNamesOwnBeginning) {
    tmdb.film({1, "Heated Wave", "1995-12-15", 170});
    tmdb.finds("heat wave", {1}, 1995);
    const auto result = resolve(filmGuess("Heat Wave Restored", 1995), 170);
    EXPECT_FALSE(result.match);
    EXPECT_THAT(tmdb.asked(), Not(Contains("/movie/1")));
}

TEST_F(FilmFromTMDB, AShorterTitleOfAnotherYearIsTakenWithItsReason) {
    tmdb.film({1, "Heat Wave", "1980-12-15", 170});
    tmdb.finds("heat wave", {1}, 1995);
    EXPECT_THAT(resolve(filmGuess("Heat Wave Restored", 1995), 170).verdict.reasons(),
                ElementsAre("Year differs: file 1995, database 1980"));
}

TEST_F(FilmFromTMDB, AFilmThatGaveNoAnswerIsNotAskedForByTheNextShorterTitle) {
    tmdb.film({1, "Heat", "1995-12-15", 170});
    tmdb.finds("heat wave", {1}, 1995);
    tmdb.finds("heat", {1}, 1995);
    tmdb.fails("/movie/1", 500);
    EXPECT_THAT(resolve(filmGuess("Heat Wave Restored", 1995), 170).verdict.reasons(),
                ElementsAre("Couldn't reach the database"));
    EXPECT_THAT(tmdb.asked(), Contains(search("heat", 1995)));
    EXPECT_THAT(tmdb.asked(), Contains("/movie/1").Times(1));
}

TEST_F(FilmFromTMDB, WithoutAYearNoShorterTitleIsTried) {
    tmdb.film({1, "Heat Wave", "1995-12-15", 170});
    tmdb.finds("heat wave", {1});
    EXPECT_FALSE(resolve(filmGuess("Heat Wave Restored by Fans"), 170).match);
}

TEST_F(FilmFromTMDB, ACancelledTokenEndsTheWaitAtOnce) {
    test::HttpStub::Reply held;
    held.manner = test::HttpStub::Manner::Held;
    tmdb.http().answer("/3/search/movie", std::vector<test::HttpStub::Reply>{held});
    CancelToken cancel;
    auto resolving =
        MovieResolver::fromTMDB(tmdb.client(), fileOf("/x.mp4"), filmGuess("Heat"), cancel);
    EXPECT_FALSE(resolving.isReady());
    cancel.cancel();
    EXPECT_TRUE(resolving.isReady());
    EXPECT_THROW(Async::wait(std::move(resolving)), CancelError);
}

TEST(CutHint, TheFirstEditionWordTells) {
    EXPECT_EQ(Matcher::cutHint("Gladiator.2000.Extended.Cut.mkv"), "Extended cut");
    EXPECT_EQ(Matcher::cutHint("Alien 3.mp4"), std::nullopt);
    EXPECT_EQ(Matcher::cutHint("Blade Runner DIRECTOR'S CUT.mp4"), "Director's cut");
    EXPECT_EQ(Matcher::cutHint("x.Unrated.mkv"), "Unrated cut");
    EXPECT_EQ(Matcher::cutHint("x (Special Edition).mkv"), "Special edition");
    EXPECT_EQ(Matcher::cutHint("x.special.mkv"), "Special edition");
    EXPECT_EQ(Matcher::cutHint("A Special Day.mkv"), std::nullopt);
    EXPECT_EQ(Matcher::cutHint("x unrated extended director.mkv"), "Extended cut");
}

TEST(Thumbnail, OnlyTheFirstSizeInThePathIsReplaced) {
    EXPECT_EQ(Matcher::thumbnail("https://a/b/2000x3000bb.jpg"), "https://a/b/300x450bb.jpg");
    EXPECT_EQ(Matcher::thumbnail("https://a/10x20.png/30x40.jpg"),
              "https://a/300x450.png/30x40.jpg");
    EXPECT_EQ(Matcher::thumbnail("https://a/b2000x3000.jpg"), "https://a/b2000x3000.jpg");
    EXPECT_EQ(Matcher::thumbnail("https://a/2000x3000/c.jpg"), "https://a/2000x3000/c.jpg");
    EXPECT_EQ(Matcher::thumbnail(""), "");
}

}  // namespace
}  // namespace marlet
