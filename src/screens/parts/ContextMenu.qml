import QtQuick
import QtQuick.Controls.Basic
import Marlet

/// What can be done with a row, where the pointer or the keyboard is.
Menu {
    id: menu

    /// Of the lines, their keys included; a list doesn't know how wide its lines want to be.
    property real widest: 200

    implicitWidth: widest + leftPadding + rightPadding
    onAboutToShow: {
        widest = 200;
        for (let line = 0; line < count; ++line)
            widest = Math.max(widest, itemAt(line).implicitWidth);
    }
    padding: 4
    background: Rectangle { implicitWidth: 220; color: Theme.raised; radius: Theme.radius; border.color: Theme.hairline }
    delegate: MenuEntry {}
}
