import QtQuick
import Marlet

/// What the person can set.
Sheet {
    title: qsTr("Settings")
}
