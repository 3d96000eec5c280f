import QtQuick
import Marlet

/// A message that passes by itself.
Rectangle {
    id: toast

    property int mostWidth: 480

    objectName: "toast"
    width: Math.min(words.implicitWidth + 2 * Theme.s4, mostWidth)
    height: words.implicitHeight + 2 * Theme.s3
    radius: Theme.radius
    color: Theme.dark ? Theme.raised : Theme.ink
    border.width: Theme.dark ? 1 : 0
    border.color: Theme.hairline
    opacity: App.toast !== "" ? 1 : 0
    visible: opacity > 0
    Behavior on opacity { NumberAnimation { duration: Theme.motion } }
    Accessible.role: Accessible.AlertMessage
    Accessible.name: App.toast

    Words {
        id: words
        Accessible.ignored: true
        anchors { fill: parent; leftMargin: Theme.s4; rightMargin: Theme.s4; topMargin: Theme.s3 }
        // Stays while it fades.
        property string last
        text: App.toast !== "" ? App.toast : last
        onTextChanged: last = text
        color: Theme.toastInk
        wrapMode: Text.Wrap
        maximumLineCount: 4
    }
}
