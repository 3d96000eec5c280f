import QtQuick
import QtQuick.Layouts
import Marlet

/// The run as a whole: what it is, how far, and what can be done with it.
Item {
    id: head

    readonly property QueueModel queue: App.queue
    readonly property string stage: queue.stage
    readonly property bool narrow: width < Theme.px(640)

    implicitHeight: grid.implicitHeight + 2 * Theme.s3
    Accessible.role: Accessible.Pane
    Accessible.name: qsTr("Run")

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
                Row {
                    spacing: Theme.s2
                    Layout.fillWidth: true
                    Words {
                        objectName: "runTitle"
                        width: Math.min(Math.ceil(implicitWidth), parent.width - (paused.visible ? paused.width + Theme.s2 : 0))
                        text: head.queue.title
                        kind: Words.Heading
                        Accessible.role: Accessible.Heading
                    }
                    Badge {
                        id: paused
                        objectName: "runPaused"
                        visible: head.queue.paused
                        text: qsTr("Paused")
                        tone: Theme.look
                    }
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
        Flow {
            id: buttons

            /// All in one line.
            readonly property real wish: of(removeAll) + of(start) + of(pauseOrResume) + of(cancel) + of(retryFailed)
                                         + of(showAll) + of(clearResults) - spacing

            function of(button: PushButton): real {
                return button.visible ? button.implicitWidth + spacing : 0;
            }

            spacing: Theme.s2
            Layout.preferredWidth: Math.min(wish, grid.width)
            Layout.alignment: head.narrow ? Qt.AlignLeft : Qt.AlignRight | Qt.AlignVCenter
            PushButton {
                id: removeAll
                objectName: "removeAll"
                visible: head.stage === "waiting"
                text: qsTr("Remove All")
                onClicked: head.queue.removeAll()
            }
            PushButton {
                id: start
                objectName: "start"
                visible: head.stage === "waiting"
                text: qsTr("Start")
                glyph: "play"
                primary: true
                help: qsTr("Start the queue (Ctrl+Return)")
                onClicked: head.queue.start()
            }
            PushButton {
                id: pauseOrResume
                objectName: "pauseOrResume"
                visible: head.stage === "running"
                enabled: !head.queue.locked && !head.queue.cancelling
                text: head.queue.paused ? qsTr("Resume") : qsTr("Pause")
                glyph: head.queue.locked ? "lock" : head.queue.paused ? "play" : "pause"
                onClicked: head.queue.paused ? head.queue.resume() : head.queue.pause()
            }
            PushButton {
                id: cancel
                objectName: "cancel"
                visible: head.stage === "running"
                enabled: !head.queue.locked && !head.queue.cancelling
                text: qsTr("Cancel")
                glyph: head.queue.locked ? "lock" : "cross"
                onClicked: head.queue.cancel()
            }
            PushButton {
                id: retryFailed
                objectName: "retryFailed"
                visible: head.stage === "finished" && head.queue.canRetry
                text: qsTr("Retry Failed")
                primary: true
                onClicked: head.queue.retryFailed()
            }
            PushButton {
                id: showAll
                objectName: "showAll"
                visible: head.stage === "finished" && head.queue.canShow
                text: qsTr("Show All in Folder")
                onClicked: App.desktop.showInFolder(head.queue.outputs())
            }
            PushButton {
                id: clearResults
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
                    wrapMode: head.queue.locked ? Text.Wrap : Text.NoWrap
                    Layout.fillWidth: true
                }
            }
        }
    }
    Hairline { anchors { left: parent.left; right: parent.right; bottom: parent.bottom; leftMargin: Theme.s4; rightMargin: Theme.s4 } }
}
