import QtQuick
import QtQuick.Controls.Basic
import Marlet

/// One line of a menu; `keys` are shown at its end.
MenuItem {
    id: entry

    property string glyph
    property string keys

    implicitHeight: visible ? Theme.control : 0
    leftPadding: Theme.s2
    rightPadding: Theme.s3
    font.family: Theme.family
    font.pixelSize: Theme.body
    Accessible.onPressAction: entry.triggered()
    Accessible.name: keys === "" ? text : text + ", " + keys
    contentItem: Item {
        implicitWidth: symbol.width + Theme.s2 + words.implicitWidth + (entry.keys !== "" ? Theme.s6 + hint.implicitWidth : 0)
        Glyph {
            id: symbol
            name: entry.glyph
            size: Theme.px(16)
            color: entry.enabled ? Theme.quiet : Theme.disabled
            anchors { left: parent.left; verticalCenter: parent.verticalCenter }
        }
        Words {
            id: words
            anchors { left: symbol.right; leftMargin: Theme.s2; verticalCenter: parent.verticalCenter }
            text: entry.text
            Accessible.ignored: true
            color: entry.enabled ? Theme.ink : Theme.disabled
        }
        Words {
            id: hint
            visible: entry.keys !== ""
            anchors { right: parent.right; verticalCenter: parent.verticalCenter }
            text: entry.keys
            kind: Words.Small
            Accessible.ignored: true
        }
    }
    background: Rectangle { radius: 5; color: entry.highlighted ? Theme.selected : "transparent" }
}
