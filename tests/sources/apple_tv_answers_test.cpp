#include "sources/apple_tv_answers.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <nlohmann/json.hpp>

#include "sources/apple_tv_pictures.h"

namespace marlet {
namespace {

using nlohmann::json;
using testing::ElementsAre;
using testing::IsEmpty;

json parsed(const std::string& text) {
    return json::parse(text);
}

TEST(AppleTVSearch, TellsShowsAndFilmsApartWithTheYear) {
    const auto found = AppleTVAnswers::parseSearch(parsed(R"({"data":{"canvas":{"shelves":[
        {"items":[{"type":"Show","id":"s1","title":"The Simpsons","releaseDate":599616000000},
                  {"type":"Person","id":"p1","title":"Homer"}]},
        {"items":[{"type":"Movie","id":"m1","title":"The Simpsons Movie",
                   "releaseDate":1185494400000}]}]}}})"));
    ASSERT_EQ(found.shows.size(), 1U);
    EXPECT_EQ(found.shows[0].id, "s1");
    EXPECT_EQ(found.shows[0].title, "The Simpsons");
    EXPECT_EQ(found.shows[0].year, 1989);
    EXPECT_EQ(found.shows[0].source, SourceID::appleTV);
    ASSERT_EQ(found.movies.size(), 1U);
    EXPECT_EQ(found.movies[0].title, "The Simpsons Movie");
    EXPECT_EQ(found.movies[0].year, 2007);
}

TEST(AppleTVSearch, KeepsTheOrderOfTheShelvesAndEachTitleOnce) {
    const auto found = AppleTVAnswers::parseSearch(parsed(R"({"data":{"canvas":{"shelves":[
        {"items":[{"type":"Movie","id":"b","title":"B"},{"type":"Movie","id":"a","title":"A"}]},
        {"items":[{"type":"Movie","id":"b","title":"B"},{"type":"Movie","id":"c","title":"C"}]}
        ]}}})"));
    std::vector<std::string> ids;
    for (const ExtMovie& movie : found.movies) ids.push_back(movie.id);
    EXPECT_THAT(ids, ElementsAre("b", "a", "c"));
}

TEST(AppleTVSearch, AFilmComesWithTheSmallPictureAndTheCoversOfItsItem) {
    const auto found = AppleTVAnswers::parseSearch(parsed(R"({"data":{"canvas":{"shelves":[
        {"items":[{"type":"Movie","id":"m","title":"M","images":{
            "a":{"url":"https://a/{w}x{h}.{f}","width":1600,"height":900},
            "b":{"url":"https://b/{w}x{h}.{f}","width":2000,"height":3000}}}]}]}}})"));
    ASSERT_EQ(found.movies.size(), 1U);
    EXPECT_EQ(found.movies[0].poster, "https://b/300x450.jpg");
    EXPECT_THAT(found.movies[0].wide, ElementsAre("https://a/1920x1080.jpg"));
    EXPECT_THAT(found.movies[0].tall, ElementsAre("https://b/1600x2400.jpg"));
}

TEST(AppleTVSearch, SkipsItemsWithoutAnIdOrATitleAndListsOfOtherThings) {
    const auto found = AppleTVAnswers::parseSearch(parsed(R"({"data":{"canvas":{"shelves":[
        7,{"items":"none"},{"items":[null,"x",{"type":"Movie","id":"a"},
        {"type":"Movie","title":"A"},{"type":["Movie"],"id":"b","title":"B"},
        {"type":"Movie","id":7,"title":"C"},
        {"type":"Movie","id":"d","title":"D","releaseDate":"soon","images":[]}]}]}}})"));
    ASSERT_EQ(found.movies.size(), 1U);
    EXPECT_EQ(found.movies[0].title, "D");
    EXPECT_FALSE(found.movies[0].year);
    EXPECT_FALSE(found.movies[0].poster);
}

TEST(AppleTVSearch, AnAnswerOfAnyOtherShapeFindsNothing) {
    for (const char* text : {"[]", "7", "null", "\"x\"", "{}", R"({"data":[]})",
                             R"({"data":{"canvas":7}})", R"({"data":{"canvas":{"shelves":{}}}})"}) {
        const auto found = AppleTVAnswers::parseSearch(parsed(text));
        EXPECT_THAT(found.shows, IsEmpty()) << text;
        EXPECT_THAT(found.movies, IsEmpty()) << text;
        EXPECT_FALSE(AppleTVAnswers::parseMovie(parsed(text), "m")) << text;
        EXPECT_FALSE(AppleTVAnswers::parseShowInfo(parsed(text))) << text;
        EXPECT_FALSE(AppleTVAnswers::parseSeasonSummaries(parsed(text))) << text;
        EXPECT_THAT(AppleTVAnswers::parseEpisodes(parsed(text)), IsEmpty()) << text;
        EXPECT_FALSE(AppleTVAnswers::parseKey(parsed(text))) << text;
    }
}

TEST(AppleTVKey, IsFoundAtAnyDepthWithTheFirstTextThatIsNotEmpty) {
    const auto key = AppleTVAnswers::parseKey(parsed(
        R"({"utsk":"","a":[{"b":{"utsk":7}},{"utsk":"k1","pfm":"web"}],"z":{"utsk":"k2"}})"));
    ASSERT_TRUE(key);
    EXPECT_EQ(key->utsk, "k1");
    EXPECT_EQ(key->pfm, "web");
}

TEST(AppleTVKey, WithoutAPlatformItIsThatOfTheDesktop) {
    EXPECT_EQ(AppleTVAnswers::parseKey(parsed(R"({"utsk":"k"})"))->pfm, "desktop");
    EXPECT_FALSE(AppleTVAnswers::parseKey(parsed(R"({"pfm":"web"})")));
}

TEST(AppleTVDates, AreMillisecondsInUtcAndMayBeTexts) {
    EXPECT_EQ(AppleTVAnswers::year(599616000000), 1989);
    EXPECT_EQ(AppleTVAnswers::isoDate(1783036800000), "2026-07-03");
    EXPECT_EQ(AppleTVAnswers::isoDate(1783036799999), "2026-07-02");
    EXPECT_EQ(AppleTVAnswers::isoDate(-1), "1969-12-31");
    EXPECT_EQ(AppleTVAnswers::isoDate(0), "1970-01-01");
    const auto found = AppleTVAnswers::parseSearch(parsed(R"({"data":{"canvas":{"shelves":[
        {"items":[{"type":"Show","id":"s","title":"S","releaseDate":"599616000000"}]}]}}})"));
    EXPECT_EQ(found.shows.at(0).year, 1989);
}

TEST(AppleTVDates, OutsideTheYearsOneTo9999AreNone) {
    for (const auto odd :
         {std::numeric_limits<std::int64_t>::max(), std::numeric_limits<std::int64_t>::min(),
          std::int64_t{253402300800000}, std::int64_t{-62135596800001}}) {
        EXPECT_FALSE(AppleTVAnswers::year(odd)) << odd;
        EXPECT_EQ(AppleTVAnswers::isoDate(odd), "") << odd;
    }
    EXPECT_EQ(AppleTVAnswers::isoDate(253402300799999), "9999-12-31");
    EXPECT_EQ(AppleTVAnswers::isoDate(-62135596800000), "0001-01-01");
    EXPECT_EQ(AppleTVAnswers::isoDate(std::nullopt), "");
}

constexpr const char* film = R"({"data":{"content":{"title":"Heat","description":"A thief.",
    "duration":10230,"releaseDate":818985600000,"genres":[{"name":""},{"name":"Crime"},
    {"name":"Drama"}],"rating":{"displayName":"R"},
    "rolesSummary":{"cast":["Al","Bob",7,""],"directors":["Michael"]},
    "images":{"a":{"url":"https://x/{w}x{h}.{f}","width":4320,"height":2160},
              "b":{"url":"https://x/{w}x{h}CA.{f}","width":2000,"height":3000}}}}})";

TEST(AppleTVMovie, HasWhatItsContentTells) {
    const auto movie = AppleTVAnswers::parseMovie(parsed(film), "m1");
    ASSERT_TRUE(movie);
    EXPECT_EQ(movie->id, "m1");
    EXPECT_EQ(movie->title, "Heat");
    EXPECT_EQ(movie->overview, "A thief.");
    EXPECT_EQ(movie->minutes, 171);  // 170.5
    EXPECT_EQ(movie->year, 1995);
    EXPECT_EQ(movie->date, "1995-12-15");
    EXPECT_EQ(movie->genre, "Crime");
    EXPECT_EQ(movie->rating, "R");
    EXPECT_THAT(movie->cast, ElementsAre("Al", "Bob"));
    EXPECT_THAT(movie->directors, ElementsAre("Michael"));
    EXPECT_THAT(movie->wide, ElementsAre("https://x/1920x1080.jpg"));
    EXPECT_THAT(movie->tall, ElementsAre("https://x/1600x2400CA.jpg"));
}

TEST(AppleTVMovie, ALengthThatNoFilmHasIsUnknown) {
    for (const char* length : {"0", "-60", "null", "\"long\"", "1e300", "[]"}) {
        const auto movie = AppleTVAnswers::parseMovie(
            parsed(std::string(R"({"data":{"content":{"title":"x","duration":)") + length + "}}}"),
            "m");
        EXPECT_FALSE(movie.value().minutes) << length;
    }
}

TEST(AppleTVShow, HasItsDetailsAndTheTallPicturesOfEachSeason) {
    const auto info = AppleTVAnswers::parseShowInfo(parsed(R"({"data":{"content":{
        "description":"A family.","genres":[{"name":"Comedy"}],"rating":{"displayName":"TV-14"},
        "releaseDate":599616000000,"rolesSummary":{"cast":["Dan"]},
        "images":{"c":{"url":"https://x/{w}x{h}{c}.{f}","width":2,"height":3}},
        "seasons":[{"seasonNumber":2,"images":{"p":{"url":"https://s2/{w}x{h}.{f}",
                    "width":1000,"height":1500}}},{"images":{}},{"seasonNumber":3}]}}})"));
    ASSERT_TRUE(info);
    EXPECT_EQ(info->overview, "A family.");
    EXPECT_EQ(info->genre, "Comedy");
    EXPECT_EQ(info->rating, "TV-14");
    EXPECT_EQ(info->date, "1989-01-01");
    EXPECT_THAT(info->cast, ElementsAre("Dan"));
    EXPECT_THAT(info->tall, ElementsAre("https://x/1600x2400.jpg"));
    ASSERT_EQ(info->seasonTall.size(), 1U);
    EXPECT_THAT(info->seasonTall.at(2), ElementsAre("https://s2/1600x2400.jpg"));
}

TEST(AppleTVSeasons, AnOffsetIsTheSumOfAllEarlierSeasons) {
    const auto summaries = AppleTVAnswers::parseSeasonSummaries(parsed(R"({"data":{
        "seasonSummaries":[{"seasonNumber":1,"episodeCount":13},
        {"seasonNumber":37,"episodeCount":18},{"seasonNumber":2,"episodeCount":22}]}})"));
    ASSERT_TRUE(summaries);
    EXPECT_EQ(summaries->at(37), 18);
    EXPECT_EQ(AppleTVAnswers::offset(37, *summaries), 35);
    EXPECT_EQ(AppleTVAnswers::offset(1, *summaries), 0);
    EXPECT_EQ(AppleTVAnswers::offset(38, *summaries), 53);
}

TEST(AppleTVSeasons, CountsThatNoShowHasAreLeftOut) {
    const auto summaries = AppleTVAnswers::parseSeasonSummaries(parsed(R"({"data":{
        "seasonSummaries":[{"seasonNumber":1,"episodeCount":-5},
        {"seasonNumber":2,"episodeCount":9000000000},{"seasonNumber":3},7,
        {"seasonNumber":"4","episodeCount":"12"}]}})"));
    EXPECT_EQ(summaries, (AppleTVAnswers::SeasonSummaries{{4, 12}}));
}

TEST(AppleTVEpisodes, HaveNumberTitleStoryMinutesAndDate) {
    const auto episodes = AppleTVAnswers::parseEpisodes(parsed(R"({"data":{"episodes":[
        {"seasonNumber":37,"episodeNumber":17,"title":"Simpsley",
         "description":"Marge goes to Italy.","duration":1320,"releaseDate":1783036800000},
        {"seasonNumber":37,"title":"No number"},{"episodeNumber":3}]}})"));
    ASSERT_EQ(episodes.size(), 1U);
    EXPECT_EQ(episodes[0].season, 37);
    EXPECT_EQ(episodes[0].number, 17);
    EXPECT_EQ(episodes[0].title, "Simpsley");
    EXPECT_EQ(episodes[0].overview, "Marge goes to Italy.");
    EXPECT_EQ(episodes[0].minutes, 22);
    EXPECT_EQ(episodes[0].date, "2026-07-03");
}

json image(const std::string& url, double width, double height) {
    return {{"url", url}, {"width", width}, {"height", height}};
}

TEST(AppleTVPictures, AWideAndATallTemplateAreFilled) {
    const auto found =
        AppleTVPictures::pictures({{"a", image("https://x/{w}x{h}.{f}", 4320, 2160)},
                                   {"b", image("https://x/{w}x{h}CA.{f}", 2000, 3000)}});
    EXPECT_THAT(found.wide, ElementsAre("https://x/1920x1080.jpg"));
    EXPECT_THAT(found.tall, ElementsAre("https://x/1600x2400CA.jpg"));
}

TEST(AppleTVPictures, ALogoStripIsOfferedAsNeither) {
    const json strip = {{"logo", image("https://x/{w}x{h}sr.{f}", 1176, 176)}};
    EXPECT_THAT(AppleTVPictures::pictures(strip).wide, IsEmpty());
    EXPECT_THAT(AppleTVPictures::pictures(strip).tall, IsEmpty());
}

TEST(AppleTVPictures, TheEdgesOfBothShapesBelongToThem) {
    const auto shape = [](double width, double height) -> std::string {
        const auto found = AppleTVPictures::pictures({{"a", image("https://x", width, height)}});
        if (!found.wide.empty()) return "wide";
        return found.tall.empty() ? "neither" : "tall";
    };
    EXPECT_EQ(shape(1600, 1000), "wide");
    EXPECT_EQ(shape(2050, 1000), "wide");
    EXPECT_EQ(shape(1599, 1000), "neither");
    EXPECT_EQ(shape(2051, 1000), "neither");
    EXPECT_EQ(shape(500, 1000), "tall");
    EXPECT_EQ(shape(800, 1000), "tall");
    EXPECT_EQ(shape(499, 1000), "neither");
    EXPECT_EQ(shape(801, 1000), "neither");
    EXPECT_EQ(shape(0, 1000), "neither");
    EXPECT_EQ(shape(1600, -1000), "neither");
}

TEST(AppleTVPictures, ComeInTheOrderOfTheirNamesAndEachOnce) {
    const auto found = AppleTVPictures::pictures({{"z", image("https://1/{w}", 2000, 3000)},
                                                  {"a", image("https://2/{w}", 2000, 3000)},
                                                  {"m", image("https://1/{w}", 2000, 3000)}});
    EXPECT_THAT(found.tall, ElementsAre("https://2/1600", "https://1/1600"));
}

TEST(AppleTVPictures, OnlyAddressesOfTheWebAreOffered) {
    EXPECT_THAT(AppleTVPictures::pictures({{"a", image("file:///etc/passwd", 2, 3)},
                                           {"b", image("", 2, 3)},
                                           {"c", {{"width", 2}, {"height", 3}}},
                                           {"d", 7}})
                    .tall,
                IsEmpty());
    EXPECT_FALSE(AppleTVPictures::listPicture({{"a", image("javascript:1", 2, 3)}}));
}

TEST(AppleTVPictures, TheListsPictureIsTallBeforeSquareBeforeWide) {
    const json wide = image("https://w/{w}x{h}{c}.{f}", 1920, 1080);
    const json square = image("https://s/{w}x{h}{c}.{f}", 1000, 1000);
    const json tall = image("https://t/{w}x{h}{c}.{f}", 1000, 1500);
    EXPECT_EQ(AppleTVPictures::listPicture({{"a", wide}, {"b", square}, {"c", tall}}),
              "https://t/300x450.jpg");
    EXPECT_EQ(AppleTVPictures::listPicture({{"a", wide}, {"b", square}}), "https://s/300x450.jpg");
    EXPECT_EQ(AppleTVPictures::listPicture({{"a", wide}}), "https://w/300x450.jpg");
    EXPECT_FALSE(AppleTVPictures::listPicture(json::object()));
}

TEST(AppleTVPictures, OneWithoutASizeServesInAListBeforeAWideOneButIsNoCover) {
    const json unsized = {{"url", "https://u/{w}x{h}.{f}"}};
    const json flat = image("https://f/{w}x{h}.{f}", 1000, 0);
    const json wide = image("https://w/{w}x{h}.{f}", 1920, 1080);
    const json tall = image("https://t/{w}x{h}.{f}", 1000, 1500);
    EXPECT_EQ(AppleTVPictures::listPicture({{"a", wide}, {"b", unsized}}), "https://u/300x450.jpg");
    EXPECT_EQ(AppleTVPictures::listPicture({{"a", wide}, {"b", flat}}), "https://f/300x450.jpg");
    EXPECT_EQ(AppleTVPictures::listPicture({{"a", unsized}, {"b", tall}}), "https://t/300x450.jpg");
    const auto found = AppleTVPictures::pictures({{"a", unsized}, {"b", flat}});
    EXPECT_THAT(found.wide, IsEmpty());
    EXPECT_THAT(found.tall, IsEmpty());
}

TEST(AppleTVPictures, OfTwoEqualOnesTheListsPictureIsTheFirstByName) {
    EXPECT_EQ(AppleTVPictures::listPicture({{"y", image("https://2/{h}", 1000, 1500)},
                                            {"x", image("https://1/{h}", 1000, 1500)}}),
              "https://1/450");
}

}  // namespace
}  // namespace marlet
