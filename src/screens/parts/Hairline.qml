import QtQuick
import Marlet

/// A line between two things.
Rectangle {
    property bool upright: false

    implicitWidth: 1
    implicitHeight: 1
    color: Theme.hairline
}
