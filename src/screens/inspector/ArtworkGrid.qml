import QtQuick
import Marlet

/// Pictures side by side; arrow keys go through them, Space takes one.
GridView {
    id: grid

    required property InspectorArtwork artwork
    readonly property int gap: Theme.s2
    readonly property int columns: Math.max(2, Math.floor(width / Theme.px(artwork.wide ? 168 : 112)))
    readonly property Item focused: activeFocus ? currentItem : null
    signal reached(Item cell)

    objectName: "artworkGrid"
    implicitHeight: contentHeight
    interactive: false
    keyNavigationEnabled: true
    activeFocusOnTab: true
    cellWidth: Math.floor(width / columns)
    cellHeight: Math.round((cellWidth - gap) * (artwork.wide ? 9 / 16 : 3 / 2)) + gap
    model: artwork.options
    highlight: null
    onActiveFocusChanged: if (activeFocus) currentIndex = Math.max(0, artwork.chosen)
    onFocusedChanged: if (focused) reached(focused)
    Accessible.role: Accessible.List
    Accessible.name: qsTr("Artwork")
    Keys.onSpacePressed: artwork.pick(currentIndex)
    Keys.onReturnPressed: artwork.pick(currentIndex)
    Keys.onEnterPressed: artwork.pick(currentIndex)

    delegate: Item {
        id: cell

        required property int index
        required property string picture
        required property string label
        required property string spoken
        required property bool chosen
        readonly property bool current: grid.activeFocus && grid.currentIndex === index

        objectName: "artwork" + index
        width: grid.cellWidth
        height: grid.cellHeight
        Accessible.role: Accessible.RadioButton
        Accessible.name: spoken
        Accessible.checkable: true
        Accessible.checked: chosen
        Accessible.focusable: true
        Accessible.focused: current
        Accessible.onPressAction: take()

        function take() {
            grid.forceActiveFocus();
            grid.currentIndex = index;
            grid.artwork.pick(index);
        }

        Item {
            id: frame
            width: cell.width - grid.gap
            height: cell.height - grid.gap

            Poster {
                anchors.fill: parent
                source: cell.picture
                kind: "image"
                // The one in the file may have any shape.
                crop: cell.index > 0 || cell.label === ""
            }
            Rectangle {
                visible: cell.label !== ""
                anchors { left: parent.left; right: parent.right; bottom: parent.bottom }
                height: name.implicitHeight + 6
                color: Theme.veil
                Words {
                    id: name
                    anchors.centerIn: parent
                    width: parent.width - Theme.s2
                    horizontalAlignment: Text.AlignHCenter
                    text: cell.label
                    kind: Words.Small
                    color: Theme.veilInk
                    Accessible.ignored: true
                }
            }
            Rectangle {
                anchors { fill: parent; margins: -2 }
                radius: Theme.posterRadius + 2
                color: over.hovered && !cell.chosen ? Theme.hover : "transparent"
                border.width: cell.chosen ? 3 : cell.current ? 2 : over.hovered ? 1 : 0
                border.color: cell.chosen || cell.current ? Theme.accent : Theme.quiet
            }
            Rectangle {
                anchors { fill: parent; margins: -5 }
                visible: cell.current && cell.chosen
                radius: Theme.posterRadius + 5
                color: "transparent"
                border.width: 1
                border.color: Theme.accent
            }
            Rectangle {
                visible: cell.chosen
                anchors { right: parent.right; top: parent.top; margins: 6 }
                width: Theme.px(22)
                height: width
                radius: width / 2
                color: Theme.accent
                Glyph { anchors.centerIn: parent; name: "check"; size: Theme.px(14); color: Theme.accentInk }
            }
            HoverHandler { id: over; cursorShape: Qt.PointingHandCursor }
            TapHandler {
                onTapped: cell.take()
            }
        }
    }
}
