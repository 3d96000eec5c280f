#include <QGuiApplication>
#include <QWindow>

#include "screens/pictures/scenes.h"

namespace marlet::test {
namespace {

QString q(const char* text) {
    return QString::fromUtf8(text);
}

const QString charade = q("Charade (1963).m4v");
const QString sintel = q("Sintel (2010).mkv");
const QString detour = q("Detour (1945).mov");

/// A film of the sample catalogue by the ordinary road, and a real one on the disk.
void filmOf(Stage& stage, const QString& name, int page, const QVariantMap& tags) {
    stage.film(name, tags);
    stage.addAndWait({name});
    stage.model().inspectorPage = page;
    stage.inspect(name);
    stage.model().loadDrafts(stage.model().items().front());
    stage.untilQuiet();
}

const QVariantMap oldTags{{q("title"), q("Charade.1963.720p")},
                          {q("genre"), q("Comedy")},
                          {q("comment"), q("mine")},
                          {q("cover"), q("#7a3b2e")},
                          {q("minutes"), 113},
                          {q("sounds"), QStringList{q("eng"), q("fre"), q("ger")}}};

void charadeOf(Stage& stage, int page, const QVariantMap& tags) {
    filmOf(stage, charade, page, tags);
}
void sintelOf(Stage& stage, int page, const char* plan) {
    stage.plan(sintel, q(plan));
    filmOf(stage, sintel, page, {{q("minutes"), 15}, {q("title"), q("sintel final")}});
}
void detourOf(Stage& stage, int page) {
    filmOf(stage, detour, page, {{q("minutes"), 68}, {q("sounds"), QStringList{q("eng")}}});
}

void openComparison(const Stage&) {
    for (QWindow* window : QGuiApplication::allWindows())
        for (QObject* sheet : window->findChildren<QObject*>(q("compareSheet")))
            QMetaObject::invokeMethod(sheet, "open");
}

const Scene details("inspector-details-mp4", [](Stage& stage) { charadeOf(stage, 0, oldTags); });
const Scene tracks("inspector-tracks-mp4", [](Stage& stage) { charadeOf(stage, 1, oldTags); });
const Scene artwork("inspector-artwork-mp4", [](Stage& stage) {
    stage.setSetting(q("artworkStyle"), q("tall"));
    charadeOf(stage, 2, oldTags);
});
const Scene artworkWide("inspector-artwork-wide", [](Stage& stage) {
    stage.setSetting(q("artworkStyle"), q("wide"));
    charadeOf(stage, 2, oldTags);
});

const Scene doubtful("inspector-doubtful", [](Stage& stage) {
    stage.place({QVariantMap{{q("name"), q("Detour.1945.mp4")},
                             {q("title"), q("Detour")},
                             {q("year"), 1945},
                             {q("reasons"), QStringList{q("The length differs by 12 minutes"),
                                                        q("Two films have this title and "
                                                          "year")}}}});
    stage.draft(q("Detour.1945.mp4"),
                {{q("title"), q("Detour")},
                 {q("description"), q("A piano player hitches to Los Angeles.")},
                 {q("cast"), QStringList{q("Tom Neal"), q("Ann Savage")}}});
    stage.inspect(q("Detour.1945.mp4"));
});

const Scene unmatched("inspector-no-match", [](Stage& stage) {
    stage.place({QVariantMap{{q("name"), q("Holiday in Brittany, summer.mp4")},
                             {q("match"), false},
                             {q("reasons"), QStringList{q("No source knows this title")}}}});
    stage.inspect(q("Holiday in Brittany, summer.mp4"));
});

const Scene detailsMKV("inspector-details-mkv", [](Stage& stage) { sintelOf(stage, 0, "rich"); });
const Scene tracksMKV("inspector-tracks-mkv", [](Stage& stage) { sintelOf(stage, 1, "rich"); });
const Scene artworkMKV("inspector-artwork-mkv", [](Stage& stage) { sintelOf(stage, 2, "rich"); });
const Scene refusedMKV("inspector-tracks-refused",
                       [](Stage& stage) { sintelOf(stage, 1, "refused"); });
// Waits for its second look for ever, which the ordinary road would wait for, too.
const Scene checkingMKV("inspector-tracks-checking", [](Stage& stage) {
    stage.plan(sintel, q("checking"));
    stage.place({QVariantMap{{q("name"), sintel}, {q("title"), q("Sintel")}, {q("year"), 2010}}});
    stage.draft(sintel, {{q("title"), q("Sintel")}});
    stage.model().inspectorPage = 1;
    stage.model().reviewID = stage.model().items().front().id;
    stage.model().inspectorFile = stage.path("Sintel (2010).mkv");
    stage.model().inspectorShown = true;
    stage.settle();
});

const Scene detailsMOV("inspector-details-mov", [](Stage& stage) { detourOf(stage, 0); });
const Scene tracksMOV("inspector-tracks-mov", [](Stage& stage) { detourOf(stage, 1); });
const Scene artworkMOV("inspector-artwork-mov", [](Stage& stage) { detourOf(stage, 2); });

const Scene failedArtwork("inspector-artwork-failed", [](Stage& stage) {
    stage.setFault(q(R"({"times":0,"status":500})"));
    stage.place({QVariantMap{{q("name"), charade}, {q("title"), q("Charade")}, {q("year"), 1963}}});
    stage.model().inspectorPage = 2;
    stage.inspect(charade);
    stage.say({});
});

const Scene comparison("inspector-compare", [](Stage& stage) {
    charadeOf(stage, 0, oldTags);
    openComparison(stage);
});
const Scene comparisonTall("inspector-compare-tall", [](Stage& stage) {
    stage.setSetting(q("artworkStyle"), q("tall"));
    charadeOf(stage, 0, oldTags);
    openComparison(stage);
});

const Scene season("inspector-season", [](Stage& stage) {
    QVariantList files;
    for (int number = 1; number <= 9; number++)
        files.append(QVariantMap{
            {q("name"), q("A Show/S01E%1.mp4").arg(number)},
            {q("show"), q("The Lantern Street")},
            {q("season"), 1},
            {q("episode"), number},
            {q("year"), 2014},
            {q("source"), q("appleTV")},
            {q("episodeTitle"), q("The %1. letter from a rather long way away").arg(number)},
            {q("reasons"),
             number == 3 ? QStringList{q("The length differs by 9 minutes")} : QStringList()}});
    stage.place(files);
    stage.draft(q("A Show/S01E3.mp4"),
                {{q("title"), q("The 3. letter from a rather long way away")},
                 {q("show"), q("The Lantern Street")},
                 {q("season"), 1},
                 {q("episode"), 3},
                 {q("rating"), q("TV-14")}});
    stage.inspect(q("A Show/S01E3.mp4"));
});

const Scene loading("inspector-loading", [](Stage& stage) {
    stage.makeFile(charade);
    stage.addAndWait({charade});
    stage.model().drafts().forget(stage.path("Charade (1963).m4v"));
    stage.model().drafts().beginLoading(stage.path("Charade (1963).m4v"));
    stage.model().reviewID = stage.model().items().front().id;
    stage.model().inspectorFile = stage.path("Charade (1963).m4v");
    stage.model().inspectorShown = true;
    stage.settle();
});

}  // namespace
}  // namespace marlet::test
