import QtQuick
import Marlet

/// The file's name, what it is taken to be, where that comes from, and the ways to change it.
Column {
    id: head

    required property InspectorModel model
    signal compareAsked()

    spacing: Theme.s1

    Words {
        id: name
        objectName: "inspectorFile"
        width: parent.width
        text: head.model.fileName
        kind: Words.Heading
        elide: Text.ElideMiddle
        Accessible.role: Accessible.Heading
        HoverHandler { id: over }
        Hint { text: head.model.fileName; visible: over.hovered && name.truncated }
    }
    Words {
        objectName: "inspectorMatch"
        width: parent.width
        text: head.model.match
        kind: Words.Quiet
        wrapMode: Text.Wrap
    }
    Words {
        objectName: "inspectorSource"
        visible: text !== ""
        width: parent.width
        text: head.model.source
        kind: Words.Small
    }
    Words {
        objectName: "inspectorApple"
        visible: text !== ""
        width: parent.width
        text: head.model.apple
        kind: Words.Small
        wrapMode: Text.Wrap
    }
    Item { width: 1; height: Theme.s1 }
    Flow {
        width: parent.width
        spacing: Theme.s2
        PushButton {
            objectName: "pickMatch"
            text: head.model.pickText
            glyph: "search"
            primary: head.model.state === "none"
            onClicked: head.model.openPicker()
        }
        PushButton {
            objectName: "compare"
            visible: head.model.hasDraft
            enabled: head.model.compare.possible
            text: qsTr("Compare…")
            glyph: "compare"
            help: qsTr("What is in the file now beside what will be written (Ctrl+D)")
            onClicked: head.compareAsked()
        }
    }
}
