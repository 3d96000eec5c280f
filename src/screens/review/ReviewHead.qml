import QtQuick
import Marlet

/// The search and the filter above the list.
FocusScope {
    id: head

    /// The person goes on to the list.
    signal doneSearching()

    function find() {
        search.forceActiveFocus(Qt.ShortcutFocusReason);
        search.selectAll();
    }

    readonly property string query: App.review.query
    onQueryChanged: {
        if (search.text !== query)
            search.text = query;
    }

    /// Beside the filter there is no room for a search.
    readonly property bool tight: filter.implicitWidth + found.width + Theme.px(140) + 4 * Theme.s4 > width

    implicitHeight: (tight ? Theme.control + Theme.s2 + filter.height : Theme.control) + Theme.s3

    SearchBox {
        id: search
        objectName: "reviewSearch"
        prompt: qsTr("Search Review")
        onEdited: value => App.review.setQuery(value)
        Keys.onReturnPressed: head.doneSearching()
        Keys.onEnterPressed: head.doneSearching()
        Keys.onDownPressed: head.doneSearching()
        width: head.tight ? head.width - 2 * Theme.s4
             : Math.min(Theme.px(360), head.width - filter.implicitWidth - found.width - 4 * Theme.s4)
        anchors { left: parent.left; leftMargin: Theme.s4; top: parent.top }
    }
    Segments {
        id: filter
        objectName: "reviewFilter"
        label: qsTr("Which rows are shown")
        model: [qsTr("All"), qsTr("Need a look"), qsTr("Ready")]
        current: App.review.filter
        onChosen: index => App.review.setFilter(index)
        width: Math.min(implicitWidth, head.width - 2 * Theme.s4 - (found.text === "" ? 0 : found.width + Theme.s3))
        anchors {
            right: found.left; rightMargin: found.text === "" ? 0 : Theme.s3
            top: parent.top; topMargin: head.tight ? Theme.control + Theme.s2 : 0
        }
    }
    Words {
        id: found
        objectName: "reviewFound"
        text: App.review.found
        kind: Words.Small
        anchors { right: parent.right; rightMargin: Theme.s4; verticalCenter: filter.verticalCenter }
    }
}
