// screen_pictures FOLDER [PART OF A NAME]: pictures of the window in every state, light and dark,
// 720 and 1440 px wide. For eyes; nothing compares them.

#include <QGuiApplication>
#include <QImage>
#include <QQmlApplicationEngine>
#include <QQuickWindow>
#include <cstdio>
#include <filesystem>

#include "screens/base/qt_text.h"
#include "screens/pictures/scenes.h"
#include "screens/stage/own_ground.h"

namespace marlet::test {

Scene::Scene(std::string sceneName, std::function<void(Stage&)> sceneSet, Looks sceneLooks)
    : name(std::move(sceneName)), set(std::move(sceneSet)), looks(sceneLooks) {
    all().push_back(*this);
}

std::vector<Scene>& Scene::all() {
    static std::vector<Scene> scenes;
    return scenes;
}

namespace {

using namespace std::chrono_literals;

/// Each picture has a window of its own: what an earlier one left open would lie over it.
bool take(const Scene& scene, const std::string& look, QSize size,
          const std::filesystem::path& folder) {
    Stage stage;
    QQmlApplicationEngine engine;
    stage.qmlEngineAvailable(&engine);
    stage.clear();
    stage.setSetting(QStringLiteral("appearance"), toQt(look));
    engine.load(QUrl(QStringLiteral("qrc:/qt/qml/Marlet/frame/MainWindow.qml")));
    if (engine.rootObjects().isEmpty()) return false;
    auto* window = qobject_cast<QQuickWindow*>(engine.rootObjects().constFirst());
    window->resize(size);
    scene.set(stage);
    stage.settle();
    // Pictures and motions come in their own time.
    Async::wait(Async::sleep(600ms));
    const std::string file =
        scene.name + "-" + (look == "Dark" ? "dark" : "light") + "-" + std::to_string(size.width());
    window->grabWindow().save(toQt(folder / (file + ".png")));
    std::printf("%s\n", file.c_str());
    std::fflush(stdout);
    stage.clear();
    return true;
}

int run(const std::filesystem::path& folder, const std::string& part) {
    std::filesystem::create_directories(folder);
    for (const Scene& scene : Scene::all()) {
        if (scene.name.find(part) == std::string::npos) continue;
        for (const std::string look : {"Light", "Dark"}) {
            if (look == "Dark" && scene.looks == Scene::Looks::light) continue;
            for (const QSize size : {QSize(720, 640), QSize(1440, 900)})
                if (!take(scene, look, size, folder)) return 1;
        }
    }
    return 0;
}

}  // namespace
}  // namespace marlet::test

int main(int argc, char** argv) {
    if (argc < 2) {
        std::fputs("screen_pictures FOLDER [PART OF A NAME]\n", stderr);
        return 2;
    }
    marlet::test::standOnOwnGround();
    const QGuiApplication application(argc, argv);
    return marlet::test::run(argv[1], argc > 2 ? argv[2] : "");
}
