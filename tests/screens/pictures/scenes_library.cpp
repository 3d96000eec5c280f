#include "screens/pictures/scenes.h"

namespace marlet::test {
namespace {

QString q(const char* text) {
    return QString::fromUtf8(text);
}

/// A small library of the sample catalogue by the ordinary road: what a person sees.
void library(Stage& stage) {
    QStringList names;
    for (const char* name :
         {"Charade (1963).m4v", "His Girl Friday (1940).mkv", "Night of the Living Dead (1968).mp4",
          "Nosferatu (1922).mp4", "Sintel (2010).mp4", "The General (1926).mp4",
          "Dr. Jekyll and Mr. Hyde.mp4", "Detour (1945).mov"})
        names.append(q(name));
    for (int episode = 1; episode <= 6; episode++)
        names.append(QStringLiteral("The Tin Observatory/Season 2/The Tin Observatory S02E0%1.mkv")
                         .arg(episode));
    for (const QString& name : names) stage.makeFile(name);
    stage.film(names.first(), {{q("title"), q("Charade.1963.720p")},
                               {q("genre"), q("Comedy")},
                               {q("cover"), q("#7a3b2e")},
                               {q("sounds"), QStringList{q("eng"), q("fre")}}});
    stage.addAndWait(names);
    // The person has said yes to most.
    int left = 0;
    for (const ResolvedFile& file : stage.model().allFiles())
        if (file.match && file.match->title != "Dr. Jekyll and Mr. Hyde" &&
            (file.match->kind == MediaKind::movie || ++left > 2))
            stage.model().confirm(file.file.url);
    stage.untilQuiet();
}

void show(Stage& stage, int page) {
    stage.model().inspectorPage = page;
    stage.model().inspectorShown = true;
    stage.inspect(q("Charade (1963).m4v"));
    for (const LibraryItem& item : stage.model().items())
        if (item.title == "Charade") stage.model().loadDrafts(item);
    stage.untilQuiet();
}

const Scene list("library-review", [](Stage& stage) { library(stage); });
const Scene details("library-details", [](Stage& stage) {
    library(stage);
    show(stage, 0);
});
const Scene artwork("library-artwork", [](Stage& stage) {
    stage.setSetting(q("artworkStyle"), q("tall"));
    library(stage);
    show(stage, 2);
});

}  // namespace
}  // namespace marlet::test
