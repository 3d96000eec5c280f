import QtQuick
import Marlet

/// How far something is, 0 to 1. Eyes see each step of it, a screen reader tells quarters.
Item {
    id: bar

    property string label
    property real value: 0
    property bool indeterminate: false

    implicitWidth: 200
    implicitHeight: 6

    Item {
        id: heard
        readonly property real value: bar.indeterminate ? 0 : Math.floor(4 * Math.max(0, Math.min(1, bar.value))) / 4
        readonly property real minimumValue: 0
        readonly property real maximumValue: 1
        objectName: "heardProgress"
        anchors.fill: parent
        Accessible.role: Accessible.ProgressBar
        Accessible.name: bar.label
        Accessible.description: bar.indeterminate ? "" : qsTr("%1 %").arg(100 * value)
    }
    Rectangle {
        anchors.fill: parent
        radius: height / 2
        color: Theme.tint(Theme.ink, 0.1)
        clip: true
        Rectangle {
            id: filled
            height: parent.height
            radius: height / 2
            color: Theme.accent
            width: bar.width * (bar.indeterminate ? 0.3 : Math.max(0, Math.min(1, bar.value)))
            x: Theme.mirrored ? bar.width - width : 0
            // Comes in where rows begin and leaves where they end.
            transform: Translate {
                SequentialAnimation on x {
                    running: bar.indeterminate && bar.visible && Theme.motion > 0
                    loops: Animation.Infinite
                    alwaysRunToEnd: false
                    NumberAnimation {
                        from: Theme.mirrored ? filled.width : -filled.width
                        to: Theme.mirrored ? -bar.width : bar.width
                        duration: 1400
                        easing.type: Easing.InOutQuad
                    }
                }
            }
        }
    }
}
