#include "sources/itunes_answers.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

namespace marlet {
namespace {

using nlohmann::json;
using testing::ElementsAre;
using testing::IsEmpty;

json parsed(const std::string& text) {
    return json::parse(text);
}

TEST(ITunesSeasons, SeasonThirtySevenIsRead) {
    EXPECT_EQ(ITunesAnswers::seasonNumber("The Simpsons, Season 37"), 37);
    EXPECT_EQ(ITunesAnswers::seasonNumber("Sheds, Season 2  "), 2);
}

TEST(ITunesSeasons, ACollectionIsNotASeason) {
    EXPECT_FALSE(ITunesAnswers::seasonNumber("The Simpsons: Treehouse of Horror Collection I"));
    EXPECT_FALSE(ITunesAnswers::seasonNumber("Sheds, Season 2: The Best Of"));
    EXPECT_FALSE(ITunesAnswers::seasonNumber("Sheds, season 2"));
    EXPECT_FALSE(ITunesAnswers::seasonNumber("Season "));
    EXPECT_FALSE(ITunesAnswers::seasonNumber("Season 99999999999999999999"));
    EXPECT_FALSE(ITunesAnswers::seasonNumber(""));
}

TEST(ITunesSeasons, AreTheCollectionsThatNameOne) {
    EXPECT_EQ(ITunesAnswers::seasonCollections(parsed(R"([
                  {"wrapperType":"artist","artistId":7},
                  {"collectionId":12,"collectionName":"Sheds, Season 2"},
                  {"collectionId":"13","collectionName":"Sheds, Season 3"},
                  {"collectionName":"Sheds, Season 4"},
                  {"collectionId":15,"collectionName":"Sheds: Specials"},7,null])")),
              (std::map<int, std::int64_t>{{2, 12}, {3, 13}}));
}

TEST(ITunesShows, AreTheFirstResultOfEachArtistInTheirOrder) {
    const auto shows = ITunesAnswers::shows(parsed(R"([
        {"artistId":9,"artistName":"Sheds","releaseDate":"1987-02-03T08:00:00Z",
         "longDescription":"Huts.","artworkUrl100":"https://a/100x100bb.jpg"},
        {"artistId":7,"artistName":"Sheds Again"},
        {"artistId":9,"artistName":"Sheds","releaseDate":"1999-02-03T08:00:00Z"},
        {"artistName":"nobody"},{"artistId":8}])"));
    ASSERT_EQ(shows.size(), 2U);
    EXPECT_EQ(shows[0].source, SourceID::itunes);
    EXPECT_EQ(shows[0].id, "9");
    EXPECT_EQ(shows[0].title, "Sheds");
    EXPECT_EQ(shows[0].year, 1987);
    EXPECT_EQ(shows[0].overview, "Huts.");
    EXPECT_EQ(shows[0].poster, "https://a/300x300bb.jpg");
    EXPECT_EQ(shows[1].id, "7");
    EXPECT_FALSE(shows[1].year);
    EXPECT_FALSE(shows[1].poster);
}

TEST(ITunesEpisodes, AreTracksWithANumber) {
    const auto episodes = ITunesAnswers::episodes(parsed(R"([
        {"wrapperType":"collection","trackNumber":1},
        {"wrapperType":"track","trackNumber":2,"trackName":"Mirrors","shortDescription":"Short.",
         "releaseDate":"1987-02-10T08:00:00Z","trackTimeMillis":2999999},
        {"wrapperType":"track","trackNumber":3,"longDescription":"Long.",
         "shortDescription":"Short."},
        {"wrapperType":"track","trackName":"no number"}])"),
                                                  5);
    ASSERT_EQ(episodes.size(), 2U);
    EXPECT_EQ(episodes[0].season, 5);
    EXPECT_EQ(episodes[0].number, 2);
    EXPECT_EQ(episodes[0].title, "Mirrors");
    EXPECT_EQ(episodes[0].overview, "Short.");
    EXPECT_EQ(episodes[0].date, "1987-02-10");
    EXPECT_EQ(episodes[0].minutes, 50);
    EXPECT_EQ(episodes[1].overview, "Long.");
    EXPECT_EQ(episodes[1].date, "");
    EXPECT_FALSE(episodes[1].minutes);
}

TEST(ITunesMovies, AreFeatureFilmsWithAllThatASearchTells) {
    const auto movies = ITunesAnswers::movies(parsed(R"([
        {"wrapperType":"track","kind":"tv-episode","trackId":1,"trackName":"x"},
        {"wrapperType":"audiobook","kind":"feature-movie","trackId":1,"trackName":"x"},
        {"wrapperType":"track","kind":"feature-movie","trackId":77,"trackName":"Heat",
         "artistName":"Michael Mann","releaseDate":"1995-12-15T08:00:00Z",
         "trackTimeMillis":10230000,"longDescription":"A thief.","primaryGenreName":"Crime",
         "contentAdvisoryRating":"R","artworkUrl60":"https://a/60x60bb.jpg"},
        {"wrapperType":"track","kind":"feature-movie","trackId":78,"trackName":"Bare"}])"));
    ASSERT_EQ(movies.size(), 2U);
    const ExtMovie& heat = movies[0];
    EXPECT_EQ(heat.id, "77");
    EXPECT_EQ(heat.title, "Heat");
    EXPECT_EQ(heat.year, 1995);
    EXPECT_EQ(heat.date, "1995-12-15");
    EXPECT_EQ(heat.minutes, 171);
    EXPECT_EQ(heat.overview, "A thief.");
    EXPECT_THAT(heat.directors, ElementsAre("Michael Mann"));
    EXPECT_EQ(heat.genre, "Crime");
    EXPECT_EQ(heat.rating, "R");
    EXPECT_EQ(heat.poster, "https://a/300x300bb.jpg");
    EXPECT_THAT(heat.tall, ElementsAre("https://a/1600x1600bb.jpg"));
    EXPECT_THAT(heat.wide, IsEmpty());
    EXPECT_THAT(heat.cast, IsEmpty());
    EXPECT_THAT(movies[1].directors, IsEmpty());
    EXPECT_THAT(movies[1].tall, IsEmpty());
}

TEST(ITunesShowInfo, IsWhatTheCollectionsOfItsSeasonsTell) {
    const json results = parsed(R"([
        {"wrapperType":"artist","artistId":7,"primaryGenreName":"TV Shows"},
        {"collectionId":12,"collectionName":"Sheds, Season 2","releaseDate":"1988-01-05T08:00:00Z",
         "artworkUrl100":"https://a/2/100x100bb.jpg","longDescription":"More huts."},
        {"collectionId":11,"collectionName":"Sheds, Season 1","releaseDate":"1987-02-03T08:00:00Z",
         "artworkUrl100":"https://a/1/100x100bb.jpg","primaryGenreName":"Documentary",
         "contentAdvisoryRating":"TV-G","longDescription":"Huts."},
        {"collectionId":15,"collectionName":"Sheds: Specials","releaseDate":"1980-01-01T08:00:00Z",
         "artworkUrl100":"https://a/s/100x100bb.jpg"}])");
    const ExtShowInfo info = ITunesAnswers::showInfo(results, {});
    EXPECT_EQ(info.overview, "More huts.");
    EXPECT_EQ(info.genre, "Documentary");
    EXPECT_EQ(info.rating, "TV-G");
    EXPECT_EQ(info.date, "1987-02-03");
    EXPECT_THAT(info.cast, IsEmpty());
    ASSERT_EQ(info.seasonTall.size(), 2U);
    EXPECT_THAT(info.seasonTall.at(1), ElementsAre("https://a/1/1600x1600bb.jpg"));
    ExtShow show;
    show.overview = "Its own words.";
    EXPECT_EQ(ITunesAnswers::showInfo(results, show).overview, "Its own words.");
}

TEST(ITunesArt, TheSizeInTheAddressIsReplaced) {
    const auto art = [](const std::string& url) {
        return ITunesAnswers::art({{"artworkUrl100", url}}, 600);
    };
    EXPECT_EQ(art("https://a/thumb/x/100x100bb.jpg"), "https://a/thumb/x/600x600bb.jpg");
    EXPECT_EQ(art("https://a/thumb/x/100x100sr.png"), "https://a/thumb/x/600x600bb.jpg");
    EXPECT_EQ(art("https://a/thumb/x/100x100ss.jpg"), "https://a/thumb/x/600x600bb.jpg");
    EXPECT_EQ(art("https://a/thumb/x/100x100.jpg"), "https://a/thumb/x/600x600bb.jpg");
    EXPECT_EQ(art("https://a/12x34.png/100x100bb.jpg"), "https://a/600x600bb.jpg/100x100bb.jpg")
        << "the first place, as found";
    EXPECT_EQ(art("https://a/poster.jpg"), "https://a/poster.jpg");
}

TEST(ITunesArt, TheSmallerAddressServesWhenTheLargerIsMissing) {
    EXPECT_EQ(ITunesAnswers::art({{"artworkUrl60", "https://a/60x60bb.jpg"}}, 300),
              "https://a/300x300bb.jpg");
    EXPECT_FALSE(ITunesAnswers::art(json::object(), 300));
    EXPECT_FALSE(ITunesAnswers::art({{"artworkUrl100", 7}}, 300));
    EXPECT_FALSE(ITunesAnswers::art({{"artworkUrl100", "file:///etc/100x100bb.jpg"}}, 300));
}

TEST(ITunesAnswersTest, ResultsOfAnyOtherShapeAreNone) {
    for (const char* text : {"{}", "7", "null", "\"x\"", "[[]]", "[7,null,\"x\",[]]",
                             R"([{"artistId":"x","artistName":7,"collectionName":[]}])"}) {
        const json results = parsed(text);
        EXPECT_THAT(ITunesAnswers::shows(results), IsEmpty()) << text;
        EXPECT_THAT(ITunesAnswers::movies(results), IsEmpty()) << text;
        EXPECT_THAT(ITunesAnswers::episodes(results, 1), IsEmpty()) << text;
        EXPECT_THAT(ITunesAnswers::seasonCollections(results), IsEmpty()) << text;
        EXPECT_THAT(ITunesAnswers::showInfo(results, {}).seasonTall, IsEmpty()) << text;
    }
}

}  // namespace
}  // namespace marlet
