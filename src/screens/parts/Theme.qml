pragma Singleton
import QtQuick

QtObject {
    readonly property color window: "#F6F6F4"
}
