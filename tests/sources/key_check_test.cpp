#include "sources/key_check.h"

#include <gtest/gtest.h>

#include "foundation/errors.h"
#include "support/tmdb_stub.h"

namespace marlet {
namespace {

using KeyCheck::Result;
using test::HttpStub;

class KeyCheckTest : public testing::Test {
protected:
    KeyCheckTest() { tmdb_.web.answer("/3/search/movie", R"({"results":[]})"); }
    static Result check(const std::optional<std::string>& token = "token-7") {
        return Async::wait(KeyCheck::check(token));
    }
    test::TMDBStub tmdb_;
};

TEST_F(KeyCheckTest, ATokenThatTmdbTakesWorks) {
    EXPECT_EQ(check(), Result::works);
    ASSERT_EQ(tmdb_.web.count(), 1U);
    EXPECT_EQ(tmdb_.web.seen()[0].header("Authorization"), "Bearer token-7");
    EXPECT_EQ(tmdb_.web.targets()[0], "/3/search/movie?include_adult=false&query=Alien");
}

TEST_F(KeyCheckTest, WhatIsSavedProvesNothing) {
    check();
    tmdb_.web.answer("/3/search/movie", {{401, R"({"status_code":7})", {}}});
    EXPECT_EQ(check(), Result::rejected);
    EXPECT_EQ(tmdb_.web.count(), 2U);
}

TEST_F(KeyCheckTest, ARefusalIsARejectedToken) {
    for (const int status : {401, 403}) {
        tmdb_.web.answer("/3/search/movie", {{status, "{}", {}}});
        EXPECT_EQ(check(), Result::rejected) << status;
    }
}

TEST_F(KeyCheckTest, AnyOtherTroubleSaysNothingOfTheToken) {
    for (const int status : {400, 404, 500, 503}) {
        tmdb_.web.answer("/3/search/movie", {{status, "{}", {}}});
        EXPECT_EQ(check(), Result::unreachable) << status;
    }
    tmdb_.web.answer("/3/search/movie", "<html>log in to this hotel</html>");
    EXPECT_EQ(check(), Result::unreachable);
    const test::ScopedEnv nobody("MARLET_TMDB_API", "http://127.0.0.1:1/3");
    EXPECT_EQ(check(), Result::unreachable);
}

TEST_F(KeyCheckTest, WithoutATokenNobodyIsAsked) {
    EXPECT_EQ(check(std::nullopt), Result::none);
    EXPECT_EQ(check(""), Result::none);
    EXPECT_EQ(tmdb_.web.count(), 0U);
}

TEST_F(KeyCheckTest, ACancelEndsIt) {
    CancelToken cancel;
    cancel.cancel();
    EXPECT_THROW(Async::wait(KeyCheck::check("token-7", cancel)), CancelError);
}

TEST(KeyCheckWords, SayWhatItMeans) {
    EXPECT_EQ(KeyCheck::sentence(Result::none), "No key yet.");
    EXPECT_EQ(KeyCheck::sentence(Result::works), "Key works.");
    EXPECT_EQ(KeyCheck::sentence(Result::rejected), "TMDB rejected the key.");
    EXPECT_EQ(KeyCheck::sentence(Result::unreachable),
              "TMDB couldn't be reached, so the key wasn't tried.");
}

}  // namespace
}  // namespace marlet
