import QtQuick
import Marlet

/// What lies behind a row: its selection, its hover, the keyboard's place.
Rectangle {
    property bool selected: false
    property bool hovered: false
    property bool focused: false

    radius: Theme.radius
    color: selected ? Theme.selected : hovered ? Theme.hover : "transparent"
    border.width: focused ? 2 : 0
    border.color: Theme.accent
}
