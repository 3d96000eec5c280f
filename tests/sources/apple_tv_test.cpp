#include "sources/apple_tv.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>

#include "sources/http_session.h"
#include "sources/politeness.h"
#include "sources/source_stub.h"

namespace marlet {
namespace {

using namespace std::chrono_literals;
using test::HttpStub;
using test::SourceStub;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

const std::string heat = R"({"data":{"canvas":{"shelves":[{"items":[
    {"type":"Movie","id":"m1","title":"Heat","releaseDate":818985600000}]}]}}})";

class AppleTVTest : public testing::Test {
protected:
    AppleTVTest() {
        stub.giveKey("k/1:2");
        stub.web.answer("/uts/v3/search", heat);
    }

    std::vector<ExtMovie> search(const std::string& title, CancelToken cancel = {}) {
        return Async::wait(source.searchMovies(title, cancel));
    }
    std::vector<std::string> paths() const {
        std::vector<std::string> list;
        for (const std::string& target : stub.web.targets())
            list.push_back(target.substr(0, target.find('?')));
        return list;
    }
    std::string failure(const std::string& title) {
        try {
            search(title);
        } catch (const MFError& error) {
            return error.description();
        }
        return "(no failure)";
    }
    void turnUntil(const std::function<bool()>& reached) {
        for (int i = 0; i < 20000 && !reached(); i++) Async::wait(Async::sleep(1ms));
        ASSERT_TRUE(reached());
    }
    static ExtShow show(const std::string& id = "s1") {
        ExtShow one;
        one.id = id;
        one.title = "Sheds";
        return one;
    }

    SourceStub stub;
    AppleTVSource source;
};

TEST_F(AppleTVTest, TheFirstRequestAsksForTheKeyAndAllOthersCarryIt) {
    EXPECT_EQ(search("Heat").at(0).title, "Heat");
    search("Ronin");
    EXPECT_THAT(paths(), ElementsAre("/uts/v3/configurations", "/uts/v3/search", "/uts/v3/search"));
    EXPECT_THAT(stub.web.targets(),
                ElementsAre("/uts/v3/configurations?caller=js&locale=en_US&sf=143441&v=82",
                            "/uts/v3/search?caller=js&locale=en_US&pfm=web&searchTerm=Heat&"
                            "sf=143441&utsk=k%2F1%3A2&v=82",
                            "/uts/v3/search?caller=js&locale=en_US&pfm=web&searchTerm=Ronin&"
                            "sf=143441&utsk=k%2F1%3A2&v=82"));
}

TEST_F(AppleTVTest, CountryAndLanguageAreThePersonsOwn) {
    const test::ScopedEnv canada("LC_ALL", "fr_CA.UTF-8");
    search("Heat");
    EXPECT_EQ(SourceStub::item(stub.web.targets().back(), "sf"), "143455");
    EXPECT_EQ(SourceStub::item(stub.web.targets().back(), "locale"), "fr_CA");
}

TEST_F(AppleTVTest, AnAnswerWithoutAKeyIsAFailure) {
    stub.web.answer("/uts/v3/configurations", R"({"data":{}})");
    EXPECT_EQ(failure("Heat"), "Apple TV gave no key");
}

TEST_F(AppleTVTest, TheKeyStandsInNoFileEvenWhenAnAnswerRepeatsIt) {
    stub.web.answer("/uts/v3/search",
                    R"({"next":"/x?utsk=k%2F1%3A2","raw":"k/1:2","e":"k\/1:2",)" + heat.substr(1));
    EXPECT_EQ(search("Heat").size(), 1U);
    const std::string files = SourceStub::cached();
    EXPECT_THAT(files, HasSubstr("Heat"));
    for (const char* form : {"k/1:2", "k%2F1%3A2", "k\\/1:2"})
        EXPECT_THAT(files, Not(HasSubstr(form)));
    EXPECT_EQ(search("Heat").size(), 1U) << "what is kept can still be read";
    EXPECT_EQ(stub.web.count(), 2U);
}

TEST_F(AppleTVTest, ASavedAnswerSparesAllRequestsThatForTheKeyToo) {
    search("Heat");
    AppleTVSource another;
    EXPECT_EQ(Async::wait(another.searchMovies("Heat", {})).size(), 1U);
    EXPECT_EQ(stub.web.count(), 2U);
}

TEST_F(AppleTVTest, ARefreshAsksAgain) {
    search("Heat");
    SourceCache::setNotBefore(std::chrono::system_clock::now() + 1h);
    search("Heat");
    EXPECT_THAT(paths(), ElementsAre("/uts/v3/configurations", "/uts/v3/search", "/uts/v3/search"));
}

TEST_F(AppleTVTest, ASavedAnswerThatWasDamagedIsAskedForAnew) {
    search("Heat");
    for (const auto& entry : std::filesystem::directory_iterator(Paths::sourceCacheDir()))
        test::writeFile(entry.path(), viewOf("half of {"));
    EXPECT_EQ(search("Heat").size(), 1U);
    EXPECT_EQ(stub.web.count(), 3U);
}

TEST_F(AppleTVTest, RequestsLieOneGapApart) {
    for (const char* title : {"A", "B", "C"}) search(title);
    EXPECT_EQ(stub.web.count(), 4U);
    EXPECT_EQ(stub.hands.total(), 3 * Politeness::appleTVGap);
}

TEST_F(AppleTVTest, CallersOfTheSameMomentAskOneAfterTheOtherAndTheKeyOnce) {
    std::vector<Task<std::vector<ExtMovie>>> calls;
    for (const char* title : {"A", "B", "C", "D"}) calls.push_back(source.searchMovies(title, {}));
    for (auto& call : calls) EXPECT_EQ(Async::wait(std::move(call)).size(), 1U);
    EXPECT_EQ(stub.web.count(), 5U);
    EXPECT_EQ(stub.web.mostAtOnce(), 1);
    EXPECT_EQ(stub.hands.total(), 4 * Politeness::appleTVGap);
}

TEST_F(AppleTVTest, WhatIsAskedTwiceAtOnceIsAskedOnce) {
    auto first = source.searchMovies("Heat", {});
    auto second = source.searchMovies("Heat", {});
    EXPECT_EQ(Async::wait(std::move(first)).size(), 1U);
    EXPECT_EQ(Async::wait(std::move(second)).size(), 1U);
    EXPECT_EQ(stub.web.count(), 2U);
}

TEST_F(AppleTVTest, ARefusalFor429IsLeftAloneForAMinuteAndTenAtMost) {
    stub.web.answer("/uts/v3/configurations", {{429, "", {}}});
    std::vector<std::chrono::milliseconds> pauses;
    for (int i = 0; i < 7; i++) {
        const auto before = stub.hands.elapsed;
        EXPECT_EQ(failure("Heat"), "Apple TV answered with an error (429)");
        pauses.push_back(stub.hands.elapsed - before);
    }
    EXPECT_THAT(pauses, ElementsAre(0s, 60s, 120s, 240s, 480s, 600s, 600s));
}

TEST_F(AppleTVTest, AServerErrorIsLeftAloneForAQuarterOfAMinute) {
    stub.web.answer("/uts/v3/configurations", {{503, "", {}}, {500, "", {}}, {502, "", {}}});
    for (int i = 0; i < 3; i++) EXPECT_THAT(failure("Heat"), HasSubstr("(50"));
    EXPECT_EQ(stub.hands.total(), 45s);
}

TEST_F(AppleTVTest, NoAnswerAtAllCountsAsAServerError) {
    HttpStub::Reply cut{200, "{}", {}};
    cut.manner = HttpStub::Manner::Cut;
    stub.web.answer("/uts/v3/configurations", {cut});
    EXPECT_NE(failure("Heat"), "(no failure)");
    EXPECT_EQ(stub.hands.total(), 0s);
    failure("Heat");
    EXPECT_EQ(stub.hands.total(), 15s);
}

TEST_F(AppleTVTest, ASuccessForgetsEarlierFailures) {
    stub.web.answer("/uts/v3/search", {{429, "", {}}, {200, heat, {}}, {429, "", {}}});
    failure("A");
    search("B");
    const auto before = stub.hands.elapsed;
    failure("C");
    failure("D");
    EXPECT_LT(stub.hands.elapsed - before, 61s) << "the first of a new row";
}

TEST_F(AppleTVTest, AnyOtherStatusFailsWithoutAPause) {
    for (const int status : {204, 302, 400, 404}) {
        stub.web.answer("/uts/v3/search", {{status, "", {}}});
        EXPECT_EQ(failure(std::to_string(status)),
                  "Apple TV answered with an error (" + std::to_string(status) + ")");
    }
    EXPECT_EQ(stub.hands.total(), 4 * Politeness::appleTVGap);
    EXPECT_THAT(SourceStub::cached(), IsEmpty());
}

TEST_F(AppleTVTest, AKeyThatIsRefusedIsAskedForAnew) {
    stub.web.answer("/uts/v3/search", {{403, "", {}}, {200, heat, {}}});
    failure("Heat");
    stub.giveKey("k2");
    search("Heat");
    EXPECT_EQ(SourceStub::item(stub.web.targets().back(), "utsk"), "k2");
}

TEST_F(AppleTVTest, ARedirectToAnotherHostIsNotFollowedAndNeverSeesTheKey) {
    HttpStub other;
    other.answer("/uts/v3/search", heat);
    const std::string there = other.root() + "/uts/v3/search?utsk=k%2F1%3A2";
    stub.web.answer("/uts/v3/search", {{302, "", {{"Location", there}}}});
    EXPECT_EQ(failure("Heat"), "Apple TV answered with an error (302)");
    EXPECT_EQ(other.count(), 0U);
}

TEST_F(AppleTVTest, ARedirectOnItsOwnHostIsFollowed) {
    stub.web.answer("/uts/v3/search", {{307, "", {{"Location", "/elsewhere"}}}});
    stub.web.answer("/elsewhere", heat);
    EXPECT_EQ(search("Heat").size(), 1U);
}

TEST_F(AppleTVTest, WhatIsNoJsonIsAFailureAndNotKept) {
    for (const std::string& body :
         {std::string("<html>"), heat.substr(0, heat.size() / 2), std::string(),
          std::string(2000000, '['), std::string("\xFF\xFE{}")}) {
        stub.web.answer("/uts/v3/search", body);
        EXPECT_THAT(failure("Heat"), StartsWith("The database's answer can't be read"));
    }
    EXPECT_THAT(SourceStub::cached(), IsEmpty());
}

TEST_F(AppleTVTest, AnEndlessAnswerIsCutOff) {
    HttpStub::Reply endless;
    endless.manner = HttpStub::Manner::Endless;
    endless.type = "image/jpeg";  // or the stub would compress it
    stub.web.answer("/uts/v3/search", {endless});
    EXPECT_EQ(failure("Heat"), "the answer is too large");
}

TEST_F(AppleTVTest, AFilmIsFilledInFromItsOwnRecord) {
    ExtMovie found;
    found.id = "m/1";
    found.title = "Heat";
    found.year = 1995;
    found.poster = "https://a/p.jpg";
    found.wide = {"https://a/w.jpg"};
    found.tall = {"https://a/t.jpg"};
    stub.web.answer("/uts/v3/movies/m/1",
                    R"({"data":{"content":{"title":"Heat","duration":10230,"images":{"p":{
                        "url":"https://r/{w}x{h}.{f}","width":2000,"height":3000}}}}})");
    const ExtMovie filled = Async::wait(source.movieDetails(found, {}));
    EXPECT_EQ(filled.minutes, 171);
    EXPECT_EQ(filled.year, 1995);
    EXPECT_EQ(filled.poster, "https://a/p.jpg");
    EXPECT_THAT(filled.wide, ElementsAre("https://a/w.jpg")) << "the record offers none";
    EXPECT_THAT(filled.tall, ElementsAre("https://r/1600x2400.jpg")) << "the record's own";
    EXPECT_THAT(stub.web.targets().back(), StartsWith("/uts/v3/movies/m%2F1?"));
    stub.web.answer("/uts/v3/movies/m/2", R"({"data":{}})");
    found.id = "m/2";
    EXPECT_THROW(Async::wait(source.movieDetails(found, {})), SourceError);
}

const std::string firstPage = R"({"data":{"seasonSummaries":[
    {"seasonNumber":1,"episodeCount":13},{"seasonNumber":2,"episodeCount":22},
    {"seasonNumber":37,"episodeCount":18}],
    "episodes":[{"seasonNumber":1,"episodeNumber":1,"title":"One"},
                {"seasonNumber":38,"episodeNumber":1,"title":"New"}]}})";

TEST_F(AppleTVTest, ASeasonsEpisodesAreAskedForByTheirPlaceInTheLongRun) {
    stub.web.answer("/uts/v3/shows/s1/episodes", {{200, firstPage, {}},
                                                  {200,
                                                   R"({"data":{"episodes":[
                         {"seasonNumber":37,"episodeNumber":17,"title":"Simpsley"},
                         {"seasonNumber":36,"episodeNumber":18,"title":"Other"}]}})",
                                                   {}}});
    const auto episodes = Async::wait(source.episodes(37, show(), {}));
    ASSERT_EQ(episodes.size(), 1U);
    EXPECT_EQ(episodes[0].title, "Simpsley");
    EXPECT_EQ(SourceStub::item(stub.web.targets().back(), "nextToken"), "35%3A18");
    EXPECT_EQ(Async::wait(source.seasons(show(), {})), (std::vector<int>{1, 2, 37}));
    EXPECT_EQ(stub.web.count(), 3U);
}

TEST_F(AppleTVTest, ASeasonWithoutACountIsLookedForOnTheFirstPage) {
    stub.web.answer("/uts/v3/shows/s1/episodes", firstPage);
    EXPECT_EQ(Async::wait(source.episodes(38, show(), {})).at(0).title, "New");
    EXPECT_EQ(Async::wait(source.episodes(9, show(), {})).size(), 0U);
    EXPECT_EQ(stub.web.count(), 2U) << "the page that told the seasons";
}

TEST_F(AppleTVTest, WithoutSummariesTheFirstPageIsReadToo) {
    stub.web.answer(
        "/uts/v3/shows/s1/episodes",
        R"({"data":{"episodes":[{"seasonNumber":1,"episodeNumber":1,"title":"One"}]}})");
    EXPECT_EQ(Async::wait(source.episodes(1, show(), {})).at(0).title, "One");
    EXPECT_THAT(Async::wait(source.seasons(show(), {})), IsEmpty());
}

TEST_F(AppleTVTest, AShowsDetailsComeFromItsOwnRecord) {
    stub.web.answer("/uts/v3/shows/s1", R"({"data":{"content":{"description":"Huts."}}})");
    EXPECT_EQ(Async::wait(source.showInfo(show(), {})).overview, "Huts.");
    stub.web.answer("/uts/v3/shows/s2", "7");
    EXPECT_THROW(Async::wait(source.showInfo(show("s2"), {})), SourceError);
}

TEST_F(AppleTVTest, ACancelEndsARequestThatHangsAndTheQueueBehindIt) {
    HttpStub::Reply silent{200, heat, {}};
    silent.manner = HttpStub::Manner::Held;
    search("warm");
    stub.web.answer("/uts/v3/search", {silent});
    const CancelToken scan;
    auto hanging = source.searchMovies("A", scan);
    auto waiting = source.searchMovies("B", scan);
    auto another = source.searchMovies("C", {});
    turnUntil([this] { return stub.web.held() == 1; });
    scan.cancel();
    EXPECT_TRUE(hanging.isReady());
    EXPECT_TRUE(waiting.isReady());
    EXPECT_THROW(Async::wait(std::move(hanging)), CancelError);
    EXPECT_THROW(Async::wait(std::move(waiting)), CancelError);
    stub.web.release();
    EXPECT_EQ(Async::wait(std::move(another)).size(), 1U) << "who didn't cancel gets an answer";
    for (const std::string& target : stub.web.targets())
        EXPECT_NE(SourceStub::item(target, "searchTerm"), "B");
}

TEST_F(AppleTVTest, CallsUnderWayOutliveTheSource) {
    HttpStub::Reply silent{200, heat, {}};
    silent.manner = HttpStub::Manner::Held;
    stub.web.answer("/uts/v3/search", {silent});
    auto shortLived = std::make_unique<AppleTVSource>();
    auto call = shortLived->searchMovies("A", {});
    turnUntil([this] { return stub.web.held() == 1; });
    shortLived.reset();
    stub.web.release();
    EXPECT_EQ(Async::wait(std::move(call)).size(), 1U);
}

TEST(AppleTVCacheKey, IsTheSameWithAnyKeyAndDiffersForAnotherPage) {
    const test::ScopedEnv locale("LC_ALL", "de_DE.UTF-8");
    const auto key = [](HttpAddress::Query query) {
        return AppleTVSource::cacheKey("shows/1", std::move(query));
    };
    EXPECT_EQ(key({{"nextToken", "0:9"}, {"utsk", "a"}, {"pfm", "web"}}),
              key({{"utsk", "b"}, {"nextToken", "0:9"}}));
    EXPECT_EQ(key({{"nextToken", "0:9"}}), "appletv|de_DE|143443|shows/1|nextToken=0:9");
    EXPECT_NE(key({{"nextToken", "0:9"}}), key({{"nextToken", "9:9"}}));
    EXPECT_EQ(key({{"b", "2"}, {"a", "1"}}), "appletv|de_DE|143443|shows/1|a=1&b=2");
}

}  // namespace
}  // namespace marlet
