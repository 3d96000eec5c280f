import QtQuick
import Marlet

/// One job: what it is, how it stands, and when it has ended otherwise than well, why and what next.
Item {
    id: row

    required property int index
    required property string key
    required property string label
    required property string second
    required property string kind
    required property string word
    required property double fraction
    required property string happened
    required property string next
    required property string technical
    required property bool damaged
    required property bool open
    required property string spoken
    readonly property bool current: ListView.isCurrentItem && ListView.view.activeFocus
    signal menuAsked(real x, real y)

    /// Said at quarters, like all progress.
    readonly property string far: kind === "running" ? qsTr("%1 %").arg(25 * Math.floor(4 * fraction)) : ""

    function toggle() { App.queue.toggle(key); }
    function remove() { if (kind === "waiting") App.queue.remove(key); }
    function askMenu() { menuAsked(Theme.mirrored ? width - Theme.s6 : Theme.s6, height - Theme.s2); }
    function take() {
        ListView.view.currentIndex = index;
        ListView.view.forceActiveFocus(Qt.MouseFocusReason);
    }

    width: ListView.view.width
    implicitHeight: Math.max(Theme.px(52), texts.implicitHeight + 2 * Theme.s2)
    objectName: "job" + index
    Accessible.role: Accessible.ListItem
    Accessible.name: far === "" ? spoken : qsTr("%1, %2").arg(spoken).arg(far)
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
        color: row.damaged ? Theme.tint(Theme.failed, selected ? 0.16 : 0.1)
             : selected ? Theme.selected : hovered ? Theme.hover : "transparent"
    }
    HoverHandler { id: over }
    TapHandler {
        onTapped: row.take()
    }
    TapHandler {
        acceptedButtons: Qt.RightButton
        onTapped: eventPoint => row.menuAsked(eventPoint.position.x, eventPoint.position.y)
    }

    StateSymbol {
        id: symbol
        state: row.kind === "cancelled" ? "skipped" : row.kind
        anchors { left: parent.left; leftMargin: Theme.s3; top: texts.top; topMargin: 1 }
    }
    Column {
        id: texts

        anchors { left: symbol.right; right: side.left; leftMargin: Theme.s3; rightMargin: Theme.s3 }
        y: Math.max(Theme.s2, (row.height - implicitHeight) / 2)
        spacing: 2

        Words {
            objectName: "jobLabel"
            width: parent.width
            text: row.label
            Accessible.ignored: true
            font.weight: Font.DemiBold
        }
        // One line where there is room for both.
        Flow {
            visible: row.happened !== ""
            width: parent.width
            spacing: Theme.s2
            Words {
                objectName: "jobHappened"
                width: row.damaged ? parent.width : Math.min(Math.ceil(implicitWidth), parent.width)
                text: row.happened
                Accessible.ignored: true
                color: row.kind === "failed" ? Theme.failed : Theme.ink
                font.weight: row.damaged ? Font.DemiBold : Font.Normal
                wrapMode: Text.Wrap
            }
            Words {
                objectName: "jobNext"
                width: Math.min(Math.ceil(implicitWidth), parent.width)
                text: row.next
                Accessible.ignored: true
                kind: row.damaged ? Words.Body : Words.Quiet
                wrapMode: Text.Wrap
            }
        }
        Words {
            objectName: "jobSecond"
            visible: text !== "" && row.kind !== "cancelled"
            width: parent.width
            text: row.second
            Accessible.ignored: true
            kind: Words.Small
        }
        ProgressLine {
            objectName: "jobProgress"
            visible: row.kind === "running"
            width: parent.width
            implicitHeight: 3
            label: row.label
            value: row.fraction
        }
        Disclosure {
            // Rows of what went well stay low: a symbol at their end opens them.
            visible: row.technical !== "" && (row.kind !== "done" || row.open)
            width: parent.width
            text: qsTr("Technical details")
            content: row.technical
            open: row.open
            onToggled: row.toggle()
        }
    }
    Item {
        id: side

        readonly property bool removable: row.kind === "waiting" && App.queue.stage === "waiting"

        width: removable ? away.width : words.implicitWidth + (more.visible ? more.width + Theme.s1 : 0)
        height: Theme.control
        anchors { right: parent.right; rightMargin: Theme.s3; top: parent.top; topMargin: (Theme.px(52) - height) / 2 }
        IconButton {
            id: away
            objectName: "jobAway"
            visible: side.removable
            glyph: "cross"
            tone: Theme.quiet
            help: qsTr("Remove from the queue")
            Accessible.name: qsTr("Remove %1 from the queue").arg(row.label)
            focusPolicy: Qt.NoFocus
            onClicked: row.remove()
        }
        IconButton {
            id: more
            objectName: "jobMore"
            visible: row.kind === "done" && row.technical !== "" && !row.open
            anchors { right: words.left; rightMargin: Theme.s1 }
            glyph: "chevronRight"
            tone: Theme.quiet
            help: qsTr("Technical details")
            focusPolicy: Qt.NoFocus
            onClicked: row.toggle()
        }
        Words {
            id: words
            objectName: "jobWord"
            visible: !side.removable
            anchors { right: parent.right; verticalCenter: parent.verticalCenter }
            text: row.kind === "running" ? qsTr("%1 %").arg(Math.floor(100 * row.fraction)) : row.word
            kind: Words.Small
            Accessible.ignored: true
            color: row.kind === "failed" ? Theme.failed : row.kind === "done" ? Theme.ready : Theme.quiet
        }
    }
}
