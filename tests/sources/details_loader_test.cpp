#include "sources/details_loader.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "foundation/text.h"
#include "support/tmdb_stub.h"

namespace marlet {
namespace {

using test::HttpStub;
using Names = std::vector<std::string>;
using Shape = ArtworkOption::Shape;

TMDBImage image(const std::string& path, std::optional<std::string> language, double vote) {
    return {path, std::move(language), vote, {}, {}};
}

Names pathsOf(const std::vector<ArtworkOption>& options) {
    Names paths;
    for (const ArtworkOption& option : options) paths.push_back(option.path);
    return paths;
}

TEST(DetailsText, ALongDescriptionEndsAtASentenceWithin255Characters) {
    std::string text;
    while (text.size() < 300) text += "Daphne moves in upstairs and nothing stays as it was. ";
    const std::string cut = DetailsLoader::shorten(text, 255);
    EXPECT_LE(Text::characterCount(cut), 255U);
    EXPECT_TRUE(Text::endsWith(cut, "as it was."));
    EXPECT_TRUE(Text::startsWith(text, cut));
}

TEST(DetailsText, ALongDescriptionWithoutASentenceEndIsCutWithAnEllipsis) {
    const std::string cut = DetailsLoader::shorten(std::string(300, 'x'), 255);
    EXPECT_EQ(Text::characterCount(cut), 255U);
    EXPECT_TRUE(Text::endsWith(cut, "…"));
}

TEST(DetailsText, UniqueKeepsTheFirstOfEachInOrder) {
    EXPECT_EQ(DetailsLoader::unique({"b", "a", "b", "c", "a"}), (Names{"b", "a", "c"}));
    EXPECT_TRUE(DetailsLoader::unique({}).empty());
}

TEST(DetailsText, TwoPartsOfOneTitleAreCombinedWithTheirCapitals) {
    EXPECT_EQ(DetailsLoader::combinedTitle("Three Dates and a Breakup (1)",
                                           "Three Dates and a Breakup (2)"),
              "Three Dates and a Breakup (Parts 1 & 2)");
    EXPECT_EQ(DetailsLoader::combinedTitle("Goodnight, Seattle (1)", "GOODNIGHT, Seattle, Part 2"),
              "Goodnight, Seattle (Parts 1 & 2)");
}

TEST(DetailsText, TwoOtherTitlesStandSideBySide) {
    EXPECT_EQ(DetailsLoader::combinedTitle("Sliding Frasiers", "Fahrenheit 451"),
              "Sliding Frasiers / Fahrenheit 451");
    EXPECT_EQ(DetailsLoader::combinedTitle("One (1)", "Two (2)"), "One (1) / Two (2)");
}

TEST(ArtworkOptions, ThePersonsLanguageComesFirstThenOthersThenPicturesWithoutWords) {
    const test::ScopedEnv language("LANGUAGE", "fr");
    const auto options = DetailsLoader::options(
        {image("/none", {}, 9), image("/xx", "xx", 10), image("/en", "en", 5),
         image("/fr-low", "fr", 1), image("/de", "de", 6), image("/fr-high", "fr", 2)},
        "/fallback", Shape::tall);
    EXPECT_EQ(pathsOf(options), (Names{"/fr-high", "/fr-low", "/de", "/en", "/xx", "/none"}));
    EXPECT_EQ(options[0].language, "fr");
    EXPECT_EQ(options[0].shape, Shape::tall);
    EXPECT_FALSE(options[0].isStill);
}

TEST(ArtworkOptions, EqualPicturesKeepTheServicesOrder) {
    EXPECT_EQ(
        pathsOf(DetailsLoader::options(
            {image("/1", "en", 5), image("/2", "en", 5), image("/3", "en", 5)}, {}, Shape::wide)),
        (Names{"/1", "/2", "/3"}));
}

TEST(ArtworkOptions, AtMostTwelveAreKept) {
    std::vector<TMDBImage> many;
    for (int i = 0; i < 20; i++) many.push_back(image("/" + std::to_string(i), "en", i));
    const auto options = DetailsLoader::options(many, {}, Shape::wide);
    ASSERT_EQ(options.size(), 12U);
    EXPECT_EQ(options.front().path, "/19");
    EXPECT_EQ(options.back().path, "/8");
}

TEST(ArtworkOptions, NoPicturesAndAPosterPathGiveThatOneWithoutALanguage) {
    const auto options = DetailsLoader::options({}, "/poster", Shape::tall);
    ASSERT_EQ(options.size(), 1U);
    EXPECT_EQ(options[0], (ArtworkOption{Shape::tall, "/poster", std::nullopt, false}));
    EXPECT_TRUE(DetailsLoader::options({}, {}, Shape::tall).empty());
}

constexpr const char* film = R"({"id":12,"title":"Nemo","release_date":"2003-05-30",
  "overview":"A father looks for his son.","poster_path":"/p","backdrop_path":"/b",
  "genres":[{"name":"Animation"},{"name":"Family"}],
  "credits":{"cast":[{"name":"Ellen","order":1},{"name":"Albert","order":0},{"name":"Guest"},
                     {"name":"Ellen","order":5}],
             "crew":[{"name":"Bob","job":"Writer"},{"name":"Andrew","job":"Director"},
                     {"name":"Andrew","job":"Story"},{"name":"Dave","job":"Screenplay"},
                     {"name":"Tom","job":"Composer"},{"name":"Bob","job":"Story"}]},
  "images":{"backdrops":[{"file_path":"/b1"}],
            "posters":[{"file_path":"/p2","iso_639_1":"de"},{"file_path":"/p1","iso_639_1":"en"}]},
  "release_dates":{"results":[{"iso_3166_1":"US","release_dates":[{"certification":"G"}]}]}})";

constexpr const char* show = R"({"id":7,"name":"Frasier","poster_path":"/sp","backdrop_path":"/sb",
  "genres":[{"name":"Comedy"}],"images":{"backdrops":[],"posters":[{"file_path":"/sp1"}]},
  "content_ratings":{"results":[{"iso_3166_1":"US","rating":"TV-PG"}]}})";

constexpr const char* episode3 = R"json({"episode_number":3,"season_number":2,"name":"The Club (1)",
  "overview":"A club opens.","air_date":"1994-10-04",
  "credits":{"cast":[{"name":"David","order":1},{"name":"Kelsey","order":0}],
             "crew":[{"name":"Not used","job":"Director"}],"guest_stars":[{"name":"Nobody"}]},
  "crew":[{"name":"James","job":"Director"},{"name":"Linda","job":"Teleplay"},
          {"name":"Chuck","job":"Writer"},{"name":"James","job":"Story"}],
  "guest_stars":[{"name":"Griffin","order":9},{"name":"David"}],
  "images":{
    "stills" : [ {"file_path" : "/still"} ]
}
})json";

constexpr const char* episode4 = R"json({"episode_number":4,"name":"The Club (2)"
})json";

class DetailsLoaderTest : public testing::Test {
protected:
    DetailsLoaderTest() {
        web().answer("/3/movie/12", film);
        web().answer("/3/tv/7", show);
        web().answer("/3/tv/7/season/2/episode/3", episode3);
        web().answer("/3/tv/7/season/2/episode/4", episode4);
        web().answer("/3/tv/7/season/2/images", R"({"posters":[{"file_path":"/season"}]})");
    }

    static Match filmMatch() {
        Match match;
        match.tmdbID = 12;
        match.kind = MediaKind::movie;
        match.title = "Nemo";
        match.year = 2003;
        return match;
    }
    static Match episodeMatch() {
        Match match;
        match.tmdbID = 7;
        match.kind = MediaKind::tv;
        match.title = "Frasier";
        match.season = 2;
        match.episode = 3;
        return match;
    }
    /// From another catalogue: a number of its own, and details.
    static Match external(Match match) {
        match.tmdbID = -5;
        match.manual.emplace();
        match.manual->source = SourceID::appleTV;
        match.manual->title = match.kind == MediaKind::movie ? "Nemo" : "The Club";
        return match;
    }
    static Match byHand(Match match, std::int64_t id) {
        match.tmdbID = id;
        match.manual.emplace();
        match.manual->title = "Typed in";
        return match;
    }
    FileDraft load(Match match) {
        return Async::wait(DetailsLoader::load(std::move(match), {}, tmdb_.client));
    }
    bool asked(const std::string& start) {
        const auto targets = web().targets();
        return std::any_of(targets.begin(), targets.end(),
                           [&](const auto& target) { return Text::startsWith(target, start); });
    }
    HttpStub& web() { return tmdb_.web; }

    test::TMDBStub tmdb_;
};

TEST_F(DetailsLoaderTest, AFilmsFieldsComeFromItsFullRecord) {
    const FileDraft draft = load(filmMatch());
    const Details& details = draft.details;
    EXPECT_EQ(details.kind, MediaKind::movie);
    EXPECT_EQ(details.title, "Nemo");
    EXPECT_EQ(details.description, "A father looks for his son.");
    EXPECT_EQ(details.longDescription, details.description);
    EXPECT_EQ(details.cast, (Names{"Albert", "Ellen", "Guest"}));
    EXPECT_EQ(details.directors, (Names{"Andrew"}));
    EXPECT_EQ(details.writers, (Names{"Bob", "Andrew", "Dave"}));
    EXPECT_EQ(details.genre, "Animation");
    EXPECT_EQ(details.rating, "G");
    EXPECT_EQ(details.releaseDate, "2003-05-30");
    EXPECT_EQ(details.show, "");
    EXPECT_FALSE(details.season);
    EXPECT_EQ(pathsOf(draft.wide), (Names{"/b1"}));
    EXPECT_EQ(pathsOf(draft.tall), (Names{"/p1", "/p2"}));
    EXPECT_EQ(draft.chosenWide, draft.wide.front());
    EXPECT_EQ(draft.chosenTall, draft.tall.front());
    EXPECT_EQ(draft.original, draft.details);
    EXPECT_FALSE(draft.seasonKey);
}

TEST_F(DetailsLoaderTest, WhatTheSourceLacksStaysEmpty) {
    web().answer("/3/movie/12", R"({"id":12,"title":"Nemo"})");
    const FileDraft draft = load(filmMatch());
    Details expected;
    expected.kind = MediaKind::movie;
    expected.title = "Nemo";
    EXPECT_EQ(draft.details, expected);
    EXPECT_TRUE(draft.wide.empty());
    EXPECT_FALSE(draft.chosenWide);
}

TEST_F(DetailsLoaderTest, AFilmWithoutPicturesButWithAPosterPathHasOneTallOption) {
    web().answer("/3/movie/12",
                 R"({"id":12,"title":"x","poster_path":"/p","images":{"posters":[]}})");
    EXPECT_EQ(pathsOf(load(filmMatch()).tall), (Names{"/p"}));
}

TEST_F(DetailsLoaderTest, ALongOverviewIsKeptWholeBesideItsShortForm) {
    std::string text;
    while (text.size() < 300) text += "Nothing stays as it was. ";
    web().answer("/3/movie/12", R"({"id":12,"title":"x","overview":")" + text + "\"}");
    const FileDraft draft = load(filmMatch());
    EXPECT_EQ(draft.details.longDescription, text);
    EXPECT_LE(Text::characterCount(draft.details.description), 255U);
    EXPECT_TRUE(Text::endsWith(draft.details.description, "."));
}

TEST_F(DetailsLoaderTest, AnEpisodesFieldsComeFromItsShowAndItsOwnRecord) {
    const FileDraft draft = load(episodeMatch());
    const Details& details = draft.details;
    EXPECT_EQ(details.kind, MediaKind::tv);
    EXPECT_EQ(details.show, "Frasier");
    EXPECT_EQ(details.title, "The Club (1)");
    EXPECT_EQ(details.season, 2);
    EXPECT_EQ(details.episode, 3);
    EXPECT_FALSE(details.episodeEnd);
    EXPECT_EQ(details.longDescription, "A club opens.");
    EXPECT_EQ(details.cast, (Names{"Kelsey", "David", "Griffin"}));
    EXPECT_EQ(details.directors, (Names{"James"}));
    EXPECT_EQ(details.writers, (Names{"Linda", "Chuck", "James"}));
    EXPECT_EQ(details.genre, "Comedy");
    EXPECT_EQ(details.rating, "TV-PG");
    EXPECT_EQ(details.releaseDate, "1994-10-04");
    EXPECT_EQ(pathsOf(draft.wide), (Names{"/still", "/sb"}));
    EXPECT_TRUE(draft.wide[0].isStill);
    EXPECT_FALSE(draft.wide[1].isStill);
    EXPECT_EQ(pathsOf(draft.tall), (Names{"/season", "/sp1"}));
    EXPECT_EQ(draft.seasonKey, "7-S2");
    EXPECT_EQ(draft.original, draft.details);
}

TEST_F(DetailsLoaderTest, ADoubleEpisodeHasBothTitlesInOne) {
    Match match = episodeMatch();
    match.episodeEnd = 4;
    const Details details = load(match).details;
    EXPECT_EQ(details.title, "The Club (Parts 1 & 2)");
    EXPECT_EQ(details.episodeEnd, 4);
    EXPECT_EQ(details.longDescription, "A club opens.");
}

TEST_F(DetailsLoaderTest, ShowAndEpisodeLoadSideBySide) {
    for (const char* path : {"/3/tv/7", "/3/tv/7/season/2/episode/3"}) {
        HttpStub::Reply held{200, path == std::string("/3/tv/7") ? show : episode3, {}};
        held.manner = HttpStub::Manner::Held;
        web().answer(path, {held});
    }
    auto task = DetailsLoader::load(episodeMatch(), {}, tmdb_.client);
    for (int i = 0; i < 5000 && web().held() < 2; i++)
        Async::wait(Async::sleep(std::chrono::milliseconds(1)));
    EXPECT_EQ(web().held(), 2);
    web().release();
    EXPECT_EQ(Async::wait(std::move(task)).details.show, "Frasier");
}

TEST_F(DetailsLoaderTest, AFailureOfTheFirstRequestsIsPassedOn) {
    web().answer("/3/tv/7", {{500, "", {}}});
    EXPECT_THROW(load(episodeMatch()), TMDBError);
    web().answer("/3/movie/12", {{401, "", {}}});
    EXPECT_THROW(load(filmMatch()), TMDBError);
}

TEST_F(DetailsLoaderTest, SeasonPostersThatCannotBeHadAreNoFailure) {
    web().answer("/3/tv/7/season/2/images", {{500, "", {}}});
    EXPECT_EQ(pathsOf(load(episodeMatch()).tall), (Names{"/sp1"}));
}

TEST_F(DetailsLoaderTest, WithoutAClientATmdbMatchFailsForWantOfAKey) {
    try {
        Async::wait(DetailsLoader::load(filmMatch(), {}, nullptr));
        FAIL();
    } catch (const TMDBError& error) {
        EXPECT_EQ(error.kind(), TMDBError::Kind::noKey);
    }
}

TEST_F(DetailsLoaderTest, TheEpisodesOfASeasonShareItsShowsRecord) {
    load(episodeMatch());
    const auto before = web().count();
    Match next = episodeMatch();
    next.episode = 4;
    load(next);
    EXPECT_EQ(web().count(), before + 1);
}

TEST_F(DetailsLoaderTest, DetailsOfAnotherSourceBecomeADraftWithoutAskingAnyone) {
    Match match = external(episodeMatch());
    ManualDetails& manual = *match.manual;
    manual.description = std::string(200, 'a') + ". " + std::string(100, 'b');
    manual.releaseDate = "1994-10-04";
    manual.cast = {"Kelsey"};
    manual.directors = {"James"};
    manual.writers = {"Linda"};
    manual.genre = "Comedy";
    manual.rating = "TV-PG";
    manual.wide = {"https://a/w1", "https://a/w2"};
    manual.tall = {"https://a/t"};
    const FileDraft draft = DetailsLoader::loadExternal(match, manual);
    EXPECT_EQ(draft.details.title, "The Club");
    EXPECT_EQ(draft.details.show, "Frasier");
    EXPECT_EQ(draft.details.season, 2);
    EXPECT_EQ(draft.details.episode, 3);
    EXPECT_EQ(draft.details.longDescription, manual.description);
    EXPECT_EQ(draft.details.description, std::string(200, 'a') + ".");
    EXPECT_EQ(draft.details.writers, (Names{"Linda"}));
    EXPECT_EQ(pathsOf(draft.wide), (Names{"https://a/w1", "https://a/w2"}));
    EXPECT_EQ(draft.wide[0], (ArtworkOption{Shape::wide, "https://a/w1", std::nullopt, false}));
    EXPECT_EQ(draft.chosenTall->path, "https://a/t");
    EXPECT_EQ(draft.seasonKey, "-5-S2");
    EXPECT_EQ(draft.original, draft.details);
    EXPECT_EQ(web().count(), 0U);
    match.season.reset();
    EXPECT_FALSE(DetailsLoader::loadExternal(match, manual).seasonKey);
}

TEST_F(DetailsLoaderTest, AFilmOfAnotherSourceHasNoShow) {
    const Match match = external(filmMatch());
    const FileDraft draft = DetailsLoader::loadExternal(match, *match.manual);
    EXPECT_EQ(draft.details.show, "");
    EXPECT_FALSE(draft.seasonKey);
}

TEST_F(DetailsLoaderTest, AFilmOfAnotherSourceKeepsItsTitleAndGetsWhatItLacks) {
    Match match = external(filmMatch());
    match.manual->title = "NEMO";
    match.manual->genre = "Kids";
    match.manual->tall = {"https://a/t"};
    web().answer("/3/search/movie",
                 R"({"results":[{"id":1,"title":"Nemo Returns","release_date":"2003-01-01"},
                     {"id":2,"title":"Nemo","release_date":"1999-01-01"},
                     {"id":3,"title":"Nemo"},
                     {"id":12,"title":"Nemo","release_date":"2004-01-01"}]})");
    const FileDraft draft = load(match);
    EXPECT_EQ(draft.details.title, "NEMO");
    EXPECT_EQ(draft.details.genre, "Kids");
    EXPECT_EQ(draft.details.description, "A father looks for his son.");
    EXPECT_EQ(draft.details.rating, "G");
    EXPECT_EQ(draft.details.cast.size(), 3U);
    EXPECT_EQ(pathsOf(draft.tall), (Names{"https://a/t"}));
    EXPECT_EQ(pathsOf(draft.wide), (Names{"/b1"}));
    EXPECT_EQ(draft.chosenWide->path, "/b1");
    EXPECT_EQ(draft.original, draft.details);
    EXPECT_TRUE(asked("/3/search/movie?include_adult=false&query=NEMO&year=2003"));
}

TEST_F(DetailsLoaderTest, WithoutAYearTheFirstFilmOfThatTitleIsTaken) {
    Match match = external(filmMatch());
    match.year.reset();
    web().answer("/3/search/movie",
                 R"({"results":[{"id":12,"title":"Nemo","release_date":"1954-01-01"}]})");
    EXPECT_EQ(load(match).details.rating, "G");
}

TEST_F(DetailsLoaderTest, AFullDraftAsksNobody) {
    Match match = external(filmMatch());
    ManualDetails& manual = *match.manual;
    manual.description = manual.genre = manual.rating = "x";
    manual.cast = manual.wide = manual.tall = {"y"};
    load(match);
    EXPECT_EQ(web().count(), 0U);
}

TEST_F(DetailsLoaderTest, AnEpisodeOfAnotherSourceIsFilledFromTheShowWhoseEpisodeFits) {
    Match match = external(episodeMatch());
    match.manual->description = "Its own words.";
    web().answer("/3/tv/5/season/2/episode/3", R"({"episode_number":3,"name":"Another story"})");
    web().answer("/3/search/tv",
                 R"({"results":[{"id":4,"name":"Frasier Crane"},{"id":6,"name":"Frasier"},
                     {"id":5,"name":"FRASIER"},{"id":7,"title":"Frasier"}]})");
    const FileDraft draft = load(match);
    EXPECT_EQ(draft.details.title, "The Club");
    EXPECT_EQ(draft.details.description, "Its own words.");
    EXPECT_EQ(draft.details.genre, "Comedy");
    EXPECT_EQ(draft.details.rating, "TV-PG");
    EXPECT_EQ(draft.details.cast, (Names{"Kelsey", "David", "Griffin"}));
    EXPECT_EQ(draft.details.directors, (Names{"James"}));
    EXPECT_EQ(pathsOf(draft.wide), (Names{"/still", "/sb"}));
    EXPECT_EQ(pathsOf(draft.tall), (Names{"/sp1"}));
    EXPECT_FALSE(asked("/3/tv/4"));  // a show of another name
    EXPECT_TRUE(asked("/3/tv/6"));   // no such episode there
    EXPECT_TRUE(asked("/3/tv/5"));   // another title there
}

TEST_F(DetailsLoaderTest, AnEpisodeOfAnotherTitleFitsByItsDate) {
    Match match = external(episodeMatch());
    match.manual->title = "Le club";
    match.manual->releaseDate = "1994-10-04";
    web().answer("/3/search/tv", R"({"results":[{"id":7,"name":"Frasier"}]})");
    EXPECT_EQ(load(match).details.genre, "Comedy");
    match.manual->releaseDate = "1994-10-05";
    EXPECT_EQ(load(match).details.genre, "");
}

TEST_F(DetailsLoaderTest, AnyFailureWhileFillingLeavesTheDraftAsItIs) {
    const Match match = external(filmMatch());
    const FileDraft bare = DetailsLoader::loadExternal(match, *match.manual);
    EXPECT_EQ(load(match), bare);  // the search is a 404
    web().answer("/3/search/movie", "<html>");
    EXPECT_EQ(load(match), bare);
    web().answer("/3/search/movie",
                 R"({"results":[{"id":99,"title":"Nemo","release_date":"2003-01-01"}]})");
    EXPECT_EQ(load(match), bare);
    EXPECT_EQ(Async::wait(DetailsLoader::load(match, {}, nullptr)), bare);
}

TEST_F(DetailsLoaderTest, ACancelWhileFillingEndsTheCall) {
    CancelToken cancel;
    auto client = tmdb_.make("t", TMDBClient::Refresh::No, cancel);
    cancel.cancel();
    EXPECT_THROW(Async::wait(DetailsLoader::load(external(filmMatch()), {}, client)), CancelError);
}

TEST_F(DetailsLoaderTest, FillingReplacesNothingThatAPersonChanged) {
    const Match match = external(filmMatch());
    FileDraft draft = DetailsLoader::loadExternal(match, *match.manual);
    draft.details.genre = "My genre";
    web().answer("/3/search/movie",
                 R"({"results":[{"id":12,"title":"Nemo","release_date":"2003-01-01"}]})");
    draft = Async::wait(DetailsLoader::fillBlanks(draft, match, tmdb_.client));
    EXPECT_EQ(draft.details.genre, "My genre");
    EXPECT_EQ(draft.original.genre, "Animation");
    EXPECT_EQ(draft.details.rating, "G");
}

TEST_F(DetailsLoaderTest, DetailsTypedByHandGetTmdbsPicturesAndNothingElse) {
    const FileDraft draft = load(byHand(episodeMatch(), 7));
    EXPECT_EQ(draft.details.title, "Typed in");
    EXPECT_EQ(draft.details.description, "");
    EXPECT_EQ(draft.details.genre, "");
    EXPECT_EQ(pathsOf(draft.wide), (Names{"/still", "/sb"}));
    EXPECT_EQ(pathsOf(draft.tall), (Names{"/season", "/sp1"}));
    EXPECT_EQ(draft.chosenTall->path, "/season");
    EXPECT_EQ(draft.seasonKey, "7-S2");
    EXPECT_EQ(draft.original, draft.details);
}

TEST_F(DetailsLoaderTest, AnEpisodeThatTmdbLacksStillGetsItsShowsPictures) {
    Match match = byHand(episodeMatch(), 7);
    match.episode = 99;
    const FileDraft draft = load(match);
    EXPECT_EQ(draft.details.episode, 99);
    EXPECT_EQ(pathsOf(draft.wide), (Names{"/sb"}));
    EXPECT_EQ(pathsOf(draft.tall), (Names{"/season", "/sp1"}));
}

TEST_F(DetailsLoaderTest, DetailsTypedByHandStandWithoutAnyService) {
    const Match unknown = byHand(filmMatch(), 0);
    EXPECT_EQ(load(unknown).details.title, "Typed in");
    EXPECT_EQ(web().count(), 0U);
    const Match gone = byHand(filmMatch(), 404);
    EXPECT_TRUE(load(gone).tall.empty());
    EXPECT_EQ(Async::wait(DetailsLoader::load(gone, {}, nullptr)).details.title, "Typed in");
}

TEST_F(DetailsLoaderTest, TheEndOfADoubleEpisodeGoesWhenAnotherEpisodeIsPicked) {
    Match match = byHand(episodeMatch(), 7);
    match.season = 2;
    match.episode = 3;
    match.episodeEnd = 4;
    const auto endOf = [&match](int season, int episode) {
        return Async::wait(
                   DetailsLoader::loadManual(match, *match.manual, season, episode, nullptr))
            .details.episodeEnd;
    };
    EXPECT_EQ(endOf(2, 3), 4);
    EXPECT_EQ(endOf(2, 9), std::nullopt);
    EXPECT_EQ(endOf(1, 3), std::nullopt);
}

TEST_F(DetailsLoaderTest, SeasonAndEpisodePickedInReviewReplaceThoseOfTheMatch) {
    const Match match = byHand(episodeMatch(), 7);
    const FileDraft draft =
        Async::wait(DetailsLoader::loadManual(match, *match.manual, 2, 4, tmdb_.client));
    EXPECT_EQ(draft.details.episode, 4);
    EXPECT_TRUE(asked("/3/tv/7/season/2/episode/4"));
    const FileDraft none =
        Async::wait(DetailsLoader::loadManual(match, *match.manual, {}, {}, nullptr));
    EXPECT_FALSE(none.details.season);
    EXPECT_FALSE(none.seasonKey);
}

}  // namespace
}  // namespace marlet
