import QtQuick
import Marlet

/// The three tabs, each with what is in it.
FocusScope {
    id: tabs

    /// Too narrow for words beside symbols: they stand below them.
    readonly property bool stacked: width < Theme.px(140)

    Accessible.role: Accessible.PageTabList
    Accessible.name: qsTr("Pages")

    Rectangle { anchors.fill: parent; color: Theme.tint(Theme.ink, 0.025) }
    Column {
        anchors { fill: parent; margins: Theme.s2; topMargin: Theme.s3 }
        spacing: 2
        TabButton { stacked: tabs.stacked; objectName: "tab0"; page: 0; name: qsTr("Review"); glyph: "review"; count: App.reviewCount }
        TabButton { stacked: tabs.stacked; objectName: "tab1"; page: 1; name: qsTr("Queue"); glyph: "queue"; count: App.queueCount; spoken: App.queue.stage === "running" ? qsTr("%1 %").arg(25 * Math.floor(4 * App.queue.progress)) : App.queueCount }
        TabButton { stacked: tabs.stacked; objectName: "tab2"; page: 2; name: qsTr("History"); glyph: "history"; count: App.historyCount }
    }
}
