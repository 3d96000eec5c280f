#include "app/answer_key.h"

#include <gtest/gtest.h>

#include "support/temp_folder.h"

namespace marlet::test {
namespace {

using Headless::answerKey;
using Headless::describe;
using Headless::truthOf;

Match film(const std::string& title, std::optional<int> year) {
    return {.tmdbID = 348, .kind = MediaKind::movie, .title = title, .year = year};
}

Match episode(const std::string& show, int season, int number,
              std::optional<std::string> title = {}) {
    return {.tmdbID = 3452,
            .kind = MediaKind::tv,
            .title = show,
            .year = 1993,
            .season = season,
            .episode = number,
            .episodeTitle = std::move(title)};
}

ResolvedFile resolved(std::optional<Match> match, ExistingTags tags = {}) {
    ResolvedFile file;
    file.file.tags = std::move(tags);
    file.match = std::move(match);
    return file;
}

bool isRight(const std::string& path, const Match& match) {
    return answerKey(path, resolved(match)).right;
}

constexpr const char* frasier = "TV Shows/Frasier/Season 2/05 Duke's, We Hardly Knew Ye.m4v";

TEST(AnswerKey, AFilmIsExpectedByTheTitleAndYearOfItsName) {
    EXPECT_EQ(answerKey("Movies/Alien (1979).m4v", resolved({})).expected, "Alien (1979)");
    EXPECT_EQ(answerKey("Alien (1979)/Alien (1979) (1080p HD).m4v", resolved({})).expected,
              "Alien (1979)");
    EXPECT_EQ(answerKey("2001_ A Space Odyssey (1968).m4v", resolved({})).expected,
              "2001: A Space Odyssey (1968)");
}

TEST(AnswerKey, AMissingYearPrintsZero) {
    EXPECT_EQ(answerKey("Movies/Sintel.mp4", resolved({})).expected, "Sintel (0)");
    EXPECT_EQ(describe(film("Sintel", {})), "Sintel (0) id348");
}

TEST(AnswerKey, WithoutAMatchNothingIsRight) {
    EXPECT_FALSE(answerKey("Movies/Alien (1979).m4v", resolved({})).right);
}

TEST(AnswerKey, AFilmIsRightWhenItsTitleHasTheSameWordsAndItsYearIsNoMoreThanOneAway) {
    EXPECT_TRUE(isRight("Movies/Alien (1979).m4v", film("ALIEN", 1979)));
    EXPECT_TRUE(isRight("Movies/Alien (1979).m4v", film("Alien", 1980)));
    EXPECT_FALSE(isRight("Movies/Alien (1979).m4v", film("Alien", 1981)));
    EXPECT_FALSE(isRight("Movies/Alien (1979).m4v", film("Alien", {})));
    EXPECT_FALSE(isRight("Movies/Alien (1979).m4v", film("Critters", 1979)));
}

TEST(AnswerKey, ATitleThatBeginsTheOtherOneIsRight) {
    EXPECT_TRUE(isRight("Movies/Dr. Strangelove (1964).m4v",
                        film("Dr. Strangelove or: How I Learned to Stop Worrying", 1964)));
    EXPECT_TRUE(
        isRight("Movies/Birdman or The Unexpected Virtue (2014).m4v", film("Birdman", 2014)));
}

TEST(AnswerKey, AMatchThatHoldsAllWordsOfTheTruthIsRight) {
    EXPECT_TRUE(isRight("Movies/Phantom Menace (1999).m4v",
                        film("Star Wars: Episode I - The Phantom Menace", 1999)));
    EXPECT_FALSE(isRight("Movies/Phantom Menace (1999).m4v",
                         film("Star Wars: Episode I - The Phantom", 1999)));
}

TEST(AnswerKey, AFilmWhoseNameTellsNoYearIsJudgedByItsTitleAlone) {
    EXPECT_TRUE(isRight("Movies/Sintel.mp4", film("Sintel", 2010)));
}

TEST(AnswerKey, AnEpisodeIsNoFilmAndAFilmNoEpisode) {
    EXPECT_FALSE(isRight("Movies/Frasier (1993).m4v", episode("Frasier", 1, 1)));
    EXPECT_FALSE(isRight(frasier, film("Frasier", 1993)));
}

TEST(AnswerKey, AnEpisodeIsExpectedByItsShowFolderItsSeasonFolderAndItsName) {
    EXPECT_EQ(answerKey(frasier, resolved({})).expected, "Frasier S2E5 Duke's, We Hardly Knew Ye");
    EXPECT_EQ(answerKey(std::string("/") + frasier, resolved({})).expected,
              "Frasier S2E5 Duke's, We Hardly Knew Ye")
        << "a root without its last slash";
}

TEST(AnswerKey, AnEpisodeIsRightWhenShowSeasonAndNumberAreEqualAndTheTitlesMuchAlike) {
    EXPECT_TRUE(isRight(frasier, episode("Frasier", 2, 5, "Duke's, We Hardly Knew Ye")));
    EXPECT_TRUE(isRight(frasier, episode("frasier", 2, 5, "Dukes We Hardly Knew You")));
    EXPECT_FALSE(isRight(frasier, episode("Frasier", 2, 5, "The Good Son")));
    EXPECT_FALSE(isRight(frasier, episode("Frasier", 2, 5)));
    EXPECT_FALSE(isRight(frasier, episode("Frasier", 2, 6, "Duke's, We Hardly Knew Ye")));
    EXPECT_FALSE(isRight(frasier, episode("Frasier", 3, 5, "Duke's, We Hardly Knew Ye")));
    EXPECT_FALSE(isRight(frasier, episode("Cheers", 2, 5, "Duke's, We Hardly Knew Ye")));
}

TEST(AnswerKey, AnEpisodeWhoseNameTellsNoTitleIsJudgedByItsNumbers) {
    EXPECT_TRUE(isRight("TV Shows/Frasier/Season 2/Frasier S02E05.m4v",
                        episode("Frasier", 2, 5, "Duke's, We Hardly Knew Ye")));
}

TEST(AnswerKey, WithoutASeasonFolderTheSeasonIsThatOfTheTags) {
    const std::string path = "TV Shows/Frasier/05 Duke's, We Hardly Knew Ye.m4v";
    const auto key = answerKey(
        path, resolved(episode("Frasier", 4, 5, "Duke's, We Hardly Knew Ye"), {.season = 4}));
    EXPECT_EQ(key.expected, "Frasier S4E5 Duke's, We Hardly Knew Ye");
    EXPECT_TRUE(key.right);
}

TEST(AnswerKey, PathsThatFollowNoOrderGiveNoRightAnswerAndNoCrash) {
    for (const char* path : {"", "/", "TV Shows/", "TV Shows/x.m4v", "TV Shows//", "//", "().m4v",
                             "TV Shows/A/B/C/D/E.m4v", "\xff\xfe"})
        EXPECT_FALSE(isRight(path, film("Alien", 1979))) << path;
}

TEST(AnswerKey, AMatchIsDescribedByTitleYearIdAndEpisode) {
    EXPECT_EQ(describe(film("Alien", 1979)), "Alien (1979) id348");
    EXPECT_EQ(describe(episode("Frasier", 2, 5, "Duke's, We Hardly Knew Ye")),
              "Frasier (1993) id3452 S2E5 Duke's, We Hardly Knew Ye");
    EXPECT_EQ(describe(episode("Frasier", 2, 5)), "Frasier (1993) id3452 S2E5");
}

}  // namespace
}  // namespace marlet::test
