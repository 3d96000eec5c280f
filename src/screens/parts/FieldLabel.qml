import QtQuick
import Marlet

/// The words above a field, and a dot when the field differs from what is in the file now.
Row {
    id: row

    property string text
    property bool mark: false
    property string oldValue

    width: parent ? parent.width : implicitWidth
    spacing: 6
    Words {
        text: row.text
        kind: Words.Small
        width: Math.min(implicitWidth, row.width - (row.mark ? 12 : 0))
        Accessible.ignored: true  // the field has it as its name
    }
    Rectangle {
        visible: row.mark
        width: 6
        height: 6
        radius: 3
        color: Theme.accent
        anchors.verticalCenter: parent.verticalCenter
        HoverHandler { id: over; margin: 6 }
        Hint {
            text: row.oldValue === "" ? qsTr("Not in the file now") : qsTr("In the file now: %1").arg(row.oldValue)
            visible: over.hovered
        }
    }
}
