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
    property string spoken: count  ///< the count as it is read aloud
    property bool stacked: false   ///< the words stand below the symbol
    readonly property bool on: App.tab === page

    width: parent ? parent.width : 0
    onClicked: App.tab = page
    implicitHeight: Math.max(Theme.px(48), contentItem.implicitHeight + 2 * padding)
    padding: Theme.s2
    Accessible.role: Accessible.PageTab
    Accessible.name: spoken === "" ? name : name + ", " + spoken
    Accessible.selectable: true
    Accessible.selected: on
    // To this Qt each control is a button: then that it is on shows as checked.
    Accessible.checkable: true
    Accessible.checked: on
    Accessible.onPressAction: tab.clicked()
    Keys.onReturnPressed: clicked()

    background: RowFrame {
        selected: tab.on
        hovered: tab.hovered
        FocusRing { shown: tab.visualFocus; anchors.margins: 0 }
    }
    contentItem: Item {
        implicitHeight: texts.height + (tab.stacked ? symbol.height + Theme.s1 : 0)
        Glyph {
            id: symbol
            name: tab.glyph
            size: Theme.px(20)
            color: tab.on ? Theme.accent : Theme.quiet
            x: tab.stacked ? (parent.width - width) / 2
             : Theme.mirrored ? parent.width - width - Theme.s1 : Theme.s1
            y: tab.stacked ? 0 : (parent.height - height) / 2
        }
        Column {
            id: texts
            readonly property real before: tab.stacked ? 0 : symbol.width + Theme.s1 + Theme.s3
            x: Theme.mirrored ? 0 : before
            y: tab.stacked ? symbol.height + Theme.s1 : (parent.height - height) / 2
            width: parent.width - before
            Words {
                width: parent.width
                text: tab.name
                horizontalAlignment: tab.stacked ? Text.AlignHCenter : Text.AlignLeft
                Accessible.ignored: true
                font.weight: tab.on ? Font.DemiBold : Font.Medium
            }
            Words {
                width: parent.width
                visible: text !== ""
                text: tab.count
                horizontalAlignment: tab.stacked ? Text.AlignHCenter : Text.AlignLeft
                wrapMode: tab.stacked ? Text.Wrap : Text.NoWrap
                Accessible.ignored: true
                kind: Words.Small
            }
        }
    }
}
