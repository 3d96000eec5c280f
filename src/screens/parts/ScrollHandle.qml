import QtQuick
import QtQuick.Controls.Basic
import Marlet

/// Where in a long list one is, at its edge.
ScrollBar {
    id: bar

    Accessible.ignored: true  // a screen reader goes by what is in the list
    policy: ScrollBar.AsNeeded
    minimumSize: 0.05
    padding: 2
    contentItem: Rectangle {
        implicitWidth: 6
        implicitHeight: 6
        radius: 3
        color: Theme.tint(Theme.ink, bar.pressed ? 0.5 : bar.hovered ? 0.4 : 0.25)
        visible: bar.size < 1
    }
}
