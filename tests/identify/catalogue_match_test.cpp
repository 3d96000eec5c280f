#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <list>

#include "identify/made_up_files.h"
#include "identify/matcher.h"
#include "support/catalogue.h"
#include "support/qt_app.h"
#include "support/temp_folder.h"

namespace marlet {
namespace {

using test::fileOf;
using testing::ElementsAre;

/// Whole jobs against the sample catalogue.
class CatalogueMatch : public testing::Test {
protected:
    CatalogueMatch() {
        test::qtApp();
        for (const auto& [name, value] : server.environment())
            environment.emplace_back(name, value);
        matcher.tmdb = TMDBClient::make("test-token", TMDBClient::Refresh::Yes);
        matcher.order = {SourceID::tmdb};
    }
    std::vector<ResolvedFile> process(const std::vector<ScannedFile>& files) {
        return Async::wait(matcher.process(files));
    }

    test::CatalogueServer server;
    std::list<test::ScopedEnv> environment;
    Matcher matcher;
};

ScannedFile observatory(const std::string& name, double minutes) {
    return fileOf("/lib/The Tin Observatory/Season 1/" + name, minutes);
}

TEST_F(CatalogueMatch, ASeasonIsOnePieceOfEvidenceForItsShow) {
    // The older programme is the more popular one and has these numbers too.
    const auto young = process({observatory("01 First Light.mp4", 22),
                                observatory("02 Episode.mp4", 50), observatory("03.x.mp4", 22)});
    for (const ResolvedFile& result : young) EXPECT_EQ(result.match->tmdbID, 201750);
    EXPECT_TRUE(young[0].verdict.isCertain());
    EXPECT_THAT(young[1].verdict.reasons(),
                ElementsAre("File says “Episode”, database says “The Wrong End of the Telescope”",
                            "Length differs: file 50 min, database 22 min"));
    const auto old = process({observatory("01 Sheds.mp4", 50), observatory("04 Rust.mp4", 49)});
    for (const ResolvedFile& result : old) {
        EXPECT_EQ(result.match->tmdbID, 198750);
        EXPECT_TRUE(result.verdict.isCertain());
    }
}

TEST_F(CatalogueMatch, BothPartsInOneFileAndEachInItsOwn) {
    const auto path = [](const std::string& name) {
        return "/lib/The Tin Observatory/Season 3/" + name;
    };
    const auto one = process({fileOf(path("05 Last Light.mp4"), 43)});
    EXPECT_EQ(one[0].match->episodeEnd, 6);
    EXPECT_EQ(one[0].match->episodeTitle, "Last Light (Parts 1 & 2)");
    EXPECT_TRUE(one[0].verdict.isCertain());
    const auto two = process({fileOf(path("05 Last Light, Part 1.mp4"), 22),
                              fileOf(path("06 Last Light, Part 2.mp4"), 22)});
    for (const ResolvedFile& result : two) {
        EXPECT_EQ(result.match->episodeEnd, std::nullopt);
        EXPECT_TRUE(result.verdict.isCertain());
    }
}

TEST_F(CatalogueMatch, RemakesWithoutAYearOrALengthAreToldWithAllTheirYears) {
    const auto results = process({fileOf("/lib/Dr. Jekyll and Mr. Hyde.mkv", 200)});
    EXPECT_TRUE(results[0].ambiguous);
    EXPECT_EQ(results[0].match->tmdbID, 192001) << "the most popular";
    EXPECT_THAT(results[0].verdict.reasons(),
                ElementsAre("More than one film is called “Dr. Jekyll and Mr. Hyde” (1912, 1913, "
                            "1920). Check which one this is."));
    const auto items = Matcher::group(results);
    EXPECT_EQ(items[0].title, "Dr. Jekyll and Mr. Hyde");
    EXPECT_EQ(items[0].posterPath, std::nullopt);
}

TEST_F(CatalogueMatch, ARemakesYearTellsWhichOneItIs) {
    const auto results = process({fileOf("/lib/Dr. Jekyll and Mr. Hyde (1912).mkv", 12)});
    EXPECT_EQ(results[0].match->tmdbID, 191201);
    EXPECT_TRUE(results[0].verdict.isCertain());
}

TEST_F(CatalogueMatch, AServiceThatHasGoneIsOutOfReachForShowsAndFilms) {
    server.stop();
    for (const ResolvedFile& result :
         process({observatory("01 First Light.mp4", 22), fileOf("/lib/Detour (1945).mkv", 68)})) {
        EXPECT_FALSE(result.match);
        EXPECT_THAT(result.verdict.reasons(), ElementsAre("Couldn't reach the database"));
    }
}

TEST_F(CatalogueMatch, NamesOfAnyBytesEndInAVerdict) {
    const std::vector<ScannedFile> files{fileOf("/dl/tab\there\nnew line (1999).mkv", 90),
                                         fileOf("/dl/\xff\xfe\xc3 broken S01E01 \xe2\x82.mkv", 22),
                                         fileOf("/dl/" + std::string(251, 'w') + ".mkv", 22),
                                         fileOf("/dl/?query=1&year=2%00#x (2001).mp4", 1e9),
                                         fileOf("/dl/“”|\u202e.mp4", 0),
                                         fileOf("/", -5),
                                         fileOf("", 1)};
    const auto results = process(files);
    ASSERT_EQ(results.size(), files.size());
    for (const ResolvedFile& result : results) {
        EXPECT_FALSE(result.verdict.isCertain());
        EXPECT_FALSE(result.verdict.reasons().empty());
    }
}

}  // namespace
}  // namespace marlet
