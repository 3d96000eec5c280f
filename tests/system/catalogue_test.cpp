#include "support/catalogue.h"

#include <gtest/gtest.h>
#include <signal.h>

#include <chrono>
#include <fstream>
#include <functional>
#include <map>
#include <nlohmann/json.hpp>
#include <optional>
#include <set>
#include <string>
#include <thread>

#include "foundation/bytes.h"
#include "support/process.h"
#include "support/temp_folder.h"

namespace marlet::test {
namespace {

using nlohmann::json;

class CatalogueTest : public testing::Test {
protected:
    json ask(const std::string& target) const {
        const HttpAnswer answer = server.get(target);
        EXPECT_EQ(answer.status, 200) << target;
        return json::parse(answer.body);
    }
    /// The years of a film search's hits, in their order.
    std::vector<std::string> years(const std::string& query) const {
        std::vector<std::string> out;
        const json answer = ask("/3/search/movie?include_adult=false&query=" + query);
        for (const json& hit : answer.at("results"))
            out.push_back(hit["release_date"].get<std::string>().substr(0, 4));
        return out;
    }
    json film(const std::string& query) const {
        const json results = ask("/3/search/movie?query=" + query).at("results");
        return ask("/3/movie/" + results.at(0).at("id").dump() +
                   "?append_to_response=credits,release_dates,images");
    }

    CatalogueServer server;
};

using Years = std::vector<std::string>;

TEST_F(CatalogueTest, RemakesOfOneTitleAreFoundTogetherTheMostPopularFirst) {
    EXPECT_EQ(years("Dr.%20Jekyll%20and%20Mr.%20Hyde"), (Years{"1920", "1912", "1913"}));
    EXPECT_EQ(years("alice%20in%20wonderland"), (Years{"1903", "1915"}));
}

TEST_F(CatalogueTest, AYearLeavesOnlyTheFilmsOfThatYear) {
    EXPECT_EQ(years("Dr.%20Jekyll%20and%20Mr.%20Hyde&year=1912"), Years{"1912"});
    EXPECT_EQ(years("Sintel&year=1999"), Years{});
}

TEST_F(CatalogueTest, CaseAccentsAndPunctuationDoNotMatterToASearch) {
    EXPECT_EQ(years("haxan"), Years{"1922"});
    EXPECT_EQ(years("H%C3%84XAN"), Years{"1922"});
    EXPECT_EQ(years("doa"), Years{"1950"});
    EXPECT_EQ(years("gullivers+travels"), Years{"1939"});
    EXPECT_EQ(years("nosferatu"), Years{"1922"});
    EXPECT_EQ(years("the%20lodger%20%20a%20story"), Years{"1927"});
}

TEST_F(CatalogueTest, NoWordsFindNothingAndAMissingQueryIsRefused) {
    EXPECT_EQ(years(""), Years{});
    EXPECT_EQ(years("zzzz"), Years{});
    EXPECT_EQ(server.get("/3/search/movie").status, 422);
}

TEST_F(CatalogueTest, AFilmHasTheFieldsThatAWriterOfDetailsNeeds) {
    const json film = this->film("Night%20of%20the%20Living%20Dead");
    EXPECT_EQ(film.at("title"), "Night of the Living Dead");
    EXPECT_EQ(film.at("release_date"), "1968-10-01");
    EXPECT_EQ(film.at("runtime"), 96);
    EXPECT_TRUE(film.at("overview").is_string());
    EXPECT_EQ(film.at("genres").at(0).at("name"), "Horror");
    EXPECT_TRUE(film.at("credits").at("cast").at(0).contains("order"));
    EXPECT_EQ(film.at("credits").at("crew").at(0).at("job"), "Director");
    EXPECT_EQ(film.at("credits").at("crew").at(0).at("name"), "George A. Romero");
    EXPECT_TRUE(film.contains("belongs_to_collection")) << "keys beyond the needed ones are there";
}

TEST_F(CatalogueTest, TheRatingStandsBehindAnEmptyOneOfTheSameCountry) {
    const json releases = film("charade").at("release_dates").at("results").at(0);
    EXPECT_EQ(releases.at("iso_3166_1"), "US");
    EXPECT_EQ(releases.at("release_dates").at(0).at("certification"), "");
    EXPECT_EQ(releases.at("release_dates").at(1).at("certification"), "NR");
}

TEST_F(CatalogueTest, NothingIsAppendedThatWasNotAskedFor) {
    const json film = ask("/3/movie/196801");
    EXPECT_FALSE(film.contains("credits"));
    EXPECT_FALSE(film.contains("images"));
}

TEST_F(CatalogueTest, AnEntryWithoutPicturesHasNullPathsAndEmptyLists) {
    const json film = ask("/3/movie/191301?append_to_response=images");
    EXPECT_TRUE(film.at("poster_path").is_null());
    EXPECT_TRUE(film.at("backdrop_path").is_null());
    EXPECT_TRUE(film.at("images").at("posters").empty());
}

TEST_F(CatalogueTest, ImageLanguagesFilterTheListAndNullStandsForPicturesWithoutWords) {
    const auto languages = [this](const std::string& query) {
        std::vector<std::string> out;
        const json film = ask("/3/movie/192201?append_to_response=images" + query);
        for (const json& image : film.at("images").at("posters"))
            out.push_back(image["iso_639_1"].is_null() ? "null" : image["iso_639_1"]);
        return out;
    };
    EXPECT_EQ(languages(""), (Years{"en", "null", "de"}));
    EXPECT_EQ(languages("&language=en-US"), Years{"en"});
    EXPECT_EQ(languages("&language=en-US&include_image_language=en,null"), (Years{"en", "null"}));
    EXPECT_EQ(languages("&include_image_language=de"), Years{"de"});
}

TEST_F(CatalogueTest, TwoShowsOfOneNameAreFoundWithTheirYears) {
    const json hits = ask("/3/search/tv?query=the%20tin%20observatory").at("results");
    ASSERT_EQ(hits.size(), 2U);
    EXPECT_EQ(hits.at(0).at("first_air_date"), "1987-02-03");
    EXPECT_EQ(hits.at(1).at("first_air_date"), "2017-09-14");
    EXPECT_EQ(hits.at(0).at("name"), hits.at(1).at("name"));
}

TEST_F(CatalogueTest, SeasonsAreAppendedUnderTheirNumberAndUnknownOnesAreLeftOut) {
    const json show = ask("/3/tv/201750?append_to_response=season/0,season/2,season/9");
    EXPECT_EQ(show.at("number_of_seasons"), 3);
    EXPECT_EQ(show.at("season/0").at("episodes").size(), 3U);
    EXPECT_EQ(show.at("season/2").at("season_number"), 2);
    EXPECT_FALSE(show.contains("season/9"));
    EXPECT_EQ(show.at("season/2"), ask("/3/tv/201750/season/2"));
}

TEST_F(CatalogueTest, MoreThanTwentyAppendedAnswersAreRefused) {
    std::string list = "season/0";
    for (int i = 1; i < 20; i++) list += ",season/" + std::to_string(i);
    EXPECT_EQ(server.get("/3/tv/201750?append_to_response=" + list).status, 200);
    EXPECT_EQ(server.get("/3/tv/201750?append_to_response=" + list + ",season/20").status, 400);
}

TEST_F(CatalogueTest, ATwoPartStoryHasTwoEpisodesOfTwentyTwoMinutes) {
    const json episodes = ask("/3/tv/201750/season/2").at("episodes");
    EXPECT_EQ(episodes.at(3).at("name"), "A Comet for Mrs. Pell (1)");
    EXPECT_EQ(episodes.at(4).at("name"), "A Comet for Mrs. Pell (2)");
    EXPECT_EQ(episodes.at(3).at("runtime"), 22);
    EXPECT_EQ(episodes.at(4).at("runtime"), 22);
}

TEST_F(CatalogueTest, AnEpisodeNamesItsPeopleAtTheTopAndInItsCredits) {
    const json episode =
        ask("/3/tv/201750/season/1/episode/1?append_to_response=credits,images&language=en-US"
            "&include_image_language=en,null");
    EXPECT_EQ(episode.at("name"), "First Light");
    EXPECT_EQ(episode.at("season_number"), 1);
    EXPECT_EQ(episode.at("air_date"), "2017-09-14");
    EXPECT_EQ(episode.at("crew").at(0).at("job"), "Director");
    EXPECT_EQ(episode.at("guest_stars").at(0).at("name"), "Hester Vane");
    EXPECT_EQ(episode.at("credits").at("cast").at(0).at("name"), "Orla Fennimore");
    EXPECT_EQ(episode.at("images").at("stills").size(), 2U);
}

TEST_F(CatalogueTest, AShowsRatingIsOneOfSeveralCountries) {
    const json ratings =
        ask("/3/tv/201750?append_to_response=content_ratings").at("content_ratings").at("results");
    ASSERT_EQ(ratings.size(), 2U);
    EXPECT_EQ(ratings.at(1).at("iso_3166_1"), "US");
    EXPECT_EQ(ratings.at(1).at("rating"), "TV-PG");
}

TEST_F(CatalogueTest, WhatIsUnknownIsRefusedWithTheServicesOwnNumber) {
    for (const char* target :
         {"/3/movie/1", "/3/tv/1", "/3/tv/201750/season/9", "/3/tv/201750/season/1/episode/99",
          "/3/nonsense", "/", "/3/movie/99999999999999999999999"}) {
        const HttpAnswer answer = server.get(target);
        EXPECT_EQ(answer.status, 404) << target;
        EXPECT_EQ(json::parse(answer.body).at("status_code"), 34) << target;
        EXPECT_EQ(json::parse(answer.body).at("success"), false) << target;
    }
}

TEST_F(CatalogueTest, EveryAnswerCarriesADateInTheFormOfHttp) {
    const std::string date = server.get("/3/movie/192201").date;
    ASSERT_EQ(date.size(), 29U) << date;
    EXPECT_EQ(date.substr(3, 2), ", ");
    EXPECT_EQ(date.substr(26), "GMT");
}

struct Size {
    unsigned width;
    unsigned height;
    bool operator==(const Size&) const = default;
};

/// The size in a JPEG's frame header (ITU-T T.81, B.2.2), or nothing.
std::optional<Size> jpegSize(const std::string& file) {
    const ByteView bytes = viewOf(file);
    if (BigEndian::u16(bytes, 0) != 0xFFD8) return std::nullopt;
    for (std::int64_t at = 2; BigEndian::u16(bytes, at) > 0xFF00;) {
        const unsigned marker = BigEndian::u16(bytes, at);
        if (marker >= 0xFFC0 && marker <= 0xFFC2)
            return Size{BigEndian::u16(bytes, at + 7), BigEndian::u16(bytes, at + 5)};
        at += 2 + BigEndian::u16(bytes, at + 2);
    }
    return std::nullopt;
}

/// The size in a PNG's IHDR (ISO/IEC 15948, 11.2.2), or nothing.
std::optional<Size> pngSize(const std::string& file) {
    const ByteView bytes = viewOf(file);
    if (BigEndian::u64(bytes, 0) != 0x89504E470D0A1A0A) return std::nullopt;
    return Size{BigEndian::u32(bytes, 16), BigEndian::u32(bytes, 20)};
}

TEST_F(CatalogueTest, APosterComesInEveryAskedSizeAsAJpegOfTwoToThree) {
    const std::map<std::string, Size> sizes = {{"w92", {92, 138}},        {"w185", {185, 278}},
                                               {"w300", {300, 450}},      {"w342", {342, 513}},
                                               {"w780", {780, 1170}},     {"w1280", {1280, 1920}},
                                               {"original", {2000, 3000}}};
    for (const auto& [name, size] : sizes) {
        const HttpAnswer answer = server.get("/t/p/" + name + "/film-192201-poster-1.jpg");
        EXPECT_EQ(answer.type, "image/jpeg");
        EXPECT_EQ(jpegSize(answer.body), size) << name;
    }
}

TEST_F(CatalogueTest, ABackdropIsSixteenToNine) {
    EXPECT_EQ(jpegSize(server.get("/t/p/original/film-192201-backdrop-1.jpg").body),
              (Size{1920, 1080}));
    EXPECT_EQ(jpegSize(server.get("/t/p/w1280/film-192201-backdrop-1.jpg").body),
              (Size{1280, 720}));
}

TEST_F(CatalogueTest, SomeStillsAreTruePngFiles) {
    const json episode = ask("/3/tv/201750/season/1/episode/3");
    const std::string path = episode.at("still_path");
    ASSERT_TRUE(path.ends_with(".png")) << path;
    const HttpAnswer answer = server.get("/t/p/w300" + path);
    EXPECT_EQ(answer.type, "image/png");
    EXPECT_EQ(pngSize(answer.body), (Size{300, 169}));
}

TEST_F(CatalogueTest, EveryPictureThatIsListedIsThere) {
    const json show = ask("/3/tv/201750?append_to_response=images");
    for (const json& image : show.at("images").at("posters"))
        EXPECT_EQ(server.get("/t/p/w92" + image.at("file_path").get<std::string>()).status, 200);
    const json season = ask("/3/tv/201750/season/2/images");
    for (const json& image : season.at("posters"))
        EXPECT_EQ(server.get("/t/p/w92" + image.at("file_path").get<std::string>()).status, 200);
}

TEST_F(CatalogueTest, APictureIsTheSameAtEachRunAndUnlikeAnyOther) {
    const CatalogueServer other;
    const auto poster = [](const CatalogueServer& from, const std::string& path) {
        return from.get("/t/p/w185" + path).body;
    };
    EXPECT_EQ(poster(server, "/film-192201-poster-1.jpg"),
              poster(other, "/film-192201-poster-1.jpg"));
    EXPECT_NE(poster(server, "/film-192201-poster-1.jpg"),
              poster(server, "/film-192501-poster-1.jpg"));
}

TEST_F(CatalogueTest, UnknownPicturesAndSizesAreNotFound) {
    EXPECT_EQ(server.get("/t/p/w342/nothing.jpg").status, 404);
    EXPECT_EQ(server.get("/t/p/w343/film-192201-poster-1.jpg").status, 404);
    EXPECT_EQ(server.get("/t/p/w342/film-191301-poster-1.jpg").status, 404);
}

TEST(CatalogueServerTest, ARequiredTokenIsAskedOfTheJsonButNotOfPictures) {
    const CatalogueServer server({"--require-token", "secret"});
    EXPECT_EQ(server.get("/3/movie/192201").status, 401);
    EXPECT_EQ(json::parse(server.get("/3/movie/192201", "wrong").body).at("status_code"), 7);
    EXPECT_EQ(server.get("/3/movie/192201", "secret").status, 200);
    EXPECT_EQ(server.get("/t/p/w92/film-192201-poster-1.jpg").status, 200);
    EXPECT_EQ(server.totalWithToken(), 2);
}

TEST_F(CatalogueTest, AStatusIsGivenAsOftenAsTold) {
    server.fault(R"({"path": "^/3/movie/", "status": 429, "times": 2})");
    EXPECT_EQ(server.get("/3/tv/201750").status, 200) << "another path is not hit";
    EXPECT_EQ(server.get("/3/movie/192201").status, 429);
    EXPECT_EQ(server.get("/3/movie/192201").status, 429);
    EXPECT_EQ(server.get("/3/movie/192201").status, 200);
}

TEST_F(CatalogueTest, AFaultCanWaitForALaterRequest) {
    server.fault(R"({"after": 1, "status": 500})");
    EXPECT_EQ(server.get("/3/movie/192201").status, 200);
    EXPECT_EQ(server.get("/3/movie/192201").status, 500);
    EXPECT_EQ(server.get("/3/movie/192201").status, 200);
}

TEST_F(CatalogueTest, AFaultWithoutAnEndLastsUntilItIsCleared) {
    server.fault(R"({"times": 0, "status": 401})");
    for (int i = 0; i < 5; i++) EXPECT_EQ(server.get("/3/movie/192201").status, 401);
    server.clearFaults();
    EXPECT_EQ(server.get("/3/movie/192201").status, 200);
}

TEST_F(CatalogueTest, AnswersCanBeAPageHalfAnAnswerOrOfWrongTypes) {
    const json whole = ask("/3/movie/192201");
    server.fault(R"({"answer": "html"})");
    const HttpAnswer page = server.get("/3/movie/192201");
    EXPECT_EQ(page.status, 200);
    EXPECT_EQ(page.type, "text/html");
    EXPECT_TRUE(page.body.starts_with("<!DOCTYPE html>"));

    server.fault(R"({"answer": "half"})");
    const HttpAnswer half = server.get("/3/movie/192201");
    EXPECT_EQ(half.status, 200);
    EXPECT_FALSE(json::accept(half.body));
    EXPECT_EQ(half.body, whole.dump().substr(0, whole.dump().size() / 2));

    server.fault(R"({"answer": "types"})");
    const json wrong = ask("/3/movie/192201");
    EXPECT_EQ(wrong.at("id"), "192201");
    EXPECT_TRUE(wrong.at("title").is_number());
}

TEST_F(CatalogueTest, ABodyATypeAndHeadersCanBeSet) {
    server.fault(R"({"body": "{}", "type": "text/plain",
                     "headers": {"Date": "Mon, 01 Jan 2024 00:00:00 GMT"}})");
    const HttpAnswer answer = server.get("/3/movie/192201");
    EXPECT_EQ(answer.body, "{}");
    EXPECT_EQ(answer.type, "text/plain");
    EXPECT_EQ(answer.date, "Mon, 01 Jan 2024 00:00:00 GMT");
    server.fault(R"({"headers": {"Date": null}})");
    EXPECT_EQ(server.get("/3/movie/192201").date, "");
}

TEST_F(CatalogueTest, AConnectionCanBeCutBeforeTheAnswerAndInIt) {
    server.fault(R"({"cut": "before"})");
    EXPECT_EQ(server.get("/3/movie/192201").status, 0);
    server.fault(R"({"cut": "middle"})");
    EXPECT_EQ(server.get("/3/movie/192201").status, 0);
    EXPECT_EQ(server.get("/3/movie/192201").status, 200);
}

TEST_F(CatalogueTest, ALateAnswerIsStillTheTrueOne) {
    server.fault(R"({"delayMs": 30})");
    EXPECT_EQ(ask("/3/movie/192201").at("id"), 192201);
}

TEST_F(CatalogueTest, AMisspeltFaultIsRefused) {
    EXPECT_THROW(server.fault(R"({"statsu": 500})"), std::runtime_error);
    EXPECT_THROW(server.fault(R"({"answer": "maybe"})"), std::runtime_error);
    EXPECT_THROW(server.fault("no JSON"), std::runtime_error);
    EXPECT_EQ(server.get("/3/movie/192201").status, 200);
}

TEST(CatalogueServerTest, AFaultCanStandFromTheStart) {
    const CatalogueServer server({"--fault", R"({"status": 503})"});
    EXPECT_EQ(server.get("/3/movie/192201").status, 503);
    EXPECT_EQ(server.get("/3/movie/192201").status, 200);
}

TEST_F(CatalogueTest, RequestsAreCountedByPathAndByTarget) {
    server.get("/3/movie/192201?b=2");
    server.get("/3/movie/192201");
    server.get("/3/tv/1");
    EXPECT_EQ(server.requestCount("^/3/movie/192201$"), 2);
    EXPECT_EQ(server.targetCount("\\?b=2$"), 1);
    EXPECT_EQ(server.requestCount(""), 3) << "questions about the counts are not counted";
    EXPECT_EQ(server.mostAtOnce(), 1);
    server.resetStats();
    EXPECT_EQ(server.requestCount(""), 0);
}

TEST(CatalogueServerTest, ItsPortFileHoldsThePortAndGoesWhenItEnds) {
    const TempFolder folder;
    const std::filesystem::path file = folder / "port";
    CatalogueServer server({"--port-file", file.string()});
    EXPECT_EQ(std::stoi(textOf(readFile(file))), server.port());
    EXPECT_EQ(server.stop(), 0) << "SIGTERM is a clean end";
    EXPECT_FALSE(std::filesystem::exists(file));
}

TEST(CatalogueServerTest, ItsEnvironmentLeadsEveryServiceToTheLoopback) {
    const CatalogueServer server;
    const std::map<std::string, std::string> environment = server.environment();
    EXPECT_EQ(environment.at("MARLET_TMDB_API"), server.root() + "/3");
    EXPECT_EQ(environment.at("MARLET_TMDB_IMAGES"), server.root());
    EXPECT_TRUE(environment.at("MARLET_APPLE_TV_API").ends_with("/uts/v3/"));
    EXPECT_FALSE(environment.at("MARLET_TMDB_TOKEN").empty());
}

/// Comes back as soon as it holds, or after ten seconds.
bool soon(const std::function<bool()>& holds) {
    for (int i = 0; i < 1000 && !holds(); i++)
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    return holds();
}

TEST(CatalogueServerTest, ItEndsWithTheProgramThatStartedIt) {
    const TempFolder folder;
    const std::filesystem::path file = folder / "port";
    const std::string command = "\"$0\" --parent-watch --port-file \"$1\" & wait";
    Process shell("/bin/sh", {"-c", command, builtProgram("marlet-catalogue"), file});
    ASSERT_TRUE(soon([&] { return std::filesystem::exists(file); }));
    shell.signal(SIGKILL);
    EXPECT_TRUE(soon([&] { return !std::filesystem::exists(file); }));
}

TEST(CatalogueServerTest, ACatalogueThatCannotBeTrueIsNotServed) {
    const TempFolder folder;
    std::filesystem::create_directories(folder / "shows");
    folder.write("films/bad.json", std::string_view(R"([{"id": 1, "title": "T", "language": "en",
        "country": "US", "released": "1920-01-01", "minutes": 900, "genres": [], "popularity": 1,
        "vote": 1, "overview": "", "directors": [], "writers": [], "cast": []}])"));
    EXPECT_THROW(CatalogueServer({"--data", folder.path().string()}), std::runtime_error);
}

TEST(CatalogueServerTest, AnUnknownOptionIsAnError) {
    EXPECT_THROW(CatalogueServer({"--prot", "1"}), std::runtime_error);
}

/// All entries of the sample catalogue's films.
std::vector<json> sampleFilms() {
    std::vector<json> films;
    for (const auto& file :
         std::filesystem::directory_iterator(sourceTree() / "data" / "catalogue" / "films")) {
        std::ifstream in(file.path());
        const json list = json::parse(in);
        films.insert(films.end(), list.begin(), list.end());
    }
    return films;
}

TEST(SampleCatalogue, HasAtLeastThirtyFilmsOfSaneYearsAndLengths) {
    std::set<int> ids;
    for (const json& film : sampleFilms()) {
        const std::string title = film.at("title");
        const int year = std::stoi(film.at("released").get<std::string>());
        EXPECT_TRUE(ids.insert(film.at("id").get<int>()).second) << title;
        EXPECT_TRUE(year >= 1895 && year <= 2025) << title;
        EXPECT_EQ(film.at("id").get<int>() / 100, year) << title;
        EXPECT_TRUE(film.at("minutes") >= 1 && film.at("minutes") <= 300) << title;
        EXPECT_FALSE(film.at("directors").empty()) << title;
        EXPECT_FALSE(film.at("genres").empty()) << title;
        EXPECT_GT(film.at("overview").get<std::string>().size(), 60U) << title;
    }
    EXPECT_GE(ids.size(), 30U);
}

TEST(SampleCatalogue, HasTitlesThatAreHardToReadAndAnOverviewThatMustBeShortened) {
    std::string titles;
    std::size_t longest = 0;
    for (const json& film : sampleFilms()) {
        titles += film.at("title").get<std::string>() + "\n";
        longest = std::max(longest, film.at("overview").get<std::string>().size());
    }
    for (const char* piece : {": ", "'", "ä", "20,000", "D.O.A.", "The ", "!", "-"})
        EXPECT_NE(titles.find(piece), std::string::npos) << piece;
    EXPECT_GT(longest, 255U);
}

TEST(SampleCatalogue, ItsShowHasSpecialsAndThreeSeasons) {
    std::ifstream in(sourceTree() / "data/catalogue/shows/the_tin_observatory_2017.json");
    std::vector<int> numbers;
    const json show = json::parse(in);
    for (const json& season : show.at("seasons")) numbers.push_back(season.at("number"));
    EXPECT_EQ(numbers, (std::vector<int>{0, 1, 2, 3}));
}

}  // namespace
}  // namespace marlet::test
