#include "identify/season_resolver.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

#include "foundation/errors.h"
#include "identify/made_up_files.h"
#include "identify/tmdb_stub.h"
#include "sources/clock.h"
#include "support/qt_app.h"

namespace marlet {
namespace {

using test::episodeGuess;
using test::fileOf;
using test::TmdbStub;
using testing::Contains;
using testing::Each;
using testing::ElementsAre;
using testing::Not;

/// One season against the database over HTTP.
class SeasonFromTMDB : public testing::Test {
protected:
    SeasonFromTMDB() { test::qtApp(); }

    void addFile(const Guess& guess, std::optional<double> minutes = {}) {
        files.add(fileOf("/x/" + std::to_string(files.size()) + ".mp4", minutes), guess);
    }
    std::vector<ResolvedFile> resolve() {
        return Async::wait(SeasonResolver::fromTMDB(tmdb.client(), files, {}));
    }
    void addSheds(std::int64_t id, const std::string& year) {
        tmdb.show({id, "Sheds", year + "-01-02", "/sheds" + std::to_string(id) + ".jpg"});
    }

    TmdbStub tmdb;
    SeasonFiles files;
};

std::vector<std::vector<std::string>> reasonsOf(const std::vector<ResolvedFile>& results) {
    std::vector<std::vector<std::string>> all;
    for (const ResolvedFile& result : results) all.push_back(result.verdict.reasons());
    return all;
}

bool anyMatch(const std::vector<ResolvedFile>& results) {
    return std::any_of(results.begin(), results.end(),
                       [](const ResolvedFile& result) { return result.match.has_value(); });
}

TEST_F(SeasonFromTMDB, AMatchCarriesTheShowTheEpisodeAndTheSeasonsPoster) {
    addSheds(10, "1987");
    tmdb.findsShows("sheds", {10});
    tmdb.season(10, 1, {{1, "Sheds", 50}, {2, "Mirrors", 50}}, "/season1.jpg");
    addFile(episodeGuess("sheds", 1, 2, "Mirrors"), 49);
    const auto results = resolve();
    ASSERT_EQ(results.size(), 1U);
    EXPECT_TRUE(results[0].verdict.isCertain());
    ASSERT_TRUE(results[0].match);
    const Match& match = *results[0].match;
    EXPECT_EQ(match.tmdbID, 10);
    EXPECT_EQ(match.kind, MediaKind::tv);
    EXPECT_EQ(match.title, "Sheds");
    EXPECT_EQ(match.year, 1987);
    EXPECT_EQ(match.season, 1);
    EXPECT_EQ(match.episode, 2);
    EXPECT_EQ(match.episodeEnd, std::nullopt);
    EXPECT_EQ(match.episodeTitle, "Mirrors");
    EXPECT_EQ(match.runtimeMinutes, 50);
    EXPECT_EQ(match.posterPath, "/season1.jpg");
    EXPECT_EQ(match.sourceID(), SourceID::tmdb);
    EXPECT_FALSE(match.manual);
}

TEST_F(SeasonFromTMDB, WithoutASeasonPosterTheShowsIsTaken) {
    addSheds(10, "1987");
    tmdb.findsShows("Sheds", {10});
    tmdb.season(10, 1, {{1, "Sheds", 50}});
    addFile(episodeGuess("Sheds", 1, 1));
    EXPECT_EQ(resolve()[0].match->posterPath, "/sheds10.jpg");
}

TEST_F(SeasonFromTMDB, AnAbsentSeasonIsTheFirst) {
    addSheds(10, "1987");
    tmdb.findsShows("Sheds", {10});
    tmdb.season(10, 1, {{1, "Sheds", 50}});
    addFile(episodeGuess("Sheds", std::nullopt, 1), 50);
    EXPECT_EQ(resolve()[0].match->season, 1);
}

TEST_F(SeasonFromTMDB, WithoutAKeyNothingIsChecked) {
    addFile(episodeGuess("Sheds", 1, 1));
    addFile(episodeGuess("Sheds", 1, 2));
    const auto results = Async::wait(SeasonResolver::fromTMDB({}, files, {}));
    EXPECT_EQ(results.size(), 2U);
    EXPECT_FALSE(anyMatch(results));
    EXPECT_THAT(reasonsOf(results),
                Each(ElementsAre("Not checked against the database (no TMDB key)")));
}

TEST_F(SeasonFromTMDB, AFailedSearchSaysThatTheDatabaseIsOutOfReach) {
    tmdb.fails("/search/tv", 500);
    addFile(episodeGuess("Sheds", 1, 1));
    EXPECT_THAT(reasonsOf(resolve()), Each(ElementsAre("Couldn't reach the database")));
}

TEST_F(SeasonFromTMDB, AServiceThatIsDownSaysTheSame) {
    const test::ScopedEnv nowhere("MARLET_TMDB_API", "http://127.0.0.1:1/3");
    addFile(episodeGuess("Sheds", 1, 1));
    EXPECT_THAT(reasonsOf(resolve()), Each(ElementsAre("Couldn't reach the database")));
}

Task<> noSleep(std::chrono::milliseconds, CancelToken) {
    co_return;
}

TEST_F(SeasonFromTMDB, AServiceThatKeepsRefusingSaysTheSame) {
    const Clock::Hooks hooks({}, {}, noSleep);
    tmdb.fails("/search/tv", 429);
    addFile(episodeGuess("Sheds", 1, 1));
    EXPECT_THAT(reasonsOf(resolve()), Each(ElementsAre("Couldn't reach the database")));
}

TEST_F(SeasonFromTMDB, AnAnswerThatIsNoAnswerSaysTheSame) {
    tmdb.http().answer("/3/search/tv", "<html>");
    addFile(episodeGuess("Sheds", 1, 1));
    EXPECT_THAT(reasonsOf(resolve()), Each(ElementsAre("Couldn't reach the database")));
}

TEST_F(SeasonFromTMDB, AnUnknownShowIsNamedAsTheFirstFileHasIt) {
    addFile(episodeGuess("sheds", 1, 1));
    addFile(episodeGuess("Sheds!", 1, 2));
    EXPECT_THAT(reasonsOf(resolve()), Each(ElementsAre("No show called “sheds” in the database")));
}

TEST_F(SeasonFromTMDB, ASeasonThatIsNotThereIsToldForEveryFile) {
    addSheds(10, "1987");
    tmdb.findsShows("Sheds", {10});
    addFile(episodeGuess("Sheds", 99, 1));
    addFile(episodeGuess("Sheds", 99, 2));
    const auto results = resolve();
    EXPECT_FALSE(anyMatch(results));
    EXPECT_THAT(reasonsOf(results),
                Each(ElementsAre("Season 99 isn't in the database for “Sheds”")));
}

TEST_F(SeasonFromTMDB, TheShowWhoseEpisodesFitTheFilesIsTaken) {
    addSheds(10, "1987");
    addSheds(20, "2017");
    tmdb.findsShows("Sheds", {10, 20});
    tmdb.season(10, 1, {{1, "Sheds", 50}, {2, "Mirrors", 50}});
    tmdb.season(20, 1, {{1, "First Light", 22}, {2, "Cloud Cover", 22}});
    addFile(episodeGuess("Sheds", 1, 1), 22);
    addFile(episodeGuess("Sheds", 1, 2, "Cloud Cover"), 22);
    for (const ResolvedFile& result : resolve()) EXPECT_EQ(result.match->tmdbID, 20);
}

TEST_F(SeasonFromTMDB, BetweenEqualScoresTheServicesOrderDecides) {
    addSheds(10, "1987");
    addSheds(20, "2017");
    tmdb.findsShows("Sheds", {20, 10});
    tmdb.season(10, 1, {{1, "Sheds", 50}});
    tmdb.season(20, 1, {{1, "Sheds", 50}});
    addFile(episodeGuess("Sheds", 1, 1), 50);
    EXPECT_EQ(resolve()[0].match->tmdbID, 20);
}

TEST_F(SeasonFromTMDB, AFailedSeasonOnlyLowersItsShow) {
    addSheds(10, "1987");
    addSheds(20, "2017");
    tmdb.findsShows("Sheds", {10, 20});
    tmdb.fails("/tv/10/season/1", 500);
    tmdb.season(20, 1, {{1, "First Light", 22}});
    addFile(episodeGuess("Sheds", 1, 1), 22);
    EXPECT_EQ(resolve()[0].match->tmdbID, 20);
}

TEST_F(SeasonFromTMDB, AYearInTheNameAsksOnlyTheShowOfThatYear) {
    addSheds(10, "1987");
    addSheds(20, "2017");
    tmdb.findsShows("Sheds", {10, 20});
    tmdb.season(10, 1, {{1, "Sheds", 50}});
    tmdb.season(20, 1, {{1, "First Light", 22}});
    Guess guess = episodeGuess("Sheds", 1, 1);
    guess.year = 2017;
    addFile(guess, 50);
    EXPECT_EQ(resolve()[0].match->tmdbID, 20);
    EXPECT_THAT(tmdb.asked(), Not(Contains("/tv/10/season/1")));
}

TEST_F(SeasonFromTMDB, ALaterEpisodeOfTheSameNumberStandsForTheEarlier) {
    addSheds(10, "1987");
    tmdb.findsShows("Sheds", {10});
    tmdb.season(10, 1, {{1, "Pilot", 50}, {1, "Sheds", 51}});
    addFile(episodeGuess("Sheds", 1, 1), 50);
    EXPECT_EQ(resolve()[0].match->episodeTitle, "Sheds");
}

TEST_F(SeasonFromTMDB, TwoPartsInOneFileBecomeADoubleEpisode) {
    addSheds(10, "1987");
    tmdb.findsShows("Sheds", {10});
    tmdb.season(10, 2, {{4, "Last Light (1)", 22}, {5, "Last Light (2)", 23}});
    addFile(episodeGuess("Sheds", 2, 4, "Last Light"), 44);
    const auto results = resolve();
    EXPECT_TRUE(results[0].verdict.isCertain());
    EXPECT_EQ(results[0].match->episode, 4);
    EXPECT_EQ(results[0].match->episodeEnd, 5);
    EXPECT_EQ(results[0].match->episodeTitle, "Last Light (Parts 1 & 2)");
    EXPECT_EQ(results[0].match->runtimeMinutes, 22);
}

TEST_F(SeasonFromTMDB, EveryFileGetsAResultInItsPlace) {
    addSheds(10, "1987");
    tmdb.findsShows("Sheds", {10});
    tmdb.season(10, 1, {{1, "Sheds", 50}, {2, "Mirrors", 50}});
    addFile(episodeGuess("Sheds", 1, 2), 50);
    addFile(episodeGuess("Sheds", 1, 7), 50);
    addFile(episodeGuess("Sheds", 1, 1), 50);
    const auto results = resolve();
    ASSERT_EQ(results.size(), 3U);
    EXPECT_EQ(results[0].match->episode, 2);
    EXPECT_FALSE(results[1].match);
    EXPECT_THAT(results[1].verdict.reasons(),
                ElementsAre("Episode 7 isn't in season 1 in the database"));
    EXPECT_EQ(results[2].match->episode, 1);
}

TEST_F(SeasonFromTMDB, ACancelledTokenEndsTheWaitAtOnce) {
    test::HttpStub::Reply held;
    held.manner = test::HttpStub::Manner::Held;
    tmdb.http().answer("/3/search/tv", std::vector<test::HttpStub::Reply>{held});
    addFile(episodeGuess("Sheds", 1, 1));
    CancelToken cancel;
    auto resolving = SeasonResolver::fromTMDB(tmdb.client(), files, cancel);
    EXPECT_FALSE(resolving.isReady());
    cancel.cancel();
    EXPECT_TRUE(resolving.isReady());
    EXPECT_THROW(Async::wait(std::move(resolving)), CancelError);
}

}  // namespace
}  // namespace marlet
