#include "foundation/title_match.h"

#include <gtest/gtest.h>

#include <array>

namespace marlet {
namespace {

constexpr std::array titles{"Where There's Smoke There's Fired",
                            "Alien³",
                            "Alien 3",
                            "The Office",
                            "An Office",
                            "Amélie",
                            "AMELIE",
                            "13 Hours",
                            "13 Hours: The Secret Soldiers of Benghazi",
                            "Crane vs. Crane",
                            "Crane Versus Crane",
                            "Law & Order",
                            "Law and Order",
                            "A Star Is Born",
                            "Mamma Mia!",
                            "千と千尋",
                            "!!!",
                            "",
                            "the the the",
                            "\xFF\xFE film",
                            "One\tTwo\nThree"};

TEST(TitleMatch, ACommaIsHardlyADifference) {
    EXPECT_GT(TitleMatch::similarity("Where There's Smoke There's Fired",
                                     "Where There's Smoke, There's Fired"),
              0.9);
}

TEST(TitleMatch, ApostrophesJoinWords) {
    EXPECT_GE(TitleMatch::similarity("Aint Nobodys Business If I Do",
                                     "Ain't Nobody's Business if 'I Do'"),
              0.95);
    EXPECT_EQ(TitleMatch::normalise("Ain’t `Nobody's"), "aint nobodys");
}

TEST(TitleMatch, VersusIsVs) {
    EXPECT_GE(TitleMatch::similarity("Crane vs. Crane", "Crane Versus Crane"), 0.95);
    EXPECT_EQ(TitleMatch::normalise("Conversus"), "conversus");
}

TEST(TitleMatch, ASuperscriptIsANumber) {
    EXPECT_GE(TitleMatch::similarity("Alien 3", "Alien³"), 0.95);
    EXPECT_EQ(TitleMatch::normalise("Cube² x¹"), "cube 2 x 1");
}

TEST(TitleMatch, ATitleIsAPrefixOfItsLongerForm) {
    EXPECT_TRUE(TitleMatch::isPrefix("13 Hours", "13 Hours: The Secret Soldiers of Benghazi"));
}

TEST(TitleMatch, APrefixIsOfWholeWordsInOrderAndShorter) {
    EXPECT_FALSE(TitleMatch::isPrefix("13 Hour", "13 Hours: The Secret Soldiers of Benghazi"));
    EXPECT_FALSE(TitleMatch::isPrefix("Hours 13", "13 Hours Later"));
    EXPECT_FALSE(TitleMatch::isPrefix("13 Hours", "13 Hours"));
    EXPECT_FALSE(TitleMatch::isPrefix("13 Hours Later", "13 Hours"));
    EXPECT_FALSE(TitleMatch::isPrefix("", "13 Hours"));
    EXPECT_FALSE(TitleMatch::isPrefix("...", "13 Hours"));
}

TEST(TitleMatch, AnEmptyTitleIsLikeNothingItselfIncluded) {
    EXPECT_EQ(TitleMatch::similarity("", "Heat"), 0.0);
    EXPECT_EQ(TitleMatch::similarity("Heat", ""), 0.0);
    EXPECT_EQ(TitleMatch::similarity("", ""), 0.0);
}

TEST(TitleMatch, ATitleOfPunctuationIsLikeNothingItselfIncluded) {
    EXPECT_EQ(TitleMatch::similarity("?!...", "?!..."), 0.0);
    EXPECT_EQ(TitleMatch::similarity("?!...", "Heat"), 0.0);
}

TEST(TitleMatch, CaseDiacriticsAndPunctuationDoNotCount) {
    EXPECT_EQ(TitleMatch::normalise("  AMÉLIE:  le   film! "), "amelie le film");
    EXPECT_EQ(TitleMatch::normalise("Law & Order"), "law and order");
    EXPECT_EQ(TitleMatch::normalise("One\tTwo\nThree"), "one two three");
}

TEST(TitleMatch, OneArticleIsDroppedAtTheVeryStart) {
    EXPECT_EQ(TitleMatch::normalise("The Office"), "office");
    EXPECT_EQ(TitleMatch::normalise("A Star Is Born"), "star is born");
    EXPECT_EQ(TitleMatch::normalise("An American Werewolf"), "american werewolf");
    EXPECT_EQ(TitleMatch::normalise("The The Band"), "the band");
    EXPECT_EQ(TitleMatch::normalise("Theory"), "theory");
    EXPECT_EQ(TitleMatch::normalise("Into the Wild"), "into the wild");
}

TEST(TitleMatch, AnArticleBehindABracketIsNotAtTheStart) {
    EXPECT_EQ(TitleMatch::normalise("(The Office)"), "the office");
}

TEST(TitleMatch, AnArticleAloneIsATitle) {
    EXPECT_EQ(TitleMatch::normalise("The"), "the");
}

TEST(TitleMatch, SimilarityCountsDistinctWordsInAnyOrder) {
    EXPECT_EQ(TitleMatch::similarity("Blue Planet", "Planet Blue"), 1.0);
    EXPECT_EQ(TitleMatch::similarity("Duck Duck Goose", "Goose Duck"), 1.0);
    EXPECT_DOUBLE_EQ(TitleMatch::similarity("Blue Planet", "Blue Moon"), 0.5);
    EXPECT_EQ(TitleMatch::similarity("Blue", "Red"), 0.0);
}

TEST(TitleMatch, AScoreIsRaisedTo085ByAPrefix) {
    EXPECT_DOUBLE_EQ(TitleMatch::score("13 Hours", "13 Hours: The Secret Soldiers of Benghazi"),
                     0.85);
    EXPECT_DOUBLE_EQ(TitleMatch::score("Blue Planet", "Blue Moon"), 0.5);
    EXPECT_DOUBLE_EQ(TitleMatch::score("Heat", "Heat"), 1.0);
}

TEST(TitleMatch, AScoreIsNotLoweredByAPrefix) {
    EXPECT_DOUBLE_EQ(TitleMatch::score("a1 b c d e f g h i", "a1 b c d e f g h i j"), 18.0 / 19.0);
}

TEST(TitleMatch, AScoreIsNotRaisedByATitleThatBeginsWithTheFoundOne) {
    EXPECT_LT(TitleMatch::score("13 Hours: The Secret Soldiers of Benghazi", "13 Hours"), 0.85);
}

TEST(TitleMatch, SimilarityIsSymmetricAndWithinItsBounds) {
    for (const char* const a : titles) {
        for (const char* const b : titles) {
            const double there = TitleMatch::similarity(a, b);
            EXPECT_EQ(there, TitleMatch::similarity(b, a)) << a << " / " << b;
            EXPECT_GE(there, 0.0);
            EXPECT_LE(there, 1.0);
        }
    }
}

TEST(TitleMatch, EqualTitlesHaveSimilarityOneUnlessNothingIsLeftOfThem) {
    for (const char* const title : titles) {
        const double expected = TitleMatch::normalise(title).empty() ? 0.0 : 1.0;
        EXPECT_EQ(TitleMatch::similarity(title, title), expected) << title;
    }
}

TEST(TitleMatch, NormalisingHoldsOnlyBareWordsAndSingleBlanks) {
    for (const char* const title : titles) {
        const std::string form = TitleMatch::normalise(title);
        EXPECT_EQ(form.find_first_not_of("abcdefghijklmnopqrstuvwxyz0123456789 "),
                  std::string::npos);
        EXPECT_EQ(form.find("  "), std::string::npos);
        if (form.empty()) continue;
        EXPECT_NE(form.front(), ' ');
        EXPECT_NE(form.back(), ' ');
    }
}

TEST(EpisodeTitles, ANumberInBracketsIsAPart) {
    EXPECT_EQ(EpisodeTitles::partStem("Three Dates and a Breakup (1)"),
              (EpisodeTitles::PartStem{"three dates and a breakup", 1}));
}

TEST(EpisodeTitles, PartAndPtAreParts) {
    EXPECT_EQ(EpisodeTitles::partStem("Don Juan In Hell, Part 1"),
              (EpisodeTitles::PartStem{"don juan in hell", 1}));
    EXPECT_EQ(EpisodeTitles::partStem("And the Dish Ran Away With the Spoon, Pt. 2"),
              (EpisodeTitles::PartStem{"and the dish ran away with the spoon", 2}));
    EXPECT_EQ(EpisodeTitles::partStem("Finale – Part Two"), (EpisodeTitles::PartStem{"finale", 2}));
    EXPECT_EQ(EpisodeTitles::partStem("Finale (PART ONE)"), (EpisodeTitles::PartStem{"finale", 1}));
}

TEST(EpisodeTitles, BothWaysToWriteAPartHaveEqualStems) {
    EXPECT_EQ(EpisodeTitles::partStem("Goodnight, Seattle (1)")->stem,
              EpisodeTitles::partStem("Goodnight, Seattle, Part 2")->stem);
}

TEST(EpisodeTitles, ATitleWithoutAPartNumberHasNoStem) {
    EXPECT_FALSE(EpisodeTitles::partStem("Sliding Frasiers"));
    EXPECT_FALSE(EpisodeTitles::partStem("Fahrenheit 451"));
    EXPECT_FALSE(EpisodeTitles::displayStem("Sliding Frasiers"));
    EXPECT_FALSE(EpisodeTitles::displayStem("Fahrenheit 451"));
    EXPECT_FALSE(EpisodeTitles::partStem(""));
    EXPECT_FALSE(EpisodeTitles::displayStem(""));
}

TEST(EpisodeTitles, OnlyPartsOneAndTwoCount) {
    EXPECT_FALSE(EpisodeTitles::partStem("Finale, Part 3"));
    EXPECT_FALSE(EpisodeTitles::partStem("Finale (3)"));
}

TEST(EpisodeTitles, APartNumberAloneHasNoStem) {
    EXPECT_FALSE(EpisodeTitles::partStem("Part 1"));
    EXPECT_FALSE(EpisodeTitles::partStem("(2)"));
    EXPECT_FALSE(EpisodeTitles::displayStem("Part 1"));
    EXPECT_FALSE(EpisodeTitles::displayStem(" (2)"));
}

TEST(EpisodeTitles, APrintedStemKeepsCapitalsAndSigns) {
    EXPECT_EQ(EpisodeTitles::displayStem("Goodnight, Seattle (1)"), "Goodnight, Seattle");
    EXPECT_EQ(EpisodeTitles::displayStem("Goodnight, Seattle, PART 2"), "Goodnight, Seattle");
    EXPECT_EQ(EpisodeTitles::displayStem("Élan: Pt. One"), "Élan");
}

TEST(EpisodeTitles, TitlesThatAreNoTextHaveNoStemAndDoNoHarm) {
    EXPECT_FALSE(EpisodeTitles::partStem("\xFF\xC3"));
    EXPECT_TRUE(EpisodeTitles::displayStem("\xFFilm (1)"));
}

}  // namespace
}  // namespace marlet
