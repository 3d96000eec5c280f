import QtQuick
import QtQuick.Layouts
import Marlet

/// The run as a whole: what it is, how far, and what can be done with it.
Item {
    id: head

    readonly property QueueModel queue: App.queue
    readonly property string stage: queue.stage
    readonly property bool narrow: width < 640

    implicitHeight: grid.implicitHeight + 2 * Theme.s3
    Accessible.role: Accessible.Pane
    Accessible.name: queue.title + ", " + queue.detail

    GridLayout {
        id: grid

        anchors { left: parent.left; right: parent.right; top: parent.top; margins: Theme.s4; topMargin: Theme.s2 }
        columns: head.narrow ? 1 : 2
        columnSpacing: Theme.s4
        rowSpacing: Theme.s3

        RowLayout {
            spacing: Theme.s3
            Glyph {
                visible: head.stage === "finished"
                name: head.queue.failures ? "failed" : "check"
                color: head.queue.failures ? Theme.failed : Theme.ready
                size: Theme.px(28)
                Layout.alignment: Qt.AlignVCenter
            }
            ColumnLayout {
                spacing: 2
                RowLayout {
                    spacing: Theme.s2
                    Words {
                        objectName: "runTitle"
                        text: head.queue.title
                        kind: Words.Heading
                        Layout.fillWidth: true
                        Layout.maximumWidth: Math.ceil(implicitWidth)
                        Accessible.role: Accessible.Heading
                    }
                    Badge {
                        objectName: "runPaused"
                        visible: head.queue.paused
                        text: qsTr("Paused")
                        tone: Theme.look
                    }
                    Item { Layout.fillWidth: true }
                }
                Words {
                    objectName: "runDetail"
                    text: head.queue.detail
                    kind: Words.Quiet
                    wrapMode: head.narrow ? Text.Wrap : Text.NoWrap
                    maximumLineCount: 2
                    Layout.fillWidth: true
                }
            }
        }
        Row {
            spacing: Theme.s2
            Layout.alignment: head.narrow ? Qt.AlignLeft : Qt.AlignRight | Qt.AlignVCenter
            PushButton {
                objectName: "removeAll"
                visible: head.stage === "waiting"
                text: qsTr("Remove All")
                onClicked: head.queue.removeAll()
            }
            PushButton {
                objectName: "start"
                visible: head.stage === "waiting"
                text: qsTr("Start")
                glyph: "play"
                primary: true
                help: qsTr("Start the queue (Ctrl+Return)")
                onClicked: head.queue.start()
            }
            PushButton {
                objectName: "pauseOrResume"
                visible: head.stage === "running"
                enabled: !head.queue.locked && !head.queue.cancelling
                text: head.queue.paused ? qsTr("Resume") : qsTr("Pause")
                glyph: head.queue.locked ? "lock" : head.queue.paused ? "play" : "pause"
                onClicked: head.queue.paused ? head.queue.resume() : head.queue.pause()
            }
            PushButton {
                objectName: "cancel"
                visible: head.stage === "running"
                enabled: !head.queue.locked && !head.queue.cancelling
                text: qsTr("Cancel")
                glyph: head.queue.locked ? "lock" : "cross"
                onClicked: head.queue.cancel()
            }
            PushButton {
                objectName: "retryFailed"
                visible: head.stage === "finished" && head.queue.canRetry
                text: qsTr("Retry Failed")
                primary: true
                onClicked: head.queue.retryFailed()
            }
            PushButton {
                objectName: "showAll"
                visible: head.stage === "finished" && head.queue.canShow
                text: qsTr("Show All in Folder")
                onClicked: App.desktop.showInFolder(head.queue.outputs())
            }
            PushButton {
                objectName: "clearResults"
                visible: head.stage === "finished"
                text: qsTr("Clear Results")
                onClicked: head.queue.clearResults()
            }
        }
        ColumnLayout {
            visible: head.stage === "running"
            spacing: Theme.s2
            Layout.columnSpan: grid.columns
            Layout.fillWidth: true
            ProgressLine {
                objectName: "runProgress"
                label: head.queue.title
                value: head.queue.progress
                Layout.fillWidth: true
            }
            RowLayout {
                spacing: 6
                Layout.fillWidth: true
                Layout.minimumHeight: Theme.px(18)
                Glyph {
                    objectName: "runLock"
                    visible: head.queue.locked
                    name: "lock"
                    size: Theme.px(16)
                    color: Theme.look
                }
                Words {
                    objectName: "runNow"
                    text: head.queue.locked
                          ? qsTr("Writing a file: Pause and Cancel are locked until it's finished")
                          : head.queue.now
                    kind: Words.Small
                    color: head.queue.locked ? Theme.look : Theme.quiet
                    wrapMode: head.queue.locked && head.narrow ? Text.Wrap : Text.NoWrap
                    Layout.fillWidth: true
                }
            }
        }
    }
    Hairline { anchors { left: parent.left; right: parent.right; bottom: parent.bottom; leftMargin: Theme.s4; rightMargin: Theme.s4 } }
}
