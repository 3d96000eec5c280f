import QtQuick
import Marlet

/// One setting: its words at the left, its control at the right.
Item {
    id: line

    property string text
    property string note
    property bool first: false
    property bool wideControl: false  // the control takes what the words leave
    default property alias control: place.data

    width: parent ? parent.width : 0
    implicitHeight: Math.max(Theme.control, words.height) + 2 * Theme.s2

    Hairline {
        visible: !line.first
        anchors { left: parent.left; right: parent.right; top: parent.top; leftMargin: Theme.s3 }
    }
    Column {
        id: words
        anchors { left: parent.left; leftMargin: Theme.s3; verticalCenter: parent.verticalCenter }
        width: line.wideControl ? Theme.px(168) : line.width - place.width - 3 * Theme.s3
        spacing: 1
        Words {
            width: parent.width
            text: line.text
            wrapMode: Text.Wrap
            lineHeight: 1
        }
        Words {
            objectName: "lineNote"
            visible: line.note !== ""
            width: parent.width
            text: line.note
            kind: Words.Small
            wrapMode: Text.Wrap
        }
    }
    Item {
        id: place
        anchors { right: parent.right; rightMargin: Theme.s3; verticalCenter: parent.verticalCenter }
        width: line.wideControl ? line.width - words.width - 3 * Theme.s3 : childrenRect.width
        height: childrenRect.height
    }
}
