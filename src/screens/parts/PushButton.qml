import QtQuick
import QtQuick.Controls.Basic
import Marlet

/// A button with words; primary for the one thing that a page is for.
Button {
    id: button

    property bool primary: false
    property bool danger: false
    property string glyph
    property string help
    readonly property color tone: !enabled ? Theme.disabled : primary ? Theme.accentInk
                                : danger ? Theme.failed : Theme.ink

    implicitHeight: Theme.control
    leftPadding: Theme.s3
    rightPadding: Theme.s3
    topPadding: 0
    bottomPadding: 0
    font.family: Theme.family
    font.pixelSize: Theme.body
    font.weight: primary ? Font.DemiBold : Font.Medium
    Accessible.name: text
    Accessible.description: help
    Accessible.onPressAction: if (enabled) button.clicked()
    Keys.onReturnPressed: if (enabled) clicked()
    Keys.onEnterPressed: if (enabled) clicked()

    contentItem: Item {
        implicitWidth: words.implicitWidth + (symbol.visible ? symbol.width + row.spacing : 0)
        implicitHeight: words.implicitHeight
        Row {
            id: row
            anchors.centerIn: parent
            spacing: 6
            Glyph {
                id: symbol
                visible: button.glyph !== ""
                name: button.glyph
                color: button.tone
                size: Theme.px(16)
                anchors.verticalCenter: parent.verticalCenter
            }
            Text {
                id: words
                width: Math.min(implicitWidth, button.availableWidth - (symbol.visible ? symbol.width + row.spacing : 0))
                text: button.text
                textFormat: Text.PlainText
                elide: Text.ElideRight
                font: button.font
                color: button.tone
                anchors.verticalCenter: parent.verticalCenter
            }
        }
    }
    background: Rectangle {
        radius: 6
        color: button.primary ? (button.enabled ? (button.down ? Qt.darker(Theme.accent, 1.15)
                                                 : button.hovered ? Qt.lighter(Theme.accent, 1.08) : Theme.accent)
                                                : Theme.tint(Theme.ink, 0.06))
             : Theme.tint(Theme.ink, button.down ? 0.14 : button.hovered && button.enabled ? 0.09 : 0.05)
        border.width: button.primary ? 0 : 1
        border.color: Theme.hairline
        FocusRing { shown: button.visualFocus; anchors.margins: -3 }
    }
    Hint { text: button.help; visible: button.help !== "" && (button.hovered || button.visualFocus) }
}
