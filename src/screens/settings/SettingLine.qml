import QtQuick
import Marlet

/// One setting: its words, and at the end of the line its control; below the words where there is no
/// room beside them.
Item {
    id: line

    property string text
    property string note
    property bool first: false
    property bool wideControl: false  // the control takes what the words leave
    default property alias control: place.data

    width: parent ? parent.width : 0
    readonly property bool stacked: wideControl ? width < Theme.px(420)
        : width - place.childrenRect.width - 3 * Theme.s3 < Math.min(Math.ceil(name.implicitWidth), Theme.px(120))
    implicitHeight: stacked ? words.height + place.height + 3 * Theme.s2
                            : Math.max(Theme.control, words.height) + 2 * Theme.s2

    Hairline {
        visible: !line.first
        anchors { left: parent.left; right: parent.right; top: parent.top; leftMargin: Theme.s3 }
    }
    Column {
        id: words
        anchors { left: parent.left; leftMargin: Theme.s3 }
        y: line.stacked ? Theme.s2 : (line.height - height) / 2
        width: line.stacked ? line.width - 2 * Theme.s3
             : line.wideControl ? Theme.px(168) : line.width - place.width - 3 * Theme.s3
        spacing: 1
        Words {
            id: name
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
        // One after the other, where one stands below the other.
        x: line.stacked !== Theme.mirrored ? Theme.s3 : line.width - width - Theme.s3
        y: line.stacked ? words.y + words.height + Theme.s2 : (line.height - height) / 2
        width: !line.wideControl ? childrenRect.width
             : line.stacked ? line.width - 2 * Theme.s3 : line.width - words.width - 3 * Theme.s3
        height: childrenRect.height
    }
}
