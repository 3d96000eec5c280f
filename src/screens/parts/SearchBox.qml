import QtQuick
import QtQuick.Controls.Basic
import Marlet

/// A field to search with; Escape empties it.
TextField {
    id: field

    property string prompt
    signal edited(string value)

    implicitWidth: Theme.px(200)
    implicitHeight: Theme.control
    readonly property int before: Theme.px(30)
    readonly property int after: clear.visible ? Theme.px(28) : Theme.s2
    leftPadding: Theme.mirrored ? after : before
    rightPadding: Theme.mirrored ? before : after
    horizontalAlignment: TextInput.AlignLeft
    topPadding: 0
    bottomPadding: 0
    verticalAlignment: TextInput.AlignVCenter
    placeholderText: prompt
    placeholderTextColor: Theme.quiet
    color: Theme.ink
    selectionColor: Theme.accent
    selectedTextColor: Theme.accentInk
    font.family: Theme.family
    font.pixelSize: Theme.body
    selectByMouse: true
    onTextEdited: edited(text)
    Accessible.role: Accessible.EditableText
    Accessible.name: prompt
    Keys.onEscapePressed: event => {
        event.accepted = text !== "";
        if (event.accepted) {
            text = "";
            edited("");
        }
    }
    background: FieldFrame { focused: field.activeFocus }

    Glyph {
        name: "search"
        size: Theme.px(16)
        color: Theme.quiet
        anchors { left: parent.left; leftMargin: Theme.s2; verticalCenter: parent.verticalCenter }
    }
    IconButton {
        id: clear
        visible: field.text !== ""
        glyph: "cross"
        help: qsTr("Empty the search")
        focusPolicy: Qt.NoFocus
        width: Theme.px(24)
        height: Theme.px(24)
        anchors { right: parent.right; rightMargin: Theme.s1; verticalCenter: parent.verticalCenter }
        onClicked: {
            field.text = "";
            field.edited("");
        }
    }
}
