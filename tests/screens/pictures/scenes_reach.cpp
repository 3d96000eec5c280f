#include <QGuiApplication>
#include <algorithm>

#include "screens/pictures/scenes.h"

namespace marlet::test {
namespace {

/// A state that another file has, seen by other eyes.
void play(const char* name, Stage& stage) {
    const auto& all = Scene::all();
    const auto found = std::ranges::find(all, name, &Scene::name);
    if (found != all.end()) found->set(stage);
}

class Reach {
public:
    Reach(const std::string& prefix, const std::vector<const char*>& names,
          void (*before)(Stage&)) {
        for (const char* name : names)
            Scene(
                prefix + name,
                [name, before](Stage& stage) {
                    before(stage);
                    play(name, stage);
                },
                Scene::Looks::light);
    }
};

const Reach rightToLeft("rtl-",
                        {"review-empty", "review-list", "review-several", "library-details",
                         "inspector-season", "inspector-doubtful", "inspector-tracks-mkv",
                         "picker-results", "picker-season", "picker-hand-film", "queue-running",
                         "queue-failures", "history-open", "history-restore", "settings-1-top",
                         "settings-2-key-and-writing", "settings-6-about", "settings-8-keys"},
                        [](Stage& stage) { stage.setRightToLeft(true); });
const Reach large("large-text-", {"review-empty",        "review-list",
                                  "review-several",      "review-locked",
                                  "review-scanning",     "library-details",
                                  "library-artwork",     "inspector-season",
                                  "inspector-doubtful",  "inspector-tracks-mkv",
                                  "picker-results",      "picker-season",
                                  "picker-season-stops", "picker-hand-film",
                                  "picker-shop",         "queue-waiting",
                                  "queue-locked",        "queue-failures",
                                  "history-open",        "history-restore",
                                  "settings-1-top",      "settings-2-key-and-writing",
                                  "settings-3-guessing", "settings-5-library-question",
                                  "settings-6-about",    "settings-8-keys",
                                  "frame-notice"},
                  [](Stage& stage) { stage.setTextScale(2); });
const Reach larger("larger-text-",
                   {"library-details", "picker-season", "queue-failures", "history-open",
                    "settings-2-key-and-writing"},
                   [](Stage& stage) { stage.setTextScale(1.5); });

void compare(Stage& stage) {
    play("library-details", stage);
    for (QWindow* window : QGuiApplication::allWindows())
        if (QObject* sheet = window->findChild<QObject*>(QStringLiteral("compareSheet")))
            QMetaObject::invokeMethod(sheet, "open");
}

void menu(Stage& stage) {
    play("review-list", stage);
    for (QWindow* window : QGuiApplication::allWindows())
        if (QObject* entries = window->findChild<QObject*>(QStringLiteral("mainMenu")))
            QMetaObject::invokeMethod(entries, "open");
}

void longNotice(Stage& stage) {
    QString words = QStringLiteral("A file that was interrupted is finished. ");
    for (int line = 1; line < 40; line++)
        words +=
            QStringLiteral("%1. what else there is to be told of it at some length. ").arg(line);
    stage.setNotice(words);
}

const Scene compared(
    "rtl-compare",
    [](Stage& stage) {
        stage.setRightToLeft(true);
        compare(stage);
    },
    Scene::Looks::light);
const Scene comparedLarge(
    "large-text-compare",
    [](Stage& stage) {
        stage.setTextScale(2);
        compare(stage);
    },
    Scene::Looks::light);
const Scene menuFromTheRight(
    "rtl-menu",
    [](Stage& stage) {
        stage.setRightToLeft(true);
        menu(stage);
    },
    Scene::Looks::light);
const Scene menuLarge(
    "large-text-menu",
    [](Stage& stage) {
        stage.setTextScale(2);
        menu(stage);
    },
    Scene::Looks::light);
const Scene notice("frame-notice-long", longNotice, Scene::Looks::light);

}  // namespace
}  // namespace marlet::test
