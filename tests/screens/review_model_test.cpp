#include "screens/review/review_model.h"

#include "app/model_fixture.h"
#include "screens/base/qt_text.h"

namespace marlet::test {
namespace {

/// A film as a scan would hand it over.
ResolvedFile film(const std::string& path, const std::string& title, bool certain = true) {
    ResolvedFile file;
    file.file.url = path;
    file.guess = Guess{.title = title};
    file.match = Match{.tmdbID = 1, .title = title, .year = 1999};
    file.verdict = certain ? Verdict::certain()
                           : Verdict::needsLook({"The length doesn't fit", "A second reason"});
    return file;
}

ResolvedFile unmatchedFilm(const std::string& path, const std::string& title) {
    ResolvedFile file = film(path, title, false);
    file.match.reset();
    file.verdict = Verdict::needsLook({"Not found in the database"});
    return file;
}

ResolvedFile episode(const std::string& path, int number, bool certain = true) {
    ResolvedFile file = film(path, "The Show", certain);
    file.guess = Guess{.kind = MediaKind::tv, .title = "The Show", .season = 2, .episode = number};
    file.match->kind = MediaKind::tv;
    file.match->season = 2;
    file.match->episode = number;
    file.match->episodeTitle = "Part " + std::to_string(number);
    return file;
}

class Review : public ModelTest {
protected:
    Review() {
        parts.planBuilder = [](const PlanStore::Order&) { return convertible(); };
        make();
        attach();
    }
    ~Review() override {
        model->onChanged = nullptr;
        review.reset();
    }
    void attach() {
        review = std::make_unique<ReviewModel>(*model);
        model->onChanged = [this] { review->refresh(); };
        review->refresh();
    }
    void place(const std::vector<ResolvedFile>& files) { model->place(files); }
    std::vector<std::string> titles() {
        std::vector<std::string> all;
        for (const ReviewRow& row : review->rows()->rows()) all.push_back(fromQt(row.title));
        return all;
    }
    std::vector<std::string> selected() {
        std::vector<std::string> all;
        for (const ReviewRow& row : review->rows()->rows())
            if (row.selected) all.push_back(fromQt(row.title));
        return all;
    }
    const ReviewRow& row(int index) { return review->rows()->at(index); }
    bool press(int key, int modifiers = Qt::NoModifier) { return review->press(key, modifiers, 5); }
    void placeThree() {
        place({film("/v/a.mp4", "Alpha"), film("/v/b.mp4", "Beta", false),
               film("/v/c.mkv", "Gamma", false)});
    }

    std::unique_ptr<ReviewModel> review;
};

using Titles = std::vector<std::string>;

TEST_F(Review, WithoutItemsItIsEmpty) {
    EXPECT_TRUE(review->isEmpty());
    EXPECT_FALSE(review->canAddAll());
    EXPECT_EQ(review->needsChecking(), "");
    EXPECT_EQ(review->nothingHere(), "");
}

TEST_F(Review, AConfirmedMatchIsReady) {
    place({film("/v/a.mp4", "Alpha")});
    EXPECT_EQ(row(0).sign(), "ready");
    EXPECT_EQ(row(0).verdict(), "Ready");
    EXPECT_EQ(row(0).year, "1999");
    EXPECT_EQ(row(0).line, "a.mp4");
    EXPECT_TRUE(row(0).lineIsName);
}

TEST_F(Review, AMatchThatAsksForALookIsToBeCheckedAndSaysWhy) {
    place({film("/v/a.mp4", "Alpha", false)});
    EXPECT_EQ(row(0).sign(), "look");
    EXPECT_EQ(row(0).verdict(), "Check this");
    EXPECT_EQ(row(0).line, "The length doesn't fit");
    EXPECT_FALSE(row(0).lineIsName);
}

TEST_F(Review, AFileWithoutAMatchNeedsALook) {
    place({unmatchedFilm("/v/a.mp4", "Alpha")});
    EXPECT_EQ(row(0).sign(), "none");
    EXPECT_EQ(row(0).verdict(), "Needs a look");
    EXPECT_EQ(row(0).line, "Not found in the database");
}

TEST_F(Review, ASeasonTellsHowManyOfItsEpisodesNeedALook) {
    place({episode("/v/1.mp4", 1), episode("/v/2.mp4", 2, false), episode("/v/3.mp4", 3, false)});
    ASSERT_EQ(review->rows()->count(), 1);
    EXPECT_EQ(row(0).verdict(), "2 episodes need a look");
    EXPECT_EQ(row(0).line, "Season 2 · 3 episodes · The length doesn't fit");
    model->confirm("/v/2.mp4");
    EXPECT_EQ(row(0).verdict(), "1 episode needs a look");
    model->confirm("/v/3.mp4");
    EXPECT_EQ(row(0).verdict(), "Ready");
    EXPECT_EQ(row(0).line, "Season 2 · 3 episodes");
}

TEST_F(Review, ASeasonWhoseDoubtfulEpisodesHaveNoMatchIsMarkedAsUnmatched) {
    ResolvedFile second = episode("/v/2.mp4", 2, false);
    second.match.reset();
    place({second});
    EXPECT_EQ(row(0).sign(), "none");
    EXPECT_EQ(row(0).verdict(), "1 episode needs a look");
}

TEST_F(Review, AnItemOfMatroskaFilesWearsABadge) {
    place({film("/v/a.mkv", "Alpha"), film("/v/b.mp4", "Beta")});
    EXPECT_EQ(row(0).badge(), "MKV, will become M4V");
    EXPECT_EQ(row(1).badge(), "");
}

TEST_F(Review, ASeasonOfSeveralContainersWearsNoBadge) {
    place({episode("/v/1.mkv", 1), episode("/v/2.mp4", 2)});
    EXPECT_EQ(row(0).badge(), "");
}

TEST_F(Review, ARowReadAloudIsOneSentenceWithItsVerdict) {
    place({film("/v/a.mkv", "Alpha", false)});
    EXPECT_EQ(row(0).spoken(),
              "Alpha, 1999. Check this. The length doesn't fit. MKV, will become M4V");
}

TEST_F(Review, FileNamesThatAreNotUtf8HaveRowsOfTheirOwn) {
    place({unmatchedFilm("/v/\xff.mp4", "Odd"), unmatchedFilm("/v/\xfe.mp4", "Odd")});
    EXPECT_EQ(review->rows()->count(), 2);
    review->click(1, Qt::NoModifier);
    EXPECT_EQ(model->reviewID, model->items()[1].id);
}

TEST_F(Review, SelectingARowShowsItsFirstFileAndLoadsItsDrafts) {
    placeThree();
    review->click(1, Qt::NoModifier);
    EXPECT_EQ(model->reviewID, model->items()[1].id);
    EXPECT_EQ(model->inspectorFile, "/v/b.mp4");
    EXPECT_TRUE(model->drafts().isLoading("/v/b.mp4") || model->drafts().find("/v/b.mp4"));
    EXPECT_FALSE(model->drafts().isLoading("/v/a.mp4"));
}

TEST_F(Review, AHeldArrowKeyLoadsWhereItStopsButNotWhatItPasses) {
    place({film("/v/a.mp4", "A"), film("/v/b.mp4", "B"), film("/v/c.mp4", "C"),
           film("/v/d.mp4", "D")});
    std::set<std::filesystem::path> loaded;
    model->onChanged = [&] {
        review->refresh();
        for (const ResolvedFile& file : model->allFiles())
            if (model->drafts().isLoading(file.file.url)) loaded.insert(file.file.url);
    };
    for (int i = 0; i < 4; ++i) press(Qt::Key_Down);
    EXPECT_EQ(model->inspectorFile, "/v/d.mp4");
    while (!loaded.contains("/v/d.mp4")) pause();
    EXPECT_EQ(loaded, (std::set<std::filesystem::path>{"/v/a.mp4", "/v/d.mp4"}));
}

TEST_F(Review, ArrowKeysMoveTheSelection) {
    placeThree();
    EXPECT_TRUE(press(Qt::Key_Down));
    EXPECT_EQ(selected(), Titles{"Alpha"});
    press(Qt::Key_Down);
    EXPECT_EQ(selected(), Titles{"Beta"});
    press(Qt::Key_Up);
    EXPECT_EQ(selected(), Titles{"Alpha"});
    press(Qt::Key_End);
    EXPECT_EQ(selected(), Titles{"Gamma"});
    press(Qt::Key_Home);
    EXPECT_EQ(selected(), Titles{"Alpha"});
    press(Qt::Key_PageDown);
    EXPECT_EQ(selected(), Titles{"Gamma"});
}

TEST_F(Review, ShiftAndArrowSelectsSeveral) {
    placeThree();
    press(Qt::Key_Down);
    press(Qt::Key_Down, Qt::ShiftModifier);
    EXPECT_EQ(selected(), (Titles{"Alpha", "Beta"}));
    EXPECT_EQ(review->selection(), "2 selected");
    EXPECT_EQ(model->reviewID, model->items()[1].id);
    press(Qt::Key_Escape);
    EXPECT_EQ(selected(), Titles{"Beta"});
    EXPECT_EQ(review->selection(), "");
}

TEST_F(Review, ControlMovesTheKeyboardAloneAndSpaceTogglesTheRow) {
    placeThree();
    press(Qt::Key_Down);
    press(Qt::Key_End, Qt::ControlModifier);
    EXPECT_EQ(selected(), Titles{"Alpha"});
    press(Qt::Key_Space, Qt::ControlModifier);
    EXPECT_EQ(selected(), (Titles{"Alpha", "Gamma"}));
}

TEST_F(Review, ControlASelectsAllRowsThatAreShown) {
    placeThree();
    review->setFilter(1);
    press(Qt::Key_A, Qt::ControlModifier);
    EXPECT_EQ(selected(), (Titles{"Beta", "Gamma"}));
    review->setFilter(0);
    EXPECT_EQ(selected(), (Titles{"Beta", "Gamma"}));
}

TEST_F(Review, DeleteRemovesTheSelectionAndGoesOnToTheNextRow) {
    placeThree();
    press(Qt::Key_Down);
    EXPECT_TRUE(press(Qt::Key_Delete));
    EXPECT_EQ(titles(), (Titles{"Beta", "Gamma"}));
    EXPECT_EQ(selected(), Titles{"Beta"});
    EXPECT_EQ(model->inspectorFile, "/v/b.mp4");
    press(Qt::Key_A, Qt::ControlModifier);
    press(Qt::Key_Delete);
    EXPECT_TRUE(review->isEmpty());
    EXPECT_EQ(model->reviewID, std::nullopt);
    EXPECT_EQ(model->inspectorFile, std::nullopt);
}

TEST_F(Review, FTwoOpensTheMatchPickerForTheFileInTheInspector) {
    place({episode("/v/1.mp4", 1), episode("/v/2.mp4", 2)});
    press(Qt::Key_Down);
    press(Qt::Key_F2);
    EXPECT_EQ(model->matchPickerURL, "/v/1.mp4");
    model->inspectorFile = "/v/2.mp4";
    press(Qt::Key_F2);
    EXPECT_EQ(model->matchPickerURL, "/v/2.mp4");
}

TEST_F(Review, TheMenuKeyAsksForTheMenuOfTheCurrentRow) {
    placeThree();
    int asked = -1;
    QObject::connect(review.get(), &ReviewModel::menuAsked, [&](int row) { asked = row; });
    press(Qt::Key_Menu);
    EXPECT_EQ(asked, -1);
    press(Qt::Key_End);
    press(Qt::Key_Menu);
    EXPECT_EQ(asked, 2);
    press(Qt::Key_Home);
    press(Qt::Key_F10, Qt::ShiftModifier);
    EXPECT_EQ(asked, 0);
}

TEST_F(Review, AKeyThatTheListHasNoUseForIsLeftToOthers) {
    placeThree();
    EXPECT_FALSE(press(Qt::Key_F10));
    EXPECT_FALSE(press(Qt::Key_X));
    EXPECT_FALSE(press(Qt::Key_Escape));
}

TEST_F(Review, ReturnShowsTheInspector) {
    placeThree();
    press(Qt::Key_Return);
    EXPECT_FALSE(model->inspectorShown);
    press(Qt::Key_Down);
    press(Qt::Key_Return);
    EXPECT_TRUE(model->inspectorShown);
}

TEST_F(Review, AMenuOnASelectedRowKeepsTheSelection) {
    placeThree();
    press(Qt::Key_A, Qt::ControlModifier);
    review->clickForMenu(1);
    EXPECT_EQ(selected().size(), 3U);
    review->click(0, Qt::NoModifier);
    review->clickForMenu(2);
    EXPECT_EQ(selected(), Titles{"Gamma"});
}

TEST_F(Review, TheFilterShowsWhatNeedsALookOrWhatIsReady) {
    placeThree();
    review->setFilter(1);
    EXPECT_EQ(titles(), (Titles{"Beta", "Gamma"}));
    EXPECT_EQ(review->found(), "2 of 3");
    review->setFilter(2);
    EXPECT_EQ(titles(), Titles{"Alpha"});
    review->setFilter(0);
    EXPECT_EQ(titles().size(), 3U);
    EXPECT_EQ(review->found(), "");
}

TEST_F(Review, ARowStaysUnderTheHandWhenAYesTakesItOutOfTheFilter) {
    placeThree();
    review->setFilter(1);
    review->click(0, Qt::NoModifier);
    model->confirm("/v/b.mp4");
    EXPECT_EQ(titles(), (Titles{"Beta", "Gamma"}));
    EXPECT_EQ(row(0).verdict(), "Ready");
    review->setFilter(1);
    EXPECT_EQ(titles(), Titles{"Gamma"});
}

TEST_F(Review, AcceptTheseConfirmsWhatHasAMatchAndTheFilterGoesOn) {
    place({film("/v/a.mp4", "Alpha", false), film("/v/b.mp4", "Beta", false),
           unmatchedFilm("/v/c.mp4", "Gamma")});
    review->setFilter(1);
    press(Qt::Key_A, Qt::ControlModifier);
    EXPECT_EQ(review->acceptText(), "Accept These");
    EXPECT_TRUE(review->canAccept());
    review->acceptSelected();
    EXPECT_EQ(titles(), Titles{"Gamma"});
    EXPECT_TRUE(model->isConfirmed(*model->items()[0].files.data()));
    EXPECT_EQ(review->needsChecking(), "1 needs checking");
    EXPECT_FALSE(review->canAccept());
}

TEST_F(Review, TheSearchFindsTitlesYearsEpisodesAndFileNamesWhateverTheirAccents) {
    place({film("/v/a.mp4", "Amélie"), film("/v/Beta.cut.mp4", "Beta"), episode("/v/1.mp4", 1)});
    review->setQuery("AMELIE");
    EXPECT_EQ(titles(), Titles{"Amélie"});
    review->setQuery("beta.cut");
    EXPECT_EQ(titles(), Titles{"Beta"});
    review->setQuery("show part");
    EXPECT_EQ(titles(), Titles{"The Show"});
    review->setQuery("1999");
    EXPECT_EQ(titles().size(), 3U);
    review->setQuery("beta amelie");
    EXPECT_EQ(titles(), Titles{});
    EXPECT_EQ(review->nothingHere(), "Nothing here has these words");
    review->setQuery("  ");
    EXPECT_EQ(titles().size(), 3U);
}

TEST_F(Review, ASearchSeesWhatCameLater) {
    placeThree();
    review->setQuery("alpha");
    place({film("/v/d.mp4", "Alphabet")});
    EXPECT_EQ(titles(), (Titles{"Alpha", "Alphabet"}));
}

TEST_F(Review, ASearchThatHidesTheSelectionLeavesTheInspectorEmpty) {
    placeThree();
    review->click(0, Qt::NoModifier);
    review->setQuery("beta");
    EXPECT_EQ(model->reviewID, std::nullopt);
    EXPECT_EQ(review->current(), -1);
    review->selectFirst();
    EXPECT_EQ(model->inspectorFile, "/v/b.mp4");
}

TEST_F(Review, ADoubtAboutOneFileReadsNeedsCheckingAndAboutMoreNeedChecking) {
    placeThree();
    EXPECT_EQ(review->needsChecking(), "2 need checking");
    model->confirm("/v/b.mp4");
    EXPECT_EQ(review->needsChecking(), "1 needs checking");
    model->confirm("/v/c.mkv");
    EXPECT_EQ(review->needsChecking(), "");
}

TEST_F(Review, AddAllWaitsForSomethingReady) {
    place({film("/v/b.mp4", "Beta", false)});
    EXPECT_FALSE(review->canAddAll());
    model->confirm("/v/b.mp4");
    EXPECT_TRUE(review->canAddAll());
}

TEST_F(Review, WithEverythingLockedNothingCanBeAddedAndTheBannerStands) {
    Preferences::current().setBoolean("allowLibraryWrites", false);
    place({film("/v/Media Library/a.mp4", "Alpha")});
    EXPECT_TRUE(review->locked());
    EXPECT_FALSE(review->canAddAll());
    Preferences::current().setBoolean("allowLibraryWrites", true);
    review->refresh();
    EXPECT_FALSE(review->locked());
    EXPECT_TRUE(review->canAddAll());
}

TEST_F(Review, ASelectionMadeElsewhereIsFollowed) {
    placeThree();
    model->reviewID = model->items()[2].id;
    review->refresh();
    EXPECT_EQ(selected(), Titles{"Gamma"});
    model->reviewID.reset();
    review->refresh();
    EXPECT_EQ(selected(), Titles{});
}

TEST_F(Review, ASelectionMadeElsewhereOpensTheFilterThatHidesIt) {
    placeThree();
    review->setFilter(1);
    model->reviewID = model->items()[0].id;
    review->refresh();
    EXPECT_EQ(review->filter(), 0);
    EXPECT_EQ(selected(), Titles{"Alpha"});
}

TEST_F(Review, TheSelectionFollowsAFileWhoseMatchWasChosen) {
    placeThree();
    review->click(0, Qt::NoModifier);
    ResolvedFile other = film("/v/a.mp4", "Zeta");
    model->replace("/v/a.mp4", other);
    EXPECT_EQ(titles(), (Titles{"Beta", "Gamma", "Zeta"}));
    EXPECT_EQ(selected(), Titles{"Zeta"});
    EXPECT_EQ(model->inspectorFile, "/v/a.mp4");
}

TEST_F(Review, AnEpisodeThatBecomesAFilmIsFollowedToItsOwnRow) {
    place({episode("/v/1.mp4", 1), episode("/v/2.mp4", 2), film("/v/b.mp4", "Beta")});
    review->click(0, Qt::NoModifier);
    model->inspectorFile = "/v/2.mp4";
    model->replace("/v/2.mp4", film("/v/2.mp4", "Zeta"));
    EXPECT_EQ(selected(), Titles{"Zeta"});
    EXPECT_EQ(model->inspectorFile, "/v/2.mp4");
}

TEST_F(Review, ARefreshWithoutAChangeTellsNothing) {
    placeThree();
    int told = 0;
    QObject::connect(review.get(), &ReviewModel::changed, [&] { told++; });
    QObject::connect(review->rows(), &QAbstractItemModel::dataChanged, [&] { told++; });
    for (int i = 0; i < 3; ++i) review->refresh();
    EXPECT_EQ(told, 0);
}

TEST_F(Review, AddingTheSelectionLeavesWhatStillNeedsALook) {
    addConfirmed({"Charade (1963).mp4"});
    place({film("/v/b.mp4", "Zz", false)});
    press(Qt::Key_A, Qt::ControlModifier);
    EXPECT_TRUE(press(Qt::Key_Return, Qt::ControlModifier));
    EXPECT_TRUE(review->adding());
    EXPECT_FALSE(review->canAdd());
    EXPECT_FALSE(review->canAddAll());
    while (model->isAdding()) pause();
    EXPECT_FALSE(review->adding());
    EXPECT_EQ(model->notice.value_or("").find("1 file still need a look and weren't added."), 0U);
    EXPECT_EQ(titles().back(), "Zz");
}

TEST_F(Review, AScanTellsItsWordsAndCanBeStopped) {
    place({film("/v/a.mp4", "Alpha")});
    model->add({library.path()});
    EXPECT_TRUE(review->scanning());
    EXPECT_EQ(review->scanText(), "Looking through your files");
    EXPECT_EQ(review->scanCount(), "");
    EXPECT_LT(review->scanFraction(), 0);
    review->cancelScan();
    EXPECT_FALSE(review->scanning());
    EXPECT_EQ(titles(), Titles{"Alpha"});
}

}  // namespace
}  // namespace marlet::test
