#include "identify/movie_judging.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "identify/made_up_files.h"

namespace marlet {
namespace {

using MovieJudging::Wanted;
using testing::ElementsAre;
using testing::IsEmpty;

Wanted wanted(const std::string& title, std::optional<int> year = {},
              std::optional<double> minutes = {}, const std::string& name = "/x/film.mp4") {
    return Wanted::of(test::fileOf(name, minutes), test::filmGuess(title, year));
}

TMDBMovie movie(const std::string& title, std::optional<int> year, std::optional<int> minutes,
                std::int64_t id = 1) {
    TMDBMovie film;
    film.id = id;
    film.title = title;
    if (year) film.release_date = std::to_string(*year) + "-05-01";
    film.runtime = minutes;
    return film;
}

TMDBSearchHit hit(std::int64_t id, const std::string& title, std::optional<int> year = {}) {
    TMDBSearchHit found;
    found.id = id;
    found.title = title;
    if (year) found.release_date = std::to_string(*year) + "-05-01";
    return found;
}

std::vector<std::int64_t> idsOf(const std::vector<TMDBSearchHit>& hits) {
    std::vector<std::int64_t> ids;
    for (const TMDBSearchHit& one : hits) ids.push_back(one.id);
    return ids;
}

TEST(MovieJudging, AYearOneOffIsCloseAndTwoOffIsNot) {
    EXPECT_TRUE(MovieJudging::closeYears(2000, 2001));
    EXPECT_TRUE(MovieJudging::closeYears(2001, 2000));
    EXPECT_FALSE(MovieJudging::closeYears(2000, 2002));
    EXPECT_FALSE(MovieJudging::closeYears(2000, std::nullopt));
    EXPECT_FALSE(MovieJudging::closeYears(std::nullopt, 2000));
}

TEST(MovieJudging, ATitleWithAColonIsAlsoSearchedWithABlankInItsPlace) {
    EXPECT_THAT(MovieJudging::queries(wanted("3:10 to Yuma", 2007)),
                ElementsAre("3:10 to Yuma", "3 10 to Yuma", "3:10 to Yuma 2007"));
    EXPECT_THAT(MovieJudging::queries(wanted("Heat", 1995)), ElementsAre("Heat", "Heat 1995"));
    EXPECT_THAT(MovieJudging::queries(wanted("Heat")), ElementsAre("Heat"));
}

TEST(MovieJudging, HitsRankByTitleAndAHalfForTheYear) {
    const auto ranked =
        MovieJudging::ranked({hit(1, "13 Hours of Rain", 1990), hit(2, "13 Hours", 1990),
                              hit(3, "13 Hours Long", 2016), hit(4, "Thirteen", 2016)},
                             wanted("13 Hours", 2016));
    EXPECT_THAT(idsOf(ranked), ElementsAre(3, 2, 1));
}

TEST(MovieJudging, EqualRanksKeepTheOrderInWhichTheHitsCame) {
    EXPECT_THAT(idsOf(MovieJudging::ranked({hit(7, "Heat"), hit(3, "Heat"), hit(5, "Heat")},
                                           wanted("Heat"))),
                ElementsAre(7, 3, 5));
}

TEST(MovieJudging, AFilmFoundTwiceIsOneHit) {
    EXPECT_THAT(idsOf(MovieJudging::ranked({hit(7, "Heat"), hit(7, "Heat")}, wanted("Heat"))),
                ElementsAre(7));
}

TEST(MovieJudging, AScoreIsTitleYearLengthAndPlace) {
    const auto scoreOf = [](std::optional<int> year, std::optional<int> minutes,
                            std::size_t place) {
        return MovieJudging::candidate(movie("Heat", year, minutes), 1, place,
                                       wanted("Heat", 1995, 170))
            .score;
    };
    EXPECT_DOUBLE_EQ(scoreOf(1995, 170, 0), 1.8);
    EXPECT_DOUBLE_EQ(scoreOf(1995, std::nullopt, 0), 1.4);
    EXPECT_DOUBLE_EQ(scoreOf(1995, 100, 0), 1.2);
    EXPECT_DOUBLE_EQ(scoreOf(2005, 170, 0), 1.4);
    EXPECT_DOUBLE_EQ(scoreOf(std::nullopt, 170, 3), 1.37);
}

TEST(MovieJudging, WithoutAWantedYearEveryYearIsFine) {
    EXPECT_TRUE(
        MovieJudging::candidate(movie("Heat", std::nullopt, 1), 1, 0, wanted("Heat")).yearOK);
}

TEST(MovieJudging, ABeginningScores095AndAWrongLengthTakesNothingOff) {
    const auto scoreOf = [](std::optional<int> year, std::optional<int> minutes) {
        return MovieJudging::shorterCandidate(movie("Heat", year, minutes), 1,
                                              wanted("Heat director talks", 1995, 170))
            .score;
    };
    EXPECT_DOUBLE_EQ(scoreOf(1995, 170), 1.75);
    EXPECT_DOUBLE_EQ(scoreOf(1995, 100), 1.35);
    EXPECT_DOUBLE_EQ(scoreOf(2005, std::nullopt), 0.95);
}

TEST(MovieJudging, ShorterTitlesGoDownToOneWord) {
    EXPECT_THAT(MovieJudging::shorterTitles("The Lost World Restored!"),
                ElementsAre("lost world", "lost"));
    EXPECT_THAT(MovieJudging::shorterTitles("Heat"), IsEmpty());
}

TEST(MovieJudging, ABeginningGoesWordByWord) {
    EXPECT_TRUE(MovieJudging::isBeginning("The Lost World", "lost world restored"));
    EXPECT_TRUE(MovieJudging::isBeginning("Lost World", "lost world"));
    EXPECT_FALSE(MovieJudging::isBeginning("Lost Worlds", "lost world restored"));
    EXPECT_FALSE(MovieJudging::isBeginning("Lost World Restored Again", "lost world restored"));
    EXPECT_FALSE(MovieJudging::isBeginning("!!!", "lost world"));
}

/// Candidates of one title, in the order of the search.
std::vector<MovieJudging::Candidate> namesakes(
    const Wanted& want, const std::vector<std::pair<TMDBMovie, double>>& films) {
    std::vector<MovieJudging::Candidate> list;
    for (const auto& [film, popularity] : films) {
        list.push_back(MovieJudging::candidate(film, popularity, list.size(), want));
    }
    return list;
}

TEST(MovieJudging, TheHighestScoreWinsAndTheEarlierOnATie) {
    const Wanted want = wanted("Heat", 1995, 170);
    auto list = namesakes(want, {{movie("Heat", 2013, 117), 9}, {movie("Heat", 1995, 170), 1}});
    EXPECT_EQ(MovieJudging::pick(list, want).index, 1U);
    list[0].score = list[1].score;
    EXPECT_EQ(MovieJudging::pick(list, want).index, 0U);
}

TEST(MovieJudging, NamesakesWithoutAYearOrAFittingLengthAreToldWithTheirYears) {
    const Wanted want = wanted("Heat", std::nullopt, 50);
    const auto pick = MovieJudging::pick(
        namesakes(want, {{movie("Heat", 2005, 117), 2}, {movie("Heat", 1999, 170), 9}}), want);
    EXPECT_EQ(pick.index, 1U);
    EXPECT_EQ(pick.ambiguity,
              "More than one film is called “Heat” (1999, 2005). Check which one this is.");
}

TEST(MovieJudging, AFilmWithoutADateHasNoYearToTell) {
    const Wanted want = wanted("Heat");
    const auto pick = MovieJudging::pick(
        namesakes(want, {{movie("Heat", 2005, 117), 2}, {movie("Heat", {}, 170), 1}}), want);
    EXPECT_EQ(pick.ambiguity,
              "More than one film is called “Heat” (2005). Check which one this is.");
}

TEST(MovieJudging, TheOneThatFitsByLengthIsTakenWhenItIsPopularEnough) {
    const Wanted want = wanted("Heat", std::nullopt, 117);
    const auto list =
        namesakes(want, {{movie("Heat", 1995, 170), 10}, {movie("Heat", 2013, 117), 2}});
    const auto pick = MovieJudging::pick(list, want);
    EXPECT_EQ(pick.index, 1U);
    EXPECT_EQ(pick.ambiguity, std::nullopt);
}

TEST(MovieJudging, UnderAFifthOfTheOthersPopularityItStaysAmbiguous) {
    const Wanted want = wanted("Heat", std::nullopt, 117);
    const auto list =
        namesakes(want, {{movie("Heat", 1995, 170), 10}, {movie("Heat", 2013, 117), 1.9}});
    const auto pick = MovieJudging::pick(list, want);
    EXPECT_EQ(pick.index, 1U) << "the length still goes before the popularity";
    EXPECT_TRUE(pick.ambiguity);
}

TEST(MovieJudging, TwoThatFitByLengthAreAmbiguousAndTheMorePopularIsPicked) {
    const Wanted want = wanted("Heat", std::nullopt, 117);
    const auto list = namesakes(want, {{movie("Heat", 1995, 115), 3},
                                       {movie("Heat", 2013, 117), 8},
                                       {movie("Heat", 1986, 60), 99}});
    const auto pick = MovieJudging::pick(list, want);
    EXPECT_EQ(pick.index, 1U);
    EXPECT_TRUE(pick.ambiguity);
}

TEST(MovieJudging, EqualPopularityPicksTheEarlier) {
    const Wanted want = wanted("Heat");
    const auto list =
        namesakes(want, {{movie("Heat", 1995, 115), 3}, {movie("Heat", 2013, 117), 3}});
    EXPECT_EQ(MovieJudging::pick(list, want).index, 0U);
}

TEST(MovieJudging, OneExactFilmIsNotAmbiguous) {
    const Wanted want = wanted("Heat", std::nullopt, 50);
    const auto list =
        namesakes(want, {{movie("Heat", 1995, 170), 3}, {movie("Heat Wave Hot", 2013, 50), 3}});
    EXPECT_EQ(MovieJudging::pick(list, want).ambiguity, std::nullopt);
}

TEST(MovieJudging, AYearSettlesNamesakes) {
    const Wanted want = wanted("Heat", 1995);
    const auto list =
        namesakes(want, {{movie("Heat", 2013, 115), 3}, {movie("Heat", 1995, 117), 3}});
    const auto pick = MovieJudging::pick(list, want);
    EXPECT_EQ(pick.index, 1U);
    EXPECT_EQ(pick.ambiguity, std::nullopt);
}

struct Judged {
    std::optional<std::string> cut;
    std::vector<std::string> reasons;
};

Judged judged(const Wanted& want, const TMDBMovie& film) {
    const auto candidate = MovieJudging::candidate(film, 1, 0, want);
    const auto cut = MovieJudging::longerCut(candidate, want);
    return {cut, MovieJudging::reasons(candidate, want, cut.has_value())};
}

TEST(MovieJudging, ALongerFileOfTheSameYearIsACutAndNoDifference) {
    const auto result = judged(wanted("Gladiator", 2000, 170), movie("Gladiator", 2000, 155));
    EXPECT_EQ(result.cut, "Extended cut");
    EXPECT_THAT(result.reasons, IsEmpty());
}

TEST(MovieJudging, ACutTakesItsNameFromTheFile) {
    const auto want = wanted("Gladiator", 2000, 170, "/x/Gladiator 2000 Director's Cut.mkv");
    EXPECT_EQ(judged(want, movie("Gladiator", 2000, 155)).cut, "Director's cut");
}

TEST(MovieJudging, AFileHalfAsLongAgainIsNoCut) {
    const auto result = judged(wanted("Gladiator", 2000, 170), movie("Gladiator", 2000, 100));
    EXPECT_EQ(result.cut, std::nullopt);
    EXPECT_THAT(result.reasons, ElementsAre("Length differs: file 170 min, database 100 min"));
}

TEST(MovieJudging, ACutNeedsTheExactYearAndALongerFile) {
    EXPECT_EQ(judged(wanted("Gladiator", 2001, 170), movie("Gladiator", 2000, 155)).cut,
              std::nullopt);
    EXPECT_EQ(judged(wanted("Gladiator", std::nullopt, 170), movie("Gladiator", 2000, 155)).cut,
              std::nullopt);
    EXPECT_EQ(judged(wanted("Gladiator", 2000, 130), movie("Gladiator", 2000, 155)).cut,
              std::nullopt);
}

TEST(MovieJudging, AYearOneOffIsNoReasonAndTwoOffIs) {
    EXPECT_THAT(judged(wanted("Heat", 1996, 170), movie("Heat", 1995, 170)).reasons, IsEmpty());
    EXPECT_THAT(judged(wanted("Heat", 1997, 170), movie("Heat", 1995, 170)).reasons,
                ElementsAre("Year differs: file 1997, database 1995"));
    EXPECT_THAT(judged(wanted("Heat", 1997, 170), movie("Heat", {}, 170)).reasons,
                ElementsAre("Year differs: file 1997, database unknown"));
}

TEST(MovieJudging, ABeginningOfALongerNameIsNoReasonWhenTheYearHolds) {
    const TMDBMovie film = movie("13 Hours: The Secret Soldiers of Benghazi", 2016, 144);
    EXPECT_THAT(judged(wanted("13 Hours", 2016, 144), film).reasons, IsEmpty());
    EXPECT_THAT(judged(wanted("13 Hours", std::nullopt, 144), film).reasons,
                ElementsAre("Closest match is “13 Hours: The Secret Soldiers of Benghazi”, which "
                            "isn't an exact name match"));
}

TEST(MovieJudging, ReasonsComeInTheOrderNameYearLength) {
    EXPECT_THAT(judged(wanted("Great Heat Wave", 1997, 50), movie("Great Heat", 1995, 170)).reasons,
                ElementsAre("Closest match is “Great Heat”, which isn't an exact name match",
                            "Year differs: file 1997, database 1995",
                            "Length differs: file 50 min, database 170 min"));
}

TEST(MovieJudging, AFilmWithoutAKnownLengthIsNeverCertain) {
    EXPECT_THAT(judged(wanted("Heat", 1995), movie("Heat", 1995, 170)).reasons,
                ElementsAre("Couldn't compare the length"));
    EXPECT_THAT(judged(wanted("Heat", 1995, 170), movie("Heat", 1995, 0)).reasons,
                ElementsAre("Couldn't compare the length"));
}

}  // namespace
}  // namespace marlet
