import QtQuick
import Marlet

/// A list of tracks to tick under a heading.
Column {
    id: list

    required property string heading
    required property var tracks
    property string none
    property string more
    property bool open: false
    property string name
    signal kept(string key, bool keep)
    signal openAsked(bool open)

    spacing: Theme.s2

    SectionHeading { text: list.heading }
    Words {
        objectName: list.name + "None"
        visible: text !== ""
        width: parent.width
        text: list.none
        kind: Words.Quiet
    }
    Repeater {
        model: list.tracks
        delegate: Item {
            id: row

            required property int index
            required property string key
            required property string title
            required property string note
            required property bool keep
            required property bool possible
            required property bool playsFirst

            width: list.width
            height: Math.max(tick.height, Theme.px(24))
            Tick {
                id: tick
                objectName: list.name + row.index
                anchors.left: parent.left
                width: parent.width - (first.visible ? first.width + Theme.s2 : 0)
                text: row.title
                note: row.note
                checked: row.keep
                enabled: row.possible
                onTicked: on => list.kept(row.key, on)
            }
            Badge {
                id: first
                objectName: list.name + "First" + row.index
                visible: row.playsFirst
                anchors { right: parent.right; top: parent.top }
                text: qsTr("plays first")
                tone: Theme.accent
            }
        }
    }
    LinkButton {
        objectName: list.name + "More"
        anchors.left: parent.left
        width: Math.min(implicitWidth, parent.width)
        visible: text !== ""
        text: list.more
        help: list.open ? qsTr("Shows fewer") : qsTr("Shows them, to keep one after all")
        onClicked: list.openAsked(!list.open)
    }
}
