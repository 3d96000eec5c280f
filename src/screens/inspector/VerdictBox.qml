import QtQuick
import Marlet

/// How sure the match is, why a person should look, and the yes.
Rectangle {
    id: box

    required property InspectorModel model
    readonly property color tone: model.state === "ready" ? Theme.ready
                                : model.state === "look" ? Theme.look : Theme.quiet

    implicitHeight: lines.height + 2 * Theme.s3
    radius: Theme.radius
    color: Theme.tint(tone, Theme.dark ? 0.14 : 0.1)
    Accessible.role: Accessible.Grouping
    Accessible.name: model.verdict

    Column {
        id: lines

        x: Theme.s3
        y: Theme.s3
        width: box.width - 2 * Theme.s3
        spacing: Theme.s2

        Row {
            width: lines.width
            spacing: Theme.s2
            StateSymbol {
                state: box.model.state
                anchors.verticalCenter: parent.verticalCenter
            }
            Words {
                objectName: "verdict"
                text: box.model.verdict
                color: box.tone
                font.weight: Font.DemiBold
                anchors.verticalCenter: parent.verticalCenter
            }
        }
        Repeater {
            model: box.model.reasons
            delegate: Item {
                id: reason

                required property int index
                required property string modelData

                width: lines.width
                implicitHeight: words.implicitHeight
                Rectangle {
                    id: point
                    visible: box.model.reasons.length > 1
                    anchors { left: parent.left; leftMargin: 7 }
                    y: Math.round(Theme.body * 0.6)
                    width: 4
                    height: 4
                    radius: 2
                    color: box.tone
                }
                Words {
                    id: words
                    objectName: "reason" + reason.index
                    anchors { left: parent.left; right: parent.right; leftMargin: Theme.px(18) + Theme.s2 }
                    text: reason.modelData
                    wrapMode: Text.Wrap
                }
            }
        }
        PushButton {
            objectName: "confirm"
            visible: box.model.canConfirm
            anchors { left: parent.left; leftMargin: Theme.px(18) + Theme.s2 }
            text: qsTr("Yes, this is right")
            glyph: "check"
            primary: true
            onClicked: box.model.confirm()
        }
        Column {
            visible: box.model.loading
            anchors { left: parent.left; right: parent.right; leftMargin: Theme.px(18) + Theme.s2 }
            spacing: 6
            Words {
                objectName: "fetchingDetails"
                text: qsTr("Fetching details…")
                kind: Words.Small
            }
            ProgressLine {
                width: parent.width
                indeterminate: true
                label: qsTr("Fetching details…")
            }
        }
        Flow {
            visible: box.model.failed
            anchors { left: parent.left; right: parent.right; leftMargin: Theme.px(18) + Theme.s2 }
            spacing: Theme.s2
            Words {
                objectName: "detailsFailed"
                text: qsTr("These details couldn't be loaded.")
                kind: Words.Small
                height: again.height
                verticalAlignment: Text.AlignVCenter
            }
            LinkButton {
                id: again
                objectName: "loadAgain"
                text: qsTr("Try again")
                onClicked: box.model.loadAgain()
            }
        }
    }
}
