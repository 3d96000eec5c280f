import QtQuick
import Marlet

/// The form over what will be written.
Column {
    id: form

    required property InspectorModel model

    spacing: Theme.s3

    Words {
        objectName: "detailsNone"
        visible: !form.model.hasDraft && !form.model.loading && !form.model.failed
        width: parent.width
        text: qsTr("Not matched yet")
        kind: Words.Quiet
        horizontalAlignment: Text.AlignHCenter
        topPadding: Theme.s6
    }
    Item {
        visible: form.model.details.edited
        width: parent.width
        height: undo.height
        PushButton {
            id: undo
            objectName: "undoEdits"
            anchors.right: parent.right
            text: qsTr("Undo my edits")
            glyph: "undo"
            help: qsTr("Puts all fields back as they were loaded")
            onClicked: form.model.details.undoAll()
        }
    }
    Repeater {
        objectName: "fields"
        model: form.model.details.fields
        delegate: Column {
            id: entry

            required property int index
            required property string key
            required property string label
            required property string prompt
            required property string text
            required property bool isLong
            required property bool mark
            required property string oldValue

            width: form.width
            spacing: Theme.s1

            Loader {
                id: box
                width: parent.width
                sourceComponent: entry.isLong ? longBox : oneLine
            }
            Words {
                objectName: "oldValue" + entry.key
                visible: entry.mark && box.activeFocus
                width: parent.width
                text: entry.oldValue === "" ? qsTr("Not in the file now")
                                            : qsTr("In the file now: %1").arg(entry.oldValue)
                kind: Words.Small
                wrapMode: Text.Wrap
                maximumLineCount: 4
            }
            Component {
                id: oneLine
                TextBox {
                    objectName: "field" + entry.key
                    label: entry.label
                    prompt: entry.prompt
                    text: entry.text
                    mark: entry.mark
                    oldValue: entry.oldValue
                    onEdited: value => form.model.details.edit(entry.index, value)
                }
            }
            Component {
                id: longBox
                LongBox {
                    objectName: "field" + entry.key
                    label: entry.label
                    prompt: entry.prompt
                    text: entry.text
                    mark: entry.mark
                    oldValue: entry.oldValue
                    onEdited: value => form.model.details.edit(entry.index, value)
                }
            }
        }
    }
}
