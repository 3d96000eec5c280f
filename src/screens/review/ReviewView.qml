import QtQuick
import Marlet

/// Review: what was found, and how certain it is.
FocusScope {
    signal filesAsked()
}
