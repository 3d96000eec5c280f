import QtQuick
import Marlet

/// The box around text that can be changed.
Rectangle {
    property bool focused: false

    radius: 6
    color: Theme.dark ? Theme.raised : Theme.card
    border.width: focused ? 2 : 1
    border.color: focused ? Theme.accent : Theme.tint(Theme.ink, 0.18)
}
