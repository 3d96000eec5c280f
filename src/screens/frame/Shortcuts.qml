import QtQuick
import Marlet

/// The keys that hold in the whole window. Keys of one page are in that page.
Item {
    required property RootView root

    Shortcut { sequences: [StandardKey.Open]; onActivated: root.filesAsked() }
    Shortcut { sequence: "Ctrl+Shift+O"; onActivated: root.folderAsked() }
    Shortcut { sequence: "Ctrl+1"; onActivated: App.tab = 0 }
    Shortcut { sequence: "Ctrl+2"; onActivated: App.tab = 1 }
    Shortcut { sequence: "Ctrl+3"; onActivated: App.tab = 2 }
    Shortcut { sequence: "Ctrl+Alt+I"; onActivated: App.inspectorShown = !App.inspectorShown }
    Shortcut { sequences: [StandardKey.Preferences, "Ctrl+,"]; onActivated: App.openSettings() }
    Shortcut { sequences: [StandardKey.HelpContents]; onActivated: root.keysAsked() }
    Shortcut { sequences: [StandardKey.Quit, "Ctrl+Q"]; onActivated: App.quit() }
}
