import QtQuick
import QtQuick.Controls.Basic
import Marlet

/// A list whose chosen row the model holds: arrows go through it, Return takes the row.
ListView {
    id: list

    property int chosen: -1
    property int rowHeight: Theme.px(64)
    property bool opens: false  // one click takes a row: it leads to a page
    property bool whole: false  // rows with files are all chosen
    signal picked(int row)
    signal accepted()
    signal leftAtTop()
    signal seen(int row)

    clip: true
    spacing: 2
    activeFocusOnTab: true
    keyNavigationEnabled: false
    boundsBehavior: Flickable.StopAtBounds
    highlightMoveDuration: 0
    cacheBuffer: 0  // what is made ahead of need is in the way when the rows are others
    Accessible.role: Accessible.List
    onChosenChanged: follow()
    onCountChanged: follow()
    ScrollBar.vertical: ScrollHandle {}
    // Where the keyboard is while no row is chosen.
    FocusRing {
        parent: list
        anchors.fill: parent
        anchors.margins: 0
        shown: list.activeFocus && (list.chosen < 0 || list.count === 0)
    }

    function follow() {
        currentIndex = chosen < count ? chosen : -1;
        if (currentIndex >= 0) positionViewAtIndex(currentIndex, ListView.Contain);
    }
    function step(by: int) {
        if (count > 0) picked(Math.max(0, Math.min(count - 1, Math.max(chosen, -1) + by)));
    }
    Keys.onUpPressed: chosen <= 0 ? leftAtTop() : step(-1)
    Keys.onDownPressed: step(1)
    Keys.onReturnPressed: accepted()
    Keys.onEnterPressed: accepted()
    Keys.onPressed: event => {
        const page = Math.max(1, Math.floor(height / rowHeight) - 1);
        const by = { [Qt.Key_PageUp]: -page, [Qt.Key_PageDown]: page, [Qt.Key_Home]: -count, [Qt.Key_End]: count };
        event.accepted = event.key in by;
        if (event.accepted) step(by[event.key]);
    }
}
