import QtQuick
import Marlet

/// An episode of a season, or a hit among all seasons.
Item {
    id: row

    required property int index
    required property string number
    required property string title
    required property string facts
    required property string still
    required property string file
    required property string spoken
    readonly property PickerList list: ListView.view as PickerList
    readonly property bool selected: list !== null && (list.whole ? file !== "" : list.chosen === index)
    readonly property bool focused: list !== null && list.activeFocus && list.chosen === index

    function press() {
        list.forceActiveFocus();
        list.picked(index);
    }

    width: list ? list.width : 0
    height: list ? list.rowHeight : 0
    objectName: "pickerEpisode" + index
    Accessible.role: Accessible.ListItem
    Accessible.name: spoken
    Accessible.selectable: true
    Accessible.selected: selected
    Accessible.focusable: true
    Accessible.focused: focused
    Accessible.onPressAction: {
        press();
        list.accepted();
    }

    RowFrame {
        anchors.fill: parent
        selected: row.selected
        focused: row.focused
        hovered: mouse.containsMouse
    }
    MouseArea {
        id: mouse
        anchors.fill: parent
        hoverEnabled: true
        onClicked: row.press()
        onDoubleClicked: row.list.accepted()
    }
    Words {
        id: label
        width: Math.max(Theme.px(row.number.length > 3 ? 56 : 28), implicitWidth)
        anchors { left: parent.left; leftMargin: Theme.s2; verticalCenter: parent.verticalCenter }
        text: row.number
        Accessible.ignored: true
        kind: Words.Quiet
        horizontalAlignment: Text.AlignHCenter
    }
    Poster {
        id: picture
        // Words come before the picture.
        visible: row.width > Theme.px(440)
        width: visible ? Theme.px(80) : 0
        height: Theme.px(45)
        anchors { left: label.right; leftMargin: visible ? Theme.s2 : 0; verticalCenter: parent.verticalCenter }
        source: row.still
        kind: "episode"
    }
    Column {
        spacing: 2
        anchors {
            left: picture.right; right: own.left; leftMargin: Theme.s3; rightMargin: Theme.s2
            verticalCenter: parent.verticalCenter
        }
        Words { width: parent.width; text: row.title; font.weight: Font.DemiBold; Accessible.ignored: true }
        Words { width: parent.width; visible: text !== ""; text: row.facts; kind: Words.Small; Accessible.ignored: true }
    }
    Words {
        id: own
        width: Math.min(implicitWidth, row.width * 0.4)
        anchors { right: parent.right; rightMargin: Theme.s3; verticalCenter: parent.verticalCenter }
        text: row.file
        Accessible.ignored: true
        kind: Words.Small
        elide: Text.ElideMiddle
        color: row.list && row.list.whole ? Theme.accent : Theme.quiet
    }
}
