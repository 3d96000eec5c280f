import QtQuick
import QtQuick.Controls.Basic
import Marlet

/// One of a few, in a list that opens.
Column {
    id: choice

    property string label
    property var model
    property int currentIndex: 0
    property string textRole
    property alias box: box
    signal chosen(int index)

    spacing: Theme.s1
    onCurrentIndexChanged: box.currentIndex = currentIndex

    FieldLabel { visible: choice.label !== ""; text: choice.label }
    ComboBox {
        id: box

        width: choice.width
        implicitHeight: Theme.control
        implicitWidth: Theme.px(200)
        model: choice.model
        textRole: choice.textRole
        currentIndex: choice.currentIndex
        font.family: Theme.family
        font.pixelSize: Theme.body
        onActivated: index => choice.chosen(index)
        onModelChanged: currentIndex = choice.currentIndex
        Accessible.name: choice.label
        Accessible.onPressAction: box.popup.open()
        background: FieldFrame { focused: box.visualFocus }
        contentItem: Words {
            readonly property int arrow: Theme.px(16) + 2 * Theme.s2
            leftPadding: box.mirrored ? arrow : Theme.s2
            rightPadding: box.mirrored ? Theme.s2 : arrow
            text: box.displayText
            Accessible.ignored: true
            verticalAlignment: Text.AlignVCenter
            color: box.enabled ? Theme.ink : Theme.disabled
        }
        indicator: Glyph {
            name: "chevronDown"
            size: Theme.px(16)
            color: Theme.quiet
            x: box.mirrored ? Theme.s2 : box.width - width - Theme.s2
            anchors.verticalCenter: parent.verticalCenter
        }
        delegate: ItemDelegate {
            id: entry

            required property int index
            required property var modelData

            width: box.width - 2
            implicitHeight: Theme.control
            text: choice.textRole !== "" ? entry.modelData[choice.textRole] : entry.modelData
            highlighted: box.highlightedIndex === index
            Accessible.name: text
            Accessible.onPressAction: entry.clicked()
            contentItem: Words {
                text: entry.text
                Accessible.ignored: true
                verticalAlignment: Text.AlignVCenter
            }
            background: Rectangle { color: entry.highlighted ? Theme.selected : "transparent"; radius: 4 }
        }
        popup: Popup {
            y: box.height + 2
            width: box.width
            implicitHeight: Math.min(list.contentHeight + 2, Theme.px(360))
            padding: 1
            contentItem: ListView {
                id: list
                clip: true
                implicitHeight: contentHeight
                model: box.popup.visible ? box.delegateModel : null
                currentIndex: box.highlightedIndex
                ScrollBar.vertical: ScrollHandle {}
            }
            background: Rectangle { color: Theme.raised; radius: 6; border.color: Theme.hairline }
        }
    }
}
