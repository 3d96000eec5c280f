import QtQuick
import Marlet

/// A line that shows more when it is asked to. `open` is what the model holds.
Column {
    id: disclosure

    property string text
    property string content
    property bool open: false
    signal toggled()

    spacing: Theme.s1

    Row {
        width: disclosure.width
        spacing: 2
        Glyph {
            name: disclosure.open ? "chevronDown" : "chevronRight"
            size: Theme.px(14)
            color: Theme.accent
            anchors.verticalCenter: parent.verticalCenter
        }
        LinkButton {
            objectName: "disclosure"
            text: disclosure.text
            font.pixelSize: Theme.small
            Accessible.checkable: true
            Accessible.checked: disclosure.open
            onClicked: disclosure.toggled()
        }
    }
    TextEdit {
        objectName: "disclosed"
        visible: disclosure.open
        width: disclosure.width
        text: disclosure.content
        textFormat: TextEdit.PlainText
        wrapMode: TextEdit.Wrap
        horizontalAlignment: TextEdit.AlignLeft
        readOnly: true
        selectByMouse: true
        color: Theme.quiet
        selectionColor: Theme.accent
        selectedTextColor: Theme.accentInk
        font.family: Theme.family
        font.pixelSize: Theme.small
        Accessible.role: Accessible.StaticText
        Accessible.name: text
    }
}
