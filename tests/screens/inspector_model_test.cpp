#include "screens/inspector/inspector_model.h"

#include "app/model_fixture.h"
#include "app/settings.h"
#include "screens/base/qt_text.h"
#include "screens/stage/staged_plans.h"
#include "support/media.h"
#include "write/ilst_editor.h"

namespace marlet::test {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

ResolvedFile resolved(const std::filesystem::path& url, std::optional<Match> match,
                      Verdict verdict = Verdict::certain()) {
    ResolvedFile file;
    file.file.url = url;
    if (match)
        file.guess = Guess{.kind = match->kind,
                           .title = match->title,
                           .season = match->season,
                           .episode = match->episode};
    file.match = std::move(match);
    file.verdict = std::move(verdict);
    return file;
}

Match film() {
    return {.tmdbID = 1, .kind = MediaKind::movie, .title = "Charade", .year = 1963};
}

Match episode(int number) {
    return {.tmdbID = 2,
            .kind = MediaKind::tv,
            .title = "A Show",
            .season = 1,
            .episode = number,
            .episodeTitle = "Part " + std::to_string(number)};
}

class InspectorScreen : public ModelTest {
protected:
    InspectorScreen() {
        parts.planBuilder = StagedPlans::of(plans);
        make();
        inspector = std::make_unique<InspectorModel>(*model);
        model->onChanged = [this] { inspector->refresh(); };
        model->inspectorShown = true;
    }
    ~InspectorScreen() override {
        plans->release();
        model->onChanged = nullptr;
        inspector.reset();
    }

    void place(std::vector<ResolvedFile> files) {
        model->place(files);
        model->reviewID = model->items().front().id;
        model->inspectorFile = files.front().file.url;
        inspector->refresh();
    }
    FileDraft filmDraft() {
        FileDraft draft;
        draft.details.title = "Charade";
        draft.details.genre = "Thriller";
        draft.details.cast = {"Cary Grant", "Audrey Hepburn"};
        draft.details.releaseDate = "1963-12-05";
        draft.original = draft.details;
        draft.tall = {{ArtworkOption::Shape::tall, "/a.jpg"},
                      {ArtworkOption::Shape::tall, "/b.jpg"}};
        draft.wide = {{ArtworkOption::Shape::wide, "/w.jpg"}};
        return draft;
    }
    void draftFor(const std::filesystem::path& url, FileDraft draft) {
        model->drafts().put(url, std::move(draft));
        inspector->refresh();
    }
    template <typename Done>
    void until(const Done& done) {
        for (int turn = 0; turn < 5000 && !done(); turn++) pause();
        EXPECT_TRUE(done());
    }
    static std::vector<std::string> column(RowListBase* list, const char* name) {
        std::vector<std::string> texts;
        for (int row = 0; row < list->rowCount({}); row++)
            texts.push_back(
                fromQt(list->data(list->index(row, 0), list->roleNames().key(name)).toString()));
        return texts;
    }
    std::string field(const char* label, const char* name) {
        RowListBase* fields = inspector->details()->fields();
        const auto labels = column(fields, "label");
        const auto at = std::ranges::find(labels, label) - labels.begin();
        return column(fields, name).at(static_cast<std::size_t>(at));
    }
    int rowOf(const char* label) {
        const auto labels = column(inspector->details()->fields(), "label");
        return static_cast<int>(std::ranges::find(labels, label) - labels.begin());
    }
    const Details& details(const std::filesystem::path& url) {
        return std::as_const(*model).drafts().find(url)->details;
    }
    /// A real film with these tags, in Review with a draft; read.
    std::filesystem::path realFilm(bool cover = true) {
        const auto url = library / "Charade (1963).m4v";
        makeMovie(url, {.soundTracks = 2,
                        .soundLanguages = {"eng", "fre"},
                        .tags = {{"title", "Old"}, {"genre", "Thriller"}, {"comment", "mine"}}});
        if (cover) {
            std::vector<Atom> atoms = IlstEditor::currentIlst(url);
            atoms.push_back(IlstEditor::covers({{bytesOf("picture"), false}}));
            IlstEditor::apply(IlstEditor::plan(url, IlstEditor::ilstBox(atoms)), url);
        }
        place({resolved(url, film())});
        draftFor(url, filmDraft());
        until([&] { return inspector->compare()->isPossible(); });
        return url;
    }

    std::shared_ptr<StagedPlans> plans = std::make_shared<StagedPlans>();
    std::unique_ptr<InspectorModel> inspector;
};

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

TEST_F(InspectorScreen, TheTracksOfAnMP4CanBeLeftOut) {
    realFilm(false);
    auto* tracks = inspector->tracks();
    until([&] { return tracks->busy().isEmpty(); });
    EXPECT_EQ(tracks->sounds()->count(), 2);
    EXPECT_EQ(tracks->noSounds(), QString());
    EXPECT_EQ(tracks->noSubtitles(), QStringLiteral("No subtitles in this file."));
    EXPECT_EQ(tracks->foot(), QStringLiteral("Untick a track to leave it out. Marlet then makes a "
                                             "new .m4v and leaves this file as it is."));
    EXPECT_EQ(tracks->leavesOut(), QString());
    const auto keys = column(tracks->sounds(), "key");
    tracks->keepSound(toQt(keys[1]), false);
    EXPECT_EQ(tracks->leavesOut(),
              QStringLiteral("1 track will be left out of a new .m4v saved in your output folder. "
                             "This file isn't touched, and the picture stays exactly the same."));
    tracks->keepSound(toQt(keys[0]), false);
    EXPECT_THAT(fromQt(tracks->leavesOut()), StartsWith("2 tracks will be left out"));
}

TEST_F(InspectorScreen, AFileWithoutSoundSaysSo) {
    place({resolved(file("x.mp4"), film())});
    auto* tracks = inspector->tracks();
    EXPECT_EQ(tracks->busy(), QStringLiteral("Reading the tracks…"));
    until([&] { return tracks->busy().isEmpty(); });
    EXPECT_EQ(tracks->noSounds(), QStringLiteral("No sound tracks."));
}

TEST_F(InspectorScreen, AMOVIsCopiedTrackForTrack) {
    place({resolved(file("x.mov"), film())});
    EXPECT_EQ(inspector->tracks()->foot(),
              QStringLiteral("A QuickTime file is copied track for track into a new .m4v. Nothing "
                             "is converted."));
}

TEST_F(InspectorScreen, AnMKVTellsItsPlan) {
    plans->put("x.mkv", StagedPlans::rich());
    place({resolved(file("x.mkv"), film())});
    auto* tracks = inspector->tracks();
    until([&] { return tracks->busy().isEmpty() && tracks->checking().isEmpty(); });
    EXPECT_EQ(tracks->picture(), QStringLiteral("HEVC"));
    EXPECT_EQ(tracks->pictureNote(), QStringLiteral("Copied as it is"));
    EXPECT_THAT(column(tracks->sounds(), "note"), Contains("Commentary, left out"));
    EXPECT_THAT(column(tracks->sounds(), "playsFirst"), Contains("true"));
    EXPECT_EQ(tracks->moreSounds(), QStringLiteral("2 more sound tracks, left out"));
    EXPECT_EQ(tracks->moreSubtitles(), QStringLiteral("2 other subtitles"));
    EXPECT_THAT(column(tracks->subtitles(), "note"), Contains("text from picture subtitles"));
    EXPECT_EQ(
        tracks->foot(),
        QStringLiteral("Picture quality stays exactly the same. Chapters, cover, description, "
                       "cast and ratings are included."));
    const int shown = tracks->sounds()->count();
    tracks->setOpen(true);
    EXPECT_EQ(tracks->sounds()->count(), shown + 2);
    const auto keys = column(tracks->sounds(), "key");
    tracks->keepSound(QStringLiteral("3"), false);
    const auto at = std::ranges::find(keys, "3") - keys.begin();
    EXPECT_EQ(column(tracks->sounds(), "note").at(static_cast<std::size_t>(at)), "Left out");
    tracks->keepSubtitle(QStringLiteral("mkv7"), false);
    EXPECT_THAT(column(tracks->subtitles(), "note"), Contains("Left out of the new file"));
}

TEST_F(InspectorScreen, APlanThatRefusesSaysWhyAndThatTheFileIsSkipped) {
    plans->put("x.mkv", StagedPlans::refused());
    place({resolved(file("x.mkv"), film())});
    auto* tracks = inspector->tracks();
    until([&] { return tracks->busy().isEmpty(); });
    EXPECT_EQ(tracks->refusal(),
              QStringLiteral("VP9 video can't be played by Apple TV. This file is skipped."));
}

TEST_F(InspectorScreen, TheSecondLookTellsHowFarItIs) {
    plans->put("x.mkv", StagedPlans::rich(), StagedPlans::Ends::when_released);
    place({resolved(file("x.mkv"), film())});
    auto* tracks = inspector->tracks();
    until([&] { return tracks->checked() > 0.3; });
    EXPECT_EQ(tracks->checking(),
              QStringLiteral("Checking which subtitles are foreign-parts-only… 37 %"));
    plans->release();
    until([&] { return tracks->checking().isEmpty(); });
}

TEST_F(InspectorScreen, AnMKVThatCannotBeReadSaysSo) {
    place({resolved(file("x.mkv"), film())});
    until([&] { return !inspector->tracks()->refusal().isEmpty(); });
    EXPECT_EQ(inspector->tracks()->refusal(), QStringLiteral("This file can't be read."));
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
