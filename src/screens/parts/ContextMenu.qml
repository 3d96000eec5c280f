import QtQuick
import QtQuick.Controls.Basic
import Marlet

/// What can be done with a row, where the pointer or the keyboard is.
Menu {
    id: menu

    implicitWidth: Math.max(200, contentWidth + 2)
    padding: 4
    background: Rectangle { implicitWidth: 220; color: Theme.raised; radius: Theme.radius; border.color: Theme.hairline }
    delegate: MenuEntry {}
}
