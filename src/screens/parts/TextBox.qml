import QtQuick
import QtQuick.Controls.Basic
import Marlet

/// One line of text under its label. `text` is what the model holds; edited() tells what a person
/// typed.
Column {
    id: box

    property string label
    property bool labelShown: true  // false: the words stand beside it
    property string prompt
    property string text
    property bool mark: false
    property string oldValue
    property bool secret: false
    property alias field: field
    signal edited(string value)
    signal accepted()

    spacing: Theme.s1
    onTextChanged: if (field.text !== text) field.text = text
    Component.onCompleted: field.text = text

    FieldLabel {
        visible: box.labelShown && box.label !== ""
        text: box.label
        mark: box.mark
        oldValue: box.oldValue
    }
    TextField {
        id: field

        width: box.width
        implicitHeight: Theme.control
        leftPadding: Theme.s2
        rightPadding: Theme.s2
        topPadding: 0
        bottomPadding: 0
        horizontalAlignment: TextInput.AlignLeft
        verticalAlignment: TextInput.AlignVCenter
        placeholderText: box.prompt
        placeholderTextColor: Theme.disabled
        color: enabled ? Theme.ink : Theme.disabled
        selectionColor: Theme.accent
        selectedTextColor: Theme.accentInk
        font.family: Theme.family
        font.pixelSize: Theme.body
        selectByMouse: true
        echoMode: box.secret ? TextInput.Password : TextInput.Normal
        onTextEdited: box.edited(text)
        onAccepted: box.accepted()
        Accessible.role: Accessible.EditableText
        Accessible.name: box.label !== "" ? box.label : box.prompt
        // Qt 6.4 gives no screen reader the name of a field that hides what is typed.
        Accessible.description: box.secret ? box.label : box.mark && box.oldValue !== "" ? qsTr("In the file now: %1").arg(box.oldValue) : ""
        background: FieldFrame { focused: field.activeFocus }
    }
}
