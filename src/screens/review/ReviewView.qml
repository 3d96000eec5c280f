import QtQuick
import QtQuick.Controls.Basic
import Marlet

/// What came in, to be looked at and corrected: a list to search and filter, and what is done with
/// its rows beneath it.
FocusScope {
    id: view

    /// What stands beneath the list, in pixels of height.
    readonly property real foot: App.review.isEmpty ? 0 : bar.height + locked.height
    signal filesAsked()

    Shortcut {
        sequence: "Ctrl+F"
        enabled: view.visible && !App.review.isEmpty
        onActivated: head.find()
    }
    Connections {
        target: App.review
        function onReveal(row) { list.positionViewAtIndex(row, ListView.Contain); }
        function onMenuAsked(row) {
            list.positionViewAtIndex(row, ListView.Contain);
            const item = list.itemAtIndex(row);
            menu.popup(item, Theme.mirrored ? item.width - Theme.s6 : Theme.s6, item.height - Theme.s2);
        }
    }

    UnfinishedBar {
        id: unfinished
        anchors { left: parent.left; right: parent.right; top: parent.top }
    }
    DropView {
        objectName: "dropView"
        visible: App.review.isEmpty
        focus: visible
        anchors { left: parent.left; right: parent.right; top: unfinished.bottom; bottom: parent.bottom }
        onFilesAsked: view.filesAsked()
    }
    FocusScope {
        visible: !App.review.isEmpty
        focus: visible
        anchors { left: parent.left; right: parent.right; top: unfinished.bottom; bottom: parent.bottom }

        ReviewHead {
            id: head
            anchors {
                left: parent.left; right: parent.right; top: parent.top
                topMargin: unfinished.visible || App.notice !== "" ? Theme.s2 : 0
            }
            onDoneSearching: {
                App.review.selectFirst();
                list.forceActiveFocus(Qt.TabFocusReason);
            }
        }
        ScanBar {
            id: scan
            anchors { left: parent.left; right: parent.right; top: head.bottom }
        }
        ListView {
            id: list

            objectName: "reviewList"
            anchors {
                left: parent.left; right: parent.right; top: scan.bottom; bottom: locked.top
                leftMargin: Theme.s2; rightMargin: 2
            }
            clip: true
            focus: true
            activeFocusOnTab: true
            reuseItems: true
            cacheBuffer: 256
            boundsBehavior: Flickable.StopAtBounds
            keyNavigationEnabled: false
            highlightFollowsCurrentItem: false
            currentIndex: App.review.current
            model: App.review.rows
            Accessible.role: Accessible.List
            Accessible.name: qsTr("Films and seasons in Review")
            Keys.onPressed: event => {
                const page = list.currentItem ? Math.floor(list.height / list.currentItem.height) : 1;
                event.accepted = App.review.press(event.key, event.modifiers, page);
            }
            ScrollBar.vertical: ScrollHandle {}

            delegate: ItemRow {
                id: line

                width: ListView.view.width - Theme.s3
                x: Theme.mirrored ? Theme.s3 : 0
                current: ListView.isCurrentItem && ListView.view.activeFocus
                onPicked: modifiers => {
                    list.forceActiveFocus(Qt.MouseFocusReason);
                    App.review.click(line.index, modifiers);
                }
                onOpened: App.review.showInspector()
                onMenuWanted: (x, y) => {
                    list.forceActiveFocus(Qt.MouseFocusReason);
                    App.review.clickForMenu(line.index);
                    menu.popup(line, x, y);
                }
            }
        }
        FocusRing {
            anchors.fill: list
            shown: list.activeFocus && !list.currentItem
        }
        EmptyState {
            objectName: "nothingHere"
            visible: App.review.nothingHere !== ""
            anchors.fill: list
            drawing: "search"
            title: App.review.nothingHere
            linkText: qsTr("show all")
            onLinked: {
                App.review.setFilter(0);
                App.review.setQuery("");
            }
        }
        NoticeBar {
            id: locked
            objectName: "lockedBar"
            anchors { left: parent.left; right: parent.right; bottom: bar.top }
            text: App.review.locked
                  ? qsTr("Files in your Media Library are locked: turn on “Allow changes to my Media Library” in Settings to write to them.")
                  : ""
            glyph: "lock"
            tone: Theme.look
            closable: false
            LinkButton {
                objectName: "lockedSettings"
                text: qsTr("Settings")
                anchors.verticalCenter: parent.verticalCenter
                onClicked: App.openSettings()
            }
        }
        ReviewBar {
            id: bar
            anchors { left: parent.left; right: parent.right; bottom: parent.bottom }
        }
        ReviewMenu { id: menu }
    }
}
