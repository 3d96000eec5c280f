import QtQuick
import Marlet

/// What an opened row tells, a label and a text a line, and what can be done with its files.
Column {
    id: more

    required property list<string> details
    required property int restorable
    signal showAsked()
    signal againAsked()
    signal restoreAsked()

    spacing: Theme.s1

    Repeater {
        model: more.details.length / 2
        delegate: Item {
            id: pair

            required property int index
            readonly property string label: more.details[2 * index] ?? ""
            readonly property string text: more.details[2 * index + 1] ?? ""

            width: more.width
            implicitHeight: Math.max(words.implicitHeight, name.implicitHeight)
            Words {
                id: name
                anchors.left: parent.left
                width: Math.min(Theme.px(124), pair.width * 0.35)
                text: pair.label
                wrapMode: Text.Wrap
                Accessible.ignored: true
                kind: Words.Quiet
            }
            Words {
                id: words
                objectName: "detail" + pair.index
                anchors { left: name.right; right: parent.right; leftMargin: Theme.s3 }
                text: pair.text
                wrapMode: Text.Wrap
                Accessible.name: pair.label + ": " + pair.text
            }
        }
    }
    Item { width: 1; height: Theme.s1 }
    Flow {
        width: more.width
        spacing: Theme.s2
        PushButton {
            objectName: "detailShow"
            text: qsTr("Show in Folder")
            glyph: "folder"
            onClicked: more.showAsked()
        }
        PushButton {
            objectName: "detailAgain"
            text: qsTr("Try Again")
            glyph: "refresh"
            onClicked: more.againAsked()
        }
        PushButton {
            objectName: "detailRestore"
            visible: more.restorable > 0
            enabled: App.history.canRestore
            text: qsTr("Restore Original Details…")
            glyph: "undo"
            onClicked: more.restoreAsked()
        }
    }
}
