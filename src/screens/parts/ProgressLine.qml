import QtQuick
import QtQuick.Controls.Basic
import Marlet

/// How far something is, 0 to 1.
ProgressBar {
    id: bar

    property string label

    implicitHeight: 6
    Accessible.name: label
    background: Rectangle { radius: height / 2; color: Theme.tint(Theme.ink, 0.1) }
    contentItem: Item {
        clip: true
        Rectangle {
            id: filled
            height: parent.height
            radius: height / 2
            color: Theme.accent
            width: bar.indeterminate ? parent.width * 0.3 : parent.width * bar.visualPosition
            x: bar.indeterminate ? 0 : bar.mirrored ? parent.width - width : 0
            SequentialAnimation on x {
                running: bar.indeterminate && bar.visible && Theme.motion > 0
                loops: Animation.Infinite
                NumberAnimation { from: -filled.width; to: bar.width; duration: 1400; easing.type: Easing.InOutQuad }
            }
        }
    }
}
