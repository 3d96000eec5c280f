#include "screens/pictures/scenes.h"

namespace marlet::test {
namespace {

QString q(const char* text) {
    return QString::fromUtf8(text);
}

struct Film {
    const char* name;
    int minutes;
};

/// A small library of the sample catalogue by the ordinary road: what a person sees. Most of it is
/// certain; three files ask for a look.
void library(Stage& stage) {
    std::vector<Film> films = {{"Charade (1963).m4v", 113},
                               {"His Girl Friday (1940).mkv", 92},
                               {"Night of the Living Dead (1968).mp4", 96},
                               {"Nosferatu (1922).mp4", 94},
                               {"Sintel (2010).mp4", 15},
                               {"The General (1926).mp4", 41},
                               {"Dr. Jekyll and Mr. Hyde.mp4", 12},
                               {"Detour (1945).mov", 68},
                               {"Metropolis (1927).m4v", 153},
                               {"VID_0042.mp4", 7}};
    QStringList names;
    for (const Film& film : films) {
        names.append(q(film.name));
        QVariantMap tags{{q("minutes"), film.minutes}};
        if (film.minutes == 113)
            tags.insert({{q("title"), q("Charade.1963.720p")},
                         {q("genre"), q("Comedy")},
                         {q("cover"), q("#7a3b2e")},
                         {q("sounds"), QStringList{q("eng"), q("fre")}}});
        stage.film(names.last(), tags);
    }
    for (int episode = 1; episode <= 6; episode++) {
        names.append(QStringLiteral("The Tin Observatory/Season 2/The Tin Observatory S02E0%1.mkv")
                         .arg(episode));
        stage.film(names.last(), {{q("minutes"), 22}});
    }
    stage.addAndWait(names);
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
