#include <QGuiApplication>
#include <QQuickWindow>
#include <fstream>

#include "foundation/paths.h"
#include "screens/pictures/scenes.h"
#include "screens/settings/settings_model.h"

namespace marlet::test {
namespace {

using namespace std::chrono_literals;

QObject* part(const char* name) {
    for (QWindow* window : QGuiApplication::allWindows())
        if (QObject* found = window->findChild<QObject*>(QLatin1String(name))) return found;
    return nullptr;
}

void close(const char* name) {
    if (QObject* sheet = part(name)) QMetaObject::invokeMethod(sheet, "close");
}

void openSettings(Stage& stage, double down) {
    close("aboutSheet");
    close("keysSheet");
    const auto folder = Paths::workDir() / "5C0A1C0E-0001-4000-8000-000000000001";
    std::filesystem::create_directories(folder);
    std::ofstream(folder / "copy.mp4") << std::string(1'400'000, 'x');
    stage.setSetting(QStringLiteral("sourceOn.appleTV"), true);
    stage.screens().openSettings();
    Async::wait(Async::sleep(300ms));
    QObject* page = part("settingsPage");
    if (page == nullptr) return;
    const double most =
        page->property("contentHeight").toDouble() - page->property("height").toDouble();
    page->setProperty("contentY", std::max(0.0, most * down));
}

const Scene top("settings-1-top", [](Stage& stage) { openSettings(stage, 0); });
const Scene second("settings-2-key-and-writing", [](Stage& stage) { openSettings(stage, 0.42); });
const Scene third("settings-3-guessing", [](Stage& stage) { openSettings(stage, 0.76); });
const Scene end("settings-4-end", [](Stage& stage) { openSettings(stage, 1); });

const Scene question("settings-5-library-question", [](Stage& stage) {
    openSettings(stage, 0.42);
    stage.screens().settings()->setLibraryWrites(true);
});

const Scene about("settings-6-about", [](Stage& stage) {
    close("libraryQuestion");
    close("settingsSheet");
    stage.screens().openAbout();
});

const Scene notices("settings-7-about-notices", [](Stage& stage) {
    stage.screens().openAbout();
    Async::wait(Async::sleep(300ms));
    if (QObject* page = part("aboutPage")) page->setProperty("contentY", 720);
});

const Scene keys("settings-8-keys", [](Stage&) {
    close("aboutSheet");
    if (QObject* sheet = part("keysSheet")) QMetaObject::invokeMethod(sheet, "open");
});

const Scene gone("settings-9-closed", [](Stage&) { close("keysSheet"); });

}  // namespace
}  // namespace marlet::test
