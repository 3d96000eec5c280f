#include "identify/filename_rules.h"

#include <gtest/gtest.h>

#include "foundation/text.h"

namespace marlet {
namespace {

using FilenameRules::clean;
using FilenameRules::nameYear;
using FilenameRules::Parse;
using FilenameRules::showFromFolders;
using FilenameRules::splitYear;
using FilenameRules::stripYear;
using FilenameRules::TitleYear;
using FilenameRules::tokens;

Parse read(const std::string& path, const ExistingTags& tags = {}) {
    return FilenameRules::parse(path, tags);
}

ExistingTags tagsOf(std::optional<std::string> show, std::optional<int> season,
                    std::optional<int> episode = std::nullopt) {
    ExistingTags tags;
    tags.show = std::move(show);
    tags.season = season;
    tags.episode = episode;
    return tags;
}

Guess episode(std::string show, int season, int number,
              std::optional<std::string> title = std::nullopt,
              std::optional<int> year = std::nullopt) {
    Guess guess;
    guess.kind = MediaKind::tv;
    guess.title = std::move(show);
    guess.season = season;
    guess.episode = number;
    guess.episodeTitle = std::move(title);
    guess.year = year;
    return guess;
}

Guess film(std::string title, std::optional<int> year = std::nullopt) {
    Guess guess;
    guess.kind = MediaKind::movie;
    guess.title = std::move(title);
    guess.year = year;
    return guess;
}

/// The whole guess, field by field, in words: what a failing test should show.
std::string inWords(const std::optional<Guess>& guess) {
    if (!guess) return "none";
    const auto number = [](std::optional<int> value) {
        return value ? std::to_string(*value) : std::string("-");
    };
    return Text::join({guess->kind == MediaKind::tv ? "tv" : "movie", guess->title,
                       number(guess->year), number(guess->season), number(guess->episode),
                       guess->episodeTitle.value_or("-"), guess->compact ? "compact" : "plain",
                       guess->movieTitle.value_or("-"), number(guess->movieYear)},
                      " | ");
}

void expectGuess(const std::string& path, const Guess& wanted, const ExistingTags& tags = {}) {
    const auto guess = read(path, tags).guess;
    EXPECT_EQ(inWords(guess), inWords(wanted)) << path;
    EXPECT_TRUE(guess == wanted) << path;
}

void expectNone(const std::string& path, const ExistingTags& tags = {}) {
    const Parse parse = read(path, tags);
    EXPECT_EQ(inWords(parse.guess), "none") << path;
    EXPECT_TRUE(parse.messy);
    EXPECT_FALSE(parse.confident);
}

// Names with the guess they must give.

TEST(FilenameRules, ASeasonFolderAndALeadingNumberAreAnEpisode) {
    expectGuess("/lib/TV Shows/Frasier/Season 3/01 She's the Boss.mp4",
                episode("Frasier", 3, 1, "She's the Boss"));
}

TEST(FilenameRules, AQualitySuffixIsStrippedFromAnEpisodeTitle) {
    expectGuess("/lib/TV Shows/The Dropout/Season 1/02 Satori (1080p HD).mp4",
                episode("The Dropout", 1, 2, "Satori"));
}

TEST(FilenameRules, SeasonAndEpisodeAtTheStartCountInTheFolderOfThatSeason) {
    expectGuess("/lib/TV Shows/The Office/Season 2/2-07 The Client.mp4",
                episode("The Office", 2, 7, "The Client"));
}

TEST(FilenameRules, ALeadingNumberAndADashStillReadAsTheEpisode) {
    expectGuess("/lib/TV Shows/Frasier/Season 3/02 - Title.mp4", episode("Frasier", 3, 2, "Title"));
}

TEST(FilenameRules, DotsSeparateTheWordsOfAReleaseName) {
    expectGuess("/dl/Show.Name.S02E05.720p.WEB-DL.x264.mkv", episode("Show Name", 2, 5));
}

TEST(FilenameRules, NumberingWithAnXIsExplicit) {
    expectGuess("/dl/Some Show 1x05 Title.mp4", episode("Some Show", 1, 5, "Title"));
}

TEST(FilenameRules, ExplicitNumberingNeedsNoFolders) {
    expectGuess("/dl/the dropout 1x05.mp4", episode("the dropout", 1, 5));
}

TEST(FilenameRules, UnderscoresSeparateTheWordsOfAName) {
    expectGuess("/dl/FRASIER_S08E03_HDTV.mp4", episode("FRASIER", 8, 3));
}

TEST(FilenameRules, WhatFollowsTheWordEpIsNoTitle) {
    expectGuess("/lib/Frasier/Season 3/frasier ep13 final.mp4", episode("frasier", 3, 13));
}

TEST(FilenameRules, AnEpisodeTitleOfNoiseOnlyIsDropped) {
    expectGuess("/lib/Frasier/Season 3/13 final.mp4", episode("Frasier", 3, 13));
}

TEST(FilenameRules, ShowNumberAndTitleMayStandBetweenDashes) {
    expectGuess("/lib/Frasier/Season 1/Frasier - 01 - The Good Son.m4v",
                episode("Frasier", 1, 1, "The Good Son"));
}

TEST(FilenameRules, ACompactNumberIsSeasonAndEpisodeThatNeedSupport) {
    Guess wanted = episode("Dropout", 1, 6, "Iron Sisters");
    wanted.compact = true;
    wanted.movieTitle = "Dropout 106 Iron Sisters";
    expectGuess("/dl/Dropout 106 Iron Sisters.mp4", wanted);
    const Parse parse = read("/dl/Dropout 106 Iron Sisters.mp4");
    EXPECT_FALSE(parse.confident);
    EXPECT_FALSE(parse.messy);
}

TEST(FilenameRules, AYearInTheNameMakesAFilmOfANumberThatCouldBeCompact) {
    expectGuess("/lib/Movies/Blade Runner 2049/Blade Runner 2049 (2017).mkv",
                film("Blade Runner 2049", 2017));
}

TEST(FilenameRules, AnUnderscoreBeforeABlankWasAColon) {
    expectGuess("/lib/Movies/2001_ A Space Odyssey/2001_ A Space Odyssey.m4v",
                film("2001: A Space Odyssey"));
}

TEST(FilenameRules, AnUnderscoreBetweenDigitsWasAColon) {
    expectGuess("/lib/Movies/3_10 to Yuma/3_10 to Yuma (1080p HD).mp4", film("3:10 to Yuma"));
}

TEST(FilenameRules, AYearAloneStaysTheTitle) {
    expectGuess("/lib/Movies/1917/1917 (1080p HD).m4v", film("1917"));
}

TEST(FilenameRules, AYearInBracketsIsTheYearAndANumberBeforeItStays) {
    expectGuess("/lib/Movies/Blade Runner 2049 (2017)/Blade Runner 2049 (2017).mkv",
                film("Blade Runner 2049", 2017));
}

TEST(FilenameRules, ANumberTooLargeForAYearStaysInTheTitleOfAReleaseName) {
    expectGuess("/dl/Blade_Runner_2049_2017_UHD_HDR.mkv", film("Blade Runner 2049", 2017));
}

TEST(FilenameRules, ALeadingYearIsKeptAndTheTrailingOneRead) {
    expectGuess("/dl/2001 a space odyssey 1968.mp4", film("2001 a space odyssey", 1968));
}

TEST(FilenameRules, QualityBehindABracketedYearIsStripped) {
    expectGuess("/dl/13 Hours (2016) 1080p.mp4", film("13 Hours", 2016));
}

TEST(FilenameRules, EditionWordsMayFollowTheYear) {
    expectGuess("/dl/Gladiator.2000.Extended.Cut.1080p.mkv", film("Gladiator", 2000));
}

TEST(FilenameRules, AudioChannelTagsAreNotNumbers) {
    expectGuess("/dl/Dune.2021.1080p.WEB-DL.DDP5.1.Atmos.H.264.mkv", film("Dune", 2021));
}

// How far a name can be trusted.

TEST(FilenameRules, AMessyNameWithAYearIsConfident) {
    const Parse parse = read("/dl/The.Matrix.1999.1080p.BluRay.x264-YIFY.mkv");
    EXPECT_TRUE(parse.messy);
    EXPECT_TRUE(parse.confident);
    EXPECT_EQ(inWords(parse.guess), inWords(film("The Matrix", 1999)));
}

TEST(FilenameRules, QualityInABracketMakesNoNameMessy) {
    const Parse parse = read("/lib/Movies/12 Angry Men/12 Angry Men (1080p HD).mp4");
    EXPECT_FALSE(parse.messy);
    EXPECT_TRUE(parse.confident);
}

TEST(FilenameRules, AMessyNameWithNoYearIsNotConfident) {
    const Parse parse = read("/dl/Some.Obscure.Film.1080p.BluRay.x264.mkv");
    EXPECT_TRUE(parse.messy);
    EXPECT_FALSE(parse.confident);
}

TEST(FilenameRules, ExplicitNumberingIsAlwaysConfident) {
    const Parse parse = read("/dl/Frasier.S03E07.720p.WEB-DL.x264.mkv");
    EXPECT_TRUE(parse.confident);
    EXPECT_FALSE(parse.messy);
}

TEST(FilenameRules, TwoDotsOrUnderscoresInAnUnbrokenNameAreMessy) {
    EXPECT_TRUE(read("/dl/Some.Obscure.Film.mkv").messy);
    EXPECT_FALSE(read("/dl/Some.Obscure.Film.mkv").confident);
    EXPECT_FALSE(read("/dl/Obscure.Film.mkv").messy);
    EXPECT_TRUE(read("/dl/Obscure.Film.mkv").confident);
    EXPECT_FALSE(read("/dl/Mr. Some._.Film.mkv").messy);
}

TEST(FilenameRules, OneJunkWordIsNotMessyAndTwoAre) {
    EXPECT_FALSE(read("/dl/Heat 1080p.mkv").messy);
    EXPECT_TRUE(read("/dl/Heat 1080p x264.mkv").messy);
}

TEST(FilenameRules, AMessyNameBorrowsItsConfidenceFromTheYearOfTheTags) {
    ExistingTags tags;
    tags.year = 1995;
    EXPECT_TRUE(read("/dl/Some.Obscure.Film.mkv", tags).confident);
}

// The bounds of each rule.

TEST(FilenameRules, ExplicitNumberingTakesTheShowFromTheFolders) {
    expectGuess("/lib/Frasier/Season 3/S03E07 The Title.mkv",
                episode("Frasier", 3, 7, "The Title"));
    expectGuess("/lib/Frasier/S03E07.mkv", episode("Frasier", 3, 7));
    expectNone("/S03E07.mkv");
}

TEST(FilenameRules, ExplicitNumberingTakesTheShowFromTheTagsBeforeTheFolders) {
    expectGuess("/lib/Other/Season 3/S03E07.mkv", episode("Frasier", 3, 7),
                tagsOf("Frasier", std::nullopt));
}

TEST(FilenameRules, ExplicitNumberingKnowsTheYearOfNameAndFoldersButNotOfTheTags) {
    ExistingTags tags;
    tags.year = 1999;
    expectGuess("/dl/The Office (2005) S01E02.mkv", episode("The Office", 1, 2, std::nullopt, 2005),
                tags);
    expectGuess("/lib/Frasier (1993)/Season 3/Frasier S03E07.mkv",
                episode("Frasier", 3, 7, std::nullopt, 1993), tags);
    expectGuess("/dl/Frasier S03E07.mkv", episode("Frasier", 3, 7), tags);
}

TEST(FilenameRules, ExplicitNumberingMayBeApart) {
    expectGuess("/dl/Show s1 e2.mkv", episode("Show", 1, 2));
    expectGuess("/dl/Show S01_E002.mkv", episode("Show", 1, 2));
    expectGuess("/dl/Show S01-E02.mkv", episode("Show", 1, 2));
}

TEST(FilenameRules, NumberingWithAnXNeedsTwoDigitsBehindIt) {
    EXPECT_EQ(read("/dl/Show 1x5.mkv").guess->kind, MediaKind::movie);
    EXPECT_EQ(read("/dl/Show 1920x1080.mkv").guess->kind, MediaKind::movie);
}

TEST(FilenameRules, SeasonAndEpisodeWithADashWinOverALaterX) {
    expectGuess("/dl/Show 1x05 S02E06.mkv", episode("Show 1x05", 2, 6));
}

TEST(FilenameRules, SeasonAndEpisodeAtTheStartAreRefusedInAnotherSeason) {
    // The leading number is then the episode, and what follows it the title.
    expectGuess("/lib/The Office/Season 3/2-07 The Client.mp4",
                episode("The Office", 3, 2, "07 The Client"));
}

TEST(FilenameRules, TheSeasonOfTheTagsStandsInForASeasonFolder) {
    expectGuess("/lib/Frasier/07 The Title.mkv", episode("Frasier", 3, 7, "The Title"),
                tagsOf(std::nullopt, 3));
    EXPECT_EQ(read("/lib/Frasier/07 The Title.mkv").guess->kind, MediaKind::movie);
}

TEST(FilenameRules, TheSeasonOfTheFolderWinsOverThatOfTheTags) {
    expectGuess("/lib/Frasier/Season 4/07 The Title.mkv", episode("Frasier", 4, 7, "The Title"),
                tagsOf(std::nullopt, 3));
}

TEST(FilenameRules, ALeadingNumberMayFollowTheWordEpisode) {
    for (const char* const start : {"07 ", "E07 - ", "Ep7. ", "Ep.7 ", "Episode 7 - ", "7)"}) {
        expectGuess("/lib/Frasier/Season 3/" + std::string(start) + "The Title.mkv",
                    episode("Frasier", 3, 7, "The Title"));
    }
}

TEST(FilenameRules, ALeadingNumberOfFourDigitsIsNoEpisode) {
    EXPECT_EQ(read("/lib/Frasier/Season 3/1001 Nights.mkv").guess->kind, MediaKind::movie);
}

TEST(FilenameRules, AnEpisodeNumberWithNoShowAnywhereIsNone) {
    expectNone("07 The Title.mkv", tagsOf(std::nullopt, 3));
    expectNone("ep07.mkv", tagsOf(std::nullopt, 3));
}

TEST(FilenameRules, TheYearOfAShowComesFromItsFolderThenTheTags) {
    ExistingTags tags;
    tags.year = 1999;
    expectGuess("/lib/Frasier (1993)/Season 3/07 Title.mkv",
                episode("Frasier", 3, 7, "Title", 1993), tags);
    expectGuess("/lib/Frasier/Season 3/07 Title.mkv", episode("Frasier", 3, 7, "Title", 1999),
                tags);
    expectGuess("/lib/Frasier/Season 3/Frasier ep 7.mkv",
                episode("Frasier", 3, 7, std::nullopt, 1999), tags);
    expectGuess("/lib/Frasier/Season 3/Frasier - 7 - Title.mkv",
                episode("Frasier", 3, 7, "Title", 1999), tags);
}

TEST(FilenameRules, AYearTwoFoldersUpIsTooFarAway) {
    expectGuess("/lib/Old (1993)/Frasier/Season 3/07 Title.mkv", episode("Frasier", 3, 7, "Title"));
}

TEST(FilenameRules, TheNearerFolderWithAYearWins) {
    expectGuess("/lib/Set (1990)/Heat (1995)/Heat.mkv", film("Heat", 1995));
    expectGuess("/lib/Heat (1995)/Extras/Heat.mkv", film("Heat", 1995));
}

TEST(FilenameRules, TheWordEpTakesTheShowFromTheFoldersWhenNothingStandsBeforeIt) {
    expectGuess("/lib/Frasier/Season 3/- ep07.mkv", episode("Frasier", 3, 7));
}

TEST(FilenameRules, ANumberBetweenDashesNeedsASeason) {
    expectGuess("/lib/Frasier/Frasier - 01 - The Good Son.m4v",
                film("Frasier - 01 - The Good Son"));
}

TEST(FilenameRules, ACompactNumberEndsInAnEpisodeAndIsNoYear) {
    EXPECT_FALSE(read("/dl/Show 100.mkv").guess->compact);
    EXPECT_FALSE(read("/dl/Show 099.mkv").guess->compact);
    EXPECT_FALSE(read("/dl/Show 1200 Title.mkv").guess->compact);
    EXPECT_FALSE(read("/dl/Show 1901 Title.mkv").guess->compact);
    EXPECT_FALSE(read("/dl/Show 2027 Title.mkv").guess->compact);
    EXPECT_TRUE(read("/dl/Show 101.mkv").guess->compact);
    EXPECT_TRUE(read("/dl/Show 1899 Title.mkv").guess->compact);
    EXPECT_TRUE(read("/dl/Show 2030 Title.mkv").guess->compact);
}

TEST(FilenameRules, ACompactNumberIsCutInTwoBehindTheHundreds) {
    EXPECT_EQ(read("/dl/Show 1212.mkv").guess->season, 12);
    EXPECT_EQ(read("/dl/Show 1212.mkv").guess->episode, 12);
    EXPECT_EQ(read("/dl/Show 999.mkv").guess->episode, 99);
}

TEST(FilenameRules, ACompactNumberNeedsAShowBeforeIt) {
    EXPECT_FALSE(read("/dl/106.mkv").guess->compact);
    EXPECT_FALSE(read("/dl/-- 106.mkv").guess->compact);
}

TEST(FilenameRules, ACompactGuessHasNoYearEvenFromTheTags) {
    ExistingTags tags;
    tags.year = 2022;
    const Parse parse = read("/lib/Dropout (2022)/Dropout 106.mkv", tags);
    EXPECT_TRUE(parse.guess->compact);
    EXPECT_EQ(parse.guess->year, std::nullopt);
    EXPECT_EQ(parse.guess->movieYear, std::nullopt);
}

TEST(FilenameRules, TagsThatNameTheEpisodeAreBelieved) {
    ExistingTags tags = tagsOf("Frasier (1993)", 3, 7);
    tags.title = "The Title";
    tags.year = 1995;
    const Parse parse = read("/dl/clip.mp4", tags);
    EXPECT_EQ(inWords(parse.guess), inWords(episode("Frasier (1993)", 3, 7, "The Title", 1995)));
    EXPECT_FALSE(parse.messy);
    EXPECT_TRUE(parse.confident);
}

TEST(FilenameRules, TagsThatLackTheEpisodeLeaveAFilm) {
    expectGuess("/dl/clip.mp4", film("clip"), tagsOf("Frasier", std::nullopt, 7));
    expectGuess("/dl/clip.mp4", film("clip"), tagsOf("Frasier", 3));
    expectGuess("/dl/clip.mp4", film("clip"), tagsOf(std::nullopt, 3, 7));
}

TEST(FilenameRules, AFilmWithoutAWordInItsNameIsNamedByItsFolder) {
    expectGuess("/lib/Heat (1995)/1080p.mkv", film("Heat", 1995));
}

TEST(FilenameRules, AFilmWithoutANameAnywhereIsNone) {
    expectNone("1080p.mkv");
    expectNone("/lib/720p/1080p.mkv");
    expectNone("(1995).mkv");
    expectNone("---.mkv");
    expectNone("");
}

TEST(FilenameRules, TheYearOfAFilmComesFromTheNameThenTheFolderThenTheTags) {
    ExistingTags tags;
    tags.year = 1990;
    expectGuess("/lib/Heat (1986)/Heat (1995).mkv", film("Heat", 1995), tags);
    expectGuess("/lib/Heat (1986)/Heat.mkv", film("Heat", 1986), tags);
    expectGuess("/lib/Heat/Heat.mkv", film("Heat", 1990), tags);
}

TEST(FilenameRules, DigitsOfAnotherAlphabetAreNoNumbers) {
    expectGuess("/dl/Show S٠١E٠٢.mkv", film("Show S٠١E٠٢"));
    expectGuess("/dl/Show ١٠٦ Title.mkv", film("Show ١٠٦ Title"));
}

TEST(FilenameRules, OnlyTheLastExtensionIsTakenOff) {
    expectGuess("/dl/Heat.mkv.mp4", film("Heat mkv"));
    expectGuess("/dl/Mr. Nobody", film("Mr. Nobody"));
    expectGuess("/dl/.hidden", film("hidden"));
}

// Names that were made to hurt.

TEST(FilenameRules, TabsAndNewlinesInANameAreBlanks) {
    EXPECT_EQ(read("/dl/Some\tFilm\n(1995).mkv").guess->title, "Some Film");
    EXPECT_EQ(read("/dl/Show S01E02\nTitle.mkv").guess->episodeTitle, "Title");
}

TEST(FilenameRules, AnyBytesGiveAGuessThatIsText) {
    const std::string worst =
        "/l\xFF"
        "ib/\xC3/S\xE2\x82/";
    for (const std::string& name :
         {std::string("\xFF\xFE.mkv"), std::string("a\x80 S01E02 \xF0\x9F.mkv"),
          std::string(251, '\xFF') + ".mkv", std::string("\xED\xA0\x80 106 \xC0.mkv")}) {
        const Parse parse = read(worst + name);
        ASSERT_TRUE(parse.guess) << name;
        for (const std::string& text : {parse.guess->title, parse.guess->episodeTitle.value_or(""),
                                        parse.guess->movieTitle.value_or("")}) {
            EXPECT_EQ(Text::repairUtf8(viewOf(text)), text);
        }
    }
}

TEST(FilenameRules, TagsThatAreNoTextAreRepaired) {
    const Parse parse = read("/dl/clip.mp4", tagsOf("Fra\xFFsier", 3, 7));
    EXPECT_EQ(parse.guess->title, "Fra\uFFFDsier");
}

TEST(FilenameRules, NamesOf255BytesOfOneKindEndInSomeResult) {
    for (const char filler : {' ', '-', '.', '_', '(', '[', '1', 'a', '\t', '\n', '\x80'}) {
        const std::string name(251, filler);
        for (const std::string& path :
             {"/lib/Show/Season 1/" + name + ".mkv", "/dl/a" + name + "106.mkv",
              "/lib/Season 1/x - 1 " + name + ".mkv"}) {
            const Parse parse = read(path);
            EXPECT_TRUE(parse.guess || parse.messy);
        }
    }
}

// The pieces.

TEST(FilenameRulesClean, QualityInBracketsGoes) {
    EXPECT_EQ(clean("Heat (1080p HD)"), "Heat");
    EXPECT_EQ(clean("Heat [ WEB-DL x264 ] Remix"), "Heat Remix");
    EXPECT_EQ(clean("Heat (Director's Cut)"), "Heat (Director's Cut)");
}

TEST(FilenameRulesClean, AudioTagsGoBeforeTheirDigitsAreRead) {
    EXPECT_EQ(clean("Heat DDP5.1 Atmos"), "Heat Atmos");
    EXPECT_EQ(clean("Heat aac 2 0"), "Heat");
    EXPECT_EQ(clean("Heat DTS5.3"), "Heat DTS5.3");
}

TEST(FilenameRulesClean, ANameWithNoBlankKeepsItsUnderscores) {
    EXPECT_EQ(clean("a_b_c"), "a_b_c");
    EXPECT_EQ(clean("a_b c"), "a b c");
}

TEST(FilenameRulesClean, FromTheFirstQualityWordOnEverythingGoes) {
    EXPECT_EQ(clean("Heat 1080p and all the rest"), "Heat");
    EXPECT_EQ(clean("Heat h.264 rest"), "Heat");
    EXPECT_EQ(clean("UHD"), "");
    EXPECT_EQ(clean("Heat HDX rest"), "Heat HDX rest");
    EXPECT_EQ(clean("Remuxed"), "Remuxed");
}

TEST(FilenameRulesClean, TheEndsAreTrimmedOfSigns) {
    EXPECT_EQ(clean(" -.: Heat  Two :.- "), "Heat Two");
    EXPECT_EQ(clean(""), "");
    EXPECT_EQ(clean("..."), "");
}

TEST(FilenameRulesYear, ABracketedYearIsFoundAnywhereAndMayBeAnyOfTwoCenturies) {
    EXPECT_EQ(splitYear("Heat (1995) x"), (TitleYear{"Heat x", 1995}));
    EXPECT_EQ(splitYear("[2099] Heat"), (TitleYear{"Heat", 2099}));
    EXPECT_EQ(splitYear("Heat (1895)"), (TitleYear{"Heat (1895)", std::nullopt}));
}

TEST(FilenameRulesYear, EditionWordsBehindABracketedYearGoFromTheTitle) {
    EXPECT_EQ(splitYear("Blade Runner (1982) Final Cut"), (TitleYear{"Blade Runner", 1982}));
}

TEST(FilenameRulesYear, ATitleOfTwoWordsIsNeverCut) {
    EXPECT_EQ(splitYear("The Cut (2014)"), (TitleYear{"The Cut", 2014}));
    EXPECT_EQ(splitYear("Final Cut (2022) Special"), (TitleYear{"Final Cut", 2022}));
}

TEST(FilenameRulesYear, ABareYearMayBeFollowedByEditionWordsOnly) {
    EXPECT_EQ(splitYear("Gladiator 2000 Extended Cut"), (TitleYear{"Gladiator", 2000}));
    EXPECT_EQ(splitYear("Gladiator 2000 more"), (TitleYear{"Gladiator 2000 more", std::nullopt}));
}

TEST(FilenameRulesYear, ABareYearRunsFrom1900To2029) {
    EXPECT_EQ(splitYear("X 1900").year, 1900);
    EXPECT_EQ(splitYear("X 2029").year, 2029);
    EXPECT_EQ(splitYear("X 1899").year, std::nullopt);
    EXPECT_EQ(splitYear("X 2030").year, std::nullopt);
}

TEST(FilenameRulesYear, TheFirstWordIsNeverAYear) {
    EXPECT_EQ(splitYear("1917"), (TitleYear{"1917", std::nullopt}));
    EXPECT_EQ(splitYear("1917 2019"), (TitleYear{"1917", 2019}));
}

TEST(FilenameRulesYear, ABracketedYearAloneLeavesNothing) {
    EXPECT_EQ(splitYear("(1917)"), (TitleYear{"", std::nullopt}));
}

TEST(FilenameRulesYear, OneYearIsStrippedFromTheEndOfATitle) {
    EXPECT_EQ(stripYear("Frasier (1993)"), "Frasier");
    EXPECT_EQ(stripYear("Frasier 1993 "), "Frasier");
    EXPECT_EQ(stripYear("1923"), "1923");
    EXPECT_EQ(stripYear("(1923)"), "(1923)");
    EXPECT_EQ(stripYear("1993 Frasier"), "1993 Frasier");
    EXPECT_EQ(stripYear("Area 51993"), "Area 51993");
    EXPECT_EQ(stripYear(" Frasier "), "Frasier");
}

TEST(FilenameRulesYear, ABracketYearStandsInRoundOrSquareBrackets) {
    EXPECT_EQ(FilenameRules::bracketYear("Heat (1995)"), 1995);
    EXPECT_EQ(FilenameRules::bracketYear("Heat [2099]"), 2099);
    EXPECT_EQ(FilenameRules::bracketYear("Heat 1995"), std::nullopt);
    EXPECT_EQ(FilenameRules::bracketYear("Heat (995)"), std::nullopt);
}

TEST(FilenameRulesYear, ABareFileNameDeclaresAYear) {
    EXPECT_EQ(nameYear("Heat 1995.mp4"), 1995);
    EXPECT_EQ(nameYear("Heat.1995.1080p.mkv"), 1995);
    EXPECT_EQ(nameYear("Heat (1995).mp4"), 1995);
    EXPECT_EQ(nameYear("1995.mp4"), std::nullopt);
    EXPECT_EQ(nameYear("Heat.mp4"), std::nullopt);
    EXPECT_EQ(nameYear(""), std::nullopt);
    EXPECT_EQ(nameYear("H\xFF"
                       "eat 1995.mp4"),
              1995);
}

TEST(FilenameRulesFolders, AFolderDeclaresItsSeasonWithItsWholeName) {
    EXPECT_EQ(FilenameRules::seasonNumber("Season 3"), 3);
    EXPECT_EQ(FilenameRules::seasonNumber("season 03"), 3);
    EXPECT_EQ(FilenameRules::seasonNumber(" SERIES 12 "), 12);
    EXPECT_EQ(FilenameRules::seasonNumber("S01"), 1);
    EXPECT_EQ(FilenameRules::seasonNumber("Season 0"), 0);
    EXPECT_EQ(FilenameRules::seasonNumber("Season 123"), std::nullopt);
    EXPECT_EQ(FilenameRules::seasonNumber("Season 3 Extras"), std::nullopt);
    EXPECT_EQ(FilenameRules::seasonNumber("Seasons"), std::nullopt);
}

TEST(FilenameRulesFolders, TheShowIsTheParentOfASeasonFolder) {
    EXPECT_EQ(showFromFolders({"Season 3", "Frasier", "lib"}, {}), "Frasier");
    EXPECT_EQ(showFromFolders({"Frasier", "lib"}, {}), "Frasier");
    EXPECT_EQ(showFromFolders({"Frasier (1080p)", "lib"}, {}), "Frasier");
}

TEST(FilenameRulesFolders, OneFolderAloneIsNoShow) {
    EXPECT_EQ(showFromFolders({"Frasier"}, {}), "");
    EXPECT_EQ(showFromFolders({}, {}), "");
}

TEST(FilenameRulesFolders, TheShowOfTheTagsIsTheAnswerUnchanged) {
    EXPECT_EQ(showFromFolders({"a", "b"}, tagsOf(" My Show: 1080p ", std::nullopt)),
              " My Show: 1080p ");
    EXPECT_EQ(showFromFolders({"a", "b"}, tagsOf("", std::nullopt)), "a");
}

TEST(FilenameRulesTokens, AreTheBareLowerCaseWords) {
    EXPECT_EQ(tokens("Amélie's Café, 2001!"),
              (std::vector<std::string>{"amelie", "s", "cafe", "2001"}));
    EXPECT_EQ(tokens(""), std::vector<std::string>{});
}

TEST(FilenameRulesTokens, LeaveEpisodeNumberingOut) {
    EXPECT_EQ(tokens("Show S01E02 1x03 ep 4 episode5 e6"), std::vector<std::string>{"show"});
}

TEST(FilenameRulesTokens, LeaveAudioTagsOutAndKeepTheVideoFormatOneWord) {
    EXPECT_EQ(tokens("DDP5.1 h.264 H 265"), (std::vector<std::string>{"h264", "h265"}));
}

TEST(FilenameRulesTokens, ATextIsMeaningfulWithOneWordThatIsNotJunk) {
    EXPECT_EQ(FilenameRules::meaningful("Final Judgement"), "Final Judgement");
    EXPECT_EQ(FilenameRules::meaningful("final 1080p"), std::nullopt);
    EXPECT_EQ(FilenameRules::meaningful(""), std::nullopt);
    EXPECT_EQ(FilenameRules::meaningful("!?"), std::nullopt);
}

TEST(FilenameRulesTokens, ThereAre66JunkWordsAndTheLast15NameEditions) {
    EXPECT_EQ(FilenameRules::junkTokens.size(), 66U);
    EXPECT_EQ(FilenameRules::editionTokens.size(), 15U);
    for (const std::string& word : FilenameRules::editionTokens) {
        EXPECT_TRUE(FilenameRules::junkTokens.contains(word)) << word;
    }
}

}  // namespace
}  // namespace marlet
