import QtQuick
import QtQuick.Controls.Basic
import Marlet

/// The jobs and their run.
FocusScope {
    id: view

    readonly property QueueModel queue: App.queue

    // The page's own keys. None of them can be met by accident: a job never starts by Return alone.
    Shortcut {
        sequences: ["Ctrl+Return", "Ctrl+Enter"]
        enabled: view.visible && view.queue.stage === "waiting"
        onActivated: view.queue.start()
    }
    Keys.onSpacePressed: event => {
        event.accepted = view.queue.stage === "running";
        if (!event.accepted || view.queue.locked) return;
        if (view.queue.paused) view.queue.resume();
        else view.queue.pause();
    }

    EmptyState {
        objectName: "queueEmpty"
        anchors.fill: parent
        visible: view.queue.stage === "empty"
        drawing: "queue"
        title: qsTr("Nothing in the queue")
        line: qsTr("Review your files in Review, then add them to the queue.")
    }
    RunHead {
        id: head
        visible: view.queue.stage !== "empty"
        anchors { left: parent.left; right: parent.right; top: parent.top }
    }
    ListView {
        id: list

        objectName: "jobList"
        visible: head.visible
        anchors { left: parent.left; right: parent.right; top: head.bottom; bottom: parent.bottom }
        anchors { leftMargin: Theme.s2; rightMargin: Theme.s2 }
        topMargin: Theme.s2
        bottomMargin: Theme.s4
        clip: true
        focus: true
        activeFocusOnTab: true
        keyNavigationEnabled: true
        boundsBehavior: Flickable.StopAtBounds
        reuseItems: false
        cacheBuffer: 400
        model: view.queue.jobs
        Accessible.role: Accessible.List
        Accessible.name: qsTr("Queue")
        ScrollBar.vertical: ScrollHandle {}

        section.property: "group"
        section.delegate: Item {
            id: group
            required property string section
            width: list.width
            height: section === "" ? 0 : heading.implicitHeight
            SectionHeading {
                id: heading
                visible: group.section !== ""
                text: group.section
                leftPadding: Theme.s2
            }
        }
        delegate: JobRow {
            id: job
            onMenuAsked: (x, y) => menu.openFor(job, x, y)
        }

        // The running job stays in sight unless somebody is looking at others.
        readonly property int runningRow: view.queue.runningRow
        onRunningRowChanged: if (runningRow >= 0 && !activeFocus && !moving)
            positionViewAtIndex(runningRow, ListView.Contain)

        // What failed is put first then, and is to be seen first.
        readonly property bool ended: view.queue.stage === "finished"
        onEndedChanged: if (ended && !moving) {
            positionViewAtBeginning();
            contentY = originY - topMargin;
        }

        Keys.onReturnPressed: (currentItem as JobRow)?.toggle()
        Keys.onEnterPressed: (currentItem as JobRow)?.toggle()
        Keys.onDeletePressed: (currentItem as JobRow)?.remove()
        Keys.onMenuPressed: (currentItem as JobRow)?.askMenu()
        Keys.onPressed: event => {
            if (event.key === Qt.Key_Home) currentIndex = 0;
            else if (event.key === Qt.Key_End) currentIndex = count - 1;
            else if (event.key === Qt.Key_F10 && (event.modifiers & Qt.ShiftModifier)) (currentItem as JobRow)?.askMenu();
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

        property string key
        property string kind
        property bool explained: false

        function openFor(row: JobRow, x: real, y: real) {
            list.currentIndex = row.index;
            key = row.key;
            kind = row.kind;
            explained = row.technical !== "";
            popup(row, x, y);
        }

        objectName: "jobMenu"
        MenuEntry {
            objectName: "jobRemove"
            visible: menu.kind === "waiting"
            enabled: view.queue.stage === "waiting"
            text: qsTr("Remove from the queue")
            glyph: "minus"
            keys: qsTr("Delete")
            onTriggered: view.queue.remove(menu.key)
        }
        MenuEntry {
            objectName: "jobShow"
            text: qsTr("Show in Folder")
            glyph: "folder"
            onTriggered: App.desktop.showInFolder(view.queue.filesOf(menu.key))
        }
        MenuEntry {
            objectName: "jobTechnical"
            visible: menu.explained
            text: qsTr("Technical details")
            glyph: "info"
            keys: qsTr("Return")
            onTriggered: view.queue.toggle(menu.key)
        }
    }
}
