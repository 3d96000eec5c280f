#include "screens/inspector_fixture.h"

namespace marlet::test {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

TEST_F(InspectorScreen, WithoutASelectionThereIsNothing) {
    inspector->refresh();
    EXPECT_TRUE(inspector->isEmpty());
}

TEST_F(InspectorScreen, TheHeadTellsNameReasonsAndSource) {
    place({resolved(file("x.mp4"), film(), Verdict::needsLook({"One reason", "Another"}))});
    EXPECT_FALSE(inspector->isEmpty());
    EXPECT_EQ(inspector->fileName(), QStringLiteral("x.mp4"));
    EXPECT_EQ(inspector->state(), QStringLiteral("look"));
    EXPECT_EQ(inspector->verdict(), QStringLiteral("Check this"));
    EXPECT_EQ(inspector->reasons(),
              (QStringList{QStringLiteral("One reason"), QStringLiteral("Another")}));
    EXPECT_EQ(inspector->source(), QStringLiteral("Source: TMDB"));
    EXPECT_EQ(inspector->apple(), QString());
    EXPECT_TRUE(inspector->canConfirm());
    inspector->confirm();
    EXPECT_EQ(inspector->state(), QStringLiteral("ready"));
    EXPECT_FALSE(inspector->canConfirm());
}

TEST_F(InspectorScreen, AnAppleSourceSaysWhatComesFromApple) {
    Match match = film();
    match.manual = ManualDetails{.title = "Charade", .source = SourceID::itunes};
    place({resolved(file("x.mp4"), match)});
    EXPECT_EQ(inspector->source(), QStringLiteral("Source: iTunes Store"));
    EXPECT_EQ(inspector->apple(),
              QStringLiteral("The title, description, cast and artwork come from Apple"));
}

TEST_F(InspectorScreen, WhatAPersonTypedIsTaggedByHand) {
    Match match = film();
    match.manual = ManualDetails{.title = "Charade"};
    place({resolved(file("x.mp4"), match)});
    EXPECT_EQ(inspector->source(), QStringLiteral("Tagged by hand"));
    EXPECT_EQ(inspector->apple(), QString());
}

TEST_F(InspectorScreen, WithoutAMatchItSaysSoAndOpensThePicker) {
    const auto url = file("x.mp4");
    place({resolved(url, {}, Verdict::needsLook({"Nothing found"}))});
    EXPECT_EQ(inspector->match(), QStringLiteral("Not matched yet"));
    EXPECT_EQ(inspector->source(), QString());
    EXPECT_FALSE(inspector->canConfirm());
    inspector->openPicker();
    EXPECT_EQ(model->matchPickerURL, url);
}

TEST_F(InspectorScreen, ASeasonListsItsEpisodesAndChoosingOneShowsIt) {
    const auto first = file("1.mp4");
    const auto second = file("2.mp4");
    place({resolved(first, episode(1)), resolved(second, episode(2), Verdict::needsLook({"x"}))});
    EXPECT_THAT(column(inspector->episodes(), "title"),
                ElementsAre("S01E01 · Part 1", "S01E02 · Part 2"));
    EXPECT_THAT(column(inspector->episodes(), "state"), ElementsAre("ready", "look"));
    EXPECT_EQ(inspector->episode(), 0);
    inspector->chooseEpisode(1);
    EXPECT_EQ(model->inspectorFile, second);
    EXPECT_EQ(inspector->fileName(), QStringLiteral("2.mp4"));
    inspector->chooseEpisode(7);
    EXPECT_EQ(model->inspectorFile, second);
}

TEST_F(InspectorScreen, AFilmHasNineFieldsAndAnEpisodeOneMore) {
    const auto url = file("x.mp4");
    place({resolved(url, film())});
    EXPECT_TRUE(inspector->hasFailed()) << "no details, and none on their way";
    draftFor(url, filmDraft());
    EXPECT_FALSE(inspector->hasFailed());
    EXPECT_THAT(column(inspector->details()->fields(), "label"),
                ElementsAre("Title", "Description", "Long description", "Cast", "Director",
                            "Writer", "Genre", "Content rating", "Release date"));
    EXPECT_EQ(field("Content rating", "prompt"), "R, TV-14");
    EXPECT_EQ(field("Release date", "prompt"), "yyyy-mm-dd");
    EXPECT_EQ(field("Cast", "text"), "Cary Grant, Audrey Hepburn");
    FileDraft tv = filmDraft();
    tv.details.kind = MediaKind::tv;
    draftFor(url, tv);
    EXPECT_THAT(column(inspector->details()->fields(), "label"), Contains("To episode"));
}

TEST_F(InspectorScreen, WhatIsTypedGoesIntoTheDraftAndStaysAsTyped) {
    const auto url = file("x.mp4");
    place({resolved(url, film())});
    draftFor(url, filmDraft());
    inspector->details()->edit(rowOf("Cast"), QStringLiteral("Cary Grant,  Walter Matthau, "));
    EXPECT_THAT(details(url).cast, ElementsAre("Cary Grant", "Walter Matthau"));
    EXPECT_EQ(field("Cast", "text"), "Cary Grant,  Walter Matthau, ") << "the next name follows";
    EXPECT_TRUE(inspector->details()->isEdited());
    inspector->details()->undoAll();
    EXPECT_THAT(details(url).cast, ElementsAre("Cary Grant", "Audrey Hepburn"));
    EXPECT_EQ(field("Cast", "text"), "Cary Grant, Audrey Hepburn");
    EXPECT_FALSE(inspector->details()->isEdited());
}

TEST_F(InspectorScreen, ToEpisodeTakesOnlyALaterNumber) {
    const auto url = file("x.mp4");
    place({resolved(url, episode(3))});
    FileDraft draft = filmDraft();
    draft.details.kind = MediaKind::tv;
    draft.details.season = 1;
    draft.details.episode = 3;
    draft.original = draft.details;
    draftFor(url, draft);
    const int row = rowOf("To episode");
    for (const char* odd : {"3", "x", "2"}) {
        inspector->details()->edit(row, QString::fromLatin1(odd));
        inspector->refresh();
        EXPECT_FALSE(details(url).episodeEnd) << odd;
        EXPECT_EQ(field("To episode", "text"), odd) << "it may be half typed";
    }
    inspector->details()->edit(row, QStringLiteral("4"));
    EXPECT_EQ(details(url).episodeEnd, 4);
    inspector->details()->edit(row, QString());
    EXPECT_FALSE(details(url).episodeEnd);
}

TEST_F(InspectorScreen, UndoGoesBackFieldByField) {
    const auto url = file("x.mp4");
    place({resolved(url, film())});
    draftFor(url, filmDraft());
    for (const char* typed : {"C", "Ch", "Chaos"})
        inspector->details()->edit(rowOf("Title"), QString::fromLatin1(typed));
    inspector->details()->edit(rowOf("Genre"), QStringLiteral("Comedy"));
    inspector->details()->undo();
    EXPECT_EQ(details(url).genre, "Thriller");
    EXPECT_EQ(details(url).title, "Chaos");
    inspector->details()->undo();
    EXPECT_EQ(details(url).title, "Charade");
    inspector->details()->undo();
    EXPECT_EQ(details(url).title, "Charade");
}

TEST_F(InspectorScreen, UndoingAllCanBeUndone) {
    const auto url = file("x.mp4");
    place({resolved(url, film())});
    draftFor(url, filmDraft());
    inspector->details()->edit(rowOf("Title"), QStringLiteral("Mine"));
    inspector->details()->undoAll();
    inspector->details()->undo();
    EXPECT_EQ(details(url).title, "Mine");
}

TEST_F(InspectorScreen, ADotMarksWhatDiffersFromTheFile) {
    realFilm();
    EXPECT_EQ(field("Title", "mark"), "true");
    EXPECT_EQ(field("Title", "oldValue"), "Old");
    EXPECT_EQ(field("Genre", "mark"), "false");
    EXPECT_EQ(field("Cast", "mark"), "true");
    EXPECT_EQ(field("Cast", "oldValue"), "");
    inspector->details()->edit(rowOf("Title"), QStringLiteral("Old"));
    EXPECT_EQ(field("Title", "mark"), "false");
}

TEST_F(InspectorScreen, TheComparisonTellsEachFieldTheCoverAndWhatStays) {
    const auto url = realFilm();
    const auto* compare = inspector->compare();
    auto* fields = inspector->compare()->fields();
    EXPECT_THAT(column(fields, "spoken"), Contains("Title: Old becomes Charade"));
    EXPECT_THAT(column(fields, "spoken"), Contains("Genre stays: Thriller"));
    EXPECT_THAT(column(fields, "spoken"),
                Contains("Cast: nothing becomes Cary Grant, Audrey Hepburn"));
    EXPECT_EQ(compare->head(), QStringLiteral("4 things differ from what is in the file now."));
    EXPECT_THAT(fromQt(compare->foot()), HasSubstr("of the file stay"));
    EXPECT_THAT(fromQt(compare->coverBefore()), StartsWith("image://art/inFile/"));
    EXPECT_THAT(fromQt(compare->coverAfter()), StartsWith("image://art/remote/"));
    inspector->artwork()->pick(0);
    EXPECT_EQ(compare->coverAfter(), compare->coverBefore());
    EXPECT_EQ(compare->coverWords(), QStringLiteral("The cover stays"));
    EXPECT_EQ(compare->head(), QStringLiteral("3 things differ from what is in the file now."));
    EXPECT_EQ(details(url).title, "Charade");
}

TEST_F(InspectorScreen, ACoverThatStaysIsNeitherFetchedNorWritten) {
    const auto url = realFilm();
    ASSERT_EQ(column(inspector->artwork()->options(), "label").front(), "In the file now");
    inspector->artwork()->pick(0);
    EXPECT_EQ(inspector->artwork()->chosen(), 0);
    server.resetStats();
    queueAll();
    ASSERT_EQ(model->queue().jobs().size(), 1u);
    const auto& request = model->queue().jobs().front().request;
    for (const Atom& atom : std::get<WriteRequest::WriteDetails>(request.mode).atoms)
        EXPECT_NE(atom.name, "covr");
    EXPECT_EQ(server.requestCount("^/t/p/w780"), 0);
}

TEST_F(InspectorScreen, AFileWithoutACoverOffersNone) {
    realFilm(false);
    EXPECT_THAT(column(inspector->artwork()->options(), "label"), testing::Each(""));
    EXPECT_EQ(inspector->compare()->coverWords(),
              QStringLiteral("A cover, where there is none now"));
}

TEST_F(InspectorScreen, ArtworkTellsItsShapesAndWhatIsChosen) {
    const auto url = file("x.mp4");
    place({resolved(url, film())});
    auto* artwork = inspector->artwork();
    draftFor(url, filmDraft());
    Settings::setArtworkStyle(ArtworkStyle::tall);
    inspector->refresh();
    EXPECT_EQ(artwork->shapes(), (QStringList{QStringLiteral("Settings choice (tall)"),
                                              QStringLiteral("Wide, for Apple TV"),
                                              QStringLiteral("Tall, for Mac & iPhone")}));
    EXPECT_EQ(artwork->options()->count(), 2);
    EXPECT_EQ(artwork->chosen(), 0);
    artwork->pick(1);
    EXPECT_EQ(artwork->chosen(), 1);
    artwork->setShape(1);
    EXPECT_TRUE(artwork->isWide());
    EXPECT_EQ(artwork->options()->count(), 1);
    artwork->setShape(0);
    Settings::setArtworkStyle(ArtworkStyle::wide);
    inspector->refresh();
    EXPECT_EQ(artwork->shapes().front(), QStringLiteral("Settings choice (wide)"));
    FileDraft bare = filmDraft();
    bare.wide.clear();
    draftFor(url, bare);
    EXPECT_EQ(artwork->line(), QStringLiteral("No images in the database for this one."));
}

TEST_F(InspectorScreen, ArtworkThatCouldNotBeLoadedIsNotCalledAbsent) {
    const auto url = file("x.mp4");
    place({resolved(url, film())});
    const InspectorArtwork& artwork = *inspector->artwork();
    EXPECT_EQ(artwork.line(), QStringLiteral("The artwork couldn't be loaded."));
    EXPECT_TRUE(artwork.hasFailed());
    draftFor(url, filmDraft());
    EXPECT_EQ(artwork.line(), QString());
    EXPECT_FALSE(artwork.hasFailed());
}

TEST_F(InspectorScreen, WithoutAMatchNobodyAskedForArtwork) {
    place({resolved(file("y.mp4"), {}, Verdict::needsLook({"Nothing found"}))});
    EXPECT_EQ(inspector->artwork()->line(), QStringLiteral("Not matched yet"));
    EXPECT_FALSE(inspector->artwork()->hasFailed());
}

TEST_F(InspectorScreen, ApplesArtworkSaysSo) {
    const auto url = file("x.mp4");
    place({resolved(url, film())});
    FileDraft draft = filmDraft();
    draft.styleOverride = ArtworkStyle::tall;
    draft.tall = {{ArtworkOption::Shape::tall, "https://example.org/600x900.jpg"}};
    draftFor(url, draft);
    EXPECT_THAT(column(inspector->artwork()->options(), "label"),
                ElementsAre("Artwork from Apple"));
}

TEST_F(InspectorScreen, ASeasonSharesItsPictureUntilItIsToldNotTo) {
    const auto first = file("1.mp4");
    const auto second = file("2.mp4");
    place({resolved(first, episode(1)), resolved(second, episode(2))});
    FileDraft draft = filmDraft();
    draft.styleOverride = ArtworkStyle::tall;
    draft.seasonKey = "2-S1";
    draftFor(first, draft);
    draftFor(second, draft);
    EXPECT_TRUE(inspector->artwork()->canShare());
    EXPECT_TRUE(inspector->artwork()->isShared());
    inspector->artwork()->pick(1);
    EXPECT_EQ(std::as_const(*model).drafts().find(second)->chosenTall->path, "/b.jpg");
    inspector->artwork()->share(false);
    EXPECT_FALSE(inspector->artwork()->isShared());
    inspector->artwork()->pick(0);
    EXPECT_EQ(std::as_const(*model).drafts().find(second)->chosenTall->path, "/b.jpg");
}

TEST_F(InspectorScreen, DetailsAreFetchedWhileTheDraftLoads) {
    add({file("Charade (1963).mp4")});
    model->reviewID = model->items().front().id;
    auto loading = model->loadDrafts(model->items().front());
    EXPECT_TRUE(inspector->isLoading());
    EXPECT_EQ(inspector->artwork()->line(), QStringLiteral("Fetching artwork…"));
    Async::wait(std::move(loading));
    EXPECT_FALSE(inspector->isLoading());
    EXPECT_TRUE(inspector->hasDraft());
    EXPECT_GT(inspector->artwork()->options()->count(), 0);
}

}  // namespace
}  // namespace marlet::test
