// Whole jobs against the sample catalogue in the shapes of all three services.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <list>

#include "identify/made_up_files.h"
#include "identify/matcher.h"
#include "sources/apple_tv.h"
#include "sources/details_loader.h"
#include "sources/itunes.h"
#include "sources/politeness.h"
#include "support/catalogue.h"
#include "support/clock_hands.h"
#include "support/qt_app.h"
#include "support/temp_folder.h"

namespace marlet {
namespace {

using test::fileOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

class CatalogueSources : public testing::Test {
protected:
    CatalogueSources() {
        test::qtApp();
        for (const auto& [name, value] : server.environment())
            environment.emplace_back(name, value);
        make();
    }
    ~CatalogueSources() override {
        matcher.reset();
        Async::settle(std::chrono::seconds(1));
    }
    /// As a new start of the program would: no key, no count of failures, the caches as they are.
    void make() {
        apple = std::make_unique<AppleTVSource>();
        itunes = std::make_unique<ITunesSource>();
        matcher = std::make_unique<Matcher>();
        matcher->tmdb = TMDBClient::make("secret-token");
        matcher->externals = {{SourceID::appleTV, apple.get()}, {SourceID::itunes, itunes.get()}};
    }
    std::vector<ResolvedFile> process(const std::vector<ScannedFile>& files,
                                      const std::vector<SourceID>& order) {
        matcher->order = order;
        return Async::wait(matcher->process(files));
    }
    ResolvedFile film(const std::string& name, double minutes, const std::vector<SourceID>& order) {
        return process({fileOf("/lib/" + name, minutes)}, order).at(0);
    }

    static std::vector<ScannedFile> sixFilms() {
        return {fileOf("/lib/Charade (1963).mp4", 113),     fileOf("/lib/Detour (1945).mp4", 68),
                fileOf("/lib/The Stranger (1946).mp4", 95), fileOf("/lib/Spring (2019).mp4", 8),
                fileOf("/lib/Sintel (2010).mp4", 15),       fileOf("/lib/Häxan (1922).mp4", 105)};
    }

    test::OwnHome home;
    test::CatalogueServer server;
    std::list<test::ScopedEnv> environment;
    test::ClockHands hands;
    std::unique_ptr<AppleTVSource> apple;
    std::unique_ptr<ITunesSource> itunes;
    std::unique_ptr<Matcher> matcher;
};

TEST_F(CatalogueSources, AppleTVKnowsFilmsWithAllTheirDetails) {
    const ResolvedFile result = film("Charade (1963).mp4", 113, {SourceID::appleTV});
    EXPECT_TRUE(result.verdict.isCertain());
    ASSERT_TRUE(result.match);
    const ManualDetails& details = result.match->manual.value();
    EXPECT_EQ(details.source, SourceID::appleTV);
    EXPECT_EQ(details.releaseDate, "1963-12-05");
    EXPECT_EQ(details.rating, "NR");
    EXPECT_THAT(details.directors, ElementsAre("Stanley Donen"));
    EXPECT_EQ(details.wide.size(), 1U);
    ASSERT_EQ(details.tall.size(), 1U);
    EXPECT_THAT(details.tall[0], HasSubstr("/1600x2400.jpg"));
    EXPECT_THAT(result.match->posterPath.value(), HasSubstr("/300x450.jpg"));
}

TEST_F(CatalogueSources, TheITunesStoreKnowsFilmsByTheirSearchAlone) {
    const ResolvedFile result = film("Charade (1963).mp4", 113, {SourceID::itunes});
    EXPECT_TRUE(result.verdict.isCertain());
    const ManualDetails& details = result.match.value().manual.value();
    EXPECT_EQ(details.source, SourceID::itunes);
    EXPECT_EQ(details.releaseDate, "1963-12-05");
    EXPECT_THAT(details.cast, IsEmpty());
    EXPECT_EQ(server.log().size(), 1U);
}

TEST_F(CatalogueSources, BothNumberAShowsEpisodesBySeason) {
    for (const SourceID id : {SourceID::appleTV, SourceID::itunes}) {
        const std::string folder = "/lib/The Tin Observatory (2017)/Season 2/";
        const auto results = process({fileOf(folder + "02 Dark Adaptation.mp4", 22),
                                      fileOf(folder + "08 Rain Delay.mp4", 24)},
                                     {id});
        for (const ResolvedFile& result : results) {
            EXPECT_TRUE(result.verdict.isCertain()) << rawValue(id);
            ASSERT_TRUE(result.match);
            EXPECT_EQ(result.match->season, 2);
            EXPECT_EQ(result.match->year, 2017);
            EXPECT_THAT(result.match->manual->tall.at(0), HasSubstr("season-2"));
        }
        EXPECT_EQ(results[1].match->episodeTitle, "Rain Delay");
    }
}

TEST_F(CatalogueSources, APictureOfEitherIsAPicture) {
    for (const SourceID id : {SourceID::appleTV, SourceID::itunes}) {
        const ResolvedFile result = film("Charade (1963).mp4", 113, {id});
        const Bytes picture = Async::wait(
            matcher->tmdb->imageData(result.match.value().manual.value().tall.at(0), "original"));
        ASSERT_GT(picture.size(), 1000U);
        EXPECT_EQ(BigEndian::u16(picture, 0), 0xFFD8) << "a JPEG begins so";
    }
    for (const auto& arrival : server.log("/image/")) EXPECT_FALSE(arrival.hasToken);
}

TEST_F(CatalogueSources, SourcesAreAskedInTheOrderGivenUntilOneKnows) {
    const auto source = [&](const std::vector<SourceID>& order) {
        return film("Charade (1963).mp4", 113, order).match.value().sourceID();
    };
    EXPECT_EQ(source({SourceID::itunes, SourceID::tmdb, SourceID::appleTV}), SourceID::itunes);
    EXPECT_THAT(server.log("/3/"), IsEmpty());
    EXPECT_THAT(server.log("/uts/"), IsEmpty());
    EXPECT_EQ(source({SourceID::appleTV, SourceID::itunes, SourceID::tmdb}), SourceID::appleTV);
    EXPECT_EQ(source({SourceID::tmdb, SourceID::itunes, SourceID::appleTV}), SourceID::tmdb);
}

TEST_F(CatalogueSources, OneThatIsDownLeavesItsPlaceToTheNext) {
    for (const char* fault : {R"("status":500)", R"("status":429)", R"("cut":"before")"}) {
        make();
        server.clearFaults();
        server.fault(std::string(R"({"path":"^/uts/","times":0,)") + fault + "}");
        const auto results = process(sixFilms(), {SourceID::appleTV, SourceID::itunes});
        ASSERT_EQ(results.size(), 6U);
        for (const ResolvedFile& result : results) {
            EXPECT_TRUE(result.verdict.isCertain()) << fault;
            EXPECT_EQ(result.match.value().sourceID(), SourceID::itunes) << fault;
        }
    }
}

TEST_F(CatalogueSources, WhatNoneKnowsIsToldInTheWordsOfTheFirst) {
    const ResolvedFile result =
        film("Nobody Made This (1999).mp4", 90, {SourceID::itunes, SourceID::appleTV});
    EXPECT_FALSE(result.match);
    EXPECT_THAT(result.verdict.reasons(),
                ElementsAre("No film called “Nobody Made This” on iTunes Store"));
    EXPECT_EQ(server.log("/uts/v3/search").size(), 1U);
}

TEST_F(CatalogueSources, FourFilmsAtATimeKeepTheGapOfTheSource) {
    process(sixFilms(), {SourceID::appleTV});
    const auto asked = static_cast<int>(server.log("/uts/").size());
    EXPECT_EQ(asked, 13) << "the key, six searches, six films";
    EXPECT_EQ(hands.elapsed, (asked - 1) * Politeness::appleTVGap);
    EXPECT_EQ(server.mostAtOnce(), 1);
    const auto before = hands.elapsed;
    process(sixFilms(), {SourceID::itunes});
    EXPECT_EQ(server.log("/itunes/").size(), 6U);
    EXPECT_EQ(hands.elapsed - before, 5 * Politeness::itunesGap);
}

TEST_F(CatalogueSources, ASecondLookAtTheSameFilesAsksNobody) {
    auto files = sixFilms();
    files.push_back(fileOf("/lib/Nobody Made This (1999).mp4", 90));
    files.push_back(fileOf("/lib/The Tin Observatory (2017)/Season 2/02 Dark Adaptation.mp4", 22));
    const std::vector<SourceID> order = {SourceID::appleTV, SourceID::tmdb, SourceID::itunes};
    const auto first = process(files, order);
    server.resetStats();
    make();
    const auto second = process(files, order);
    EXPECT_THAT(server.log(), IsEmpty());
    EXPECT_EQ(second.size(), first.size());
}

TEST_F(CatalogueSources, NoKeyReachesAnotherService) {
    const std::vector<SourceID> order = {SourceID::appleTV, SourceID::tmdb, SourceID::itunes};
    process({fileOf("/lib/Nobody Made This (1999).mp4", 90)}, order);
    for (const auto& arrival : server.log()) {
        const bool toApple = arrival.target.starts_with("/uts/v3/");
        EXPECT_EQ(arrival.hasToken, arrival.target.starts_with("/3/")) << arrival.target;
        EXPECT_THAT(arrival.target, Not(HasSubstr("secret-token")));
        EXPECT_TRUE(toApple || arrival.target.find("utsk") == std::string::npos) << arrival.target;
    }
    EXPECT_EQ(server.log("/uts/").size(), 2U);
    EXPECT_GE(server.log("/3/").size(), 1U);
    EXPECT_EQ(server.log("/itunes/").size(), 1U);
}

TEST_F(CatalogueSources, ACancelEndsAScanThoughEveryServiceHangs) {
    server.fault(R"({"times":0,"delayMs":3000})");
    for (const SourceID id : {SourceID::appleTV, SourceID::itunes, SourceID::tmdb}) {
        make();
        matcher->order = {id};
        auto processing = matcher->process(sixFilms());
        const std::size_t before = server.log().size();
        for (int i = 0; i < 20000 && server.log().size() == before; i++)
            Async::wait(Async::sleep(std::chrono::milliseconds(5)));
        EXPECT_FALSE(processing.isReady());
        matcher->cancel.cancel();
        EXPECT_TRUE(processing.isReady()) << "before cancel() returns";
        EXPECT_THROW(Async::wait(std::move(processing)), CancelError);
    }
}

TEST_F(CatalogueSources, ATitleOfAnotherSourceStaysThoughTMDBFillsWhatItLacks) {
    const ResolvedFile result = film("Charade (1963).mp4", 113, {SourceID::itunes});
    const FileDraft draft =
        Async::wait(DetailsLoader::load(result.match.value(), result.file, matcher->tmdb));
    EXPECT_EQ(draft.details.title, "Charade");
    EXPECT_FALSE(draft.details.cast.empty()) << "the store tells none";
    EXPECT_THAT(draft.details.directors, ElementsAre("Stanley Donen"));
    EXPECT_FALSE(draft.wide.empty());
    ASSERT_EQ(draft.tall.size(), 1U) << "the store's own stays alone";
    EXPECT_THAT(draft.tall[0].path, HasSubstr("/1600x1600bb.jpg"));
}

}  // namespace
}  // namespace marlet
