import QtQuick
import Marlet

/// What this program is.
Sheet {
    title: qsTr("About Marlet")
}
