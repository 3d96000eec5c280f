// Files dragged over the window, as the window system tells of them.

#include <QDragEnterEvent>
#include <QDragLeaveEvent>
#include <QDropEvent>

#include "screens/stage/stage.h"

namespace marlet::test {

bool Stage::dragOver(QQuickWindow* window, const QStringList& addresses, qreal x, qreal y) {
    const bool entered = dragged_ == nullptr;
    if (entered) {
        dragged_ = std::make_unique<QMimeData>();
        // As a program on the other side writes it; an empty list is text that names no file.
        if (addresses.isEmpty())
            dragged_->setText(QStringLiteral("some words"));
        else
            dragged_->setData(QStringLiteral("text/uri-list"),
                              (addresses.join(QStringLiteral("\r\n")) + "\r\n").toUtf8());
    }
    draggedTo_ = {x, y};
    bool taken = true;
    if (entered) {
        QDragEnterEvent enter(draggedTo_.toPoint(), Qt::CopyAction, dragged_.get(), Qt::LeftButton,
                              Qt::NoModifier);
        QCoreApplication::sendEvent(window, &enter);
        taken = enter.isAccepted();
    }
    QDragMoveEvent move(draggedTo_.toPoint(), Qt::CopyAction, dragged_.get(), Qt::LeftButton,
                        Qt::NoModifier);
    QCoreApplication::sendEvent(window, &move);
    return taken && move.isAccepted();
}

bool Stage::dropThere(QQuickWindow* window) {
    QDropEvent drop(draggedTo_, Qt::CopyAction, dragged_.get(), Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(window, &drop);
    dragged_.reset();
    return drop.isAccepted() && drop.dropAction() == Qt::CopyAction;
}

void Stage::dragAway(QQuickWindow* window) {
    QDragLeaveEvent leave;
    QCoreApplication::sendEvent(window, &leave);
    dragged_.reset();
}

}  // namespace marlet::test
