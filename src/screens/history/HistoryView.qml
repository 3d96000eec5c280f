import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Dialogs
import Marlet

/// What was done to which file: days, each with its rows.
FocusScope {
    id: view

    readonly property HistoryModel history: App.history
    readonly property bool narrow: width < Theme.px(680)

    Binding { target: view.history; property: "shown"; value: view.visible }
    Shortcut {
        sequence: "Ctrl+F"
        enabled: view.visible
        onActivated: search.forceActiveFocus(Qt.ShortcutFocusReason)
    }

    Item {
        id: bar

        readonly property bool used: view.history.stage !== "empty"

        /// Beside the filter and the buttons there is no room for a search.
        readonly property bool tight: filter.implicitWidth + buttons.width + 2 * Theme.s3 + Theme.px(120) > width

        height: (tight ? Math.max(filter.height, Theme.control) + Theme.s2 : 0) + Theme.control + Theme.s3
        anchors { left: parent.left; right: parent.right; top: parent.top; leftMargin: Theme.s4; rightMargin: Theme.s4 }
        Segments {
            id: filter
            objectName: "historyFilter"
            label: qsTr("Which entries")
            enabled: bar.used
            model: [qsTr("All"), qsTr("Done"), qsTr("Not done")]
            current: view.history.filter
            onChosen: index => view.history.filter = index
            width: Math.min(implicitWidth, bar.width - buttons.width - Theme.s3)
            anchors { left: parent.left; top: parent.top }
        }
        SearchBox {
            id: search
            objectName: "historySearch"
            prompt: qsTr("Search History")
            enabled: bar.used
            text: view.history.query
            onEdited: value => view.history.query = value
            Keys.onDownPressed: list.forceActiveFocus(Qt.TabFocusReason)
            width: bar.tight ? bar.width
                 : Math.min(Theme.px(280), bar.width - filter.width - buttons.width - 2 * Theme.s3)
            anchors {
                left: bar.tight ? parent.left : filter.right; leftMargin: bar.tight ? 0 : Theme.s3
                top: parent.top; topMargin: bar.tight ? Math.max(filter.height, Theme.control) + Theme.s2 : 0
            }
        }
        Row {
            id: buttons
            spacing: Theme.s2
            anchors { right: parent.right; top: parent.top }
            PushButton {
                objectName: "clearHistoryButton"
                visible: !view.narrow
                enabled: bar.used
                text: qsTr("Clear History…")
                onClicked: App.askToClearHistory()
            }
            PushButton {
                objectName: "exportButton"
                enabled: bar.used
                text: qsTr("Export")
                help: qsTr("Export History as CSV")
                onClicked: view.openPanel()
            }
            IconButton {
                objectName: "clearHistoryIcon"
                visible: view.narrow
                enabled: bar.used
                glyph: "trash"
                help: qsTr("Clear History…")
                onClicked: App.askToClearHistory()
            }
        }
    }

    EmptyState {
        objectName: "historyEmpty"
        anchors { left: parent.left; right: parent.right; top: bar.bottom; bottom: parent.bottom }
        visible: view.history.stage === "empty"
        drawing: "history"
        title: qsTr("Nothing yet")
        line: qsTr("Files Marlet changes will be listed here.")
    }
    EmptyState {
        objectName: "historyNothing"
        anchors { left: parent.left; right: parent.right; top: bar.bottom; bottom: parent.bottom }
        visible: view.history.stage === "nothing"
        drawing: "search"
        title: qsTr("Nothing here yet.")
    }
    ListView {
        id: list

        objectName: "historyList"
        visible: view.history.stage === "rows"
        anchors { left: parent.left; right: parent.right; top: bar.bottom; bottom: parent.bottom }
        anchors { leftMargin: Theme.s2; rightMargin: Theme.s2 }
        bottomMargin: Theme.s4
        clip: true
        focus: true
        activeFocusOnTab: true
        keyNavigationEnabled: true
        boundsBehavior: Flickable.StopAtBounds
        cacheBuffer: 400
        model: view.history.rows
        Accessible.role: Accessible.List
        Accessible.name: qsTr("History")
        ScrollBar.vertical: ScrollHandle {}

        section.property: "day"
        section.delegate: SectionHeading {
            required property string section
            text: section
            width: list.width
            leftPadding: Theme.s2
            topPadding: Theme.s3
        }
        delegate: HistoryLineRow {
            id: line
            onMenuAsked: (x, y) => menu.openFor(line, x, y)
            onRestoreAsked: view.history.askRestore(line.key)
        }

        Keys.onReturnPressed: (currentItem as HistoryLineRow)?.toggle()
        Keys.onEnterPressed: (currentItem as HistoryLineRow)?.toggle()
        Keys.onSpacePressed: (currentItem as HistoryLineRow)?.toggle()
        Keys.onMenuPressed: (currentItem as HistoryLineRow)?.askMenu()
        Keys.onPressed: event => {
            const page = Math.max(1, Math.floor(height / Theme.px(64)) - 1);
            if (event.key === Qt.Key_Home) currentIndex = 0;
            else if (event.key === Qt.Key_End) currentIndex = count - 1;
            else if (event.key === Qt.Key_PageUp) currentIndex = Math.max(0, currentIndex - page);
            else if (event.key === Qt.Key_PageDown) currentIndex = Math.min(count - 1, currentIndex + page);
            else if (event.key === Qt.Key_F10 && (event.modifiers & Qt.ShiftModifier)) (currentItem as HistoryLineRow)?.askMenu();
            else return;
            event.accepted = true;
        }
    }
    FocusRing {
        anchors.fill: list
        shown: list.activeFocus && !list.currentItem
    }
    ContextMenu {
        id: menu

        property HistoryLineRow row: null
        property string key

        // What it offers depends on files, which are looked at when it opens.
        function openFor(asked: HistoryLineRow, x: real, y: real) {
            list.currentIndex = asked.index;
            row = asked;
            key = asked.key;
            view.history.look(key);
            popup(asked, x, y);
        }

        objectName: "historyMenu"
        onClosed: row = null
        MenuEntry {
            objectName: "historyShow"
            text: qsTr("Show in Folder")
            glyph: "folder"
            onTriggered: App.desktop.showInFolder(view.history.filesOf(menu.key))
        }
        MenuEntry {
            objectName: "historyAgain"
            text: qsTr("Try Again")
            glyph: "refresh"
            onTriggered: view.history.tryAgain(menu.key)
        }
        MenuEntry {
            objectName: "historyRestore"
            enabled: view.history.canRestore && menu.row !== null && menu.row.restorable > 0
            text: qsTr("Restore Original Details…")
            glyph: "undo"
            onTriggered: view.history.askRestore(menu.key)
        }
    }

    Connections {
        target: view.history
        function onRestoreAsked() { restore.open(); }
    }
    Question {
        id: restore
        objectName: "restoreQuestion"
        title: qsTr("Restore original details?")
        message: view.history.restoreMessage
        acceptText: view.history.restoreButton
        onAnswered: yes => view.history.answerRestore(yes)
    }

    function openPanel() {
        panel.currentFile = view.history.exportPlace();
        panel.open();
    }
    FileDialog {
        id: panel
        objectName: "exportPanel"
        title: qsTr("Export History as CSV")
        acceptLabel: qsTr("Export")
        fileMode: FileDialog.SaveFile
        defaultSuffix: "csv"
        nameFilters: [qsTr("CSV (%1)").arg("*.csv")]
        onAccepted: view.history.exportTo(selectedFile)
    }
}
