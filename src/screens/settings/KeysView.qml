import QtQuick
import Marlet

/// The keys.
Sheet {
    title: qsTr("Keys")
}
