import QtQuick
import Marlet

/// Beneath the list: what still asks for a look, and what is done with the selection and with all.
Item {
    id: bar

    /// Where the words leave no room for the buttons beside them, they stand above them.
    readonly property bool tight: buttons.wish + Theme.px(120) + 2 * Theme.s4 + Theme.s3 > width

    implicitHeight: buttons.height + 2 * Theme.s3 + (tight && told.height > 0 ? told.height + Theme.s2 : 0)

    Hairline { anchors { left: parent.left; right: parent.right; top: parent.top } }
    ProgressLine {
        visible: App.review.adding
        indeterminate: true
        implicitHeight: 3
        label: qsTr("Adding to the queue")
        anchors { left: parent.left; right: parent.right; top: parent.top }
    }
    Column {
        id: told
        x: Theme.mirrored ? bar.width - width - Theme.s4 : Theme.s4
        y: bar.tight ? Theme.s3 : (bar.height - height) / 2
        width: bar.width - 2 * Theme.s4 - (bar.tight ? 0 : buttons.width + Theme.s3)
        Row {
            id: checking
            visible: App.review.needsChecking !== ""
            width: parent.width
            spacing: Theme.s1
            StateSymbol {
                id: symbol
                state: "look"
                size: Theme.px(16)
                anchors.verticalCenter: parent.verticalCenter
            }
            LinkButton {
                objectName: "needsChecking"
                text: App.review.needsChecking
                help: qsTr("Show only what needs a look")
                width: Math.min(implicitWidth, checking.width - symbol.width - checking.spacing)
                onClicked: App.review.setFilter(1)
            }
        }
        Words {
            objectName: "selectionCount"
            visible: text !== ""
            text: App.review.selection
            kind: Words.Small
            width: parent.width
        }
    }
    Flow {
        id: buttons

        /// All in one line.
        readonly property real wish: add.implicitWidth + spacing + addAll.implicitWidth
                                    + (accept.visible ? accept.implicitWidth + spacing : 0)

        width: Math.min(wish, bar.width - 2 * Theme.s4)
        spacing: Theme.s2
        anchors { right: parent.right; rightMargin: Theme.s4; bottom: parent.bottom; bottomMargin: Theme.s3 }
        PushButton {
            id: accept
            objectName: "acceptThese"
            visible: App.review.canAccept
            text: App.review.acceptText
            help: qsTr("Yes, what Marlet found for the selection is right")
            onClicked: App.review.acceptSelected()
        }
        PushButton {
            id: add
            objectName: "addToQueue"
            text: qsTr("Add to Queue")
            enabled: App.review.canAdd
            onClicked: App.review.addSelected()
        }
        PushButton {
            id: addAll
            objectName: "addAllToQueue"
            text: qsTr("Add All to Queue")
            primary: true
            enabled: App.review.canAddAll
            onClicked: App.review.addAll()
        }
    }
}
