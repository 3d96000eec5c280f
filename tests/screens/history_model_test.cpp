#include "screens/history/history_model.h"

#include <future>

#include "app/model_fixture.h"
#include "screens/base/file_address.h"
#include "screens/base/qt_text.h"
#include "screens/pictures/art_address.h"
#include "screens/staged_worker.h"
#include "write/restore_points.h"

namespace marlet::test {
namespace {

namespace fs = std::filesystem;

class HistoryScreen : public ModelTest {
protected:
    HistoryScreen() {
        parts.worker = StagedWorker::of(worker);
        make();
        screen = std::make_unique<HistoryModel>(*model);
        model->onChanged = [this] { screen->refresh(); };
    }
    ~HistoryScreen() override {
        worker->letGo();
        model->onChanged = nullptr;
        screen.reset();
    }

    static HistoryEntry film(const std::string& id, const std::string& path,
                             const std::string& result = "done") {
        HistoryEntry entry;
        entry.id = id;
        entry.date = Dates::now();
        entry.path = path;
        entry.title = "Title of " + id;
        entry.isMovie = true;
        entry.result = result;
        entry.message = result == "done" ? "Details written" : "Not enough free space";
        entry.year = 1999;
        entry.batchID = "run of " + id;
        return entry;
    }
    static HistoryEntry episode(int number, const std::string& path) {
        HistoryEntry entry = film("e" + std::to_string(number), path);
        entry.isMovie = false;
        entry.show = "A Show";
        entry.season = 2;
        entry.episode = number;
        entry.year.reset();
        entry.batchID = "run of the show";
        return entry;
    }
    void show() {
        screen->setShown(true);
        until([&] { return screen->stage() != "unknown"; });
    }
    static void until(const std::function<bool()>& holds) {
        while (!holds()) pause();
    }
    int count() { return screen->rows()->rowCount(); }
    QVariant cell(int row, const char* name) {
        const QAbstractItemModel& rows = *screen->rows();
        return rows.data(rows.index(row, 0), rows.roleNames().key(name));
    }
    std::string text(int row, const char* name) { return fromQt(cell(row, name).toString()); }
    QString key(int row) { return cell(row, "key").toString(); }
    void look(int row) {
        screen->look(key(row));
        until([&] { return cell(row, "restorable").toInt() >= 0; });
    }
    fs::path savedFile(const std::string& name) {
        const fs::path path = file(name);
        RestorePoints::saveIfMissing(path, {}, 1);
        return path;
    }

    std::shared_ptr<StagedWorker> worker = std::make_shared<StagedWorker>();
    std::unique_ptr<HistoryModel> screen;
};

TEST_F(HistoryScreen, NothingIsMadeUntilThePageIsShown) {
    history.append(film("a", "/films/a.mp4"));
    pause();
    EXPECT_EQ(screen->stage(), "unknown");
    EXPECT_EQ(count(), 0);
    show();
    EXPECT_EQ(screen->stage(), "rows");
    EXPECT_EQ(count(), 1);
}

TEST_F(HistoryScreen, WithoutEntriesItIsEmpty) {
    show();
    EXPECT_EQ(screen->stage(), "empty");
}

TEST_F(HistoryScreen, ARowTellsWhatWhenAndHow) {
    HistoryEntry failed = film("b", "/films/b.mp4", "failed");
    history.append(film("a", "/films/a.mp4"));
    history.append(failed);
    show();
    EXPECT_EQ(text(0, "title"), "Title of b");
    EXPECT_EQ(text(0, "sub"), "1999");
    EXPECT_EQ(text(0, "kind"), "failed");
    EXPECT_EQ(text(0, "line"),
              "Failed: there isn't enough free space. Free up some space, then press Retry.");
    EXPECT_EQ(text(0, "day"), "Today");
    EXPECT_EQ(text(1, "kind"), "done");
    EXPECT_EQ(text(1, "line"), "Tagged · details and cover updated in place");
    EXPECT_EQ(text(1, "spoken"),
              "Title of a, 1999, Tagged · details and cover updated in place, " + text(1, "time"));
}

TEST_F(HistoryScreen, TheEpisodesOfOneRunAreOneRow) {
    for (int n = 1; n <= 3; n++) history.append(episode(n, "/shows/" + std::to_string(n) + ".mp4"));
    show();
    ASSERT_EQ(count(), 1);
    EXPECT_EQ(text(0, "title"), "A Show");
    EXPECT_EQ(text(0, "sub"), "Season 2 · 3 episodes");
    EXPECT_EQ(screen->filesOf(key(0)),
              (QList<QUrl>{QUrl("file:///shows/3.mp4"), QUrl("file:///shows/2.mp4"),
                           QUrl("file:///shows/1.mp4")}));
}

TEST_F(HistoryScreen, TheFilterAndTheSearchLeaveWhatFits) {
    history.append(film("a", "/films/a.mp4"));
    history.append(film("b", "/films/b.mp4", "failed"));
    show();
    screen->setFilter(1);
    until([&] { return count() == 1; });
    EXPECT_EQ(text(0, "title"), "Title of a");
    screen->setFilter(2);
    until([&] { return text(0, "title") == "Title of b"; });
    screen->setQuery("TITLE OF A");
    until([&] { return screen->stage() == "nothing"; });
    screen->setFilter(0);
    until([&] { return screen->stage() == "rows"; });
    EXPECT_EQ(count(), 1);
    EXPECT_EQ(text(0, "title"), "Title of a");
    screen->setQuery("");
    until([&] { return count() == 2; });
}

TEST_F(HistoryScreen, AnOpenedRowStaysOpenWhenAnotherComesAboveIt) {
    history.append(film("a", file("a.mp4")));
    show();
    screen->toggle(key(0));
    EXPECT_TRUE(cell(0, "open").toBool());
    until([&] { return !cell(0, "details").toStringList().isEmpty(); });
    EXPECT_EQ(cell(0, "details").toStringList(), (QStringList{"File", "a.mp4"}));
    EXPECT_TRUE(model->historyOpen.contains("a"));

    history.append(film("b", file("b.mp4")));
    until([&] { return count() == 2; });
    EXPECT_FALSE(cell(0, "open").toBool());
    EXPECT_TRUE(cell(1, "open").toBool());
    EXPECT_EQ(cell(1, "details").toStringList(), (QStringList{"File", "a.mp4"}));
    screen->toggle(key(1));
    EXPECT_FALSE(cell(1, "open").toBool());
    EXPECT_TRUE(model->historyOpen.empty());
}

TEST_F(HistoryScreen, ARowThatGrowsIsReadAnewWhileItIsOpen) {
    history.append(episode(1, file("1.mp4")));
    show();
    screen->toggle(key(0));
    until([&] { return !cell(0, "details").toStringList().isEmpty(); });
    // The newest entry leads the row, so it is another row now.
    model->historyOpen.insert("e2");
    history.append(episode(2, file("2.mp4")));
    until([&] { return cell(0, "details").toStringList().value(0) == "Episodes"; });
    EXPECT_EQ(cell(0, "details").toStringList().value(1), "S02E02 Title of e2, S02E01 Title of e1");
}

TEST_F(HistoryScreen, OnlyWhatHasASavedOriginalAndIsThereCanBeRestored) {
    history.append(film("saved", savedFile("saved.mp4")));
    history.append(film("unsaved", file("unsaved.mp4")));
    history.append(film("failed", savedFile("failed.mp4"), "failed"));
    const fs::path gone = savedFile("gone.mp4");
    fs::remove(gone);
    history.append(film("gone", gone));
    HistoryEntry restored = film("restored", savedFile("restored.mp4"));
    restored.isRestore = true;
    history.append(restored);
    show();
    EXPECT_EQ(cell(4, "restorable").toInt(), -1);  // nobody has looked
    for (int row = 0; row < 5; row++) look(row);
    for (int row = 0; row < 4; row++) EXPECT_EQ(cell(row, "restorable").toInt(), 0) << row;
    EXPECT_EQ(cell(4, "restorable").toInt(), 1);
    screen->askRestore(key(0));
    screen->answerRestore(true);
    EXPECT_EQ(model->queue().jobs().size(), 0u);
}

TEST_F(HistoryScreen, TheQuestionCountsTheFilesThatComeBack) {
    history.append(episode(1, savedFile("1.mp4")));
    history.append(episode(2, savedFile("2.mp4")));
    history.append(episode(3, file("3.mp4")));
    history.append(film("a", savedFile("a.mp4")));
    show();
    look(0);
    look(1);
    int asked = 0;
    QObject::connect(screen.get(), &HistoryModel::restoreAsked, [&asked] { ++asked; });
    screen->askRestore(key(0));
    EXPECT_EQ(asked, 1);
    EXPECT_EQ(screen->restoreMessage(),
              "The tags and covers these 1 file had before Marlet first changed them are put back. "
              "The picture and sound are not touched.");
    EXPECT_EQ(screen->restoreButton(), "Restore 1");
    screen->askRestore(key(1));
    EXPECT_EQ(screen->restoreMessage(),
              "The tags and covers these 2 files had before Marlet first changed them are put "
              "back. The picture and sound are not touched.");
    EXPECT_EQ(screen->restoreButton(), "Restore 2");
    screen->answerRestore(false);
    EXPECT_EQ(model->queue().jobs().size(), 0u);
    worker->held = {"1.mp4"};
    screen->askRestore(key(1));
    screen->answerRestore(true);
    until([&] { return model->tab == AppModel::Tab::queue; });
    EXPECT_EQ(model->queue().jobs().size(), 2u);
    until([&] { return !screen->canRestore(); });
    worker->letGo();
    until([&] { return !model->queue().active(); });
    EXPECT_TRUE(screen->canRestore());
    EXPECT_TRUE(model->queue().jobs()[0].request.isRestore());
}

TEST_F(HistoryScreen, TryAgainHandsTheFilesToReview) {
    history.append(film("a", file("Metropolis (1927).mp4"), "failed"));
    show();
    model->tab = AppModel::Tab::history;
    screen->tryAgain(key(0));
    EXPECT_EQ(model->tab, AppModel::Tab::review);
    untilScanned();
    EXPECT_EQ(model->fileCount(), 1);
}

TEST_F(HistoryScreen, ExportWritesTheTableAndSaysSo) {
    history.append(film("a", "/films/a.mp4"));
    EXPECT_EQ(screen->exportPlace().fileName(), "Marlet History.csv");
    const fs::path target = library / "Marlet History.csv";
    screen->exportTo(QUrl::fromLocalFile(toQt(target)));
    until([&] { return model->toast().has_value(); });
    EXPECT_EQ(model->toast(), "Saved “Marlet History.csv”");
    EXPECT_EQ(textOf(readFile(target)), history.csv());
}

TEST_F(HistoryScreen, AnExportGoesToAPlaceWhoseNameIsNotUtf8) {
    history.append(film("a", "/films/a.mp4"));
    const fs::path target = library / "Caf\xE9.csv";
    screen->exportTo(FileAddress::of(target));
    until([&] { return model->toast().has_value(); });
    EXPECT_EQ(textOf(readFile(target)), history.csv());
}

TEST_F(HistoryScreen, AnExportThatCannotBeWrittenSaysWhy) {
    const fs::path target = library / "no such folder" / "History.csv";
    screen->exportTo(QUrl::fromLocalFile(toQt(target)));
    until([&] { return model->notice.has_value(); });
    EXPECT_THAT(*model->notice,
                testing::StartsWith("History couldn't be saved as “History.csv”: "));
    EXPECT_THAT(*model->notice, testing::HasSubstr("No such file or directory"));
    screen->exportTo(QUrl("https://example.org/a.csv"));
    EXPECT_EQ(*model->notice, "History can't be saved there: it isn't a folder of this computer.");
}

TEST_F(HistoryScreen, APosterThatIsGoneIsLookedForWhereItCameFrom) {
    HistoryEntry entry = film("a", "/films/a.mp4");
    entry.posterPath = HistoryPosters::pathFor("/abc.jpg");
    history.append(entry);
    entry = film("b", "/films/b.mp4");
    entry.posterPath = "/elsewhere/b.jpg";
    history.append(entry);
    history.append(film("c", "/films/c.mp4"));
    show();
    EXPECT_EQ(text(0, "poster") + text(0, "otherPoster"), "");
    EXPECT_EQ(cell(1, "poster").toString(), ArtAddress::saved("/elsewhere/b.jpg"));
    EXPECT_EQ(text(1, "otherPoster"), "");
    EXPECT_EQ(cell(2, "poster").toString(), ArtAddress::saved(HistoryPosters::pathFor("/abc.jpg")));
    EXPECT_EQ(cell(2, "otherPoster").toString(),
              ArtAddress::remote(std::string("/abc.jpg"), "w342"));
}

TEST_F(HistoryScreen, ClearingEmptiesThePage) {
    history.append(film("a", "/films/a.mp4"));
    show();
    history.clear();
    until([&] { return screen->stage() == "empty"; });
    EXPECT_EQ(count(), 0);
}

TEST_F(HistoryScreen, ARunThatBeganWhileTheQuestionWasOpenKeepsThePageWhereItIs) {
    std::promise<void> mayEnd;
    const std::shared_future<void> end(mayEnd.get_future());
    parts.worker = [end](const WriteRequest&, auto&, const auto&) {
        end.wait();
        return WriteOutcome{.status = WriteOutcome::Status::done};
    };
    screen.reset();
    make();
    screen = std::make_unique<HistoryModel>(*model);
    model->onChanged = [this] { screen->refresh(); };
    history.append(film("a", savedFile("a.mp4")));
    addConfirmed({"Charade (1963).mp4"});
    queueAll();
    show();
    look(0);
    screen->askRestore(key(0));
    model->queue().start();
    model->tab = AppModel::Tab::history;
    screen->answerRestore(true);
    for (int i = 0; i < 20; i++) pause();
    EXPECT_EQ(model->tab, AppModel::Tab::history);
    EXPECT_EQ(model->queue().jobs().size(), 1u);
    mayEnd.set_value();
    until([&] { return !model->queue().active(); });
}

TEST_F(HistoryScreen, WithNothingToRestoreThePageStaysWhereItIsAndANoticeTellsWhy) {
    const fs::path saved = savedFile("a.mp4");
    history.append(film("a", saved));
    show();
    look(0);
    screen->askRestore(key(0));
    fs::remove(saved);
    model->tab = AppModel::Tab::history;
    screen->answerRestore(true);
    until([&] { return model->notice.has_value(); });
    EXPECT_EQ(model->tab, AppModel::Tab::history);
}

TEST_F(HistoryScreen, TheFileIsReadByAWorkerAndNobodyWaitsForIt) {
    HistoryStore().append(film("a", "/films/a.mp4"));
    screen->setShown(true);
    EXPECT_EQ(screen->stage(), "unknown");
    EXPECT_FALSE(history.isLoaded());
    until([&] { return screen->stage() == "rows"; });
    EXPECT_EQ(count(), 1);
}

}  // namespace
}  // namespace marlet::test
