import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Dialogs
import Marlet

/// The window: its frame, its keys, and what lies over it.
ApplicationWindow {
    id: window

    objectName: "mainWindow"
    visible: true
    width: 1180
    height: 760
    minimumWidth: 720
    minimumHeight: 480
    title: "Marlet"
    color: Theme.window
    // What opens over the window lies in it, and is mirrored with it.
    LayoutMirroring.enabled: Theme.mirrored
    LayoutMirroring.childrenInherit: true
    onClosing: close => {
        close.accepted = false;
        App.quit();
    }

    RootView {
        id: root
        anchors.fill: parent
        onFilesAsked: filePanel.open()
        onFolderAsked: folderPanel.open()
    }
    Shortcuts { root: root }

    FileDialog {
        id: filePanel
        objectName: "filePanel"
        title: qsTr("Choose movies, TV episodes or folders. Marlet only reads them.")
        acceptLabel: qsTr("Add Files")
        fileMode: FileDialog.OpenFiles
        nameFilters: [qsTr("Movies and TV episodes (%1)").arg(App.filmPatterns), qsTr("All files (%1)").arg("*")]
        onAccepted: App.add(selectedFiles)
    }
    FolderDialog {
        id: folderPanel
        title: qsTr("Choose movies, TV episodes or folders. Marlet only reads them.")
        acceptLabel: qsTr("Add Files")
        onAccepted: App.add([selectedFolder])
    }
}
