import QtQuick
import Marlet

/// A message that stays until it is closed, above the content.
Rectangle {
    id: bar

    property string text
    property string glyph: "info"
    property color tone: Theme.accent
    property bool closable: true
    default property alias buttons: extra.data
    signal closed()

    visible: text !== ""
    implicitHeight: visible ? Math.max(words.implicitHeight, Theme.control) + 2 * Theme.s2 : 0
    color: Theme.tint(tone, 0.1)
    Accessible.role: Accessible.AlertMessage
    Accessible.name: text

    Glyph {
        id: symbol
        name: bar.glyph
        color: bar.tone
        size: Theme.px(18)
        anchors { left: parent.left; leftMargin: Theme.s4; verticalCenter: parent.verticalCenter }
    }
    Words {
        id: words
        anchors {
            left: symbol.right; right: extra.left; leftMargin: Theme.s2; rightMargin: Theme.s3
            verticalCenter: parent.verticalCenter
        }
        text: bar.text
        wrapMode: Text.Wrap
        maximumLineCount: 6
    }
    Row {
        id: extra
        spacing: Theme.s2
        anchors { right: shut.left; rightMargin: Theme.s2; verticalCenter: parent.verticalCenter }
    }
    IconButton {
        id: shut
        objectName: "noticeClose"
        visible: bar.closable
        width: visible ? implicitWidth : 0
        glyph: "cross"
        help: qsTr("Close this message")
        anchors { right: parent.right; rightMargin: Theme.s3; verticalCenter: parent.verticalCenter }
        onClicked: bar.closed()
    }
}
