import QtQuick
import QtQuick.Controls.Basic
import Marlet

/// A few choices side by side, one of them on; arrow keys go through them.
FocusScope {
    id: segments

    property list<string> model
    property int current: 0
    property string label
    signal chosen(int index)

    implicitHeight: Theme.control
    implicitWidth: row.implicitWidth + 4
    activeFocusOnTab: true
    Accessible.role: Accessible.PageTabList
    Accessible.name: label
    Keys.onLeftPressed: segments.step(LayoutMirroring.enabled ? 1 : -1)
    Keys.onRightPressed: segments.step(LayoutMirroring.enabled ? -1 : 1)

    function step(by: int) {
        const next = Math.max(0, Math.min(model.length - 1, current + by));
        if (next !== current) chosen(next);
    }

    Rectangle {
        anchors.fill: parent
        radius: 7
        color: Theme.tint(Theme.ink, 0.06)
        FocusRing { shown: segments.activeFocus; radius: 9 }
    }
    Row {
        id: row

        anchors { fill: parent; margins: 2 }
        Repeater {
            model: segments.model
            delegate: AbstractButton {
                id: segment

                required property int index
                required property string modelData
                readonly property bool on: segments.current === index

                width: Math.max(implicitWidth, (segments.width - 4) / segments.model.length)
                height: row.height
                leftPadding: Theme.s3
                rightPadding: Theme.s3
                focusPolicy: Qt.NoFocus
                text: modelData
                objectName: "segment" + index
                onClicked: segments.chosen(index)
                Accessible.role: Accessible.PageTab
                Accessible.name: text
                Accessible.selected: on
                contentItem: Words {
                    text: segment.text
                    color: segment.on ? Theme.ink : Theme.quiet
                    font.weight: segment.on ? Font.DemiBold : Font.Medium
                    horizontalAlignment: Text.AlignHCenter
                    verticalAlignment: Text.AlignVCenter
                }
                background: Rectangle {
                    radius: 5
                    color: segment.on ? (Theme.dark ? "#43474A" : Theme.card) : "transparent"
                    border.width: segment.on && !Theme.dark ? 1 : 0
                    border.color: Theme.hairline
                }
            }
        }
    }
}
