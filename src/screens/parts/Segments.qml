import QtQuick
import QtQuick.Controls.Basic
import Marlet

/// A few choices side by side, one of them on; arrow keys go through them. All are as wide as the
/// widest where there is room, else as wide as their words; where even those have none, one stands
/// below the other.
FocusScope {
    id: segments

    property list<string> model
    property int current: 0
    property string label
    signal chosen(int index)

    readonly property var wishes: {
        const found = [];
        for (let at = 0; at < repeater.count; ++at) found.push(repeater.itemAt(at)?.implicitWidth ?? 0);
        return found;
    }
    readonly property real widest: Math.max(0, ...wishes)
    readonly property real together: wishes.reduce((sum, each) => sum + each, 0)
    readonly property real room: width - 4
    readonly property bool stacked: room < together
    readonly property int rowHeight: Theme.control - 4

    implicitHeight: (stacked ? model.length : 1) * rowHeight + 4
    implicitWidth: model.length * widest + 4
    activeFocusOnTab: true
    Accessible.role: Accessible.PageTabList
    Accessible.name: label
    Keys.onLeftPressed: segments.step(Theme.mirrored ? 1 : -1)
    Keys.onRightPressed: segments.step(Theme.mirrored ? -1 : 1)
    Keys.onUpPressed: event => {
        event.accepted = segments.stacked;
        if (event.accepted) segments.step(-1);
    }
    Keys.onDownPressed: event => {
        event.accepted = segments.stacked;
        if (event.accepted) segments.step(1);
    }

    function step(by: int) {
        const next = Math.max(0, Math.min(model.length - 1, current + by));
        if (next !== current) chosen(next);
    }
    function widthOf(wish: real): real {
        if (stacked) return room;
        return widest * model.length <= room ? room / model.length : wish + (room - together) / model.length;
    }

    Rectangle {
        anchors.fill: parent
        radius: 7
        color: Theme.tint(Theme.ink, 0.06)
        FocusRing { shown: segments.activeFocus; radius: 9 }
    }
    Grid {
        anchors { fill: parent; margins: 2 }
        columns: segments.stacked ? 1 : Math.max(1, segments.model.length)
        Repeater {
            id: repeater
            model: segments.model
            delegate: AbstractButton {
                id: segment

                required property int index
                required property string modelData
                readonly property bool on: segments.current === index

                // Whether it is on or off.
                implicitWidth: Math.ceil(bold.advanceWidth) + leftPadding + rightPadding + 2
                width: segments.widthOf(implicitWidth)
                height: segments.rowHeight
                leftPadding: Theme.s3
                rightPadding: Theme.s3
                focusPolicy: Qt.NoFocus
                text: modelData
                objectName: "segment" + index
                onClicked: segments.chosen(index)
                Accessible.role: Accessible.PageTab
                Accessible.name: text
                Accessible.selectable: true
                Accessible.selected: on
                // To this Qt each control is a button: then that it is on shows as checked.
                Accessible.checkable: true
                Accessible.checked: on
                Accessible.onPressAction: segment.clicked()
                Accessible.focusable: true
                Accessible.focused: on && segments.activeFocus
                contentItem: Words {
                    text: segment.text
                    color: segment.on ? Theme.ink : Theme.quiet
                    font.weight: segment.on ? Font.DemiBold : Font.Medium
                    horizontalAlignment: Text.AlignHCenter
                    verticalAlignment: Text.AlignVCenter
                    Accessible.ignored: true
                }
                background: Rectangle {
                    radius: 5
                    color: segment.on ? Theme.segmentOn : "transparent"
                    border.width: segment.on && !Theme.dark ? 1 : 0
                    border.color: Theme.hairline
                }
                TextMetrics {
                    id: bold
                    text: segment.text
                    font.family: Theme.family
                    font.pixelSize: Theme.body
                    font.weight: Font.DemiBold
                }
            }
        }
    }
}
