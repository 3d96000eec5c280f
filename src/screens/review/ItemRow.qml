import QtQuick
import Marlet

/// One film or season in Review. Kept light: thousands of them pass by.
Item {
    id: row

    required property int index
    required property string title
    required property string year
    required property string sign
    required property string verdict
    required property string line
    required property bool lineIsName
    required property string poster
    required property bool series
    required property string badge
    required property bool selected
    required property string spoken
    property bool current: false
    signal picked(int modifiers)
    signal opened()
    signal menuWanted(real x, real y)

    objectName: "item"
    implicitHeight: Math.max(64, Theme.px(64))
    Accessible.role: Accessible.ListItem
    Accessible.name: spoken
    Accessible.selectable: true
    Accessible.selected: selected
    Accessible.focusable: true
    Accessible.focused: current
    Accessible.onPressAction: picked(Qt.NoModifier)

    RowFrame {
        anchors { fill: parent; topMargin: 1; bottomMargin: 1 }
        selected: row.selected
        hovered: area.containsMouse
        focused: row.current
    }
    StateSymbol {
        id: symbol
        state: row.sign
        anchors { left: parent.left; leftMargin: Theme.s3; verticalCenter: parent.verticalCenter }
    }
    Poster {
        id: picture
        source: row.poster
        kind: row.series ? "episode" : "film"
        anchors { left: symbol.right; leftMargin: Theme.s3; verticalCenter: parent.verticalCenter }
    }
    Item {
        id: words
        height: parent.height
        anchors {
            left: picture.right; leftMargin: Theme.s3
            right: label.shown ? label.left : parent.right; rightMargin: Theme.s3
        }
        Words {
            id: name
            text: row.title
            kind: Words.RowTitle
            Accessible.ignored: true
            width: Math.min(implicitWidth, words.width - (row.year === "" ? 0 : when.implicitWidth + Theme.s2))
            anchors { left: parent.left; bottom: parent.verticalCenter; bottomMargin: 2 }
        }
        Words {
            id: when
            text: row.year
            kind: Words.Quiet
            Accessible.ignored: true
            anchors { left: name.right; leftMargin: Theme.s2; baseline: name.baseline }
        }
        Words {
            id: word
            text: row.verdict
            kind: Words.Small
            font.weight: Font.Medium
            color: row.sign === "ready" ? Theme.ready : row.sign === "look" ? Theme.look : Theme.ink
            Accessible.ignored: true
            anchors { left: parent.left; top: parent.verticalCenter; topMargin: 3 }
        }
        Words {
            text: row.line
            kind: Words.Small
            elide: row.lineIsName ? Text.ElideMiddle : Text.ElideRight
            Accessible.ignored: true
            anchors { left: word.right; leftMargin: Theme.s2; right: parent.right; baseline: word.baseline }
        }
    }
    Badge {
        id: label

        // The title comes first.
        readonly property bool shown: text !== "" && row.width > 3 * implicitWidth
        text: row.badge
        visible: shown
        silent: true
        anchors { right: parent.right; rightMargin: Theme.s3; verticalCenter: parent.verticalCenter }
    }
    MouseArea {
        id: area
        anchors.fill: parent
        hoverEnabled: true
        acceptedButtons: Qt.LeftButton | Qt.RightButton
        onClicked: mouse => mouse.button === Qt.RightButton ? row.menuWanted(mouse.x, mouse.y)
                                                            : row.picked(mouse.modifiers)
        onDoubleClicked: mouse => {
            if (mouse.button === Qt.LeftButton)
                row.opened();
        }
    }
}
