// What the stage does about those who can't see the window, or read it large or from the right.

#include <QAccessible>
#include <QFontInfo>
#include <QGuiApplication>
#include <QWindow>

#include "screens/stage/stage.h"

namespace marlet::test {

namespace {

constexpr int usualTextPixels = 13;

QVariantMap noteOf(QAccessibleInterface& node, int depth) {
    const QAccessible::State state = node.state();
    QAccessibleActionInterface* const actions = node.actionInterface();
    const bool pressable = actions != nullptr && actions->actionNames().contains(
                                                     QAccessibleActionInterface::pressAction());
    QAccessibleValueInterface* const value = node.valueInterface();
    return {{QStringLiteral("role"), static_cast<int>(node.role())},
            {QStringLiteral("name"), node.text(QAccessible::Name)},
            {QStringLiteral("description"), node.text(QAccessible::Description)},
            {QStringLiteral("value"), value == nullptr ? QVariant(-1) : value->currentValue()},
            {QStringLiteral("depth"), depth},
            {QStringLiteral("focusable"), static_cast<bool>(state.focusable)},
            {QStringLiteral("focused"), static_cast<bool>(state.focused)},
            {QStringLiteral("selected"), static_cast<bool>(state.selected)},
            {QStringLiteral("checked"), static_cast<bool>(state.checked)},
            {QStringLiteral("pressable"), pressable},
            {QStringLiteral("shown"), !state.invisible && !state.offscreen},
            {QStringLiteral("place"), node.rect()},
            {QStringLiteral("objectName"),
             node.object() == nullptr ? QString() : node.object()->objectName()}};
}

/// All below a node that isn't hidden, it included; until one says stop.
template <typename Each>
bool walk(QAccessibleInterface& node, int depth, const Each& each) {
    if (node.state().invisible) return true;
    if (!each(node, depth)) return false;
    for (int at = 0; at < node.childCount(); ++at)
        if (QAccessibleInterface* const child = node.child(at))
            if (!walk(*child, depth + 1, each)) return false;
    return true;
}

}  // namespace

QVariantList Stage::heard(QObject* window) const {
    QAccessible::setActive(true);
    QVariantList nodes;
    if (QAccessibleInterface* const top = QAccessible::queryAccessibleInterface(window))
        walk(*top, 0, [&](QAccessibleInterface& node, int depth) {
            nodes << noteOf(node, depth);
            return true;
        });
    return nodes;
}

bool Stage::pressHeard(QObject* window, const QString& name) const {
    QAccessible::setActive(true);
    bool pressed = false;
    const QString press = QAccessibleActionInterface::pressAction();
    if (QAccessibleInterface* const top = QAccessible::queryAccessibleInterface(window))
        walk(*top, 0, [&](QAccessibleInterface& node, int) {
            if (node.text(QAccessible::Name) != name) return true;
            QAccessibleActionInterface* const actions = node.actionInterface();
            if (actions == nullptr || !actions->actionNames().contains(press)) return true;
            pressed = true;
            actions->doAction(press);
            return false;
        });
    return pressed;
}

void Stage::setTextScale(qreal factor) {
    QFont font = QGuiApplication::font();
    const int pixels = qRound(usualTextPixels * factor);
    if (QFontInfo(font).pixelSize() == pixels) return;
    font.setPixelSize(pixels);
    QGuiApplication::setFont(font);
}

void Stage::setRightToLeft(bool on) {
    QGuiApplication::setLayoutDirection(on ? Qt::RightToLeft : Qt::LeftToRight);
}

}  // namespace marlet::test
