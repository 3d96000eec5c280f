#include <QGuiApplication>
#include <QQuickItem>
#include <QWindow>

#include "screens/pictures/scenes.h"

namespace marlet::test {
namespace {

const Scene notice("frame-notice", [](Stage& stage) {
    stage.setNotice(
        QStringLiteral("2 files still need a look and weren't added. 3 added to the queue."));
    stage.say(QStringLiteral("3 added to Queue"));
});

const Scene clearing("frame-clear-history", [](Stage& stage) {
    stage.addHistory({QVariantMap{{QStringLiteral("title"), QStringLiteral("Sintel")}}});
    stage.screens().askToClearHistory();
});

/// Files are over the window and may be let go.
const Scene dropping("frame-drop", [](Stage& stage) {
    stage.place(
        {QVariantMap{{QStringLiteral("name"), QStringLiteral("Charade (1963).mp4")},
                     {QStringLiteral("title"), QStringLiteral("Charade")},
                     {QStringLiteral("year"), 1963},
                     {QStringLiteral("poster"), QStringLiteral("/film-196301-poster-1.jpg")}}});
    for (QWindow* window : QGuiApplication::allWindows())
        for (QObject* area : window->findChildren<QObject*>(QStringLiteral("dropArea")))
            if (auto* const root = qobject_cast<QQuickItem*>(area)->parentItem())
                root->setProperty("dropTargeted", true);
});

const Scene menu("frame-menu", [](Stage&) {
    for (QWindow* window : QGuiApplication::allWindows())
        for (QObject* opened : window->findChildren<QObject*>(QStringLiteral("mainMenu")))
            QMetaObject::invokeMethod(opened, "open");
});

}  // namespace
}  // namespace marlet::test
