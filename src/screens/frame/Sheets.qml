import QtQuick
import Marlet

/// What opens over the window from any page.
Item {
    id: sheets

    /// Asks for the sheet of keys.
    signal keysAsked()
    onKeysAsked: keys.open()

    Connections {
        target: App
        function onSettingsAsked() { settings.open(); }
        function onAboutAsked() { about.open(); }
    }
    SettingsView { id: settings; objectName: "settingsSheet" }
    AboutView { id: about; objectName: "aboutSheet" }
    KeysView { id: keys; objectName: "keysSheet" }

    readonly property bool clearing: App.askClearHistory
    onClearingChanged: if (clearing) clear.open()
    Question {
        id: clear
        objectName: "clearHistory"
        title: qsTr("Clear all history?")
        message: qsTr("This removes every entry from History. It can't be undone. Your movie and TV files aren't affected.")
        acceptText: qsTr("Clear History")
        danger: true
        onAnswered: yes => App.answerClearHistory(yes)
    }
}
