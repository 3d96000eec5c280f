import QtQuick
import QtQuick.Controls.Basic
import Marlet

/// A message that stays until it is closed, above the content. It grows with its words to four
/// tenths of the window; what is longer scrolls, by keyboard too.
Rectangle {
    id: bar

    property string text
    property string glyph: "info"
    property color tone: Theme.accent
    property bool closable: true
    default property alias buttons: extra.data
    signal closed()

    readonly property real mostHeight: Math.max(Theme.px(60), (Window.height > 0 ? Window.height : 600) * 0.4)
    readonly property real upper: Math.max(scroll.height, Theme.control)
    /// Where buttons leave the words no room, they stand below them.
    readonly property bool tight: extra.width > 0
        && width - extra.width - symbol.width - shut.width - 3 * Theme.s4 < Theme.px(200)

    visible: text !== ""
    implicitHeight: visible ? upper + 2 * Theme.s2 + (tight ? extra.height + Theme.s2 : 0) : 0
    color: Theme.tint(tone, 0.1)
    Accessible.role: Accessible.AlertMessage
    Accessible.name: text

    Glyph {
        id: symbol
        name: bar.glyph
        color: bar.tone
        size: Theme.px(18)
        y: Theme.s2 + (bar.upper - height) / 2
        anchors { left: parent.left; leftMargin: Theme.s4 }
    }
    Flickable {
        id: scroll

        readonly property bool scrolls: words.implicitHeight > height + 1

        function scrollBy(distance: real) {
            contentY = Math.max(0, Math.min(contentHeight - height, contentY + distance));
        }

        objectName: "noticeWords"
        y: Theme.s2 + (bar.upper - height) / 2
        height: Math.min(words.implicitHeight, bar.mostHeight)
        anchors {
            left: symbol.right; right: bar.tight ? shut.left : extra.left
            leftMargin: Theme.s2; rightMargin: Theme.s3
        }
        contentHeight: words.implicitHeight
        clip: true
        interactive: scrolls
        boundsBehavior: Flickable.StopAtBounds
        activeFocusOnTab: scrolls || activeFocus
        onScrollsChanged: if (!scrolls && activeFocus) nextItemInFocusChain().forceActiveFocus(Qt.TabFocusReason)
        ScrollBar.vertical: ScrollHandle {}
        Accessible.ignored: !scrolls
        Accessible.role: Accessible.Pane
        Accessible.name: bar.text
        Keys.onUpPressed: scrollBy(-Theme.px(24))
        Keys.onDownPressed: scrollBy(Theme.px(24))
        Keys.onPressed: event => {
            if (event.key === Qt.Key_PageUp) scrollBy(-height);
            else if (event.key === Qt.Key_PageDown) scrollBy(height);
            else if (event.key === Qt.Key_Home) scrollBy(-contentHeight);
            else if (event.key === Qt.Key_End) scrollBy(contentHeight);
            else return;
            event.accepted = true;
        }
        Words {
            id: words
            // The handle lies beside the words; whether it is there doesn't move them.
            width: scroll.width - Theme.s3
            x: Theme.mirrored ? Theme.s3 : 0
            text: bar.text
            wrapMode: Text.Wrap
            Accessible.ignored: true
        }
    }
    FocusRing {
        anchors.fill: scroll
        shown: scroll.activeFocus
        radius: 4
    }
    Row {
        id: extra
        spacing: Theme.s2
        y: bar.tight ? bar.upper + 2 * Theme.s2 : Theme.s2 + (bar.upper - height) / 2
        anchors { right: bar.tight ? bar.right : shut.left; rightMargin: bar.tight ? Theme.s3 : Theme.s2 }
    }
    IconButton {
        id: shut
        objectName: "noticeClose"
        visible: bar.closable
        width: visible ? implicitWidth : 0
        glyph: "cross"
        help: qsTr("Close this message")
        y: Theme.s2 + (bar.upper - height) / 2
        anchors { right: parent.right; rightMargin: Theme.s3 }
        onClicked: bar.closed()
    }
}
