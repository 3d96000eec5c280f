#include "screens/picker/picker_model.h"
#include "screens/pictures/scenes.h"

namespace marlet::test {
namespace {

using namespace std::chrono_literals;

PickerModel& picker(Stage& stage) {
    return *stage.screens().picker();
}

/// What is being asked, and then a moment for what that leads to.
void untilAnswered(Stage& stage) {
    const PickerPane& pane = *picker(stage).pane();
    for (int tries = 0; tries < 500; ++tries) {
        Async::wait(Async::sleep(20ms));
        PickerPane& now = *picker(stage).pane();
        if (!pane.isAsking() && !now.show()->isAsking() && !picker(stage).hand()->isAsking()) break;
    }
    stage.say({});
}

void openFilm(Stage& stage, const char* title) {
    stage.place({QVariantMap{
        {QStringLiteral("name"), QStringLiteral("dr.jekyll.and.mr.hyde.1920.RESTORED.1080p.mkv")},
        {QStringLiteral("title"), QString::fromUtf8(title)},
        {QStringLiteral("duration"), 79 * 60},
        {QStringLiteral("match"), false}}});
    stage.openPicker(QStringLiteral("dr.jekyll.and.mr.hyde.1920.RESTORED.1080p.mkv"));
    untilAnswered(stage);
}

QVariantMap episode(int number, int season = 1) {
    return {{QStringLiteral("name"), QStringLiteral("The Tin Observatory/Season %1/tin.s%1e%2.mkv")
                                         .arg(season)
                                         .arg(number, 2, 10, QLatin1Char('0'))},
            {QStringLiteral("title"), QStringLiteral("The Tin Observatory")},
            {QStringLiteral("show"), QStringLiteral("The Tin Observatory")},
            {QStringLiteral("season"), season},
            {QStringLiteral("episode"), number},
            {QStringLiteral("duration"), 22 * 60}};
}

/// Two shows have that name.
void choose2017(Stage& stage) {
    PickerPane& pane = *picker(stage).pane();
    const QAbstractListModel& rows = *pane.results();
    for (int row = 0; row < rows.rowCount(); ++row)
        if (rows.data(rows.index(row), rows.roleNames().key("facts"))
                .toString()
                .startsWith(QLatin1String("2017")))
            pane.setResult(row);
}

void openSeason(Stage& stage, int number) {
    stage.place({episode(1), episode(2), episode(3), episode(number)});
    stage.openPicker(episode(number).value(QStringLiteral("name")).toString());
    untilAnswered(stage);
    choose2017(stage);
    picker(stage).pane()->use();
    untilAnswered(stage);
}

const Scene results("picker-results", [](Stage& stage) { openFilm(stage, "Dr. Jekyll"); });

const Scene nothing("picker-nothing", [](Stage& stage) { openFilm(stage, "Dr. Jekyll in Space"); });

const Scene failure("picker-failure", [](Stage& stage) {
    stage.setFault(QStringLiteral(R"({"times":0,"status":500})"));
    openFilm(stage, "The Picture That Cannot Be Reached");
});

const Scene shows("picker-shows", [](Stage& stage) {
    stage.place({episode(1)});
    stage.openPicker(episode(1).value(QStringLiteral("name")).toString());
    untilAnswered(stage);
});

const Scene season("picker-season", [](Stage& stage) { openSeason(stage, 4); });

const Scene stops("picker-season-stops", [](Stage& stage) { openSeason(stage, 19); });

const Scene whole("picker-season-whole", [](Stage& stage) {
    openSeason(stage, 4);
    picker(stage).pane()->show()->setWhole(true);
});

const Scene across("picker-across", [](Stage& stage) {
    openSeason(stage, 4);
    picker(stage).pane()->show()->search(QStringLiteral("the"));
    untilAnswered(stage);
});

const Scene acrossNothing("picker-across-nothing", [](Stage& stage) {
    openSeason(stage, 4);
    picker(stage).pane()->show()->search(QStringLiteral("submarine"));
    untilAnswered(stage);
});

const Scene hand("picker-hand", [](Stage& stage) {
    openSeason(stage, 19);
    picker(stage).tagByHand();
});

const Scene handFilm("picker-hand-film", [](Stage& stage) {
    openSeason(stage, 19);
    picker(stage).tagByHand();
    picker(stage).hand()->setTitle(QStringLiteral("The Kid"));
    Async::wait(Async::sleep(1500ms));
});

const Scene shop("picker-shop", [](Stage& stage) {
    stage.setSetting(QStringLiteral("sourceOn.appleTV"), true);
    openFilm(stage, "Dr. Jekyll");
    picker(stage).setTab(0);
    untilAnswered(stage);
    Async::wait(Async::sleep(1500ms));
});

const Scene shopSeason("picker-shop-season", [](Stage& stage) {
    stage.setSetting(QStringLiteral("sourceOn.appleTV"), true);
    openSeason(stage, 4);
    picker(stage).setTab(0);
    untilAnswered(stage);
    picker(stage).pane()->use();
    untilAnswered(stage);
});

}  // namespace
}  // namespace marlet::test
