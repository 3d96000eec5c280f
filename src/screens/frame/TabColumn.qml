import QtQuick
import Marlet

/// The three tabs, each with what is in it.
FocusScope {
    id: column

    readonly property var tabs: [
        { name: qsTr("Review"), glyph: "review", count: App.reviewCount },
        { name: qsTr("Queue"), glyph: "queue", count: App.queueCount },
        { name: qsTr("History"), glyph: "history", count: App.historyCount }
    ]

    Accessible.role: Accessible.PageTabList
    Accessible.name: qsTr("Pages")
    Rectangle { anchors.fill: parent; color: Theme.tint(Theme.ink, 0.025) }
    Column {
        anchors { fill: parent; margins: Theme.s2; topMargin: Theme.s3 }
        spacing: 2
        Repeater {
            model: column.tabs
            delegate: TabButton {
                required property int index
                required property var modelData

                objectName: "tab" + index
                width: parent.width
                name: modelData.name
                glyph: modelData.glyph
                count: modelData.count
                on: App.tab === index
                onClicked: App.tab = index
            }
        }
    }
}
