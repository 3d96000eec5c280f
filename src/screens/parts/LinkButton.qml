import QtQuick
import QtQuick.Controls.Basic
import Marlet

/// Words that do something, in the middle of a page.
Button {
    id: button

    property string help

    padding: 2
    font.family: Theme.family
    font.pixelSize: Theme.body
    Accessible.role: Accessible.Link
    Accessible.name: text
    Accessible.onPressAction: if (enabled) button.clicked()
    Keys.onReturnPressed: if (enabled) clicked()
    Keys.onEnterPressed: if (enabled) clicked()

    contentItem: Text {
        text: button.text
        textFormat: Text.PlainText
        elide: Text.ElideRight
        font.family: button.font.family
        font.pixelSize: button.font.pixelSize
        font.underline: button.hovered || button.visualFocus
        color: button.enabled ? Theme.accent : Theme.disabled
    }
    background: Item {
        FocusRing { shown: button.visualFocus; radius: 4 }
    }
    HoverHandler { cursorShape: Qt.PointingHandCursor }
    Hint { text: button.help; visible: button.help !== "" && (button.hovered || button.visualFocus) }
}
