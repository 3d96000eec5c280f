#include <QGuiApplication>
#include <QQmlApplicationEngine>
#include <QQuickWindow>

#include "app/front.h"
#include "screens/frame/screens.h"
#include "screens/pictures/art_provider.h"

/// Generated. Nothing else of a static library that only QML speaks of would be linked.
void qml_register_types_Marlet();

namespace marlet {

namespace {

/// The main window and all that hangs on it.
class WindowFront : public Front {
public:
    WindowFront(AppModel& model, QuitGate& gate) : screens_(model, gate) {}

    void open() override {
        engine_.addImageProvider(ArtProvider::name, new ArtProvider);
        qml_register_types_Marlet();
        engine_.addImportPath(QStringLiteral("qrc:/qt/qml"));
        engine_.load(QUrl(QStringLiteral("qrc:/qt/qml/Marlet/frame/MainWindow.qml")));
    }
    Headless::Shots* shots() override { return nullptr; }

private:
    Screens screens_;
    QQmlApplicationEngine engine_;
};

/// A terminal without a display has no windows to open.
bool hasDisplay() {
    return qEnvironmentVariableIsSet("WAYLAND_DISPLAY") || qEnvironmentVariableIsSet("DISPLAY") ||
           qEnvironmentVariableIsSet("QT_QPA_PLATFORM");
}

}  // namespace

bool Front::isWanted(const Headless::Options& options) {
    return hasDisplay() && !Headless::endsTheProgram(options);
}

std::unique_ptr<QCoreApplication> Front::makeApplication(int& argc, char** argv,
                                                         const Headless::Options& options) {
    if (!isWanted(options)) return std::make_unique<QCoreApplication>(argc, argv);
    return std::make_unique<QGuiApplication>(argc, argv);
}

std::unique_ptr<Front> Front::make(AppModel& model, QuitGate& gate,
                                   const Headless::Options& options) {
    if (!isWanted(options)) return nullptr;
    return std::make_unique<WindowFront>(model, gate);
}

}  // namespace marlet
