import QtQuick
import Marlet

/// Which one is this?
Sheet {
    title: qsTr("Which one is this?")
}
