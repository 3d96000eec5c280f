#include "identify/matcher.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

#include "foundation/errors.h"
#include "identify/guess_model.h"
#include "identify/made_up_files.h"
#include "identify/scripted_source.h"
#include "identify/tmdb_stub.h"
#include "sources/source_settings.h"
#include "support/media.h"
#include "support/qt_app.h"
#include "support/temp_folder.h"

namespace marlet {
namespace {

using test::fileOf;
using test::ScriptedSource;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;

constexpr const char* simpsons = "/x/The Simpsons S37E16 Extreme Makeover Homer Edition.mkv";

ExtEpisode episode(int number, const std::string& title, std::optional<int> minutes = {}) {
    ExtEpisode one;
    one.number = number;
    one.title = title;
    one.minutes = minutes;
    return one;
}

class MatcherTest : public testing::Test {
protected:
    MatcherTest() {
        test::qtApp();
        matcher.order = {SourceID::appleTV, SourceID::itunes};
        matcher.externals = {{SourceID::appleTV, &apple}, {SourceID::itunes, &itunes}};
        matcher.progress = [this](int done, int total, const std::string& text) {
            progress.push_back(std::to_string(done) + "/" + std::to_string(total) + " " + text);
        };
    }
    ~MatcherTest() override { AIGuesser::install({}); }

    std::vector<ResolvedFile> process(const std::vector<std::string>& paths,
                                      std::optional<double> minutes = {}) {
        std::vector<ScannedFile> files;
        for (const std::string& path : paths) files.push_back(fileOf(path, minutes));
        return Async::wait(matcher.process(files));
    }

    ScriptedSource apple{SourceID::appleTV};
    ScriptedSource itunes{SourceID::itunes};
    Matcher matcher;
    std::vector<std::string> progress;
};

std::vector<std::string> pathsOf(const std::vector<ResolvedFile>& results) {
    std::vector<std::string> paths;
    for (const ResolvedFile& result : results) paths.push_back(result.file.url.string());
    return paths;
}

TEST_F(MatcherTest, TheFirstSourceThatHasTheEpisodeGivesItsDetailsArtAndLabel) {
    auto& show =
        apple.add("a", "The Simpsons", 37, {episode(16, "Extreme Makeover Homer Edition")});
    show.info.tall = {"https://a/t.jpg"};
    show.info.overview = "A family.";
    itunes.add("i", "The Simpsons", 37, {episode(16, "Extreme Makeover Homer Edition")});
    const auto results = process({simpsons});
    ASSERT_TRUE(results[0].match);
    EXPECT_EQ(results[0].match->sourceID(), SourceID::appleTV);
    EXPECT_EQ(results[0].match->posterPath, "https://a/t.jpg");
    EXPECT_EQ(results[0].match->manual->description, "A family.");
    EXPECT_TRUE(results[0].verdict.isCertain());
    EXPECT_THAT(itunes.asked, IsEmpty());
}

TEST_F(MatcherTest, WhenTheFirstSourceHasNothingTheNextIsAsked) {
    itunes.add("i", "The Simpsons", 37, {episode(16, "Extreme Makeover Homer Edition")});
    EXPECT_EQ(process({simpsons})[0].match->sourceID(), SourceID::itunes);
    EXPECT_THAT(apple.asked, ElementsAre("shows The Simpsons"));
}

TEST_F(MatcherTest, WhenTheFirstSourceFailsTheNextIsAsked) {
    apple.fails = true;
    itunes.add("i", "The Simpsons", 37, {episode(16, "Extreme Makeover Homer Edition")});
    EXPECT_EQ(process({simpsons})[0].match->sourceID(), SourceID::itunes);
}

TEST_F(MatcherTest, APinnedOrderIsTheOrderInWhichSourcesAreAsked) {
    matcher.order = {SourceID::itunes, SourceID::appleTV};
    apple.add("a", "The Simpsons", 37, {episode(16, "Extreme Makeover Homer Edition")});
    itunes.add("i", "The Simpsons", 37, {episode(16, "Extreme Makeover Homer Edition")});
    EXPECT_EQ(process({simpsons})[0].match->sourceID(), SourceID::itunes);
    EXPECT_THAT(apple.asked, IsEmpty());
}

TEST_F(MatcherTest, WithoutAPinnedOrderTheSettingsGiveIt) {
    SourceSettings::setOrder({SourceID::itunes, SourceID::tmdb, SourceID::appleTV});
    matcher.order.reset();
    itunes.add("i", "The Simpsons", 37, {episode(16, "Extreme Makeover Homer Edition")});
    apple.add("a", "The Simpsons", 37, {episode(16, "Extreme Makeover Homer Edition")});
    EXPECT_EQ(process({simpsons})[0].match->sourceID(), SourceID::itunes);
}

TEST_F(MatcherTest, TMDBTakesItsTurnInTheOrder) {
    test::TmdbStub tmdb;
    tmdb.show({456, "The Simpsons", "1989-12-17", "/s.jpg"});
    tmdb.findsShows("The Simpsons", {456});
    tmdb.season(456, 37, {{16, "Extreme Makeover Homer Edition", 22}});
    matcher.tmdb = tmdb.client();
    matcher.order = {SourceID::appleTV, SourceID::tmdb};
    const auto results = process({simpsons}, 22);
    EXPECT_EQ(results[0].match->sourceID(), SourceID::tmdb);
    EXPECT_EQ(results[0].match->tmdbID, 456);
    EXPECT_THAT(apple.asked, ElementsAre("shows The Simpsons"));
}

TEST_F(MatcherTest, WithTheFirstSourceOffAnUnknownShowWaitsForALook) {
    test::TmdbStub tmdb;
    matcher.tmdb = tmdb.client();
    matcher.order = {SourceID::tmdb};
    const auto results = process({simpsons});
    EXPECT_FALSE(results[0].match);
    EXPECT_FALSE(results[0].verdict.isCertain());
    EXPECT_THAT(results[0].verdict.reasons(),
                ElementsAre("No show called “The Simpsons” in the database"));
}

TEST_F(MatcherTest, WithoutAKeyTheOtherSourcesAreStillAsked) {
    matcher.order = {SourceID::tmdb, SourceID::itunes};
    itunes.add("i", "The Simpsons", 37, {episode(16, "Extreme Makeover Homer Edition")});
    itunes.addFilm("h", "Heat", 1995, 170);
    for (const ResolvedFile& result : process({simpsons, "/x/Heat (1995).mp4"}, 170)) {
        EXPECT_EQ(result.match->sourceID(), SourceID::itunes);
    }
}

TEST_F(MatcherTest, AMissShowsTheWordsOfTheFirstSource) {
    matcher.order = {SourceID::itunes, SourceID::tmdb, SourceID::appleTV};
    const auto results = process({simpsons, "/x/Heat (1995).mp4"});
    EXPECT_THAT(results[0].verdict.reasons(),
                ElementsAre("No show called “The Simpsons” on iTunes Store"));
    EXPECT_THAT(results[1].verdict.reasons(), ElementsAre("No film called “Heat” on iTunes Store"));
}

TEST_F(MatcherTest, WithNoSourceAtAllEveryFileSaysSo) {
    matcher.order = std::vector<SourceID>{};
    for (const ResolvedFile& result : process({simpsons, "/x/Heat (1995).mp4"})) {
        EXPECT_FALSE(result.match);
        EXPECT_THAT(result.verdict.reasons(), ElementsAre("No source is switched on"));
    }
}

TEST_F(MatcherTest, OnlyTheFilesNotYetMatchedAreAskedOfTheNextSource) {
    apple.add("a", "Sheds", 1, {episode(1, "Sheds")});
    itunes.add("i", "Sheds", 1, {episode(1, "Sheds"), episode(2, "Mirrors")});
    const auto results = process(
        {"/x/Sheds S01E01 Sheds.mkv", "/x/Sheds S01E02 Mirrors.mkv", "/x/Sheds S01E07 Rust.mkv"});
    EXPECT_EQ(results[0].match->sourceID(), SourceID::appleTV);
    EXPECT_EQ(results[1].match->sourceID(), SourceID::itunes);
    EXPECT_THAT(results[2].verdict.reasons(),
                ElementsAre("Episode 7 isn't in season 1 on Apple TV"));
}

TEST_F(MatcherTest, ANameThatTellsNothingIsKeptWithItsReason) {
    const auto results = process({"/S01E02.mkv"});
    ASSERT_EQ(results.size(), 1U);
    EXPECT_FALSE(results[0].guess);
    EXPECT_FALSE(results[0].match);
    EXPECT_THAT(results[0].verdict.reasons(), ElementsAre("Couldn't tell what this file is"));
}

TEST_F(MatcherTest, TwoSpellingsOfOneShowAreLookedUpOnce) {
    apple.add("a", "The Dropout", 1, {episode(1, "One"), episode(2, "Two")});
    const auto results = process({"/x/the dropout 1x01 One.mkv", "/y/The.Dropout.S01E02.Two.mkv"});
    EXPECT_THAT(apple.asked, ElementsAre("shows the dropout", "episodes a 1", "info a"));
    EXPECT_EQ(results[0].match->episode, 1);
    EXPECT_EQ(results[1].match->episode, 2);
}

TEST_F(MatcherTest, SeasonsComeByKeyThenFilmsThenTheUnknown) {
    const auto results = process({"/S01E09.mkv", "/x/Heat (1995).mp4", "/x/Zebra S01E01.mkv",
                                  "/x/Yak S02E01.mkv", "/x/Yak S01E02.mkv", "/x/Yak S02E05.mkv"});
    EXPECT_THAT(pathsOf(results),
                ElementsAre("/x/Yak S01E02.mkv", "/x/Yak S02E01.mkv", "/x/Yak S02E05.mkv",
                            "/x/Zebra S01E01.mkv", "/x/Heat (1995).mp4", "/S01E09.mkv"));
    EXPECT_THAT(progress,
                ElementsAre("0/6 Working out what they are", "1/6 Checking Yak", "3/6 Checking Yak",
                            "4/6 Checking Zebra", "5/6 Checking Heat"));
}

TEST_F(MatcherTest, ACompactNumberCountsWhenAShowBearsItOut) {
    apple.add("a", "Dropout", 1, {episode(6, "Iron Sisters")});
    const auto results = process({"/dl/Dropout 106 Iron Sisters.mp4"});
    EXPECT_EQ(results[0].match->episode, 6);
    EXPECT_EQ(results[0].guess->kind, MediaKind::tv);
}

TEST_F(MatcherTest, ACompactNumberThatNoShowBearsOutIsAFilmSoNamed) {
    apple.addFilm("f", "Dropout 106 Iron Sisters", 2010, 90);
    const auto results = process({"/dl/Dropout 106 Iron Sisters.mp4"}, 90);
    ASSERT_EQ(results.size(), 1U);
    ASSERT_TRUE(results[0].match);
    EXPECT_EQ(results[0].match->kind, MediaKind::movie);
    EXPECT_EQ(results[0].guess, test::filmGuess("Dropout 106 Iron Sisters"));
}

TEST_F(MatcherTest, TheFilmReadingStaysEvenWhenNothingIsFound) {
    const auto results = process({"/dl/Dropout 106 Iron Sisters.mp4"});
    EXPECT_EQ(results[0].guess->kind, MediaKind::movie);
    EXPECT_THAT(results[0].verdict.reasons(),
                ElementsAre("No film called “Dropout 106 Iron Sisters” on Apple TV"));
}

Task<FileGuess> reloaded() {
    co_return FileGuess{false, "Some Obscure Film Reloaded", 0, 0, 0};
}

TEST_F(MatcherTest, AModelThatInventsWordsIsSetAsideAndTheFileIsShownWithTheConflictInFront) {
    AIGuesser::install([](std::string, std::string, CancelToken) { return reloaded(); });
    const std::string conflict = "The model added “reloaded”, which isn't in the name";
    const std::string path = "/dl/Some.Obscure.Film.1080p.BluRay.x264.mkv";
    EXPECT_THAT(process({path})[0].verdict.reasons(),
                ElementsAre(conflict, "No film called “Some Obscure Film” on Apple TV"));
    apple.addFilm("f", "Some Obscure Film", 2010, 90);
    const auto results = process({path}, 90);
    EXPECT_TRUE(results[0].match) << "the rules' reading is looked up";
    EXPECT_THAT(results[0].verdict.reasons(), ElementsAre(conflict));
}

TEST_F(MatcherTest, WithTheModelUnavailableTheRulesGuessStands) {
    const auto results = process({"/dl/Some.Obscure.Film.1080p.BluRay.x264.mkv"});
    EXPECT_EQ(results[0].guess->source, Guess::Source::rules);
    EXPECT_EQ(results[0].guess->title, "Some Obscure Film");
}

TEST_F(MatcherTest, NoFilesGiveNoResults) {
    EXPECT_THAT(process({}), IsEmpty());
    EXPECT_THAT(progress, ElementsAre("0/0 Working out what they are"));
}

/// Answers each search for a film only when its gate is opened.
class GatedSource : public ScriptedSource {
public:
    using ScriptedSource::ScriptedSource;

    Task<std::vector<ExtMovie>> searchMovies(std::string title, CancelToken) override {
        started.push_back(title);
        most = std::max(most, ++running);
        const Gate gate = gates[title];
        co_await gate;
        running--;
        co_return std::vector<ExtMovie>{};
    }
    void openAll() {
        for (const auto& [title, gate] : std::map<std::string, Gate>(gates)) gate.open();
    }

    std::map<std::string, Gate> gates;
    std::vector<std::string> started;
    int running = 0;
    int most = 0;
};

std::vector<ScannedFile> letterFilms(const std::string& letters) {
    std::vector<ScannedFile> films;
    for (const char letter : letters) films.push_back(fileOf(std::string("/x/") + letter + ".mp4"));
    return films;
}

TEST_F(MatcherTest, FourFilmsAreLookedUpAtATimeAndResultsComeAsTheyFinish) {
    GatedSource source(SourceID::appleTV);
    matcher.externals = {{SourceID::appleTV, &source}};
    matcher.order = {SourceID::appleTV};
    auto processing = matcher.process(letterFilms("ABCDEF"));
    while (source.started.size() < 4) QCoreApplication::processEvents();
    source.gates["C"].open();
    source.gates["A"].open();
    EXPECT_THAT(source.started, ElementsAre("A", "B", "C", "D", "E", "F"));
    source.openAll();
    const auto results = Async::wait(std::move(processing));
    EXPECT_EQ(source.most, 4);
    ASSERT_EQ(results.size(), 6U);
    EXPECT_EQ(results[0].file.url, "/x/C.mp4");
    EXPECT_EQ(results[1].file.url, "/x/A.mp4");
    EXPECT_EQ(progress.back().substr(0, 13), "6/6 Checking ");
}

TEST_F(MatcherTest, ACancelledMatcherEndsBeforeCancelReturnsAndMayGo) {
    GatedSource source(SourceID::appleTV);
    auto shortLived = std::make_unique<Matcher>();
    shortLived->externals = {{SourceID::appleTV, &source}};
    shortLived->order = {SourceID::appleTV};
    auto processing = shortLived->process(letterFilms("ABCDEF"));
    while (source.started.size() < 4) QCoreApplication::processEvents();
    const CancelToken cancel = shortLived->cancel;
    cancel.cancel();
    EXPECT_TRUE(processing.isReady());
    shortLived.reset();
    source.openAll();  // the calls left behind end on their own
    EXPECT_THROW(Async::wait(std::move(processing)), CancelError);
    EXPECT_EQ(source.started.size(), 4U) << "nothing more is asked";
}

TEST_F(MatcherTest, ACancelledMatcherAsksNothing) {
    matcher.cancel.cancel();
    EXPECT_THROW(process({simpsons, "/x/Heat (1995).mp4"}), CancelError);
    EXPECT_THAT(apple.asked, IsEmpty());
}

/// Real files whose content is no film: the probe tells their names and sizes.
class MatcherOnFiles : public MatcherTest {
protected:
    std::filesystem::path file(const std::string& name, std::size_t size = 10) {
        return folder.write(name, std::string(size, 'x'));
    }
    test::TempFolder folder;
};

TEST_F(MatcherOnFiles, ProbesKeepTheOrderOfTheFiles) {
    std::vector<std::filesystem::path> paths;
    for (std::size_t i = 0; i < 25; i++) {
        paths.push_back(file(std::to_string((i * 7) % 25) + ".mp4", i + 1));
    }
    const auto scanned = Async::wait(matcher.probeAll(paths));
    ASSERT_EQ(scanned.size(), paths.size());
    for (std::size_t i = 0; i < paths.size(); i++) {
        EXPECT_EQ(scanned[i].url, paths[i]);
        EXPECT_EQ(scanned[i].size, static_cast<std::int64_t>(i) + 1);
    }
}

TEST_F(MatcherOnFiles, ARunReadsTheVideoFilesOfAFolderWithoutTheExcludedAndGroupsThem) {
    file("b/Heat (1995).mp4");
    file("a/Sheds S01E02 Mirrors.mp4");
    file("b/Sheds S01E01 Sheds.mp4");
    file("b/notes.txt");
    const auto excluded = file("b/Sheds S01E03 Rust.mp4");
    apple.add("a", "Sheds", 1, {episode(1, "Sheds"), episode(2, "Mirrors"), episode(3, "Rust")});
    const auto items = Async::wait(matcher.run({folder.path()}, {excluded}));
    ASSERT_EQ(items.size(), 2U);
    EXPECT_EQ(items[0].title, "Sheds");
    ASSERT_EQ(items[0].files.size(), 2U);
    EXPECT_EQ(items[0].files[0].file.url.filename(), "Sheds S01E01 Sheds.mp4");
    EXPECT_EQ(items[1].title, "Heat");
    EXPECT_THAT(progress, ElementsAre("0/3 Reading 3 files", "0/3 Working out what they are",
                                      "2/3 Checking Sheds", "3/3 Checking Heat"));
}

TEST_F(MatcherOnFiles, ARehearsalReadsTheRealFileUnderItsOtherName) {
    const auto real = file("real.mp4", 77);
    apple.add("a", "Sheds", 1, {episode(1, "Sheds")});
    const auto results = Async::wait(matcher.run({{"/fake/Sheds S01E01 Sheds.mkv", real}}));
    ASSERT_EQ(results.size(), 1U);
    EXPECT_EQ(results[0].file.url, "/fake/Sheds S01E01 Sheds.mkv");
    EXPECT_EQ(results[0].file.size, 77);
    EXPECT_EQ(results[0].match->episode, 1);
}

TEST_F(MatcherOnFiles, IgnoredTagsLeaveOnlyNameAndFolders) {
    test::RealMovie movie;
    movie.seconds = 1;
    movie.video = false;
    movie.tags = {{"show", "Sheds"}, {"season_number", "1"}, {"episode_sort", "2"}};
    const auto path = folder / "Rust.mp4";
    test::makeMovie(path, movie);
    const auto guessOf = [&] { return Async::wait(matcher.resolve({path}, {}))[0].guess->kind; };
    EXPECT_EQ(guessOf(), MediaKind::tv);
    matcher.ignoreTags = true;
    EXPECT_EQ(guessOf(), MediaKind::movie);
}

TEST_F(MatcherOnFiles, ACancelledRunThrows) {
    file("Heat (1995).mp4");
    auto running = matcher.resolve({folder.path()}, {});
    matcher.cancel.cancel();
    EXPECT_TRUE(running.isReady());
    EXPECT_THROW(Async::wait(std::move(running)), CancelError);
}

}  // namespace
}  // namespace marlet
