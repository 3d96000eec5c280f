#include <QGuiApplication>
#include <QQmlApplicationEngine>
#include <QQuickWindow>
#include <QSGRendererInterface>
#include <QSessionManager>

#include "app/front.h"
#include "foundation/paths.h"
#include "screens/base/qt_text.h"
#include "screens/frame/screens.h"
#include "screens/pictures/art_provider.h"
#include "screens/shots/demo_source.h"
#include "screens/shots/window_shots.h"

/// Generated. Nothing else of a static library that only QML speaks of would be linked.
void qml_register_types_Marlet();

namespace marlet {

namespace {

/// The match picker of pictures may have titles of its own.
const Headless::Options& prepared(const Headless::Options& options) {
    if (options.shots.pickerDemo)
        PickerSource::instead = [](SourceID id) { return std::make_unique<DemoSource>(id); };
    return options;
}

/// The main window and all that hangs on it.
class WindowFront : public Front {
public:
    WindowFront(AppModel& model, QuitGate& gate, const Headless::Options& options)
        : options_(prepared(options)), model_(model), screens_(model, gate) {
        // The session's manager waits for the answer.
        QObject::connect(
            qGuiApp, &QGuiApplication::commitDataRequest, &screens_,
            [this](QSessionManager& manager) {
                screens_.endSession([&] {
                    if (!manager.allowsInteraction()) return;
                    manager.cancel();
                    manager.release();
                });
            },
            Qt::DirectConnection);
    }

    void open() override {
        engine_.addImageProvider(ArtProvider::name, new ArtProvider);
        qml_register_types_Marlet();
        engine_.addImportPath(QStringLiteral("qrc:/qt/qml"));
        engine_.load(QUrl(QStringLiteral("qrc:/qt/qml/Marlet/frame/MainWindow.qml")));
        auto* const window = qobject_cast<QQuickWindow*>(engine_.rootObjects().value(0));
        if (window != nullptr && options_.shots.any())
            shots_ = std::make_unique<WindowShots>(model_, screens_, *window, options_);
    }
    Headless::Shots* shots() override { return shots_.get(); }

private:
    const Headless::Options options_;
    AppModel& model_;
    Screens screens_;
    QQmlApplicationEngine engine_;
    std::unique_ptr<WindowShots> shots_;
};

/// A terminal without a display has no windows to open.
bool hasDisplay() {
    return qEnvironmentVariableIsSet("WAYLAND_DISPLAY") || qEnvironmentVariableIsSet("DISPLAY") ||
           qEnvironmentVariableIsSet("QT_QPA_PLATFORM");
}

}  // namespace

bool Front::isWanted(const Headless::Options& options) {
    if (options.shots.any()) return true;
    return hasDisplay() && !Headless::endsTheProgram(options);
}

std::unique_ptr<QCoreApplication> Front::makeApplication(int& argc, char** argv,
                                                         const Headless::Options& options) {
    if (!isWanted(options)) return std::make_unique<QCoreApplication>(argc, argv);
    // Pictures can be taken where nothing can be shown.
    if (!hasDisplay()) qputenv("QT_QPA_PLATFORM", "offscreen");
    if (qgetenv("QT_QPA_PLATFORM").startsWith("offscreen"))
        QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
    QGuiApplication::setDesktopFileName(toQt(Paths::applicationID()));
    return std::make_unique<QGuiApplication>(argc, argv);
}

std::unique_ptr<Front> Front::make(AppModel& model, QuitGate& gate,
                                   const Headless::Options& options) {
    if (!isWanted(options)) return nullptr;
    return std::make_unique<WindowFront>(model, gate, options);
}

}  // namespace marlet
