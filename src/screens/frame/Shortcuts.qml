import QtQuick
import Marlet

/// The keys that hold in the whole window. Keys of one page are in that page.
Item {
    id: keys

    required property RootView root

    Shortcut { sequence: "Ctrl+O"; onActivated: keys.root.filesAsked() }
    Shortcut { sequence: "Ctrl+Shift+O"; onActivated: keys.root.folderAsked() }
    Shortcut { sequence: "Ctrl+1"; onActivated: App.tab = 0 }
    Shortcut { sequence: "Ctrl+2"; onActivated: App.tab = 1 }
    Shortcut { sequence: "Ctrl+3"; onActivated: App.tab = 2 }
    Shortcut { sequence: "Ctrl+Alt+I"; onActivated: App.inspectorShown = !App.inspectorShown }
    Shortcut { sequence: "Ctrl+,"; onActivated: App.openSettings() }
    Shortcut { sequence: "F1"; onActivated: keys.root.keysAsked() }
    Shortcut { sequence: "Ctrl+Q"; onActivated: App.quit() }
}
