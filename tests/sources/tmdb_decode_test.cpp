#include "sources/tmdb_decode.h"

#include <gtest/gtest.h>

namespace marlet {
namespace {

using namespace TMDBDecode;

/// The words of the failure to decode.
template <typename Record>
std::string failure(const std::string& json) {
    try {
        decode<Record>(viewOf(json));
    } catch (const MFError& error) {
        return error.description();
    }
    return "(no failure)";
}

const std::string unreadable = "The database's answer can't be read: ";

TEST(TMDBDecode, ASeasonBundleTakesSpecialsAndSeasonsAndSkipsTheOtherKeys) {
    const auto bundle = decode<TMDBSeasonBundle>(
        viewOf(R"({"id":1,"season/0":{"season_number":0,"episodes":[{"episode_number":82,)"
               R"("name":"Yellow Planet"}]},"season/37":{"season_number":37,"episodes":[]}})"));
    ASSERT_EQ(bundle.seasons.size(), 2U);
    ASSERT_EQ(bundle.seasons.at(0).episodes.size(), 1U);
    EXPECT_EQ(bundle.seasons.at(0).episodes[0].episode_number, 82);
    EXPECT_EQ(bundle.seasons.at(0).episodes[0].name, "Yellow Planet");
    EXPECT_EQ(bundle.seasons.at(37).season_number, 37);
}

TEST(TMDBDecode, AnUnreadableSeasonNumberAndAMalformedSeasonAreSkippedAndTheOthersSurvive) {
    const auto bundle = decode<TMDBSeasonBundle>(
        viewOf(R"({"season/x":{"season_number":1,"episodes":[]},"season/":{},"season/2":{"a":1},)"
               R"("season/3":null,"season/4":{"season_number":4,"episodes":[]},"season/5":7,)"
               R"("season/99999999999":{"season_number":1,"episodes":[]}})"));
    ASSERT_EQ(bundle.seasons.size(), 1U);
    EXPECT_EQ(bundle.seasons.begin()->first, 4);
}

TEST(TMDBDecode, ABundleThatIsNoObjectFails) {
    EXPECT_EQ(failure<TMDBSeasonBundle>("[]"), unreadable + "it isn't an object");
}

TEST(TMDBDecode, OptionalFieldsMayBeAbsentOrNull) {
    const auto film = decode<TMDBMovie>(viewOf(R"({"id":12,"title":"Nemo","runtime":null})"));
    EXPECT_EQ(film.id, 12);
    EXPECT_EQ(film.title, "Nemo");
    EXPECT_FALSE(film.runtime);
    EXPECT_FALSE(film.release_date);
    EXPECT_FALSE(film.year());
}

TEST(TMDBDecode, ARequiredFieldThatIsMissingOrNullFailsByItsName) {
    EXPECT_EQ(failure<TMDBMovie>(R"({"title":"Nemo"})"), unreadable + "\"id\" is missing");
    EXPECT_EQ(failure<TMDBMovie>(R"({"id":1,"title":null})"), unreadable + "\"title\" is missing");
    EXPECT_EQ(failure<TMDBShow>(R"({"id":1})"), unreadable + "\"name\" is missing");
    EXPECT_EQ(failure<SearchResponse>("{}"), unreadable + "\"results\" is missing");
    EXPECT_EQ(failure<SearchResponse>(R"({"results":[{"name":"x"}]})"),
              unreadable + "\"results.id\" is missing");
    EXPECT_EQ(failure<TMDBSeason>(R"({"season_number":1})"),
              unreadable + "\"episodes\" is missing");
    EXPECT_EQ(failure<TMDBEpisodeFull>(R"({"name":"x"})"),
              unreadable + "\"episode_number\" is missing");
    EXPECT_EQ(failure<TMDBMovieFull>(
                  R"({"id":1,"title":"x","release_dates":{"results":[{"iso_3166_1":"US"}]}})"),
              unreadable + "\"release_dates.results.release_dates\" is missing");
}

TEST(TMDBDecode, AFieldOfAnotherTypeFailsByItsName) {
    EXPECT_EQ(failure<TMDBMovie>(R"({"id":"12","title":"x"})"),
              unreadable + "\"id\" is not a whole number");
    EXPECT_EQ(failure<TMDBMovie>(R"({"id":true,"title":"x"})"),
              unreadable + "\"id\" is not a whole number");
    EXPECT_EQ(failure<TMDBMovie>(R"({"id":12,"title":7})"), unreadable + "\"title\" is not a text");
    EXPECT_EQ(failure<TMDBMovie>(R"({"id":12,"title":"x","runtime":"90"})"),
              unreadable + "\"runtime\" is not a whole number");
    EXPECT_EQ(failure<SearchResponse>(R"({"results":{}})"),
              unreadable + "\"results\" is not a list");
    EXPECT_EQ(failure<SearchResponse>(R"({"results":[7]})"),
              unreadable + "\"results\" isn't an object");
    EXPECT_EQ(failure<SearchResponse>(R"({"results":[{"id":1,"popularity":"high"}]})"),
              unreadable + "\"results.popularity\" is not a number");
    EXPECT_EQ(failure<SeasonImages>(R"({"posters":"none"})"),
              unreadable + "\"posters\" is not a list");
}

TEST(TMDBDecode, AWholeNumberWrittenAsAFractionIsTakenAndAnyOtherFractionIsNot) {
    EXPECT_EQ(decode<TMDBMovie>(viewOf(R"({"id":12.0,"title":"x","runtime":9e1})")).runtime, 90);
    EXPECT_EQ(failure<TMDBMovie>(R"({"id":12,"title":"x","runtime":90.5})"),
              unreadable + "\"runtime\" is not a whole number");
}

TEST(TMDBDecode, ANumberBeyondItsFieldFails) {
    EXPECT_EQ(decode<TMDBMovie>(viewOf(R"({"id":9223372036854775807,"title":"x"})")).id,
              9223372036854775807);
    for (const char* number : {"9223372036854775808", "1e300", "-1e300", "1e16"}) {
        EXPECT_EQ(failure<TMDBMovie>(R"({"title":"x","id":)" + std::string(number) + "}"),
                  unreadable + "\"id\" is not a whole number")
            << number;
    }
    EXPECT_EQ(failure<TMDBMovie>(R"({"id":1,"title":"x","runtime":4294967296})"),
              unreadable + "\"runtime\" is not a whole number");
}

TEST(TMDBDecode, WhatIsNotJsonFails) {
    for (const char* text : {"", "<html><body>Bad gateway</body></html>", R"({"id":1,"tit)",
                             "{\"id\":1,\"title\":\"\xff\"}", "\xef\xbb", "nul", "{} {}"}) {
        EXPECT_EQ(failure<TMDBMovie>(text), unreadable + "it isn't JSON") << text;
    }
}

TEST(TMDBDecode, NestingBeyondAllReasonFailsBeforeAnythingIsBuilt) {
    const std::string deep(1'000'000, '[');
    EXPECT_EQ(failure<TMDBMovie>(deep), unreadable + "it nests too deep");
    EXPECT_EQ(failure<TMDBMovie>(R"({"id":)" + deep), unreadable + "it nests too deep");
    // Brackets in a text are text.
    EXPECT_EQ(decode<TMDBMovie>(viewOf(R"({"id":1,"title":"\")" + std::string(100, '[') + R"("})"))
                  .title.size(),
              101U);
}

TEST(TMDBDecode, MegabytesOfAnAnswerDecode) {
    std::string json = R"({"results":[)";
    for (int i = 0; i < 20000; i++)
        json += R"({"id":1,"name":"x","overview":")" + std::string(200, 'o') + R"("},)";
    json.back() = ']';
    EXPECT_EQ(decode<SearchResponse>(viewOf(json + "}")).results.size(), 20000U);
}

TEST(TMDBDecode, UnknownKeysAreIgnoredAtEveryLevel) {
    const auto hit = decode<SearchResponse>(
        viewOf(R"({"page":1,"results":[{"id":1,"adult":false,"genre_ids":[1,[2]]}],"total":9})"));
    EXPECT_EQ(hit.results.at(0).id, 1);
}

TEST(TMDBRecords, AHitsYearIsThatOfItsReleaseElseOfItsFirstAirDate) {
    TMDBSearchHit hit;
    EXPECT_FALSE(hit.year());
    hit.first_air_date = "1999-01-10";
    EXPECT_EQ(hit.year(), 1999);
    hit.release_date = "2005-02-03";
    EXPECT_EQ(hit.year(), 2005);
    hit.release_date = "";
    EXPECT_FALSE(hit.year());
    hit.release_date = "soon";
    EXPECT_FALSE(hit.year());
}

TEST(TMDBRecords, AHitsTitleIsItsTitleElseItsName) {
    TMDBSearchHit hit;
    EXPECT_EQ(hit.anyTitle(), "");
    hit.name = "Show";
    EXPECT_EQ(hit.anyTitle(), "Show");
    hit.title = "Film";
    EXPECT_EQ(hit.anyTitle(), "Film");
}

TEST(TMDBRecords, AFilmsRatingIsTheFirstOneOfTheFirstEntryForTheUnitedStates) {
    TMDBMovieFull film;
    EXPECT_FALSE(film.certification());
    film.release_dates = TMDBMovieFull::Releases{
        {{"GB", {{"15", 3}}}, {"US", {{"", 1}, {"PG-13", 4}, {"R", 3}}}, {"US", {{"G", 3}}}}};
    EXPECT_EQ(film.certification(), "PG-13");
    film.release_dates->results[1].release_dates = {{"", 3}};
    EXPECT_FALSE(film.certification());
}

TEST(TMDBRecords, AShowsRatingIsTheFirstOneForTheUnitedStatesThatIsNotEmpty) {
    TMDBShowFull show;
    EXPECT_FALSE(show.certification());
    show.content_ratings = TMDBShowFull::Ratings{{{"DE", "12"}, {"US", ""}, {"US", "TV-14"}}};
    EXPECT_EQ(show.certification(), "TV-14");
}

}  // namespace
}  // namespace marlet
