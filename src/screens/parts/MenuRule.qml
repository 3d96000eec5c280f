import QtQuick
import QtQuick.Controls.Basic
import Marlet

/// A hairline between two groups of a menu.
MenuSeparator {
    padding: Theme.s1
    contentItem: Hairline { implicitWidth: 1; implicitHeight: 1 }
    background: null
}
