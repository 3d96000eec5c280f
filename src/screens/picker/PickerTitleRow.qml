import QtQuick
import Marlet

/// A film or show that was found.
Item {
    id: row

    required property int index
    required property string title
    required property string facts
    required property string overview
    required property string poster
    required property bool fits
    required property string spoken
    readonly property PickerList list: ListView.view as PickerList
    readonly property bool show: list !== null && list.opens
    readonly property bool selected: list !== null && list.chosen === index
    readonly property bool focused: list !== null && list.activeFocus && list.chosen === index

    function press() {
        list.forceActiveFocus();
        list.picked(index);
    }

    width: list ? list.width : 0
    height: list ? list.rowHeight : 0
    objectName: "pickerResult" + index
    Component.onCompleted: if (list) list.seen(index)
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
        // A show has a page of its own; a film is taken, for which one click is too little.
        onClicked: {
            row.press();
            if (row.show) row.list.accepted();
        }
        onDoubleClicked: if (!row.show) row.list.accepted()
    }
    Poster {
        id: picture
        width: Theme.px(50)
        height: Theme.px(75)
        anchors { left: parent.left; leftMargin: Theme.s2; verticalCenter: parent.verticalCenter }
        source: row.poster
        kind: row.show ? "episode" : "film"
    }
    Column {
        spacing: 2
        anchors {
            left: picture.right; right: onward.left; leftMargin: Theme.s3; rightMargin: Theme.s2
            verticalCenter: parent.verticalCenter
        }
        Words { width: parent.width; text: row.title; kind: Words.RowTitle; Accessible.ignored: true }
        Row {
            width: parent.width
            spacing: Theme.s2
            Words {
                text: row.facts
                Accessible.ignored: true
                visible: text !== ""
                kind: Words.Quiet
                anchors.verticalCenter: parent.verticalCenter
            }
            Badge {
                objectName: "fits" + row.index
                visible: row.fits
                text: qsTr("fits this file's length")
                tone: Theme.ready
                silent: true
                anchors.verticalCenter: parent.verticalCenter
            }
        }
        Words {
            width: parent.width
            visible: text !== ""
            text: row.overview
            Accessible.ignored: true
            kind: Words.Small
            wrapMode: Text.Wrap
            maximumLineCount: 2
        }
    }
    Glyph {
        id: onward
        visible: row.show
        width: visible ? size : 0
        name: "chevronRight"
        size: Theme.px(18)
        color: Theme.quiet
        anchors { right: parent.right; rightMargin: Theme.s2; verticalCenter: parent.verticalCenter }
    }
}
