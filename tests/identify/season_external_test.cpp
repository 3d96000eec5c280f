#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "identify/made_up_files.h"
#include "identify/scripted_source.h"
#include "identify/season_resolver.h"
#include "support/qt_app.h"

namespace marlet {
namespace {

using test::episodeGuess;
using test::fileOf;
using test::ScriptedSource;
using testing::Each;
using testing::ElementsAre;

ExtEpisode episode(int number, const std::string& title, std::optional<int> minutes = {}) {
    ExtEpisode one;
    one.season = 1;
    one.number = number;
    one.title = title;
    one.minutes = minutes;
    return one;
}

class SeasonFromSource : public testing::Test {
protected:
    SeasonFromSource() { test::qtApp(); }

    void addFile(const Guess& guess, std::optional<double> minutes = {}) {
        files.add(fileOf("/x/" + std::to_string(files.size()) + ".mp4", minutes), guess);
    }
    std::vector<ResolvedFile> resolve() {
        return Async::wait(SeasonResolver::fromExternal(&source, files, {}));
    }
    std::vector<std::vector<std::string>> reasons() {
        std::vector<std::vector<std::string>> all;
        for (const ResolvedFile& result : resolve()) all.push_back(result.verdict.reasons());
        return all;
    }

    ScriptedSource source{SourceID::appleTV};
    SeasonFiles files;
};

TEST_F(SeasonFromSource, AMatchCarriesTheDetailsOfTheEpisodeAndTheShow) {
    auto& show = source.add("u1", "Sheds", 1, {episode(2, "Mirrors", 50)});
    show.show.year = 1987;
    show.seasons[1][0].overview = "About mirrors.";
    show.seasons[1][0].date = "1987-02-10";
    show.info.cast = {"Ambrose"};
    show.info.genre = "Documentary";
    show.info.rating = "TV-G";
    show.info.wide = {"https://a/w.jpg"};
    show.info.tall = {"https://a/1000x1500bb.jpg"};
    addFile(episodeGuess("sheds", 1, 2, "Mirrors"), 51);
    const auto results = resolve();
    EXPECT_TRUE(results[0].verdict.isCertain());
    ASSERT_TRUE(results[0].match);
    const Match& match = *results[0].match;
    EXPECT_EQ(match.tmdbID, show.show.pseudoID());
    EXPECT_EQ(match.sourceID(), SourceID::appleTV);
    EXPECT_FALSE(match.byHand());
    EXPECT_EQ(match.kind, MediaKind::tv);
    EXPECT_EQ(match.title, "Sheds");
    EXPECT_EQ(match.year, 1987);
    EXPECT_EQ(match.season, 1);
    EXPECT_EQ(match.episode, 2);
    EXPECT_EQ(match.episodeTitle, "Mirrors");
    EXPECT_EQ(match.runtimeMinutes, 50);
    EXPECT_EQ(match.posterPath, "https://a/300x450bb.jpg");
    ManualDetails expected;
    expected.title = "Mirrors";
    expected.description = "About mirrors.";
    expected.releaseDate = "1987-02-10";
    expected.cast = {"Ambrose"};
    expected.source = SourceID::appleTV;
    expected.genre = "Documentary";
    expected.rating = "TV-G";
    expected.wide = {"https://a/w.jpg"};
    expected.tall = {"https://a/1000x1500bb.jpg"};
    EXPECT_EQ(match.manual, expected);
}

TEST_F(SeasonFromSource, WhatTheEpisodeLacksComesFromTheShow) {
    auto& show = source.add("u1", "Sheds", 1, {episode(2, "")});
    show.info.overview = "About sheds.";
    show.info.date = "1987-02-03";
    addFile(episodeGuess("Sheds", 1, 2));
    const Match match = *resolve()[0].match;
    EXPECT_EQ(match.episodeTitle, "Sheds");
    EXPECT_EQ(match.manual->title, "Sheds");
    EXPECT_EQ(match.manual->description, "About sheds.");
    EXPECT_EQ(match.manual->releaseDate, "1987-02-03");
}

TEST_F(SeasonFromSource, TheSeasonsOwnPictureGoesBeforeAllOthers) {
    auto& show = source.add("u1", "Sheds", 1, {episode(1, "Sheds")});
    show.show.poster = "https://a/poster.jpg";
    show.info.wide = {"https://a/w.jpg"};
    addFile(episodeGuess("Sheds", 1, 1));
    const auto picture = [this] { return resolve()[0].match->posterPath; };

    EXPECT_EQ(picture(), "https://a/poster.jpg");
    show.show.poster.reset();
    EXPECT_EQ(picture(), "https://a/w.jpg");
    show.info.tall = {"https://a/t.jpg"};
    EXPECT_EQ(picture(), "https://a/t.jpg");
    show.info.seasonTall[1] = {"https://a/s1.jpg"};
    EXPECT_EQ(picture(), "https://a/s1.jpg");
    EXPECT_THAT(resolve()[0].match->manual->tall, ElementsAre("https://a/s1.jpg"));
    show.info = {};
    EXPECT_EQ(picture(), std::nullopt);
}

TEST_F(SeasonFromSource, AShowWithoutDetailsIsStillAShow) {
    source.add("u1", "Sheds", 1, {episode(1, "Sheds", 50)});
    source.hidesDetails = true;
    addFile(episodeGuess("Sheds", 1, 1), 50);
    const auto results = resolve();
    EXPECT_TRUE(results[0].verdict.isCertain());
    EXPECT_TRUE(results[0].match->manual->cast.empty());
}

TEST_F(SeasonFromSource, AnUnknownShowIsToldWithTheSourcesName) {
    source.add("u1", "Mirrors", 1, {episode(1, "Sheds")});
    addFile(episodeGuess("Sheds", 1, 1));
    addFile(episodeGuess("sheds", 1, 2));
    EXPECT_THAT(reasons(), Each(ElementsAre("No show called “Sheds” on Apple TV")));
}

TEST_F(SeasonFromSource, AFailedSearchCountsAsNoHits) {
    source.fails = true;
    addFile(episodeGuess("Sheds", 1, 1));
    EXPECT_THAT(reasons(), Each(ElementsAre("No show called “Sheds” on Apple TV")));
}

TEST_F(SeasonFromSource, ASeasonThatIsNotThereIsToldForEveryFile) {
    source.add("u1", "Sheds", 1, {episode(1, "Sheds")});
    addFile(episodeGuess("Sheds", 7, 1));
    addFile(episodeGuess("Sheds", 7, 2));
    EXPECT_THAT(reasons(), Each(ElementsAre("Season 7 isn't on Apple TV for “Sheds”")));
}

TEST_F(SeasonFromSource, EveryDoubtNamesTheSource) {
    source.add("u1", "Sheds", 1, {episode(1, "Sheds", 50)});
    addFile(episodeGuess("Sheds", 1, 1, "Rust"), 20);
    addFile(episodeGuess("Sheds", 1, 9), 20);
    const auto results = resolve();
    EXPECT_TRUE(results[0].match);
    EXPECT_THAT(results[0].verdict.reasons(),
                ElementsAre("File says “Rust”, Apple TV says “Sheds”",
                            "Length differs: file 20 min, Apple TV 50 min"));
    EXPECT_FALSE(results[1].match);
    EXPECT_THAT(results[1].verdict.reasons(),
                ElementsAre("Episode 9 isn't in season 1 on Apple TV"));
}

TEST_F(SeasonFromSource, DuplicatesAndBareNumbersAreToldAsEverywhere) {
    source.add("u1", "Sheds", 1, {episode(1, "Sheds"), episode(3, "Rust")});
    addFile(episodeGuess("Sheds", 1, 3));
    addFile(episodeGuess("Sheds", 1, 3));
    addFile(episodeGuess("Sheds", 1, 1));
    EXPECT_THAT(reasons(), ElementsAre(ElementsAre("Another file is also episode 3"),
                                       ElementsAre("Another file is also episode 3"),
                                       ElementsAre("Only the file number to go on")));
}

TEST_F(SeasonFromSource, TwoPartsInOneFileStayASingleEpisode) {
    source.add("u1", "Sheds", 1, {episode(1, "Light (1)", 22), episode(2, "Light (2)", 22)});
    addFile(episodeGuess("Sheds", 1, 1, "Light"), 44);
    const auto results = resolve();
    EXPECT_EQ(results[0].match->episodeEnd, std::nullopt);
    EXPECT_THAT(results[0].verdict.reasons(),
                ElementsAre("Length differs: file 44 min, Apple TV 22 min"));
}

TEST_F(SeasonFromSource, TheExactTitleIsAskedFirst) {
    source.add("u1", "Tin Observatory Hill Story Club", 1, {episode(1, "A")});
    source.add("u2", "The Tin Observatory Hill Story", 1, {episode(1, "B")});
    addFile(episodeGuess("Tin Observatory Hill Story", 1, 1));
    EXPECT_EQ(resolve()[0].match->episodeTitle, "B");
    EXPECT_THAT(source.asked,
                ElementsAre("shows Tin Observatory Hill Story", "episodes u2 1", "info u2"));
}

TEST_F(SeasonFromSource, TheFirstShowWithAWantedEpisodeIsTakenAtOnce) {
    source.add("u1", "Sheds", 1, {episode(1, "A")});
    source.add("u2", "Sheds", 1, {episode(5, "B")});
    source.add("u3", "Sheds", 1, {episode(5, "C")});
    addFile(episodeGuess("Sheds", 1, 5));
    EXPECT_EQ(resolve()[0].match->episodeTitle, "B");
    EXPECT_THAT(source.asked,
                ElementsAre("shows Sheds", "episodes u1 1", "episodes u2 1", "info u2"));
}

TEST_F(SeasonFromSource, WithoutAWantedEpisodeTheFirstShowWithAnyIsRemembered) {
    source.add("u0", "Sheds", 2, {episode(1, "A")});
    source.add("u1", "Sheds", 1, {episode(1, "A")});
    source.add("u2", "Sheds", 1, {episode(2, "B")});
    addFile(episodeGuess("Sheds", 1, 5));
    EXPECT_THAT(reasons(), Each(ElementsAre("Episode 5 isn't in season 1 on Apple TV")));
    EXPECT_EQ(source.asked.back(), "info u1");
}

TEST_F(SeasonFromSource, AYearInTheNameKeepsTheShowOfThatYear) {
    source.add("u1", "Sheds", 1, {episode(1, "A")}).show.year = 1987;
    source.add("u2", "Sheds", 1, {episode(1, "B")}).show.year = 2017;
    Guess guess = episodeGuess("Sheds", 1, 1);
    guess.year = 2017;
    addFile(guess);
    EXPECT_EQ(resolve()[0].match->episodeTitle, "B");
}

}  // namespace
}  // namespace marlet
