#include "screens/pictures/scenes.h"

namespace marlet::test {
namespace {

QString q(const char* text) {
    return QString::fromUtf8(text);
}

const QString charade = q("Charade (1963).m4v");

/// A film of the sample catalogue by the ordinary road, and a real one on the disk.
void charadeOf(Stage& stage, int page, const QVariantMap& tags) {
    stage.makeFile(charade);
    stage.film(charade, tags);
    stage.addAndWait({charade});
    stage.model().inspectorPage = page;
    stage.inspect(charade);
    stage.model().loadDrafts(stage.model().items().front());
    stage.untilQuiet();
}

const QVariantMap oldTags{{q("title"), q("Charade.1963.720p")},
                          {q("genre"), q("Comedy")},
                          {q("comment"), q("mine")},
                          {q("cover"), q("#7a3b2e")},
                          {q("sounds"), QStringList{q("eng"), q("fre"), q("ger")}}};

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

void mkv(Stage& stage, const char* kind) {
    stage.plan(q("Sintel (2010).mkv"), q(kind));
    stage.place({QVariantMap{
        {q("name"), q("Sintel (2010).mkv")}, {q("title"), q("Sintel")}, {q("year"), 2010}}});
    stage.draft(q("Sintel (2010).mkv"), {{q("title"), q("Sintel")}});
    stage.model().inspectorPage = 1;
    stage.inspect(q("Sintel (2010).mkv"));
}
const Scene tracksMKV("inspector-tracks-mkv", [](Stage& stage) { mkv(stage, "rich"); });
const Scene checkingMKV("inspector-tracks-checking", [](Stage& stage) { mkv(stage, "checking"); });
const Scene refusedMKV("inspector-tracks-refused", [](Stage& stage) { mkv(stage, "refused"); });

const Scene tracksMOV("inspector-tracks-mov", [](Stage& stage) {
    stage.place({QVariantMap{{q("name"), q("Clip.mov")}, {q("title"), q("Clip")}}});
    stage.model().inspectorPage = 1;
    stage.inspect(q("Clip.mov"));
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
