import QtQuick
import Marlet

Window {
    visible: true
    width: 1180
    height: 760
    minimumWidth: 720
    minimumHeight: 480
    title: "Marlet"
    color: Theme.window
}
