import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Templates as T
import Marlet

/// Tabs at the left, the chosen tab's page, the inspector at the right. The whole is the place to
/// drop files on.
FocusScope {
    id: root

    property bool dropTargeted: false
    readonly property bool wide: width >= Math.max(900, Theme.px(900))
    readonly property bool showsInspector: App.tab === 0 && App.inspectorShown
    signal filesAsked()
    signal folderAsked()
    signal keysAsked()

    focus: true
    onKeysAsked: sheets.keysAsked()

    TabColumn {
        id: tabs
        width: Math.min(Theme.px(root.width < 820 ? 148 : 184), Math.max(148, Math.floor(root.width * 0.22)))
        anchors { left: parent.left; top: parent.top; bottom: parent.bottom }
    }
    Hairline {
        id: edge
        width: 1
        anchors { left: tabs.right; top: parent.top; bottom: parent.bottom }
    }

    Item {
        id: content
        anchors {
            left: edge.right; top: parent.top; bottom: parent.bottom
            right: side.visible ? side.left : parent.right
        }
        ToolRow {
            id: tools
            anchors { left: parent.left; right: parent.right; top: parent.top }
            title: [qsTr("Review"), qsTr("Queue"), qsTr("History")][App.tab]
            onAddAsked: root.filesAsked()
            onFolderAsked: root.folderAsked()
            onKeysAsked: root.keysAsked()
        }
        NoticeBar {
            id: notice
            objectName: "notice"
            anchors { left: parent.left; right: parent.right; top: tools.bottom }
            text: App.notice
            onClosed: App.closeNotice()
        }
        NoticeBar {
            id: quitting
            objectName: "quitting"
            anchors { left: parent.left; right: parent.right; top: notice.bottom }
            text: App.quitWaits ? qsTr("Marlet quits as soon as the file that is being written is finished.") : ""
            glyph: "lock"
            tone: Theme.look
            closable: false
        }
        FocusScope {
            anchors { left: parent.left; right: parent.right; top: quitting.bottom; bottom: parent.bottom }
            ReviewView {
                id: review
                objectName: "reviewView"
                anchors.fill: parent
                visible: App.tab === 0
                focus: visible
                onFilesAsked: root.filesAsked()
            }
            QueueView {
                objectName: "queueView"
                anchors.fill: parent
                visible: App.tab === 1
                focus: visible
            }
            HistoryView {
                objectName: "historyView"
                anchors.fill: parent
                visible: App.tab === 2
                focus: visible
            }
        }
    }

    // Beside the content where there is room, over it where there is not.
    Hairline {
        width: 1
        visible: side.visible
        anchors { right: side.left; top: parent.top; bottom: parent.bottom }
    }
    FocusScope {
        id: side
        width: Theme.px(360)
        visible: root.wide && root.showsInspector
        anchors { right: parent.right; top: parent.top; bottom: parent.bottom }
        Loader {
            anchors.fill: parent
            active: side.visible
            sourceComponent: inspector
        }
    }
    Drawer {
        id: over
        objectName: "inspectorSheet"
        parent: T.Overlay.overlay
        edge: Theme.mirrored ? Qt.LeftEdge : Qt.RightEdge
        width: Math.min(Theme.px(360), root.width - 48)
        height: parent ? parent.height : 0
        interactive: opened
        closePolicy: Popup.CloseOnEscape | Popup.CloseOnPressOutside
        readonly property bool wanted: !root.wide && root.showsInspector
        onWantedChanged: wanted ? open() : close()
        // Somebody closes it: by Escape, by a press beside it, or by pushing it away.
        onAboutToHide: if (wanted) App.inspectorShown = false
        T.Overlay.modal: Rectangle { color: Theme.shade }
        background: Rectangle { color: Theme.window }
        // The window's own keys rest beneath what is modal.
        Shortcut {
            sequence: "Ctrl+Alt+I"
            enabled: over.visible
            onActivated: App.inspectorShown = !App.inspectorShown
        }
        Loader {
            anchors.fill: parent
            active: over.visible
            sourceComponent: inspector
        }
    }
    Component {
        id: inspector
        InspectorView { objectName: "inspectorView" }
    }

    // The whole window takes what is dropped on it.
    DropArea {
        objectName: "dropArea"
        anchors.fill: parent
        keys: ["text/uri-list"]
        onEntered: drag => {
            drag.accepted = drag.hasUrls;
            root.dropTargeted = drag.hasUrls;
        }
        onExited: root.dropTargeted = false
        onDropped: drop => {
            root.dropTargeted = false;
            App.add(drop.urls);
            drop.accept(Qt.CopyAction);
        }
    }
    Rectangle {
        objectName: "dropFrame"
        anchors.fill: parent
        visible: root.dropTargeted
        color: Theme.tint(Theme.accent, 0.1)
        border.width: 2
        border.color: Theme.accent
    }

    // Over the content and above its foot, on top of every sheet.
    Toast {
        parent: over.parent
        z: 1000
        x: content.x + Math.round((content.width - width) / 2)
        y: root.height - height - Theme.s4 - (App.tab === 0 ? review.foot : 0)
        mostWidth: content.width - 2 * Theme.s6
    }

    MatchPickerView {}
    Sheets { id: sheets }
}
