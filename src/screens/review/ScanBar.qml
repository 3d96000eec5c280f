import QtQuick
import Marlet

/// How far a scan is while there are rows already: a slim bar above them.
Item {
    id: bar

    objectName: "scanBar"
    visible: App.review.scanning
    implicitHeight: visible ? Theme.control + Theme.s2 : 0
    Accessible.role: Accessible.StatusBar
    Accessible.name: App.review.scanText

    Words {
        id: words
        text: App.review.scanText
        kind: Words.Quiet
        width: Math.min(implicitWidth, bar.width * 0.4)
        anchors { left: parent.left; leftMargin: Theme.s4; verticalCenter: parent.verticalCenter }
    }
    ProgressLine {
        label: App.review.scanText
        indeterminate: App.review.scanFraction < 0
        value: App.review.scanFraction
        implicitHeight: 4
        anchors {
            left: words.right; leftMargin: Theme.s3; right: count.left; rightMargin: Theme.s3
            verticalCenter: parent.verticalCenter
        }
    }
    Words {
        id: count
        objectName: "scanCount"
        text: App.review.scanCount
        kind: Words.Quiet
        anchors { right: stop.left; rightMargin: Theme.s1; verticalCenter: parent.verticalCenter }
    }
    IconButton {
        id: stop
        objectName: "scanCancel"
        glyph: "cross"
        help: qsTr("Stop looking through the files")
        anchors { right: parent.right; rightMargin: Theme.s3; verticalCenter: parent.verticalCenter }
        onClicked: App.review.cancelScan()
    }
}
