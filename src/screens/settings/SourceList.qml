import QtQuick
import Marlet

/// The sources in order. A row is dragged to its place, or moved by Alt with an arrow key, or by
/// its buttons.
ListView {
    id: sources

    readonly property SourceOrder order: App.settings.sources
    readonly property int rowHeight: Theme.px(44)
    property int dragFrom: -1
    property int dragTo: -1
    property real dragBy: 0

    function move(from: int, to: int) {
        if (order.move(from, to)) currentIndex = to;
    }
    function drop() {
        const from = dragFrom;
        const to = dragTo;
        dragFrom = -1;
        dragTo = -1;
        dragBy = 0;
        move(from, to);
    }

    objectName: "sourceList"
    width: parent ? parent.width : 0
    height: count * rowHeight
    interactive: false
    activeFocusOnTab: true
    keyNavigationEnabled: true
    currentIndex: 0
    model: order.rows
    Accessible.role: Accessible.List
    Accessible.name: qsTr("Where details come from")
    Accessible.description: qsTr("Alt with an arrow key moves a row")
    Keys.onPressed: event => {
        const by = event.key === Qt.Key_Up ? -1 : event.key === Qt.Key_Down ? 1 : 0;
        if (by === 0 || !(event.modifiers & Qt.AltModifier)) return;
        move(currentIndex, currentIndex + by);
        event.accepted = true;
    }
    Keys.onSpacePressed: (currentItem as SourceLine)?.flip()

    delegate: SourceLine {
        width: ListView.view ? ListView.view.width : 0
        height: Theme.px(44)
        list: ListView.view as SourceList
    }
}
