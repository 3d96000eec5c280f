#include "identify/season_judging.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>

#include "identify/made_up_files.h"

namespace marlet {
namespace {

using test::episodeGuess;
using test::fileOf;
using testing::ElementsAre;
using testing::IsEmpty;

/// Season 2 of a show: a single episode, two parts of one story, one of unknown length.
SeasonJudging::Season sampleSeason(std::vector<Guess> guesses) {
    SeasonJudging::Season season;
    season.number = 2;
    season.episodes = {{3, {"The Borrowed Lens", 22}},
                       {4, {"Goodnight, Seattle (1)", 22}},
                       {5, {"Goodnight, Seattle (2)", 22}},
                       {6, {"Noise", std::nullopt}}};
    season.claims = SeasonJudging::claims(guesses);
    season.words = CatalogueWords::database();
    season.allowsDoubles = true;
    return season;
}

SeasonJudging::Judgement judged(const Guess& guess, std::optional<double> minutes,
                                std::vector<Guess> others = {}) {
    others.push_back(guess);
    return SeasonJudging::judge(fileOf("/x.mp4", minutes), guess, sampleSeason(others));
}

Guess numbered(int episode, std::optional<std::string> title = {}) {
    return episodeGuess("Sheds", 2, episode, std::move(title));
}

TEST(SeasonJudging, NumberTitleAndLengthMakeAnEpisodeCertain) {
    const auto result = judged(numbered(3, "The Borrowed Lens"), 22);
    EXPECT_EQ(result.episode, 3);
    EXPECT_EQ(result.title, "The Borrowed Lens");
    EXPECT_EQ(result.minutes, 22);
    EXPECT_TRUE(result.verdict.isCertain());
}

TEST(SeasonJudging, ATitleAloneOrALengthAloneIsSupportEnough) {
    EXPECT_TRUE(judged(numbered(3, "Borrowed Lens"), std::nullopt).verdict.isCertain());
    EXPECT_TRUE(judged(numbered(3), 23).verdict.isCertain());
}

TEST(SeasonJudging, WithOnlyANumberTheFileIsLookedAt) {
    const auto result = judged(numbered(6), std::nullopt);
    EXPECT_EQ(result.episode, 6);
    EXPECT_THAT(result.verdict.reasons(), ElementsAre("Only the file number to go on"));
}

TEST(SeasonJudging, AnUnknownEpisodeLengthIsNoDifference) {
    EXPECT_THAT(judged(numbered(6), 40).verdict.reasons(),
                ElementsAre("Only the file number to go on"));
    EXPECT_TRUE(judged(numbered(6, "Noise"), 40).verdict.isCertain());
}

TEST(SeasonJudging, AnEpisodeThatIsNotThereHasNoMatch) {
    const auto result = judged(numbered(9), 22);
    EXPECT_EQ(result.episode, std::nullopt);
    EXPECT_THAT(result.verdict.reasons(),
                ElementsAre("Episode 9 isn't in season 2 in the database"));
}

TEST(SeasonJudging, AMissingNumberIsToldAsZero) {
    const auto result = SeasonJudging::judge(
        fileOf("/x.mp4", 22), episodeGuess("Sheds", 2, std::nullopt), sampleSeason({}));
    EXPECT_EQ(result.episode, std::nullopt);
    EXPECT_THAT(result.verdict.reasons(),
                ElementsAre("Episode 0 isn't in season 2 in the database"));
}

TEST(SeasonJudging, AnotherTitleIsQuotedFromBothSides) {
    EXPECT_THAT(judged(numbered(3, "Dark Adaptation"), 22).verdict.reasons(),
                ElementsAre("File says “Dark Adaptation”, database says “The Borrowed Lens”"));
}

TEST(SeasonJudging, ReasonsComeInTheOrderTitleLengthDuplicate) {
    const auto result = judged(numbered(3, "Dark Adaptation"), 50, {numbered(3)});
    EXPECT_THAT(result.verdict.reasons(),
                ElementsAre("File says “Dark Adaptation”, database says “The Borrowed Lens”",
                            "Length differs: file 50 min, database 22 min",
                            "Another file is also episode 3"));
}

TEST(SeasonJudging, TwoFilesOfOneEpisodeAreBothToldAndKeepTheirMatch) {
    const Guess one = numbered(3, "The Borrowed Lens");
    const auto result = judged(one, 22, {one});
    EXPECT_EQ(result.episode, 3);
    EXPECT_THAT(result.verdict.reasons(), ElementsAre("Another file is also episode 3"));
}

TEST(SeasonJudging, AFileOfTwiceTheLengthIsTheTwoPartsInOne) {
    const auto result = judged(numbered(4, "Goodnight Seattle"), 44);
    EXPECT_EQ(result.episode, 4);
    EXPECT_EQ(result.episodeEnd, 5);
    EXPECT_EQ(result.title, "Goodnight, Seattle (Parts 1 & 2)");
    EXPECT_EQ(result.minutes, 22);
    EXPECT_TRUE(result.verdict.isCertain());
}

TEST(SeasonJudging, ADoubleEpisodeWithoutATitleIsLookedAt) {
    const auto result = judged(numbered(4), 44);
    EXPECT_EQ(result.episodeEnd, 5);
    EXPECT_THAT(result.verdict.reasons(), ElementsAre("Only the file number to go on"));
}

TEST(SeasonJudging, TheFilesOwnPartNumberIsNoPartOfItsStem) {
    EXPECT_EQ(judged(numbered(4, "Goodnight Seattle Part 1"), 44).episodeEnd, 5);
}

TEST(SeasonJudging, AFileOnTheSecondPartKeepsTheFirstSingle) {
    const auto result = judged(numbered(4), 44, {numbered(5)});
    EXPECT_EQ(result.episodeEnd, std::nullopt);
    EXPECT_THAT(result.verdict.reasons(),
                ElementsAre("Length differs: file 44 min, database 22 min"));
}

TEST(SeasonJudging, TwoFilesOnTheFirstPartAreNoDoubles) {
    const auto result = judged(numbered(4), 44, {numbered(4)});
    EXPECT_EQ(result.episodeEnd, std::nullopt);
    EXPECT_THAT(result.verdict.reasons(),
                ElementsAre("Length differs: file 44 min, database 22 min",
                            "Another file is also episode 4"));
}

TEST(SeasonJudging, TheLargestNumberHasNoNextEpisode) {
    constexpr int largest = std::numeric_limits<int>::max();
    auto season = sampleSeason({numbered(largest)});
    season.episodes[largest] = {"Goodnight, Seattle (1)", 22};
    season.episodes[std::numeric_limits<int>::min()] = {"Goodnight, Seattle (2)", 22};
    const auto result = SeasonJudging::judge(fileOf("/x.mp4", 44), numbered(largest), season);
    EXPECT_EQ(result.episode, largest);
    EXPECT_EQ(result.episodeEnd, std::nullopt);
}

TEST(SeasonJudging, EpisodesThatAreNoPartsOfOneStoryAreNoDouble) {
    EXPECT_EQ(judged(numbered(3), 44).episodeEnd, std::nullopt);
}

TEST(SeasonJudging, ThePartsMustComeInOrder) {
    auto season = sampleSeason({numbered(4)});
    std::swap(season.episodes[4], season.episodes[5]);
    EXPECT_EQ(SeasonJudging::judge(fileOf("/x.mp4", 44), numbered(4), season).episodeEnd,
              std::nullopt);
}

TEST(SeasonJudging, AnotherTitleSpeaksAgainstADouble) {
    const auto result = judged(numbered(4, "The Borrowed Lens"), 44);
    EXPECT_EQ(result.episodeEnd, std::nullopt);
    EXPECT_THAT(result.verdict.reasons(),
                ElementsAre("File says “The Borrowed Lens”, database says “Goodnight, Seattle (1)”",
                            "Length differs: file 44 min, database 22 min"));
}

TEST(SeasonJudging, ADoubleMayBeOffByAnEighthOrSixMinutes) {
    EXPECT_EQ(judged(numbered(4), 50).episodeEnd, 5);
    EXPECT_EQ(judged(numbered(4), 50.1).episodeEnd, std::nullopt);
    EXPECT_EQ(judged(numbered(4), 37.9).episodeEnd, std::nullopt);
}

TEST(SeasonJudging, ASecondPartOfUnknownLengthCountsAsTheFirst) {
    auto season = sampleSeason({numbered(4)});
    season.episodes[5].minutes.reset();
    EXPECT_EQ(SeasonJudging::judge(fileOf("/x.mp4", 44), numbered(4), season).episodeEnd, 5);
}

TEST(SeasonJudging, WhereDoublesAreNotAllowedTheLengthDiffers) {
    auto season = sampleSeason({numbered(4)});
    season.allowsDoubles = false;
    season.words = CatalogueWords::of(SourceID::appleTV);
    const auto result = SeasonJudging::judge(fileOf("/x.mp4", 44), numbered(4), season);
    EXPECT_EQ(result.episodeEnd, std::nullopt);
    EXPECT_THAT(result.verdict.reasons(),
                ElementsAre("Length differs: file 44 min, Apple TV 22 min"));
}

TEST(SeasonJudging, ClaimsCountTheFilesOfEachNumber) {
    EXPECT_EQ(SeasonJudging::claims(
                  {numbered(3), numbered(4), numbered(3), episodeGuess("S", 2, std::nullopt)}),
              (SeasonJudging::Claims{{3, 2}, {4, 1}}));
}

TEST(SeasonJudging, AFitIsOneForTheNumberUpToOneForTheTitleAndAHalfForTheLength) {
    const auto episodes = sampleSeason({}).episodes;
    const auto fitOf = [&](const Guess& guess, std::optional<double> minutes) {
        SeasonFiles files;
        files.add(fileOf("/x.mp4", minutes), guess);
        return SeasonJudging::fit(files, episodes);
    };
    EXPECT_DOUBLE_EQ(fitOf(numbered(9), 22), 0.0);
    EXPECT_DOUBLE_EQ(fitOf(numbered(3), std::nullopt), 1.0);
    EXPECT_DOUBLE_EQ(fitOf(numbered(3), 22), 1.5);
    EXPECT_DOUBLE_EQ(fitOf(numbered(3, "The Borrowed Lens"), 22), 2.5);
    EXPECT_DOUBLE_EQ(fitOf(numbered(3, "The Borrowed Lens"), 60), 2.0);
    EXPECT_DOUBLE_EQ(fitOf(numbered(6), 22), 1.0);
}

TEST(SeasonJudging, TheFitOfASeasonIsTheSumOverItsFiles) {
    SeasonFiles files;
    files.add(fileOf("/a.mp4", 22), numbered(3));
    files.add(fileOf("/b.mp4"), numbered(4));
    EXPECT_DOUBLE_EQ(SeasonJudging::fit(files, sampleSeason({}).episodes), 2.5);
}

struct NamedShow {
    std::string title;
    std::optional<int> year;
    bool operator==(const NamedShow&) const = default;
};

std::vector<NamedShow> candidatesOf(const std::vector<NamedShow>& found, Guess guess) {
    SeasonFiles files;
    files.add(fileOf("/x.mp4"), std::move(guess));
    return SeasonJudging::candidates(
        found, files, [](const NamedShow& show) { return show.title; },
        [](const NamedShow& show) { return show.year; });
}

TEST(SeasonJudging, OnlyShowsOfALikeTitleAreCandidates) {
    const NamedShow sheds{"The Sheds", 1987};
    EXPECT_THAT(candidatesOf({{"Mirrors", 1987}, sheds, {"Sheds and Mirrors", 2000}}, numbered(1)),
                ElementsAre(sheds));
    EXPECT_THAT(candidatesOf({{"Mirrors", 1987}}, numbered(1)), IsEmpty());
}

TEST(SeasonJudging, AYearKeepsTheShowsOfThatYearWhenThereIsOne) {
    const NamedShow old{"Sheds", 1987};
    const NamedShow young{"Sheds", 2017};
    Guess guess = numbered(1);
    guess.year = 2017;
    EXPECT_THAT(candidatesOf({old, young}, guess), ElementsAre(young));
    guess.year = 1999;
    EXPECT_THAT(candidatesOf({old, young}, guess), ElementsAre(old, young));
    EXPECT_THAT(candidatesOf({old, {"Sheds", std::nullopt}}, numbered(1)), testing::SizeIs(2));
}

}  // namespace
}  // namespace marlet
