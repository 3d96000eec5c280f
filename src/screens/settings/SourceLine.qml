import QtQuick
import Marlet

/// A source at its place in the order.
Item {
    id: row

    required property int index
    required property string title
    required property bool switchable
    required property bool on
    required property string spoken
    /// The SourceList; by that name the two files would need each other first.
    required property var list

    readonly property bool dragged: list.dragFrom === index
    readonly property real shift: list.dragFrom < 0 || dragged ? 0
                                : index > list.dragFrom && index <= list.dragTo ? -height
                                : index < list.dragFrom && index >= list.dragTo ? height : 0

    function flip() {
        if (switchable) list.order.switchOn(index, !on);
    }
    function go(by: int) {
        const to = index + by;
        list.move(index, to);
        // The keyboard goes with what it moved.
        (list.itemAtIndex(to) as SourceLine)?.takeFocus(by);
    }
    function takeFocus(by: int) {
        const wanted = by < 0 ? up : down;
        const other = by < 0 ? down : up;
        (wanted.enabled ? wanted : other).forceActiveFocus(Qt.TabFocusReason);
    }

    objectName: "source" + index
    z: dragged ? 2 : 0
    Accessible.role: Accessible.ListItem
    Accessible.name: spoken
    Accessible.selectable: true
    Accessible.selected: ListView.isCurrentItem
    Accessible.focusable: true
    Accessible.focused: ListView.isCurrentItem && list.activeFocus
    Accessible.onPressAction: flip()

    Rectangle {
        id: face

        readonly property real lowest: row.list.height - row.height - row.y

        width: row.width
        height: row.height
        y: row.dragged ? Math.max(-row.y, Math.min(lowest, row.list.dragBy)) : row.shift
        radius: Theme.radius
        color: row.dragged ? Theme.raised : "transparent"
        border.width: row.dragged ? 1 : 0
        border.color: Theme.hairline
        Behavior on y {
            enabled: row.list.dragFrom >= 0 && !row.dragged
            NumberAnimation { duration: Theme.motion; easing.type: Easing.OutQuad }
        }

        Hairline {
            visible: row.index > 0 && !row.dragged
            anchors { left: parent.left; right: parent.right; top: parent.top; leftMargin: Theme.s3 }
        }
        Rectangle {
            anchors { fill: parent; margins: 2 }
            radius: Theme.radius - 2
            color: area.containsMouse || row.dragged ? Theme.hover : "transparent"
            border.width: row.list.activeFocus && row.ListView.isCurrentItem ? 2 : 0
            border.color: Theme.accent
        }
        MouseArea {
            id: area

            property real pressedAt: 0

            objectName: "grip"
            anchors.fill: parent
            hoverEnabled: true
            preventStealing: true
            cursorShape: row.dragged ? Qt.ClosedHandCursor : Qt.OpenHandCursor
            onPressed: mouse => {
                row.list.currentIndex = row.index;
                row.list.forceActiveFocus(Qt.MouseFocusReason);
                pressedAt = mapToItem(row.list, 0, mouse.y).y;
            }
            onPositionChanged: mouse => {
                if (!pressed) return;
                const by = mapToItem(row.list, 0, mouse.y).y - pressedAt;
                if (row.list.dragFrom < 0 && Math.abs(by) < 6) return;
                row.list.dragFrom = row.index;
                row.list.dragBy = by;
                row.list.dragTo = Math.max(0, Math.min(row.list.count - 1, row.index + Math.round(by / row.height)));
            }
            onReleased: if (row.dragged) row.list.drop()
            onCanceled: {
                row.list.dragTo = row.list.dragFrom;
                row.list.drop();
            }
        }
        Glyph {
            id: grip
            anchors { left: parent.left; leftMargin: Theme.s3; verticalCenter: parent.verticalCenter }
            name: "drag"
            size: Theme.px(16)
            color: Theme.quiet
        }
        Words {
            id: number
            anchors { left: grip.right; leftMargin: Theme.s3; verticalCenter: parent.verticalCenter }
            width: Theme.px(12)
            text: row.index + 1
            kind: Words.Quiet
            Accessible.ignored: true
        }
        Words {
            anchors { left: number.right; leftMargin: Theme.s3; right: state.left; rightMargin: Theme.s3; verticalCenter: parent.verticalCenter }
            text: row.title
            Accessible.ignored: true
            color: row.on ? Theme.ink : Theme.quiet
        }
        Item {
            id: state
            anchors { right: buttons.left; rightMargin: Theme.s2; verticalCenter: parent.verticalCenter }
            width: row.switchable ? toggle.width : always.width
            height: Theme.control
            Words {
                id: always
                objectName: "alwaysOn"
                visible: !row.switchable
                anchors.verticalCenter: parent.verticalCenter
                text: qsTr("Always on")
                Accessible.ignored: true
                kind: Words.Small
            }
            Toggle {
                id: toggle
                objectName: "sourceSwitch"
                visible: row.switchable
                anchors.verticalCenter: parent.verticalCenter
                checked: row.on
                Accessible.name: row.title
                onSwitched: on => row.list.order.switchOn(row.index, on)
            }
        }
        Row {
            id: buttons
            anchors { right: parent.right; rightMargin: Theme.s2; verticalCenter: parent.verticalCenter }
            IconButton {
                id: up
                objectName: "moveUp"
                glyph: "chevronUp"
                tone: Theme.quiet
                enabled: row.index > 0
                help: qsTr("Move %1 up").arg(row.title)
                onClicked: row.go(-1)
            }
            IconButton {
                id: down
                objectName: "moveDown"
                glyph: "chevronDown"
                tone: Theme.quiet
                enabled: row.index < row.list.count - 1
                help: qsTr("Move %1 down").arg(row.title)
                onClicked: row.go(1)
            }
        }
    }
}
