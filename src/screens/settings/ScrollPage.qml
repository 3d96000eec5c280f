import QtQuick
import QtQuick.Controls.Basic
import Marlet

/// A column that is longer than its place: it scrolls, and goes to where the keyboard is.
Flickable {
    id: page

    default property alias content: column.data

    /// Brings an item into sight.
    function reveal(item: Item) {
        const top = item.mapToItem(column, 0, 0).y - Theme.s4;
        const bottom = top + item.height + 2 * Theme.s4;
        if (top < contentY) contentY = Math.max(0, top);
        else if (bottom > contentY + height) contentY = Math.max(0, Math.min(top, bottom - height));
    }
    function scrollBy(distance: real) {
        contentY = Math.max(0, Math.min(contentHeight - height, contentY + distance));
    }
    function holds(item: Item): bool {
        for (let each = item; each; each = each.parent) if (each === column) return true;
        return false;
    }

    readonly property Item focused: Window.activeFocusItem
    onFocusedChanged: if (focused && holds(focused)) reveal(focused)

    contentHeight: column.height
    clip: true
    boundsBehavior: Flickable.StopAtBounds
    flickableDirection: Flickable.VerticalFlick
    Keys.onPressed: event => {
        if (event.key === Qt.Key_PageUp) scrollBy(-height);
        else if (event.key === Qt.Key_PageDown) scrollBy(height);
        else if (event.key === Qt.Key_Up) scrollBy(-Theme.px(48));
        else if (event.key === Qt.Key_Down) scrollBy(Theme.px(48));
        else return;
        event.accepted = true;
    }
    ScrollBar.vertical: ScrollHandle {}

    Column {
        id: column
        // The handle lies beside the text, not on it.
        width: page.width - Theme.s3
        x: Theme.mirrored ? Theme.s3 : 0
        spacing: Theme.s4
        bottomPadding: Theme.s4
    }
}
