import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Templates as T
import Marlet

/// A page over the window: a title, something to fill in, buttons at the bottom right. Escape
/// closes it.
Popup {
    id: sheet

    property string title
    property alias footer: foot.data
    default property alias body: content.data
    property int mostWidth: Math.max(720, Theme.px(720))
    property int mostHeight: Math.max(560, Theme.px(560))

    parent: T.Overlay.overlay
    anchors.centerIn: parent
    width: Math.min(mostWidth, (parent ? parent.width : mostWidth) - 2 * Theme.s6)
    height: Math.min(mostHeight, (parent ? parent.height : mostHeight) - 2 * Theme.s6)
    modal: true
    focus: true
    padding: 0
    closePolicy: Popup.CloseOnEscape
    T.Overlay.modal: Rectangle { color: Theme.shade }
    enter: Transition { NumberAnimation { property: "opacity"; from: 0; to: 1; duration: Theme.motion } }
    exit: Transition { NumberAnimation { property: "opacity"; from: 1; to: 0; duration: Theme.motion } }

    background: Rectangle {
        color: Theme.dark ? Theme.card : Theme.window
        radius: 12
        border.color: Theme.hairline
    }
    contentItem: FocusScope {
        Accessible.role: Accessible.Dialog
        Accessible.name: sheet.title
        Words {
            id: heading
            anchors { left: parent.left; right: shut.left; top: parent.top; margins: Theme.s4 }
            text: sheet.title
            kind: Words.PageTitle
            Accessible.role: Accessible.Heading
        }
        IconButton {
            id: shut
            objectName: "sheetClose"
            anchors { right: parent.right; top: parent.top; margins: Theme.s3 }
            glyph: "cross"
            help: qsTr("Close")
            onClicked: sheet.close()
        }
        FocusScope {
            id: content
            focus: true
            anchors {
                left: parent.left; right: parent.right; top: heading.bottom
                bottom: foot.children.length > 0 ? foot.top : parent.bottom
                margins: Theme.s4
            }
        }
        Row {
            id: foot
            anchors { right: parent.right; bottom: parent.bottom; margins: Theme.s4 }
            spacing: Theme.s2
        }
    }
}
