#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "identify/made_up_files.h"
#include "identify/matcher.h"

namespace marlet {
namespace {

using test::episodeGuess;
using test::fileOf;
using test::filmGuess;
using testing::ElementsAre;

ResolvedFile episode(const std::string& path, Guess guess, std::optional<std::int64_t> id = {},
                     const std::string& show = "The Tin Observatory") {
    ResolvedFile file;
    file.file = fileOf(path);
    if (id) {
        Match match;
        match.tmdbID = *id;
        match.kind = MediaKind::tv;
        match.title = show;
        match.year = 2017;
        match.season = guess.season;
        match.episode = guess.episode;
        match.posterPath = "/poster.jpg";
        file.match = match;
    }
    file.guess = std::move(guess);
    return file;
}

ResolvedFile film(const std::string& path, std::optional<Guess> guess,
                  std::optional<std::string> matched = {}) {
    ResolvedFile file;
    file.file = fileOf(path);
    file.guess = std::move(guess);
    if (matched) {
        Match match;
        match.tmdbID = 7;
        match.title = *matched;
        match.year = 1926;
        match.posterPath = "/film.jpg";
        file.match = match;
    }
    return file;
}

std::vector<std::string> titlesOf(const std::vector<LibraryItem>& items) {
    std::vector<std::string> titles;
    for (const LibraryItem& item : items) titles.push_back(item.title);
    return titles;
}

TEST(Grouping, FilesOfOneShowAndSeasonFromSeveralFoldersAreOneRowSortedByEpisode) {
    const auto items = Matcher::group({episode("/b/3.mp4", episodeGuess("Tin", 1, 3), 201750),
                                       episode("/a/1.mp4", episodeGuess("tin", 1, 1), 201750),
                                       episode("/c/x.mp4", episodeGuess("Tin", 1, 2), 201750)});
    ASSERT_EQ(items.size(), 1U);
    const LibraryItem& item = items[0];
    EXPECT_EQ(item.id, "tv201750|s1");
    EXPECT_EQ(item.kind, MediaKind::tv);
    EXPECT_EQ(item.title, "The Tin Observatory");
    EXPECT_EQ(item.year, 2017);
    EXPECT_EQ(item.season, 1);
    EXPECT_EQ(item.posterPath, "/poster.jpg");
    ASSERT_EQ(item.files.size(), 3U);
    EXPECT_EQ(item.files[0].guess->episode, 1);
    EXPECT_EQ(item.files[1].guess->episode, 2);
    EXPECT_EQ(item.files[2].guess->episode, 3);
}

TEST(Grouping, EqualEpisodesKeepTheirOrderAndAnAbsentOneComesFirst) {
    const auto items = Matcher::group({episode("/b.mp4", episodeGuess("Tin", 1, 1)),
                                       episode("/a.mp4", episodeGuess("Tin", 1, 1)),
                                       episode("/c.mp4", episodeGuess("Tin", 1, std::nullopt))});
    ASSERT_EQ(items.size(), 1U);
    EXPECT_EQ(items[0].files[0].file.url, "/c.mp4");
    EXPECT_EQ(items[0].files[1].file.url, "/b.mp4");
    EXPECT_EQ(items[0].files[2].file.url, "/a.mp4");
}

TEST(Grouping, EpisodesWithoutAMatchGoByTheComparisonFormOfTheirTitle) {
    const auto items =
        Matcher::group({episode("/a.mp4", episodeGuess("the dropout", 1, 1)),
                        episode("/b.mp4", episodeGuess("The Dropout!", 1, 2)),
                        episode("/c.mp4", episodeGuess("Dropout", std::nullopt, 2))});
    ASSERT_EQ(items.size(), 2U);
    EXPECT_EQ(items[0].id, "tv?dropout|s0");
    EXPECT_EQ(items[0].season, std::nullopt);
    EXPECT_EQ(items[1].id, "tv?dropout|s1");
    EXPECT_EQ(items[1].title, "the dropout");
    EXPECT_EQ(items[1].year, std::nullopt);
    EXPECT_EQ(items[1].posterPath, std::nullopt);
    EXPECT_EQ(items[1].files.size(), 2U);
}

TEST(Grouping, AMatchedAndAnUnmatchedEpisodeAreTwoRows) {
    EXPECT_EQ(Matcher::group({episode("/a.mp4", episodeGuess("Tin", 1, 1), 5),
                              episode("/b.mp4", episodeGuess("Tin", 1, 2))})
                  .size(),
              2U);
}

TEST(Grouping, EveryFilmIsARowOfItsOwn) {
    const auto items =
        Matcher::group({film("/a/The General.mp4", filmGuess("The General"), "The General"),
                        film("/b/The General.mp4", filmGuess("The General"), "The General")});
    ASSERT_EQ(items.size(), 2U);
    EXPECT_EQ(items[0].id, "file|/a/The General.mp4");
    EXPECT_EQ(items[0].kind, MediaKind::movie);
    EXPECT_EQ(items[0].year, 1926);
    EXPECT_EQ(items[0].posterPath, "/film.jpg");
    EXPECT_EQ(items[1].id, "file|/b/The General.mp4");
}

TEST(Grouping, AnAmbiguousFilmIsShownUnderItsOwnName) {
    ResolvedFile file =
        film("/dl/A.Star.Is.Born.mkv", filmGuess("A Star Is Born"), "A Star Is Born");
    file.ambiguous = true;
    const auto items = Matcher::group({file});
    EXPECT_EQ(items[0].title, "A.Star.Is.Born");
    EXPECT_EQ(items[0].year, std::nullopt);
    EXPECT_EQ(items[0].posterPath, std::nullopt);
    EXPECT_TRUE(items[0].files[0].match);
}

TEST(Grouping, WithoutAMatchAFilmShowsItsGuessAndWithoutAGuessItsName) {
    const auto items = Matcher::group(
        {film("/dl/heat.1995.mkv", filmGuess("heat", 1995)), film("/dl/Mr. Nobody", std::nullopt)});
    EXPECT_EQ(items[0].title, "heat");
    EXPECT_EQ(items[0].year, 1995);
    EXPECT_EQ(items[1].title, "Mr. Nobody");
}

TEST(Grouping, ShowsComeBeforeFilmsWhateverTheirTitles) {
    const auto items =
        Matcher::group({film("/a.mp4", filmGuess("Aardvark")), film("/b.mp4", filmGuess("Bee")),
                        episode("/z.mp4", episodeGuess("Zebra", 1, 1)),
                        episode("/y.mp4", episodeGuess("Yak", 1, 1))});
    EXPECT_THAT(titlesOf(items), ElementsAre("Yak", "Zebra", "Aardvark", "Bee"));
}

TEST(Grouping, TitlesSortAsAPersonReadsNumbersThenBySeason) {
    const auto items = Matcher::group({episode("/1.mp4", episodeGuess("Studio 30", 2, 1)),
                                       episode("/2.mp4", episodeGuess("Studio 30", 1, 1)),
                                       episode("/3.mp4", episodeGuess("studio 4", 9, 1)),
                                       episode("/4.mp4", episodeGuess("Studio 30", {}, 1))});
    EXPECT_THAT(titlesOf(items), ElementsAre("studio 4", "Studio 30", "Studio 30", "Studio 30"));
    EXPECT_EQ(items[1].season, std::nullopt);
    EXPECT_EQ(items[2].season, 1);
    EXPECT_EQ(items[3].season, 2);
}

TEST(Grouping, ANameThatIsNoTextIsShownRepaired) {
    const auto items = Matcher::group({film("/dl/bad\xff name.mkv", std::nullopt)});
    EXPECT_EQ(items[0].title, "bad\uFFFD name");
}

TEST(Grouping, NothingGivesNoRows) {
    EXPECT_TRUE(Matcher::group({}).empty());
}

}  // namespace
}  // namespace marlet
