#include "sources/tmdb_client.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "foundation/paths.h"
#include "foundation/preferences.h"
#include "support/clock_hands.h"
#include "support/tmdb_stub.h"

namespace marlet {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;
using test::HttpStub;
using Refresh = TMDBClient::Refresh;

class TMDBClientTest : public testing::Test {
protected:
    HttpStub& web() { return tmdb_.web; }
    TMDBClient& client() { return *tmdb_.client; }
    template <typename T>
    T wait(Task<T> task) {
        return Async::wait(std::move(task));
    }
    /// The status of the TMDBError that the task ends in; 0 when it ends otherwise.
    template <typename T>
    int statusOf(Task<T> task) {
        try {
            Async::wait(std::move(task));
        } catch (const TMDBError& error) {
            return error.kind() == TMDBError::Kind::http ? error.status() : 0;
        } catch (const std::exception&) {
        }
        return 0;
    }
    std::string filmJson() const { return R"({"id":12,"title":"Nemo","runtime":100})"; }

    test::ClockHands clock_;
    test::TMDBStub tmdb_;
};

TEST_F(TMDBClientTest, ATokenThatIsAbsentOrEmptyGivesNoClient) {
    EXPECT_EQ(TMDBClient::make(""), nullptr);
    EXPECT_EQ(TMDBClient::make(std::nullopt), nullptr);
    EXPECT_NE(TMDBClient::make("x"), nullptr);
}

TEST_F(TMDBClientTest, ShowsSeasonsAndSearchesAreLists) {
    for (const char* path : {"/tv/456", "/tv/456/season/37", "/search/tv", "/search/movie"})
        EXPECT_TRUE(TMDBClient::isList(path)) << path;
    for (const char* path : {"/tv/456/season/37/episode/3", "/movie/12", "/tv/456/season/1/images",
                             "/tv/x", "/tv/", "/tv/456/season/", "/x/search/tv"})
        EXPECT_FALSE(TMDBClient::isList(path)) << path;
}

TEST_F(TMDBClientTest, ASavedAnswerIsStaleAfterItsAgeOrWithoutADate) {
    const Moment now = *Dates::parseIso8601("2026-11-21T10:15:00Z");
    HttpAnswer saved;
    saved.status = 200;
    const auto stale = [&](const std::string& date) {
        saved.headers = {{"date", date}};
        return TMDBClient::isStale(saved, now, 21600);
    };
    EXPECT_TRUE(stale("Sat, 21 Nov 2026 00:15:00 GMT"));   // 10 hours old
    EXPECT_FALSE(stale("Sat, 21 Nov 2026 09:15:00 GMT"));  // 1 hour old
    EXPECT_FALSE(stale("Sat, 21 Nov 2026 04:15:00 GMT"));  // 6 hours to the second
    EXPECT_TRUE(stale("Sat, 21 Nov 2026 04:14:59 GMT"));
    EXPECT_FALSE(stale("Sat, 21 Nov 2026 12:00:00 GMT"));  // the server's clock is ahead
    EXPECT_TRUE(stale("2026-11-21T10:00:00Z"));
    EXPECT_TRUE(stale(""));
    saved.headers.clear();
    EXPECT_TRUE(TMDBClient::isStale(saved, now, 21600));
    EXPECT_TRUE(TMDBClient::isStale(std::nullopt, now, 21600));
    EXPECT_TRUE(TMDBClient::isStale(HttpAnswer{}, now, 21600));
}

TEST_F(TMDBClientTest, EveryCallAsksItsPathAndQueryInOneSpelling) {
    for (auto* call :
         {+[](TMDBClient& c) { c.searchMovie("Amélie & Co: 2+2", 2001); },
          +[](TMDBClient& c) { c.searchMovie("Nemo"); },
          +[](TMDBClient& c) { c.searchShow("Frasier"); }, +[](TMDBClient& c) { c.movie(12); },
          +[](TMDBClient& c) { c.movieFull(12); }, +[](TMDBClient& c) { c.show(456); },
          +[](TMDBClient& c) { c.showFull(456); }, +[](TMDBClient& c) { c.season(3, 456); },
          +[](TMDBClient& c) {
              c.seasons({1, 0}, 456);
          },
          +[](TMDBClient& c) { c.episodeFull(456, 3, 7); },
          +[](TMDBClient& c) { c.seasonPosters(456, 3); },
          +[](TMDBClient& c) { c.imageData("/p.jpg", "w342"); }}) {
        const auto before = web().count();
        call(client());
        for (int i = 0; i < 5000 && web().count() == before; i++) wait(Async::sleep(1ms));
    }
    EXPECT_EQ(
        web().targets(),
        (std::vector<std::string>{
            "/3/search/movie?include_adult=false&query=Am%C3%A9lie%20%26%20Co%3A%202%2B2&year=2001",
            "/3/search/movie?include_adult=false&query=Nemo",
            "/3/search/tv?query=Frasier",
            "/3/movie/12",
            "/3/movie/12?append_to_response=credits%2Crelease_dates%2Cimages"
            "&include_image_language=en%2Cnull&language=en-US",
            "/3/tv/456",
            "/3/tv/456?append_to_response=content_ratings%2Cimages"
            "&include_image_language=en%2Cnull&language=en-US",
            "/3/tv/456/season/3",
            "/3/tv/456?append_to_response=season%2F1%2Cseason%2F0",
            "/3/tv/456/season/3/episode/7?append_to_response=credits%2Cimages"
            "&include_image_language=en%2Cnull&language=en-US",
            "/3/tv/456/season/3/images?include_image_language=en%2Cnull",
            "/t/p/w342/p.jpg",
        }));
}

TEST_F(TMDBClientTest, TheImageLanguagesAreThePersonsEnglishAndNone) {
    const test::ScopedEnv language("LANGUAGE", "fr:en");
    web().answer("/3/tv/1/season/1/images", "{}");
    EXPECT_TRUE(wait(client().seasonPosters(1, 1)).empty());
    EXPECT_EQ(web().targets().back(),
              "/3/tv/1/season/1/images?include_image_language=fr%2Cen%2Cnull");
}

TEST_F(TMDBClientTest, TheTokenTravelsInAHeaderAndPicturesGoWithoutIt) {
    web().answer("/3/movie/12", filmJson());
    web().answer("/t/p/w342/p.jpg", {{200, "JPEG", {}, "image/jpeg"}});
    wait(client().movie(12));
    EXPECT_EQ(web().seen().back().header("Authorization"), "Bearer token-7");
    EXPECT_EQ(web().seen().back().header("Accept"), "application/json");
    wait(client().imageData("/p.jpg", "w342"));
    EXPECT_EQ(web().seen().back().header("Authorization"), "");
}

TEST_F(TMDBClientTest, NoFileBelowTheCachesHoldsTheToken) {
    web().answer("/3/movie/12", filmJson());
    web().answer("/3/search/tv", R"({"results":[]})");
    wait(client().movie(12));
    wait(client().searchShow("x"));
    int files = 0;
    for (const auto& entry : fs::recursive_directory_iterator(Paths::cachesDir())) {
        EXPECT_EQ(entry.path().string().find("token-7"), std::string::npos);
        if (!entry.is_regular_file()) continue;
        files++;
        EXPECT_EQ(textOf(test::readFile(entry.path())).find("token-7"), std::string::npos);
    }
    EXPECT_EQ(files, 2);
}

TEST_F(TMDBClientTest, AChangedTokenFindsTheSameAnswers) {
    web().answer("/3/movie/12", filmJson());
    wait(client().movie(12));
    EXPECT_EQ(wait(tmdb_.make("another")->movie(12)).title, "Nemo");
    EXPECT_EQ(web().count(), 1U);
}

TEST_F(TMDBClientTest, FilmsEpisodesAndPicturesAreServedFromTheCacheForEver) {
    const std::string old = HttpStub::dateBefore(86400 * 365);
    for (const char* path : {"/3/movie/12", "/3/tv/1/season/1/episode/1"}) {
        HttpStub::Reply reply{200, R"({"id":12,"title":"x","episode_number":1,"name":"y"})", {}};
        reply.headers = {{"Date", old}};
        reply.dated = false;
        web().answer(path, {reply});
    }
    HttpStub::Reply picture{200, "JPEG", {}, "image/jpeg"};
    picture.dated = false;
    web().answer("/t/p/original/p.jpg", {picture});
    for (int i = 0; i < 2; i++) {
        wait(tmdb_.make()->movie(12));
        wait(tmdb_.make()->episodeFull(1, 1, 1));
        EXPECT_EQ(textOf(wait(tmdb_.make()->imageData("/p.jpg", "original"))), "JPEG");
    }
    EXPECT_EQ(web().count(), 3U);
}

TEST_F(TMDBClientTest, AShowIsAskedForAgainWhenItsAnswerIsTenHoursOldAndNotAfterOne) {
    web().answer("/3/tv/1", R"({"id":1,"name":"x"})");
    wait(client().show(1));
    clock_.elapsed = 1h;
    wait(client().show(1));
    EXPECT_EQ(web().count(), 1U);
    clock_.elapsed = 10h;
    wait(client().show(1));
    EXPECT_EQ(web().count(), 2U);
}

TEST_F(TMDBClientTest, ASearchWhoseAnswerHadNoDateIsAskedAgain) {
    HttpStub::Reply undated{200, R"({"results":[]})", {}};
    undated.dated = false;
    web().answer("/3/search/tv", {undated});
    wait(client().searchShow("x"));
    wait(client().searchShow("x"));
    EXPECT_EQ(web().count(), 2U);
}

TEST_F(TMDBClientTest, ARefreshPassesTheCacheByAndKeepsWhatItGets) {
    web().answer("/3/movie/12", {{200, filmJson(), {}}, {200, R"({"id":12,"title":"New"})", {}}});
    wait(client().movie(12));
    EXPECT_EQ(wait(tmdb_.make("t", Refresh::Yes)->movie(12)).title, "New");
    EXPECT_EQ(wait(tmdb_.make()->movie(12)).title, "New");
    EXPECT_EQ(web().count(), 2U);
}

TEST_F(TMDBClientTest, ARateLimitIsWaitedOutOneTwoAndThreeSeconds) {
    web().answer("/3/movie/12",
                 {{429, "", {}}, {429, "", {}}, {429, "", {}}, {200, filmJson(), {}}});
    EXPECT_EQ(wait(client().movie(12)).title, "Nemo");
    EXPECT_EQ(clock_.slept, (std::vector<std::chrono::milliseconds>{1s, 2s, 3s}));
}

TEST_F(TMDBClientTest, FourRateLimitsInARowTakeSixSecondsAndEndInTheFailure) {
    web().answer("/3/movie/12", {{429, "", {{"Retry-After", "90"}}}});
    EXPECT_EQ(statusOf(client().movie(12)), 429);
    EXPECT_EQ(clock_.total(), 6s);
    EXPECT_EQ(web().count(), 4U);
}

TEST_F(TMDBClientTest, OtherStatusesFailAtOnceWithTheirNumber) {
    for (const int status : {401, 404, 500, 503, 204}) {
        web().answer("/3/movie/12", {{status, "<html>", {}}});
        EXPECT_EQ(statusOf(client().movie(12)), status);
    }
    EXPECT_TRUE(clock_.slept.empty());
    EXPECT_EQ(web().count(), 5U);
}

TEST_F(TMDBClientTest, TheFailuresSayWhatHappened) {
    EXPECT_EQ(TMDBError::http(401).description(), "TMDB answered with an error (401)");
    EXPECT_EQ(TMDBError::noKey().description(), "There is no TMDB key");
    EXPECT_EQ(TMDBError::badResponse().description(), "TMDB's answer isn't one that can be used");
    EXPECT_EQ(TMDBError::noKey().kind(), TMDBError::Kind::noKey);
}

TEST_F(TMDBClientTest, AnAnswerThatDoesNotDecodeFailsAndIsNotKept) {
    for (const char* body : {"<html>sign in here</html>", R"({"id":12,"ti)", R"({"id":12})", ""}) {
        web().answer("/3/movie/12", {{200, body, {}}, {200, filmJson(), {}}});
        auto fresh = tmdb_.make("t", Refresh::Yes);
        EXPECT_THROW(wait(fresh->movie(12)), MFError) << body;
        EXPECT_EQ(wait(tmdb_.make()->movie(12)).title, "Nemo") << body;
    }
}

TEST_F(TMDBClientTest, ALineThatIsDownIsATransportError) {
    const test::ScopedEnv nobody("MARLET_TMDB_API", "http://127.0.0.1:1/3");
    EXPECT_THROW(wait(client().movie(12)), TransportError);
}

TEST_F(TMDBClientTest, ASlashBehindTheRootMakesNoDifference) {
    const test::ScopedEnv root("MARLET_TMDB_API", web().root() + "/3/");
    web().answer("/3/movie/12", filmJson());
    EXPECT_EQ(wait(client().movie(12)).runtime, 100);
}

TEST_F(TMDBClientTest, FortyFiveSeasonsAreThreeRequestsOfTwentyTwentyAndFive) {
    web().answer("/3/tv/9", R"({"id":9,"season/1":{"season_number":1,"episodes":[]}})");
    std::vector<int> numbers;
    for (int i = 1; i <= 45; i++) numbers.push_back(i);
    EXPECT_EQ(wait(client().seasons(numbers, 9)).size(), 1U);
    std::vector<long> appended;
    for (const std::string& target : web().targets()) {
        long count = 0;
        for (std::size_t at = target.find("season%2F"); at != std::string::npos;
             at = target.find("season%2F", at + 1))
            count++;
        appended.push_back(count);
    }
    EXPECT_EQ(appended, (std::vector<long>{20, 20, 5}));
}

TEST_F(TMDBClientTest, NoSeasonsAreNoRequest) {
    EXPECT_TRUE(wait(client().seasons({}, 9)).empty());
    EXPECT_EQ(web().count(), 0U);
}

TEST_F(TMDBClientTest, OfASeasonInTwoAnswersTheLaterWins) {
    std::vector<int> numbers(21, 5);
    web().answer(
        "/3/tv/9",
        {{200, R"({"season/5":{"season_number":5,"poster_path":"/1","episodes":[]}})", {}},
         {200, R"({"season/5":{"season_number":5,"poster_path":"/2","episodes":[]}})", {}}});
    EXPECT_EQ(wait(client().seasons(numbers, 9)).at(5).poster_path, "/2");
}

TEST_F(TMDBClientTest, AFailingRequestForSeasonsFailsTheCall) {
    std::vector<int> numbers(21, 5);
    web().answer("/3/tv/9", {{200, "{}", {}}, {500, "", {}}});
    EXPECT_EQ(statusOf(client().seasons(numbers, 9)), 500);
}

TEST_F(TMDBClientTest, APicturesAddressIsMadeOfRootSizeAndPath) {
    EXPECT_EQ(ImageRef::url("/p.jpg", "w780"), web().root() + "/t/p/w780/p.jpg");
    EXPECT_EQ(ImageRef::url("https://is1.mzstatic.com/a.jpg", "w780"),
              "https://is1.mzstatic.com/a.jpg");
    const test::ScopedEnv usual("MARLET_TMDB_IMAGES", "");
    EXPECT_EQ(ImageRef::url("/p.jpg", "original"), "https://image.tmdb.org/t/p/original/p.jpg");
}

TEST_F(TMDBClientTest, APictureWithoutAnAddressIsABadResponse) {
    for (const char* path : {"http", "http://", "httpx://a/b", "/a b\n.jpg", "http://[x/p.jpg"}) {
        try {
            wait(client().imageData(path, "w185"));
            ADD_FAILURE() << path;
        } catch (const TMDBError& error) {
            EXPECT_EQ(error.kind(), TMDBError::Kind::badResponse) << path;
        }
    }
    EXPECT_EQ(web().count(), 0U);
}

TEST_F(TMDBClientTest, APictureIsNotRetried) {
    web().answer("/t/p/w185/p.jpg", {{429, "", {}}});
    EXPECT_EQ(statusOf(client().imageData("/p.jpg", "w185")), 429);
    EXPECT_EQ(web().count(), 1U);
}

TEST_F(TMDBClientTest, AnswersOfAnOlderBuildAreClearedOnce) {
    web().answer("/3/movie/12", filmJson());
    wait(client().movie(12));
    EXPECT_EQ(Preferences::current().boolean("tmdbCacheKeyless"), true);
    wait(tmdb_.make()->movie(12));
    EXPECT_EQ(web().count(), 1U);
    Preferences::current().remove("tmdbCacheKeyless");
    wait(tmdb_.make()->movie(12));
    EXPECT_EQ(web().count(), 2U);
    EXPECT_EQ(Preferences::current().boolean("tmdbCacheKeyless"), true);
}

TEST_F(TMDBClientTest, ACallOutlivesItsClient) {
    web().answer("/3/movie/12", filmJson());
    auto own = tmdb_.make();
    auto task = own->movie(12);
    own.reset();
    EXPECT_EQ(wait(std::move(task)).title, "Nemo");
}

class TMDBCancelTest : public testing::Test {
protected:
    test::TMDBStub tmdb_;
};

TEST_F(TMDBCancelTest, ACancelDuringTheWaitOfARetryEndsTheCall) {
    tmdb_.web.answer("/3/movie/12", {{429, "", {}}});
    CancelToken cancel;
    auto task = tmdb_.make("t", Refresh::No, cancel)->movie(12);
    for (int i = 0; i < 5000 && tmdb_.web.count() == 0; i++) Async::wait(Async::sleep(1ms));
    Async::wait(Async::sleep(20ms));
    cancel.cancel();
    EXPECT_TRUE(task.isReady());
    EXPECT_THROW(Async::wait(std::move(task)), CancelError);
    EXPECT_EQ(tmdb_.web.count(), 1U);
}

}  // namespace
}  // namespace marlet
