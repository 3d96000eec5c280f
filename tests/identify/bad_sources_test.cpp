// Catalogues that answer nonsense: a reason in the verdict, and nothing else.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>

#include "foundation/paths.h"
#include "identify/made_up_files.h"
#include "identify/matcher.h"
#include "sources/apple_tv.h"
#include "sources/itunes.h"
#include "support/clock_hands.h"
#include "support/http_stub.h"
#include "support/qt_app.h"
#include "support/temp_folder.h"

namespace marlet {
namespace {

using test::episodeGuess;
using test::fileOf;
using test::filmGuess;
using test::HttpStub;
using testing::ElementsAre;

/// What a service sends in place of an answer.
struct Nonsense {
    std::string name;
    HttpStub::Reply reply;
};

HttpStub::Reply said(const std::string& body, const std::string& type = "application/json") {
    HttpStub::Reply reply;
    reply.body = body;
    reply.type = type;
    return reply;
}

HttpStub::Reply withStatus(int status, const HttpStub::Headers& headers = {}) {
    HttpStub::Reply reply;
    reply.status = status;
    reply.headers = headers;
    return reply;
}

HttpStub::Reply inManner(HttpStub::Manner manner) {
    HttpStub::Reply reply = said("{\"data\":");
    reply.manner = manner;
    reply.type = "image/jpeg";  // or the stub would compress what never ends
    return reply;
}

std::vector<Nonsense> allNonsense() {
    const std::string deep(3000000, '[');
    const std::string deepObjects = [] {
        std::string text;
        for (int i = 0; i < 300000; i++) text += R"({"data":)";
        return text;
    }();
    return {
        {"Page", said("<!DOCTYPE html><html><body>Sign in</body></html>", "text/html")},
        {"Nothing", said("")},
        {"HalfAnAnswer", said(R"({"data":{"canvas":{"shelves":[{"items":[{"type":"Mo)")},
        {"Nesting", said(deep)},
        {"NestingObjects", said(deepObjects)},
        {"List", said("[1,2,3]")},
        {"Number", said("1e999")},
        {"WrongTypes",
         said(R"({"resultCount":"1","results":{"a":[7]},"data":{"canvas":{"shelves":[{"items":
              [{"type":7,"id":{},"title":[]}]},7,null]},"content":[],"episodes":{"a":7}}})")},
        {"WrongTypesInARecord",
         said(R"({"results":[{"wrapperType":"track","kind":"feature-movie","trackId":"x",
              "trackName":7},{"artistId":[],"artistName":{}}],
              "data":{"canvas":{"shelves":[{"items":[{"type":"Movie","id":"m","title":"Other",
              "releaseDate":{},"images":{"a":{"url":7,"width":"x","height":null}}}]}]}}})")},
        {"NoUtf8", said("{\"results\":\"\xC3\x28\"}")},
        {"Nulls", said(std::string("\0\0\0\0", 4))},
        {"TooManyRequests", withStatus(429)},
        {"Forbidden", withStatus(403)},
        {"Unauthorized", withStatus(401)},
        {"NotFound", withStatus(404)},
        {"ServerError", withStatus(500)},
        {"Unavailable", withStatus(503)},
        {"RedirectAway", withStatus(302, {{"Location", "http://127.0.0.1:1/x"}})},
        {"RedirectToAFile", withStatus(302, {{"Location", "file:///etc/passwd"}})},
        {"RedirectInCircles", withStatus(302, {{"Location", "/search"}})},
        {"CutConnection", inManner(HttpStub::Manner::Cut)},
        {"Endless", inManner(HttpStub::Manner::Endless)},
    };
}

class BadSource : public testing::TestWithParam<Nonsense> {
protected:
    BadSource() {
        test::qtApp();
        matcher.externals = {{SourceID::appleTV, &apple}, {SourceID::itunes, &itunes}};
        const HttpStub::Reply reply = GetParam().reply;
        for (const char* path : {"/uts/v3/search", "/search", "/lookup"}) web.answer(path, {reply});
        web.answer("/uts/v3/configurations", R"({"utsk":"k"})");
    }
    ~BadSource() override { Async::settle(std::chrono::seconds(1)); }

    std::vector<std::string> filmReasons(SourceID id) {
        matcher.order = {id};
        const auto result =
            Async::wait(matcher.resolveMovie(fileOf("/x.mp4", 90), filmGuess("Sheds", 1987)));
        EXPECT_FALSE(result.match);
        EXPECT_FALSE(result.ambiguous);
        return result.verdict.reasons();
    }
    std::vector<std::string> seasonReasons(SourceID id) {
        matcher.order = {id};
        const auto results = Async::wait(
            matcher.resolveSeason({fileOf("/x.mp4", 50)}, {episodeGuess("Sheds", 1, 2)}));
        EXPECT_EQ(results.size(), 1U);
        EXPECT_FALSE(results.at(0).match);
        return results.at(0).verdict.reasons();
    }

    test::OwnHome home;
    test::ClockHands hands;
    HttpStub web;
    test::ScopedEnv appleRoot{"MARLET_APPLE_TV_API", web.root() + "/uts/v3/"};
    test::ScopedEnv itunesRoot{"MARLET_ITUNES_API", web.root() + "/"};
    AppleTVSource apple;
    ITunesSource itunes;
    Matcher matcher;
};

TEST_P(BadSource, IsAReasonInTheVerdictAndNothingElse) {
    EXPECT_THAT(filmReasons(SourceID::appleTV), ElementsAre("No film called “Sheds” on Apple TV"));
    EXPECT_THAT(seasonReasons(SourceID::appleTV),
                ElementsAre("No show called “Sheds” on Apple TV"));
    EXPECT_THAT(filmReasons(SourceID::itunes),
                ElementsAre("No film called “Sheds” on iTunes Store"));
    EXPECT_THAT(seasonReasons(SourceID::itunes),
                ElementsAre("No show called “Sheds” on iTunes Store"));
}

TEST_P(BadSource, AsTheAnswerToAllButTheSearchIsAReasonToo) {
    const HttpStub::Reply bad = GetParam().reply;
    web.answer("/uts/v3/search", R"({"data":{"canvas":{"shelves":[{"items":[
        {"type":"Show","id":"s","title":"Sheds"},{"type":"Movie","id":"m","title":"Sheds",
         "releaseDate":540000000000}]}]}}})");
    for (const char* path : {"/uts/v3/movies/m", "/uts/v3/shows/s", "/uts/v3/shows/s/episodes"})
        web.answer(path, {bad});
    matcher.order = {SourceID::appleTV};
    const auto film =
        Async::wait(matcher.resolveMovie(fileOf("/x.mp4", 90), filmGuess("Sheds", 1987)));
    EXPECT_TRUE(film.match) << "as the search told it";
    EXPECT_THAT(film.verdict.reasons(), ElementsAre("Couldn't compare the length"));
    EXPECT_THAT(seasonReasons(SourceID::appleTV),
                ElementsAre("Season 1 isn't on Apple TV for “Sheds”"));
}

TEST_P(BadSource, InPlaceOfTheKeyIsAReasonToo) {
    web.answer("/uts/v3/configurations", {GetParam().reply});
    EXPECT_THAT(filmReasons(SourceID::appleTV), ElementsAre("No film called “Sheds” on Apple TV"));
}

INSTANTIATE_TEST_SUITE_P(Answers, BadSource, testing::ValuesIn(allNonsense()),
                         [](const auto& each) { return each.param.name; });

}  // namespace
}  // namespace marlet
