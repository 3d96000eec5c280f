#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "identify/guess_model.h"
#include "identify/made_up_files.h"

namespace marlet {
namespace {

using test::episodeGuess;
using test::filmGuess;
using testing::ElementsAre;
using testing::IsEmpty;

std::vector<std::string> conflictsOf(const std::string& fileName, const Guess& guess) {
    return AIGuard::conflicts(fileName, "/dl", guess);
}

TEST(AIGuard, ADroppedNumberOfTheTitleIsAWordLeftOut) {
    EXPECT_THAT(conflictsOf("Blade_Runner_2049_2017_UHD_HDR.mkv", filmGuess("Blade Runner", 2017)),
                ElementsAre("The model left out “2049” from the file name"));
}

TEST(AIGuard, ATitleWithAllItsNumbersIsAccepted) {
    EXPECT_THAT(
        conflictsOf("Blade_Runner_2049_2017_UHD_HDR.mkv", filmGuess("Blade Runner 2049", 2017)),
        IsEmpty());
}

TEST(AIGuard, AWrongYearIsToldBesideTheOneLeftOut) {
    EXPECT_THAT(conflictsOf("The.Matrix.1999.1080p.mkv", filmGuess("The Matrix", 2003)),
                ElementsAre("The model left out “1999” from the file name",
                            "File says 1999, model says 2003"));
}

TEST(AIGuard, InventedWordsAreNamed) {
    EXPECT_THAT(conflictsOf("The.Matrix.1999.mkv", filmGuess("The Matrix Reloaded Again", 1999)),
                ElementsAre("The model added “reloaded, again”, which isn't in the name"));
}

TEST(AIGuard, WordsOfTheFolderAreNotInvented) {
    EXPECT_THAT(AIGuard::conflicts("The.Matrix.1999.mkv", "/dl/Reloaded",
                                   filmGuess("The Matrix Reloaded", 1999)),
                IsEmpty());
}

TEST(AIGuard, ReleaseJunkIsIgnored) {
    EXPECT_THAT(
        conflictsOf("The.Matrix.1999.1080p.BluRay.x264-YIFY.mkv", filmGuess("The Matrix", 1999)),
        IsEmpty());
}

TEST(AIGuard, ADroppedYearIsAWordLeftOut) {
    EXPECT_THAT(conflictsOf("Heat 1995.mp4", filmGuess("Heat")),
                ElementsAre("The model left out “1995” from the file name"));
}

TEST(AIGuard, SoundAndCodecTagsAreIgnored) {
    EXPECT_THAT(
        conflictsOf("Dune.1984.1080p.WEB-DL.DDP5.1.Atmos.H.264.mkv", filmGuess("Dune", 1984)),
        IsEmpty());
}

TEST(AIGuard, ArticlesMayComeAndGo) {
    EXPECT_THAT(conflictsOf("The.Kid.1921.mkv", filmGuess("Kid", 1921)), IsEmpty());
    EXPECT_THAT(conflictsOf("Kid.1921.mkv", filmGuess("The Kid", 1921)), IsEmpty());
}

TEST(AIGuard, SeasonAndEpisodeExcuseTheirNumbersPlainAndPadded) {
    EXPECT_THAT(conflictsOf("Sheds 3 07 Noise.mkv", episodeGuess("Sheds", 3, 7, "Noise")),
                IsEmpty());
    EXPECT_THAT(conflictsOf("Sheds 3 08 Noise.mkv", episodeGuess("Sheds", 3, 7, "Noise")),
                ElementsAre("The model left out “08” from the file name"));
}

TEST(AIGuard, SeveralWordsLeftOutAreJoinedInTheirOrder) {
    EXPECT_THAT(conflictsOf("Night of the Living Dead (1968).mp4", filmGuess("Night", 1968)),
                ElementsAre("The model left out “of, living, dead” from the file name"));
}

}  // namespace
}  // namespace marlet
