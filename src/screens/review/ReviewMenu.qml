import QtQuick
import Marlet

/// What can be done with the selected rows.
ContextMenu {
    objectName: "reviewMenu"

    MenuEntry {
        text: qsTr("Add to Queue")
        objectName: "menuAdd"
        glyph: "queue"
        keys: qsTr("Ctrl+Return")
        enabled: App.review.canAdd
        onTriggered: App.review.addSelected()
    }
    MenuEntry {
        text: App.review.acceptText
        objectName: "menuAccept"
        glyph: "check"
        keys: qsTr("Ctrl+Shift+Return")
        enabled: App.review.canAccept
        onTriggered: App.review.acceptSelected()
    }
    MenuEntry {
        text: qsTr("Choose Match…")
        objectName: "menuMatch"
        glyph: "search"
        keys: qsTr("F2")
        onTriggered: App.review.pickMatch()
    }
    MenuEntry {
        text: qsTr("Refresh from Sources")
        objectName: "menuRefresh"
        glyph: "refresh"
        onTriggered: App.review.refreshSelected()
    }
    MenuEntry {
        text: qsTr("Show in Folder")
        objectName: "menuShow"
        glyph: "folder"
        onTriggered: App.desktop.showInFolder(App.review.selectedFiles())
    }
    MenuEntry {
        text: qsTr("Remove from Review")
        objectName: "menuRemove"
        glyph: "trash"
        keys: qsTr("Delete")
        onTriggered: App.review.removeSelected()
    }
}
