import QtQuick
import QtQuick.Controls.Basic
import Marlet

/// A button with a symbol alone; its help says what it does, to eyes and to a screen reader.
Button {
    id: button

    property string glyph
    property string help
    property color tone: Theme.ink

    implicitWidth: Theme.control
    implicitHeight: Theme.control
    padding: 0
    Accessible.name: text !== "" ? text : help
    Accessible.description: help
    Accessible.onPressAction: if (enabled) button.clicked()
    Keys.onReturnPressed: if (enabled) clicked()
    Keys.onEnterPressed: if (enabled) clicked()

    contentItem: Item {
        Glyph {
            anchors.centerIn: parent
            name: button.glyph
            size: Theme.px(18)
            color: !button.enabled ? Theme.disabled : button.checked ? Theme.accent : button.tone
        }
    }
    background: Rectangle {
        radius: 6
        color: button.checked ? Theme.selected
             : Theme.tint(Theme.ink, button.down ? 0.14 : button.hovered && button.enabled ? 0.07 : 0)
        FocusRing { shown: button.visualFocus }
    }
    Hint { text: button.help; visible: button.help !== "" && (button.hovered || button.visualFocus) }
}
