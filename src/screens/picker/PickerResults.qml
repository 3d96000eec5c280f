import QtQuick
import QtQuick.Controls.Basic
import Marlet

/// What a search found, with the words for nothing and for no answer.
FocusScope {
    id: results

    required property PickerPane pane
    signal fieldAsked()

    ProgressLine {
        objectName: "pickerWaiting"
        anchors { left: parent.left; right: parent.right; top: parent.top }
        height: 3
        z: 1
        indeterminate: true
        visible: results.pane.waiting
        label: qsTr("Searching")
    }
    PickerList {
        id: list
        objectName: "pickerResults"
        anchors { fill: parent; topMargin: Theme.s1 }
        focus: true
        rowHeight: Theme.px(90)
        model: results.pane.results
        chosen: results.pane.result
        Accessible.name: qsTr("Results")
        onPicked: row => results.pane.result = row
        onAccepted: results.pane.use()
        onLeftAtTop: results.fieldAsked()
        opens: results.pane.tv
        onSeen: row => results.pane.seen(row)
        delegate: PickerTitleRow {}
    }
    EmptyState {
        objectName: "pickerNothing"
        anchors.fill: parent
        visible: results.pane.nothing
        drawing: "search"
        title: results.pane.nothingTitle
        line: results.pane.nothingLine
    }
    EmptyState {
        objectName: "pickerFailure"
        anchors.fill: parent
        visible: results.pane.failure !== "" && list.count === 0
        drawing: "failed"
        title: results.pane.failure
        line: results.pane.failureHelp
        linkText: qsTr("Try again")
        onLinked: results.pane.search()
    }
    NoticeBar {
        objectName: "pickerNotTaken"
        anchors { left: parent.left; right: parent.right; bottom: parent.bottom }
        text: list.count > 0 ? results.pane.failure : ""
        glyph: "failed"
        tone: Theme.failed
        closable: false
        radius: Theme.radius
    }
}
