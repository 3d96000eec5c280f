import QtQuick
import Marlet

/// Shows where the keyboard is; lies around what it marks.
Rectangle {
    property bool shown: false

    anchors.fill: parent
    anchors.margins: -2
    color: "transparent"
    radius: Theme.radius
    border.width: 2
    border.color: Theme.accent
    visible: shown
}
