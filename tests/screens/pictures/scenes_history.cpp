#include <QImage>
#include <QPainter>

#include "screens/base/qt_text.h"
#include "screens/history/history_model.h"
#include "screens/pictures/scenes.h"

namespace marlet::test {
namespace {

using namespace std::chrono_literals;

/// A poster of our own: two colours and a moon.
std::string poster(Stage& stage, const std::string& name, int hue) {
    QImage picture(184, 276, QImage::Format_RGB32);
    QPainter painter(&picture);
    QLinearGradient sky(0, 0, 0, 276);
    sky.setColorAt(0, QColor::fromHsv(hue, 150, 90));
    sky.setColorAt(1, QColor::fromHsv((hue + 40) % 360, 170, 210));
    painter.fillRect(picture.rect(), sky);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(255, 244, 214));
    painter.drawEllipse(QPoint(60 + hue % 60, 90), 34, 34);
    painter.setBrush(QColor::fromHsv(hue, 180, 50));
    painter.drawEllipse(QPoint(92, 330), 190, 120);
    const std::filesystem::path file = stage.path(name + ".jpg");
    picture.save(toQt(file));
    return file.string();
}

HistoryEntry film(Stage& stage, const std::string& title, int year, int hoursAgo) {
    HistoryEntry entry;
    entry.id = title + std::to_string(hoursAgo);
    entry.date = Dates::now() - std::chrono::hours(hoursAgo);
    entry.path = stage.path(title + ".mp4");
    entry.title = title;
    entry.isMovie = true;
    entry.year = year;
    entry.result = "done";
    entry.message = "Details written";
    entry.how = "Changed in place";
    entry.summary = "details and cover art";
    entry.changes = {"title changed", "description updated", "cast added", "cover added"};
    entry.after = 0.62;
    entry.batchID = "run " + std::to_string(hoursAgo);
    entry.posterPath = poster(stage, title, year * 37 % 360);
    return entry;
}

/// Oldest first, as they came.
void fill(Stage& stage) {
    HistoryStore& history = stage.history();
    HistoryEntry old = film(stage, "The General", 1926, 24 * 400);
    old.isRestore = true;
    history.append(old);
    for (int n = 1; n <= 6; n++) {
        HistoryEntry episode = film(stage, "The Long Road", 1998, 24 * 3);
        episode.id = "episode " + std::to_string(n);
        episode.path = stage.path("The.Long.Road.S02E0" + std::to_string(n) + ".m4v");
        episode.title = std::vector<std::string>{"Dust", "A Bridge",   "The Ferry",
                                                 "Salt", "North Wind", "Home"}[std::size_t(n) - 1];
        episode.isMovie = false;
        episode.show = "The Long Road";
        episode.season = 2;
        episode.episode = n;
        episode.year.reset();
        episode.how = "New .m4v";
        episode.changes = {"converted to .m4v, 2 sounds left out", "title changed", "cover added"};
        history.append(episode);
    }
    HistoryEntry skipped = film(stage, "Nosferatu: A Symphony of Horror", 1922, 26);
    skipped.result = "skipped";
    skipped.message = "Dolby Vision profile 5: Apple TV can't play it";
    skipped.posterPath.reset();
    history.append(skipped);
    history.append(film(stage, "A Trip to the Moon", 1902, 25));
    HistoryEntry failed = film(stage, "Metropolis", 1927, 1);
    failed.result = "failed";
    failed.message = "verification failed: the sound of track 2 differs";
    failed.changes.clear();
    failed.before = 3.21;
    failed.after.reset();
    history.append(failed);
    history.append(film(stage, "Charade", 1963, 0));
    for (const char* name :
         {"Charade.mp4", "The.Long.Road.S02E01.m4v", "The.Long.Road.S02E02.m4v"}) {
        stage.makeFile(QString::fromLatin1(name));
        stage.keepOriginal(QString::fromLatin1(name));
    }
    stage.screens().setTab(2);
}

void untilMade(Stage& stage) {
    stage.settle();
    Async::wait(Async::sleep(300ms));
}

const Scene empty("history-empty", [](Stage& stage) { stage.screens().setTab(2); });
const Scene rows("history-rows", fill);
const Scene open("history-open", [](Stage& stage) {
    fill(stage);
    untilMade(stage);
    stage.screens().history()->toggle(QStringLiteral("Charade0"));
    stage.screens().history()->toggle(QStringLiteral("episode 6"));
});
const Scene failed("history-failed-open", [](Stage& stage) {
    fill(stage);
    stage.model().historyFilter = 2;
    untilMade(stage);
    stage.screens().history()->toggle(QStringLiteral("Metropolis1"));
});
const Scene nothing("history-nothing", [](Stage& stage) {
    fill(stage);
    stage.model().historyQuery = "no such film";
});
const Scene question("history-restore", [](Stage& stage) {
    fill(stage);
    untilMade(stage);
    stage.screens().history()->toggle(QStringLiteral("episode 6"));
    untilMade(stage);
    stage.screens().history()->askRestore(QStringLiteral("episode 6"));
});

}  // namespace
}  // namespace marlet::test
