import QtQuick
import Marlet

/// The form over what will be written.
Column {
    id: form

    required property InspectorModel model

    spacing: Theme.s3

    Words {
        objectName: "detailsNone"
        visible: !form.model.hasDraft
        width: parent.width
        text: form.model.loading ? qsTr("Fetching details…") : form.model.failed
              ? qsTr("These details couldn't be loaded.") : qsTr("Not matched yet")
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
            id: field

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
                sourceComponent: field.isLong ? longBox : oneLine
            }
            Words {
                objectName: "oldValue" + field.key
                visible: field.mark && box.activeFocus
                width: parent.width
                text: field.oldValue === "" ? qsTr("Not in the file now")
                                            : qsTr("In the file now: %1").arg(field.oldValue)
                kind: Words.Small
                wrapMode: Text.Wrap
                maximumLineCount: 4
            }
            Component {
                id: oneLine
                TextBox {
                    objectName: "field" + field.key
                    label: field.label
                    prompt: field.prompt
                    text: field.text
                    mark: field.mark
                    oldValue: field.oldValue
                    onEdited: value => form.model.details.edit(field.index, value)
                }
            }
            Component {
                id: longBox
                LongBox {
                    objectName: "field" + field.key
                    label: field.label
                    prompt: field.prompt
                    text: field.text
                    mark: field.mark
                    oldValue: field.oldValue
                    onEdited: value => form.model.details.edit(field.index, value)
                }
            }
        }
    }
}
