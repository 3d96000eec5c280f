import QtQuick
import Marlet

/// Settings that belong together: a heading, their lines, and what is to be known about them.
Column {
    id: section

    property string title
    property string note
    default property alias lines: lines.data

    width: parent ? parent.width : 0
    spacing: Theme.s1

    SectionHeading {
        text: section.title
        leftPadding: Theme.s1
        color: Theme.ink
        font.pixelSize: Theme.body
    }
    Rectangle {
        width: section.width
        height: lines.height
        radius: Theme.radius
        color: Theme.dark ? Theme.raised : Theme.card
        border.color: Theme.hairline
        Column {
            id: lines
            width: parent.width
        }
    }
    Words {
        objectName: "sectionNote"
        visible: section.note !== ""
        width: section.width
        leftPadding: Theme.s1
        rightPadding: Theme.s1
        topPadding: Theme.s1
        text: section.note
        kind: Words.Small
        wrapMode: Text.Wrap
    }
}
