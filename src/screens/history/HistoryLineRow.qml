import QtQuick
import Marlet

/// One row of History; opened, it tells the details and what can be done.
Item {
    id: row

    required property int index
    required property string key
    required property string title
    required property string sub
    required property string line
    required property string time
    required property string kind
    required property string poster
    required property string otherPoster
    required property bool open
    required property list<string> details
    required property int restorable
    required property string spoken
    readonly property bool current: ListView.isCurrentItem && ListView.view.activeFocus
    signal menuAsked(real x, real y)
    signal restoreAsked()

    function take() {
        ListView.view.currentIndex = index;
        ListView.view.forceActiveFocus(Qt.MouseFocusReason);
    }
    function toggle() { App.history.toggle(key); }
    function askMenu() { menuAsked(Theme.mirrored ? width - Theme.s6 : Theme.s6, Math.min(height, Theme.px(56))); }

    objectName: "historyRow" + index
    width: ListView.view.width
    implicitHeight: head.height + (open ? more.implicitHeight + Theme.s3 : 0)
    Accessible.role: Accessible.ListItem
    Accessible.name: spoken
    Accessible.selectable: true
    Accessible.selected: current
    Accessible.focusable: true
    Accessible.focused: current
    Accessible.onPressAction: {
        take();
        toggle();
    }

    RowFrame {
        anchors.fill: parent
        selected: row.current
        focused: row.current
        hovered: over.hovered
        color: selected ? Theme.selected : row.open ? Theme.hover : hovered ? Theme.hover : "transparent"
    }
    HoverHandler { id: over }
    TapHandler {
        acceptedButtons: Qt.RightButton
        onTapped: eventPoint => row.menuAsked(eventPoint.position.x, eventPoint.position.y)
    }

    Item {
        id: head

        width: parent.width
        height: Math.max(Theme.px(64), texts.implicitHeight + 2 * Theme.s2)
        TapHandler {
            onTapped: {
                row.take();
                row.toggle();
            }
        }
        StateSymbol {
            id: symbol
            state: row.kind
            anchors { left: parent.left; leftMargin: Theme.s3; verticalCenter: parent.verticalCenter }
        }
        Poster {
            id: picture
            source: row.poster
            otherSource: row.otherPoster
            anchors { left: symbol.right; leftMargin: Theme.s3; verticalCenter: parent.verticalCenter }
        }
        Column {
            id: texts
            spacing: 2
            anchors { left: picture.right; right: when.left; leftMargin: Theme.s3; rightMargin: Theme.s3; verticalCenter: parent.verticalCenter }
            Row {
                width: parent.width
                spacing: Theme.s2
                Words {
                    id: name
                    objectName: "historyTitle"
                    text: row.title
                    Accessible.ignored: true
                    kind: Words.RowTitle
                    width: Math.min(implicitWidth, parent.width - (about.visible ? Math.min(about.implicitWidth, 160) + Theme.s2 : 0))
                }
                Words {
                    id: about
                    objectName: "historySub"
                    visible: text !== ""
                    text: row.sub
                    Accessible.ignored: true
                    kind: Words.Quiet
                    width: Math.min(implicitWidth, parent.width - name.width - Theme.s2)
                    anchors.baseline: name.baseline
                }
            }
            Words {
                objectName: "historyText"
                width: parent.width
                text: row.line
                Accessible.ignored: true
                kind: Words.Quiet
                color: row.kind === "failed" ? Theme.failed : Theme.quiet
                maximumLineCount: 2
                wrapMode: Text.Wrap
            }
        }
        Words {
            id: when
            objectName: "historyTime"
            text: row.time
            Accessible.ignored: true
            kind: Words.Small
            anchors { right: arrow.left; rightMargin: Theme.s2; verticalCenter: parent.verticalCenter }
        }
        Glyph {
            id: arrow
            name: row.open ? "chevronUp" : "chevronDown"
            size: Theme.px(16)
            color: Theme.quiet
            anchors { right: parent.right; rightMargin: Theme.s3; verticalCenter: parent.verticalCenter }
        }
    }
    Loader {
        id: more

        active: row.open
        anchors { top: head.bottom; left: parent.left; right: parent.right; rightMargin: Theme.s3 }
        anchors.leftMargin: Theme.mirrored ? head.width - texts.x - texts.width : texts.x
        sourceComponent: HistoryDetails {
            details: row.details
            restorable: row.restorable
            onShowAsked: App.desktop.showInFolder(App.history.filesOf(row.key))
            onAgainAsked: App.history.tryAgain(row.key)
            onRestoreAsked: row.restoreAsked()
        }
    }
}
