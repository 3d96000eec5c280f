import QtQuick
import Marlet

/// Review with nothing in it: where files can be dropped, or how far the first scan is.
FocusScope {
    id: view

    signal filesAsked()

    EmptyState {
        objectName: "dropHere"
        visible: !App.review.scanning
        focus: visible
        anchors.fill: parent
        drawing: "film"
        title: qsTr("Drop movies or TV shows here")
        line: qsTr("MP4, M4V, MKV and MOV. Whole folders and seasons are fine.")
        linkText: qsTr("choose files")
        onLinked: view.filesAsked()
    }
    EmptyState {
        id: scan
        objectName: "dropScan"
        visible: App.review.scanning
        anchors.fill: parent
        drawing: "search"
        title: App.review.scanText
        line: App.review.scanCount
    }
    Column {
        visible: scan.visible
        width: Math.min(Theme.px(240), parent.width - 2 * Theme.s6)
        spacing: Theme.s4
        anchors { horizontalCenter: parent.horizontalCenter }
        y: Math.max(Theme.s6, scan.height * 0.4) + Theme.px(104)
        ProgressLine {
            width: parent.width
            label: App.review.scanText
            indeterminate: App.review.scanFraction < 0
            value: App.review.scanFraction
        }
        PushButton {
            objectName: "dropCancel"
            text: qsTr("Cancel")
            anchors.horizontalCenter: parent.horizontalCenter
            onClicked: App.review.cancelScan()
        }
    }
}
