import QtQuick
import QtQuick.Controls.Basic
import Marlet

/// One tab: symbol, name, and quietly under it how much is in there.
AbstractButton {
    id: tab

    property int page
    property string name
    property string glyph
    property string count
    readonly property bool on: App.tab === page

    width: parent ? parent.width : 0
    onClicked: App.tab = page
    implicitHeight: Theme.px(48)
    padding: Theme.s2
    Accessible.role: Accessible.PageTab
    Accessible.name: count === "" ? name : name + ", " + count
    Accessible.selected: on
    Keys.onReturnPressed: clicked()

    background: RowFrame {
        selected: tab.on
        hovered: tab.hovered
        FocusRing { shown: tab.visualFocus; anchors.margins: 0 }
    }
    contentItem: Item {
        Glyph {
            id: symbol
            name: tab.glyph
            size: Theme.px(20)
            color: tab.on ? Theme.accent : Theme.quiet
            anchors { left: parent.left; leftMargin: Theme.s1; verticalCenter: parent.verticalCenter }
        }
        Column {
            anchors { left: symbol.right; leftMargin: Theme.s3; right: parent.right; verticalCenter: parent.verticalCenter }
            Words {
                width: parent.width
                text: tab.name
                font.weight: tab.on ? Font.DemiBold : Font.Medium
            }
            Words {
                width: parent.width
                visible: text !== ""
                text: tab.count
                kind: Words.Small
            }
        }
    }
}
