#include "screens/pictures/scenes.h"
#include "screens/review/review_model.h"

namespace marlet::test {
namespace {

QVariantMap film(const QString& name, const QString& title, int year) {
    return {{QStringLiteral("name"), name},
            {QStringLiteral("title"), title},
            {QStringLiteral("year"), year}};
}

QVariantMap withPoster(QVariantMap file, const char* of) {
    file.insert(QStringLiteral("poster"),
                QStringLiteral("/%1-poster-1.jpg").arg(QLatin1String(of)));
    return file;
}

QVariantMap doubtful(QVariantMap file, const QString& reason) {
    file.insert(QStringLiteral("reasons"), QStringList{reason});
    return file;
}

QVariantMap unmatched(QVariantMap file, const QString& reason) {
    file.insert(QStringLiteral("match"), false);
    return doubtful(std::move(file), reason);
}

QVariantMap episode(const QString& show, int season, int number) {
    return {{QStringLiteral("name"),
             QStringLiteral("%1 - S%2E%3.mkv").arg(show).arg(season).arg(number)},
            {QStringLiteral("title"), show},
            {QStringLiteral("show"), show},
            {QStringLiteral("year"), 2004},
            {QStringLiteral("season"), season},
            {QStringLiteral("episode"), number},
            {QStringLiteral("episodeTitle"), QStringLiteral("Chapter %1").arg(number)}};
}

QVariantList shelf() {
    QVariantList files;
    for (int i = 1; i <= 8; i++) {
        QVariantMap file = withPoster(episode(QStringLiteral("The Tin Observatory"), 2, i),
                                      "show-201750-season-2");
        files << (i % 4 == 0 ? doubtful(file, QStringLiteral("Only the file number to go on"))
                             : file);
    }
    for (int i = 1; i <= 6; i++) files << episode(QStringLiteral("Harbour Street"), 1, i);
    files << withPoster(film(QStringLiteral("Charade (1963).mp4"), QStringLiteral("Charade"), 1963),
                        "film-196301")
          << withPoster(
                 film(QStringLiteral("Sintel.2010.1080p.mkv"), QStringLiteral("Sintel"), 2010),
                 "film-201001")
          << withPoster(doubtful(film(QStringLiteral("his girl friday.mp4"),
                                      QStringLiteral("His Girl Friday"), 1940),
                                 QStringLiteral("The file runs 14 minutes longer than the film")),
                        "film-194001")
          << withPoster(
                 doubtful(film(QStringLiteral("Night of the Living Dead.mkv"),
                               QStringLiteral("Night of the Living Dead"), 1968),
                          QStringLiteral("Two films have this name: 1968 and 1990. Which of the "
                                         "two it is can't be told from the file")),
                 "film-196801")
          << unmatched(film(QStringLiteral("VTS_01_1.mp4"), QStringLiteral("VTS 01 1"), 0),
                       QStringLiteral("Couldn't tell what this file is"))
          << film(QStringLiteral("The.Cabinet.of.Dr.Caligari.1920.RESTORED.with.a.very.long.name."
                                 "from.somewhere.x264-GROUP.mp4"),
                  QStringLiteral("The Cabinet of Dr. Caligari and Everything That Happened in "
                                 "Holstenwall That Summer"),
                  1920)
          << withPoster(
                 film(QStringLiteral("Tears of Steel.mov"), QStringLiteral("Tears of Steel"), 2012),
                 "film-201201")
          << film(QStringLiteral("Amélie.mp4"),
                  QStringLiteral("Le Fabuleux Destin d'Amélie Poulain"), 2001);
    return files;
}

void select(Stage& stage, int row) {
    stage.screens().review()->click(row, Qt::NoModifier);
}

const Scene empty("review-empty", [](Stage&) {});

const Scene unfinished("review-unfinished", [](Stage& stage) {
    stage.leaveUnfinished({QStringLiteral("Charade (1963).mp4"), QStringLiteral("Sintel.mp4")},
                          {QStringLiteral("his girl friday.mp4")});
});

const Scene unfinishedMore("review-unfinished-list", [](Stage& stage) {
    stage.leaveUnfinished({QStringLiteral("Metropolis.mp4")}, {});
    stage.place(shelf());
    select(stage, 3);
});

const Scene list("review-list", [](Stage& stage) {
    stage.place(shelf());
    select(stage, 3);
});

const Scene several("review-several", [](Stage& stage) {
    stage.place(shelf());
    stage.screens().review()->setFilter(1);
    select(stage, 0);
    stage.screens().review()->click(2, Qt::ShiftModifier);
});

const Scene searched("review-search", [](Stage& stage) {
    stage.place(shelf());
    stage.screens().review()->setQuery(QStringLiteral("the"));
});

const Scene missed("review-nothing-found", [](Stage& stage) {
    stage.place(shelf());
    stage.screens().review()->setQuery(QStringLiteral("nosferatu"));
});

const Scene locked("review-locked", [](Stage& stage) {
    stage.place({film(QStringLiteral("Media Library/Charade.mp4"), QStringLiteral("Charade"), 1963),
                 film(QStringLiteral("Media Library/Sintel.mp4"), QStringLiteral("Sintel"), 2010)});
    select(stage, 0);
});

/// So many files that the picture is taken in the middle of it.
void scan(Stage& stage) {
    QStringList names;
    for (int i = 0; i < 400; i++) {
        names << QStringLiteral("more/A film of many %1 (1999).mp4").arg(i);
        stage.makeFile(names.back());
    }
    stage.model().add({stage.path("more")});
}

const Scene scanning("review-scanning", [](Stage& stage) { scan(stage); });

const Scene scanningMore("review-scanning-more", [](Stage& stage) {
    stage.place(shelf());
    scan(stage);
});

}  // namespace
}  // namespace marlet::test
