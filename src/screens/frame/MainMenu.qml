import QtQuick
import QtQuick.Controls.Basic
import Marlet

/// The commands that belong to the whole program.
ContextMenu {
    id: menu

    signal addAsked()
    signal folderAsked()
    signal keysAsked()

    objectName: "mainMenu"
    MenuEntry { text: qsTr("Add File…"); glyph: "plus"; keys: "Ctrl+O"; objectName: "menuAdd"; onTriggered: menu.addAsked() }
    MenuEntry { text: qsTr("Add Folder…"); glyph: "folder"; keys: "Ctrl+Shift+O"; objectName: "menuFolder"; onTriggered: menu.folderAsked() }
    MenuRule {}
    MenuEntry {
        objectName: "menuInspector"
        text: App.inspectorShown ? qsTr("Hide Inspector") : qsTr("Show Inspector")
        glyph: "sidebar"
        keys: "Ctrl+Alt+I"
        onTriggered: App.inspectorShown = !App.inspectorShown
    }
    MenuEntry { text: qsTr("Clear History…"); glyph: "trash"; objectName: "menuClear"; onTriggered: App.askToClearHistory() }
    MenuRule {}
    MenuEntry { text: qsTr("Settings"); glyph: "settings"; keys: "Ctrl+,"; objectName: "menuSettings"; onTriggered: App.openSettings() }
    MenuEntry { text: qsTr("Keys"); glyph: "info"; keys: "F1"; objectName: "menuKeys"; onTriggered: menu.keysAsked() }
    MenuEntry { text: qsTr("Check for Updates…"); glyph: "refresh"; objectName: "menuUpdates"; enabled: App.canCheckForUpdates; onTriggered: App.checkForUpdates() }
    MenuEntry { text: qsTr("About Marlet"); glyph: "info"; objectName: "menuAbout"; onTriggered: App.openAbout() }
    MenuRule {}
    MenuEntry { text: qsTr("Quit"); glyph: "cross"; keys: "Ctrl+Q"; objectName: "menuQuit"; onTriggered: App.quit() }
}
