import QtQuick
import Marlet

/// The three tabs, each with what is in it.
FocusScope {
    Accessible.role: Accessible.PageTabList
    Accessible.name: qsTr("Pages")

    Rectangle { anchors.fill: parent; color: Theme.tint(Theme.ink, 0.025) }
    Column {
        anchors { fill: parent; margins: Theme.s2; topMargin: Theme.s3 }
        spacing: 2
        TabButton { objectName: "tab0"; page: 0; name: qsTr("Review"); glyph: "review"; count: App.reviewCount }
        TabButton { objectName: "tab1"; page: 1; name: qsTr("Queue"); glyph: "queue"; count: App.queueCount }
        TabButton { objectName: "tab2"; page: 2; name: qsTr("History"); glyph: "history"; count: App.historyCount }
    }
}
