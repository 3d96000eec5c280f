#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "identify/made_up_files.h"
#include "identify/movie_resolver.h"
#include "identify/scripted_source.h"
#include "support/qt_app.h"

namespace marlet {
namespace {

using test::fileOf;
using test::filmGuess;
using test::ScriptedSource;
using testing::ElementsAre;

class FilmFromSource : public testing::Test {
protected:
    FilmFromSource() { test::qtApp(); }

    ResolvedFile resolve(const Guess& guess, std::optional<double> minutes = {}) {
        return Async::wait(
            MovieResolver::fromExternal(&source, fileOf("/x.mp4", minutes), guess, {}));
    }

    ScriptedSource source{SourceID::itunes};
};

TEST_F(FilmFromSource, AMatchCarriesTheFilledInDetails) {
    ExtMovie film = source.addFilm("7", "Heat", 1995, std::nullopt);
    film.minutes = 170;
    film.overview = "A thief and a policeman.";
    film.date = "1995-12-15";
    film.cast = {"A", "B"};
    film.directors = {"M"};
    film.genre = "Crime";
    film.rating = "R";
    film.wide = {"https://a/w.jpg"};
    film.tall = {"https://a/600x900bb.jpg"};
    film.poster = "https://a/p.jpg";
    source.filledIn["7"] = film;
    const ResolvedFile result = resolve(filmGuess("Heat", 1995), 171);
    EXPECT_TRUE(result.verdict.isCertain());
    ASSERT_TRUE(result.match);
    EXPECT_EQ(result.match->tmdbID, film.pseudoID());
    EXPECT_EQ(result.match->sourceID(), SourceID::itunes);
    EXPECT_EQ(result.match->kind, MediaKind::movie);
    EXPECT_EQ(result.match->title, "Heat");
    EXPECT_EQ(result.match->year, 1995);
    EXPECT_EQ(result.match->runtimeMinutes, 170);
    EXPECT_EQ(result.match->posterPath, "https://a/300x450bb.jpg");
    ManualDetails expected;
    expected.title = "Heat";
    expected.description = "A thief and a policeman.";
    expected.releaseDate = "1995-12-15";
    expected.cast = {"A", "B"};
    expected.directors = {"M"};
    expected.source = SourceID::itunes;
    expected.genre = "Crime";
    expected.rating = "R";
    expected.wide = {"https://a/w.jpg"};
    expected.tall = {"https://a/600x900bb.jpg"};
    EXPECT_EQ(result.match->manual, expected);
}

TEST_F(FilmFromSource, WithoutATallPictureThePosterIsShown) {
    source.addFilm("7", "Heat", 1995, 170).poster = "https://a/100x100bb.jpg";
    EXPECT_EQ(resolve(filmGuess("Heat"), 170).match->posterPath, "https://a/300x450bb.jpg");
}

TEST_F(FilmFromSource, NoFilmOfThatNameIsToldWithTheSourcesName) {
    source.addFilm("7", "Great Heat", 1995, 170);
    const ResolvedFile result = resolve(filmGuess("Heat", 1995), 170);
    EXPECT_FALSE(result.match);
    EXPECT_THAT(result.verdict.reasons(), ElementsAre("No film called “Heat” on iTunes Store"));
}

TEST_F(FilmFromSource, AFailedSearchCountsAsNoHits) {
    source.fails = true;
    EXPECT_THAT(resolve(filmGuess("Heat")).verdict.reasons(),
                ElementsAre("No film called “Heat” on iTunes Store"));
}

TEST_F(FilmFromSource, FailedDetailsLeaveTheFilmAsFound) {
    source.addFilm("7", "Heat", 1995, 170);
    source.hidesDetails = true;
    EXPECT_TRUE(resolve(filmGuess("Heat", 1995), 170).verdict.isCertain());
}

TEST_F(FilmFromSource, FilmsOfTheWantedYearAreAskedFirstAndAtMostThree) {
    source.addFilm("1", "Heat", 1950, 170);
    source.addFilm("2", "Heat", std::nullopt, 170);
    source.addFilm("3", "Heat", 1996, 50);
    source.addFilm("4", "Heat", 1980, 50);
    source.addFilm("5", "Heat", 1995, 60);
    const ResolvedFile result = resolve(filmGuess("Heat", 1995), 170);
    EXPECT_FALSE(result.match);
    EXPECT_THAT(source.asked, ElementsAre("films Heat", "details 3", "details 5", "details 1"));
    EXPECT_THAT(result.verdict.reasons(), ElementsAre("No film called “Heat” on iTunes Store"));
}

TEST_F(FilmFromSource, AnotherYearIsNotTaken) {
    source.addFilm("1", "Heat", 1997, 170);
    source.addFilm("2", "Heat", std::nullopt, 170);
    EXPECT_FALSE(resolve(filmGuess("Heat", 1995), 170).match);
}

TEST_F(FilmFromSource, AWrongLengthIsNotTaken) {
    source.addFilm("1", "Heat", 1995, 100);
    source.addFilm("2", "Heat", 1995, 170);
    const ResolvedFile result = resolve(filmGuess("Heat", 1995), 170);
    EXPECT_EQ(result.match->runtimeMinutes, 170);
}

TEST_F(FilmFromSource, AnUnknownLengthIsTakenOnlyWithAYearAndLookedAt) {
    source.addFilm("1", "Heat", 1995, std::nullopt);
    const ResolvedFile result = resolve(filmGuess("Heat", 1995), 170);
    EXPECT_TRUE(result.match);
    EXPECT_THAT(result.verdict.reasons(), ElementsAre("Couldn't compare the length"));
    EXPECT_FALSE(resolve(filmGuess("Heat"), 170).match);
}

TEST_F(FilmFromSource, ABeginningOfALongerNameScoresTooLow) {
    source.addFilm("1", "Heat: A Very Long Story", 1995, 170);
    EXPECT_FALSE(resolve(filmGuess("Heat", 1995), 170).match);
}

}  // namespace
}  // namespace marlet
