import QtQuick
import QtQuick.Controls.Basic
import Marlet

/// Several lines of text under their label; grows with them, up to eight.
Column {
    id: box

    property string label
    property string prompt
    property string text
    property bool mark: false
    property string oldValue
    property int mostLines: 8
    property alias field: field
    signal edited(string value)

    spacing: Theme.s1
    onTextChanged: if (field.text !== text) field.text = text
    Component.onCompleted: field.text = text

    FieldLabel {
        visible: box.label !== ""
        text: box.label
        mark: box.mark
        oldValue: box.oldValue
    }
    ScrollView {
        id: scroll

        width: box.width
        height: Math.min(field.implicitHeight, metrics.lineSpacing * box.mostLines + 2 * Theme.s2)
        ScrollBar.horizontal.policy: ScrollBar.AlwaysOff
        ScrollBar.vertical: ScrollHandle {
            parent: scroll
            x: Theme.mirrored ? 0 : scroll.width - width
            height: scroll.height
        }
        background: FieldFrame { focused: field.activeFocus }
        Accessible.ignored: true

        TextArea {
            id: field

            leftPadding: Theme.s2
            rightPadding: Theme.s2
            topPadding: 7
            bottomPadding: 7
            horizontalAlignment: TextEdit.AlignLeft
            placeholderText: box.prompt
            placeholderTextColor: Theme.disabled
            color: enabled ? Theme.ink : Theme.disabled
            selectionColor: Theme.accent
            selectedTextColor: Theme.accentInk
            font.family: Theme.family
            font.pixelSize: Theme.body
            textFormat: TextEdit.PlainText
            wrapMode: TextEdit.Wrap
            selectByMouse: true
            KeyNavigation.priority: KeyNavigation.BeforeItem
            KeyNavigation.tab: nextItemInFocusChain(true)
            KeyNavigation.backtab: nextItemInFocusChain(false)
            onTextChanged: if (activeFocus && text !== box.text) box.edited(text)
            Accessible.role: Accessible.EditableText
            Accessible.multiLine: true
            Accessible.name: box.label !== "" ? box.label : box.prompt
            Accessible.description: box.mark && box.oldValue !== "" ? qsTr("In the file now: %1").arg(box.oldValue) : ""
            background: null
        }
    }
    FontMetrics { id: metrics; font: field.font }
}
