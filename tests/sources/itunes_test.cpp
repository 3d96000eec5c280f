#include "sources/itunes.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "sources/http_session.h"
#include "sources/source_stub.h"

namespace marlet {
namespace {

using namespace std::chrono_literals;
using test::HttpStub;
using test::SourceStub;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;

const std::string heat = R"({"resultCount":1,"results":[{"wrapperType":"track",
    "kind":"feature-movie","trackId":77,"trackName":"Heat"}]})";
const std::string nothing = R"({"resultCount":0,"results":[]})";
const std::string seasons = R"({"results":[{"wrapperType":"artist","artistId":7},
    {"collectionId":12,"collectionName":"Sheds, Season 2"},
    {"collectionId":11,"collectionName":"Sheds, Season 1"}]})";

class ITunesTest : public testing::Test {
protected:
    std::vector<ExtMovie> search(const std::string& title) {
        return Async::wait(source.searchMovies(title, {}));
    }
    std::string failure(const std::string& title) {
        try {
            search(title);
        } catch (const MFError& error) {
            return error.description();
        }
        return "(no failure)";
    }
    static ExtShow show() {
        ExtShow one;
        one.source = SourceID::itunes;
        one.id = "7";
        one.title = "Sheds";
        return one;
    }

    SourceStub stub;
    ITunesSource source;
};

TEST_F(ITunesTest, AFilmIsAskedForWithTheCountry) {
    stub.web.answer("/search", heat);
    EXPECT_EQ(search("Heat & Dust").at(0).title, "Heat");
    EXPECT_THAT(stub.web.targets(), ElementsAre("/search?country=US&entity=movie&limit=15&"
                                                "media=movie&term=Heat%20%26%20Dust"));
}

TEST_F(ITunesTest, TheCountryIsThePersonsWhenItHasAStore) {
    stub.web.answer("/search", heat);
    const auto country = [this](const char* locale) {
        const test::ScopedEnv person("LC_ALL", locale);
        search(locale);
        return SourceStub::item(stub.web.targets().back(), "country");
    };
    EXPECT_EQ(country("de_CH.UTF-8"), "CH");
    EXPECT_EQ(country("is_IS.UTF-8"), "US");
    EXPECT_EQ(country("C"), "US");
}

TEST_F(ITunesTest, AFilmsDetailsAreThoseOfTheSearch) {
    ExtMovie found;
    found.id = "77";
    found.title = "Heat";
    found.minutes = 171;
    const ExtMovie same = Async::wait(source.movieDetails(found, {}));
    EXPECT_EQ(same.title, "Heat");
    EXPECT_EQ(same.minutes, 171);
    EXPECT_EQ(stub.web.count(), 0U);
}

TEST_F(ITunesTest, AShowThatIsNotFoundBySeasonIsSoughtByEpisode) {
    stub.web.answer("/search", {{200, nothing, {}},
                                {200, R"({"results":[{"artistId":7,"artistName":"Sheds"}]})", {}}});
    EXPECT_EQ(Async::wait(source.searchShows("Sheds", {})).at(0).id, "7");
    EXPECT_THAT(stub.web.targets(),
                ElementsAre("/search?country=US&entity=tvSeason&limit=25&media=tvShow&term=Sheds",
                            "/search?attribute=showTerm&country=US&entity=tvEpisode&limit=25&"
                            "media=tvShow&term=Sheds"));
}

TEST_F(ITunesTest, AShowThatIsFoundBySeasonIsNotSoughtAgain) {
    stub.web.answer("/search", R"({"results":[{"artistId":7,"artistName":"Sheds"}]})");
    EXPECT_EQ(Async::wait(source.searchShows("Sheds", {})).size(), 1U);
    EXPECT_EQ(stub.web.count(), 1U);
}

TEST_F(ITunesTest, EpisodesAreThoseOfTheSeasonsCollection) {
    stub.web.answer("/lookup?country=US&entity=tvSeason&id=7&limit=200", seasons);
    stub.web.answer("/lookup?country=US&entity=tvEpisode&id=12&limit=200",
                    R"({"results":[{"wrapperType":"track","trackNumber":3,"trackName":"Rust"}]})");
    const auto episodes = Async::wait(source.episodes(2, show(), {}));
    ASSERT_EQ(episodes.size(), 1U);
    EXPECT_EQ(episodes[0].title, "Rust");
    EXPECT_EQ(episodes[0].season, 2);
    EXPECT_THAT(Async::wait(source.episodes(9, show(), {})), IsEmpty());
    EXPECT_EQ(Async::wait(source.seasons(show(), {})), (std::vector<int>{1, 2}));
    Async::wait(source.showInfo(show(), {}));
    EXPECT_EQ(stub.web.count(), 2U);
}

TEST_F(ITunesTest, RequestsLieASecondApart) {
    stub.web.answer("/search", heat);
    for (const char* title : {"A", "B", "C"}) search(title);
    EXPECT_EQ(stub.hands.total(), 2s);
}

TEST_F(ITunesTest, CallersOfTheSameMomentAskOneAfterTheOther) {
    stub.web.answer("/search", heat);
    std::vector<Task<std::vector<ExtMovie>>> calls;
    for (const char* title : {"A", "B", "C", "D", "A"})
        calls.push_back(source.searchMovies(title, {}));
    for (auto& call : calls) EXPECT_EQ(Async::wait(std::move(call)).size(), 1U);
    EXPECT_EQ(stub.web.count(), 4U) << "A is asked for once";
    EXPECT_EQ(stub.web.mostAtOnce(), 1);
    EXPECT_EQ(stub.hands.total(), 3s);
}

TEST_F(ITunesTest, A403BlocksForAMinuteAndA500ForAQuarterOfOne) {
    const auto pauseAfter = [this](int status) {
        ITunesSource fresh;
        stub.web.answer("/search", {{status, "", {}}, {200, heat, {}}});
        const auto before = stub.hands.elapsed;
        EXPECT_THROW(Async::wait(fresh.searchMovies("x" + std::to_string(status), {})),
                     SourceError);
        Async::wait(fresh.searchMovies("y" + std::to_string(status), {}));
        return stub.hands.elapsed - before;
    };
    EXPECT_EQ(pauseAfter(403), 60s);
    EXPECT_EQ(pauseAfter(429), 60s);
    EXPECT_EQ(pauseAfter(503), 60s);
    EXPECT_EQ(pauseAfter(500), 15s);
}

TEST_F(ITunesTest, ARefusalIsToldWithItsStatus) {
    stub.web.answer("/search", {{403, "", {}}});
    EXPECT_EQ(failure("Heat"), "The iTunes Store answered with an error (403)");
}

TEST_F(ITunesTest, AnyOtherStatusIsAnEmptyAnswerAndNotKept) {
    for (const int status : {204, 304, 400, 404}) {
        stub.web.answer("/search", {{status, heat, {}}});
        EXPECT_THAT(search(std::to_string(status)), IsEmpty());
    }
    EXPECT_EQ(stub.hands.total(), 3s) << "and no reason to pause";
    EXPECT_THAT(SourceStub::cached(), IsEmpty());
}

TEST_F(ITunesTest, ARedirectToAnotherHostIsNotFollowedAndFindsNothing) {
    HttpStub other;
    other.answer("/search", heat);
    stub.web.answer("/search", {{302, "", {{"Location", other.root() + "/search"}}}});
    EXPECT_THAT(search("Heat"), IsEmpty());
    EXPECT_EQ(other.count(), 0U);
    EXPECT_THAT(SourceStub::cached(), IsEmpty());
}

TEST_F(ITunesTest, ARedirectOnItsOwnHostIsFollowed) {
    stub.web.answer("/search", {{307, "", {{"Location", "/elsewhere"}}}});
    stub.web.answer("/elsewhere", heat);
    EXPECT_EQ(search("Heat").size(), 1U);
}

TEST_F(ITunesTest, SavedAnswersServeOtherRunsUntilARefresh) {
    stub.web.answer("/search", heat);
    search("Heat");
    ITunesSource another;
    EXPECT_EQ(Async::wait(another.searchMovies("Heat", {})).size(), 1U);
    EXPECT_EQ(stub.web.count(), 1U);
    SourceCache::setNotBefore(std::chrono::system_clock::now() + 1h);
    Async::wait(another.searchMovies("Heat", {}));
    EXPECT_EQ(stub.web.count(), 2U);
}

TEST_F(ITunesTest, WhatIsNoJsonIsAFailureAndNotKept) {
    for (const std::string& body : {std::string("<html>"), heat.substr(0, heat.size() / 2),
                                    std::string(), std::string(2000000, '[')}) {
        stub.web.answer("/search", body);
        EXPECT_THAT(failure("Heat"), StartsWith("The database's answer can't be read"));
    }
    EXPECT_THAT(SourceStub::cached(), IsEmpty());
}

TEST_F(ITunesTest, AnAnswerWithoutResultsFindsNothing) {
    for (const char* body : {"{}", "[]", "7", "null", R"({"results":{}})", R"({"results":7})"}) {
        stub.web.answer("/search", body);
        EXPECT_THAT(search(body), IsEmpty()) << body;
    }
}

TEST_F(ITunesTest, AnEndlessAnswerIsCutOff) {
    HttpStub::Reply endless;
    endless.manner = HttpStub::Manner::Endless;
    endless.type = "image/jpeg";  // or the stub would compress it
    stub.web.answer("/search", {endless});
    EXPECT_EQ(failure("Heat"), "the answer is too large");
}

TEST_F(ITunesTest, ACancelEndsARequestThatHangs) {
    HttpStub::Reply silent{200, heat, {}};
    silent.manner = HttpStub::Manner::Held;
    stub.web.answer("/search", {silent});
    const CancelToken scan;
    auto hanging = source.searchMovies("A", scan);
    for (int i = 0; i < 20000 && stub.web.held() == 0; i++) Async::wait(Async::sleep(1ms));
    scan.cancel();
    EXPECT_TRUE(hanging.isReady());
    EXPECT_THROW(Async::wait(std::move(hanging)), CancelError);
}

}  // namespace
}  // namespace marlet
