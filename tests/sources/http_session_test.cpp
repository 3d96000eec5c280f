#include "sources/http_session.h"

#include <gtest/gtest.h>

#include <functional>

#include "sources/async.h"
#include "support/http_stub.h"
#include "support/qt_app.h"
#include "support/temp_folder.h"

namespace marlet {
namespace {

using namespace std::chrono_literals;
using test::HttpStub;
using Use = HttpSession::Use;

class HttpSessionTest : public testing::Test {
protected:
    HttpSessionTest() { test::qtApp(); }
    ~HttpSessionTest() override {
        // Closes the session's connections, for which the server would wait.
        session_.reset();
        Async::settle(1s);
    }

    HttpRequest request(const std::string& path) const {
        HttpRequest made;
        made.url = stub_.root() + path;
        made.headers = {{"Authorization", "Bearer token-7"}, {"accept", "application/json"}};
        return made;
    }
    HttpAnswer get(const std::string& path) { return get(request(path)); }
    HttpAnswer get(HttpRequest made, Use use = Use::CacheFirst) {
        return Async::wait(session_->get(std::move(made), use, {}));
    }
    /// The words of the transport's failure.
    std::string failure(HttpRequest made) {
        try {
            get(std::move(made));
        } catch (const TransportError& error) {
            return error.description();
        }
        return "(no failure)";
    }
    HttpStub::Reply redirect(const std::string& to, int status = 302) {
        return {status, "moved", {{"Location", to}}};
    }
    void turnUntil(const std::function<bool()>& reached) {
        for (int i = 0; i < 5000 && !reached(); i++) Async::wait(Async::sleep(1ms));
        ASSERT_TRUE(reached());
    }

    HttpStub stub_;
    test::TempFolder folder_;
    std::unique_ptr<HttpSession> session_ =
        std::make_unique<HttpSession>(std::make_shared<KeylessCache>(folder_ / "tmdb"));
};

TEST_F(HttpSessionTest, AnAnswerHasItsStatusHeadersAndBody) {
    stub_.answer("/a", {{200, "{\"id\":1}", {{"X-Odd", "yes"}}}});
    const HttpAnswer answer = get("/a");
    EXPECT_EQ(answer.status, 200);
    EXPECT_EQ(textOf(answer.body), "{\"id\":1}");
    EXPECT_EQ(answer.header("x-odd"), "yes");
    EXPECT_FALSE(answer.fromCache);
    EXPECT_EQ(stub_.seen().front().header("Authorization"), "Bearer token-7");
    EXPECT_EQ(stub_.seen().front().header("Accept"), "application/json");
    EXPECT_EQ(stub_.seen().front().header("User-Agent"), "Marlet");
}

TEST_F(HttpSessionTest, AStatusIsNeverAFailureHere) {
    for (const int status : {201, 204, 304, 400, 401, 403, 404, 407, 429, 500, 501, 503, 599}) {
        stub_.answer("/s", {{status, "", {}}});
        EXPECT_EQ(get("/s").status, status);
    }
}

TEST_F(HttpSessionTest, TheBodyOfARefusalIsThere) {
    stub_.answer("/s", {{401, "{\"status_code\":7}", {}}});
    EXPECT_EQ(textOf(get("/s").body), "{\"status_code\":7}");
}

TEST_F(HttpSessionTest, ASavedAnswerSparesTheRequest) {
    stub_.answer("/a", "{}");
    get("/a");
    EXPECT_TRUE(get("/a").fromCache);
    EXPECT_EQ(stub_.count(), 1U);
}

TEST_F(HttpSessionTest, PassingTheCacheByAsksAgainAndKeepsTheNewAnswer) {
    stub_.answer("/a", {{200, "one", {}}, {200, "two", {}}});
    get("/a");
    EXPECT_EQ(textOf(get(request("/a"), Use::IgnoreCache).body), "two");
    EXPECT_EQ(textOf(get("/a").body), "two");
    EXPECT_EQ(stub_.count(), 2U);
}

TEST_F(HttpSessionTest, WithoutACacheEveryRequestIsMade) {
    stub_.answer("/a", "{}");
    HttpSession bare;
    for (int i = 0; i < 2; i++) Async::wait(bare.get(request("/a"), Use::CacheFirst, {}));
    EXPECT_EQ(stub_.count(), 2U);
    EXPECT_EQ(bare.cache(), nullptr);
}

TEST_F(HttpSessionTest, ALineThatIsDownIsATransportErrorInTheSystemsWords) {
    HttpRequest nobody = request("/a");
    nobody.url = "http://127.0.0.1:1/a";
    EXPECT_EQ(failure(nobody), "Connection refused");
}

TEST_F(HttpSessionTest, AnAnswerCutShortIsATransportErrorAndNotKept) {
    HttpStub::Reply cut{200, "{\"id\":1", {}};
    cut.manner = HttpStub::Manner::Cut;
    stub_.answer("/a", {cut});
    EXPECT_NE(failure(request("/a")), "(no failure)");
    EXPECT_FALSE(session_->cache()->find(request("/a")));
}

TEST_F(HttpSessionTest, AnEndlessAnswerStopsAtTheLimit) {
    HttpStub::Reply endless;
    endless.type = "image/jpeg";  // which the server doesn't compress
    endless.manner = HttpStub::Manner::Endless;
    endless.type = "image/jpeg";  // or the stub would compress it
    stub_.answer("/a", {endless});
    HttpRequest limited = request("/a");
    limited.maxBody = 1'000'000;
    EXPECT_EQ(failure(limited), "the answer is too large");
    EXPECT_FALSE(session_->cache()->find(limited));
}

TEST_F(HttpSessionTest, ABodyOfExactlyTheLimitIsTaken) {
    stub_.answer("/a", std::string(1000, 'x'));
    HttpRequest limited = request("/a");
    limited.maxBody = 1000;
    EXPECT_EQ(get(limited).body.size(), 1000U);
    limited.maxBody = 999;
    limited.url += "?again";
    EXPECT_EQ(failure(limited), "the answer is too large");
}

TEST_F(HttpSessionTest, ASilentServerIsATransportErrorWhenItsTimeIsUp) {
    HttpStub::Reply silent;
    silent.manner = HttpStub::Manner::Held;
    stub_.answer("/a", {silent});
    HttpRequest hasty = request("/a");
    hasty.timeout = 50ms;
    EXPECT_EQ(failure(hasty), "the server didn't answer in time");
}

TEST_F(HttpSessionTest, AnAnswerThatTakesTooLongAsAWholeIsATransportError) {
    HttpStub::Reply endless;
    endless.manner = HttpStub::Manner::Endless;
    endless.type = "image/jpeg";  // or the stub would compress it
    stub_.answer("/a", {endless});
    HttpRequest hasty = request("/a");
    hasty.longest = 50ms;
    hasty.maxBody = std::size_t{1} << 40;
    EXPECT_EQ(failure(hasty), "the server didn't answer in time");
}

TEST_F(HttpSessionTest, ACancelIsACancelThoughTheTimeIsLimited) {
    HttpStub::Reply silent;
    silent.manner = HttpStub::Manner::Held;
    stub_.answer("/a", {silent});
    HttpRequest patient = request("/a");
    patient.longest = 60s;
    const CancelToken cancel;
    auto task = session_->get(patient, Use::CacheFirst, cancel);
    turnUntil([this] { return stub_.held() == 1; });
    cancel.cancel();
    EXPECT_TRUE(task.isReady());
    EXPECT_THROW(Async::wait(std::move(task)), CancelError);
}

TEST_F(HttpSessionTest, ACancelEndsARequestUnderWayAtOnce) {
    HttpStub::Reply silent;
    silent.manner = HttpStub::Manner::Held;
    stub_.answer("/a", {silent});
    CancelToken cancel;
    auto task = session_->get(request("/a"), Use::CacheFirst, cancel);
    turnUntil([this] { return stub_.held() == 1; });
    EXPECT_FALSE(task.isReady());
    cancel.cancel();
    EXPECT_TRUE(task.isReady());
    EXPECT_THROW(Async::wait(std::move(task)), CancelError);
}

TEST_F(HttpSessionTest, ACancelledTokenMakesNoRequest) {
    CancelToken cancel;
    cancel.cancel();
    EXPECT_THROW(Async::wait(session_->get(request("/a"), Use::CacheFirst, cancel)), CancelError);
    EXPECT_EQ(stub_.count(), 0U);
}

TEST_F(HttpSessionTest, ARequestOutlivesItsSession) {
    HttpStub::Reply silent{200, "late", {}};
    silent.manner = HttpStub::Manner::Held;
    stub_.answer("/a", {silent});
    auto session = std::make_unique<HttpSession>();
    auto task = session->get(request("/a"), Use::CacheFirst, {});
    turnUntil([this] { return stub_.held() == 1; });
    session.reset();
    stub_.release();
    EXPECT_EQ(textOf(Async::wait(std::move(task)).body), "late");
}

TEST_F(HttpSessionTest, AtMostFourRequestsAreWithAHostAtATime) {
    HttpStub::Reply silent;
    silent.manner = HttpStub::Manner::Held;
    std::vector<Task<HttpAnswer>> tasks;
    for (int i = 0; i < 10; i++) {
        const std::string path = "/" + std::to_string(i);
        stub_.answer(path, {silent});
        tasks.push_back(session_->get(request(path), Use::CacheFirst, {}));
    }
    turnUntil([this] { return stub_.held() == 4; });
    Async::wait(Async::sleep(50ms));  // for a fifth to come, if there were one
    EXPECT_EQ(stub_.held(), 4);
    stub_.release();
    for (auto& task : tasks) EXPECT_EQ(Async::wait(std::move(task)).status, 200);
    EXPECT_EQ(stub_.count(), 10U);
    EXPECT_LE(stub_.mostAtOnce(), 4);
}

TEST_F(HttpSessionTest, ACancelledWaiterDoesNotKeepItsPlaceInTheQueue) {
    HttpStub::Reply silent;
    silent.manner = HttpStub::Manner::Held;
    for (const char* path : {"/0", "/1", "/2", "/3", "/4", "/5"}) stub_.answer(path, {silent});
    std::vector<Task<HttpAnswer>> first;
    for (int i = 0; i < 4; i++)
        first.push_back(session_->get(request("/" + std::to_string(i)), Use::CacheFirst, {}));
    CancelToken cancel;
    auto leaver = session_->get(request("/4"), Use::CacheFirst, cancel);
    auto last = session_->get(request("/5"), Use::CacheFirst, {});
    turnUntil([this] { return stub_.held() == 4; });
    cancel.cancel();
    EXPECT_TRUE(leaver.isReady());
    EXPECT_THROW(Async::wait(std::move(leaver)), CancelError);
    stub_.release();
    EXPECT_EQ(Async::wait(std::move(last)).status, 200);
    for (auto& task : first) Async::wait(std::move(task));
    const auto targets = stub_.targets();
    EXPECT_EQ(std::count(targets.begin(), targets.end(), "/4"), 0);
}

TEST_F(HttpSessionTest, ARedirectOnTheSameHostIsFollowedWithTheToken) {
    for (const int status : {301, 302, 303, 307, 308}) {
        const std::string from = "/from" + std::to_string(status);
        stub_.answer(from, {redirect("/to", status)});
        stub_.answer("/to", "there");
        EXPECT_EQ(textOf(get(from).body), "there");
        EXPECT_EQ(stub_.seen().back().header("Authorization"), "Bearer token-7");
    }
}

TEST_F(HttpSessionTest, ARedirectToAnotherHostIsFollowedWithoutTheToken) {
    HttpStub other;
    other.answer("/to", "there");
    stub_.answer("/from", {redirect(other.root() + "/to")});
    EXPECT_EQ(textOf(get("/from").body), "there");
    EXPECT_EQ(other.seen().back().header("Authorization"), "");
    EXPECT_EQ(other.seen().back().header("Accept"), "application/json");
}

TEST_F(HttpSessionTest, ARedirectToAnotherHostIsAnAnswerForARequestThatStaysAtHome) {
    HttpStub other;
    stub_.answer("/from", {redirect(other.root() + "/to")});
    stub_.answer("/near", {redirect("/to")});
    stub_.answer("/to", "there");
    HttpRequest domestic = request("/from");
    domestic.sameHostOnly = true;
    EXPECT_EQ(get(domestic).status, 302);
    EXPECT_EQ(other.count(), 0U);
    domestic.url = stub_.root() + "/near";
    EXPECT_EQ(textOf(get(domestic).body), "there");
}

TEST_F(HttpSessionTest, ARedirectedAnswerIsFoundUnderTheAddressAskedFor) {
    stub_.answer("/from", {redirect("/to")});
    stub_.answer("/to", "there");
    get("/from");
    EXPECT_TRUE(get("/from").fromCache);
}

TEST_F(HttpSessionTest, ARedirectToAnythingButTheWebIsRefused) {
    for (const char* to : {"file:///etc/passwd", "ftp://127.0.0.1/x", "javascript:1", "http://"}) {
        stub_.answer("/from", {redirect(to)});
        EXPECT_EQ(failure(request("/from")), "not a web address") << to;
    }
}

TEST_F(HttpSessionTest, ARedirectThatNeverEndsIsGivenUp) {
    stub_.answer("/round", {redirect("/round")});
    EXPECT_EQ(failure(request("/round")), "too many redirects");
    EXPECT_LE(stub_.count(), 11U);
}

TEST_F(HttpSessionTest, ARedirectWithoutAPlaceIsAnAnswer) {
    stub_.answer("/from", {{302, "where?", {}}});
    EXPECT_EQ(get("/from").status, 302);
}

TEST_F(HttpSessionTest, OnlyWebAddressesAreAsked) {
    for (const char* url : {"file:///etc/passwd", "", "tmdb", "http:///x", "ftp://a/b"}) {
        HttpRequest odd;
        odd.url = url;
        EXPECT_EQ(failure(odd), "not a web address") << url;
    }
}

}  // namespace
}  // namespace marlet
