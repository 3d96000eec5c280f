import QtQuick
import QtQuick.Controls.Basic
import Marlet

/// The files of a season; the chosen one is what the pages show.
Rectangle {
    id: frame

    required property InspectorModel model
    readonly property int count: list.count
    readonly property int rowHeight: Theme.px(30)

    implicitHeight: Math.min(list.count, 6.5) * rowHeight + 2 * Theme.s1
    radius: Theme.radius
    color: Theme.card
    border.color: list.activeFocus ? Theme.accent : Theme.hairline
    border.width: list.activeFocus ? 2 : 1

    ListView {
        id: list

        objectName: "episodes"
        anchors { fill: parent; margins: Theme.s1 }
        clip: true
        activeFocusOnTab: true
        boundsBehavior: Flickable.StopAtBounds
        model: frame.model.episodes
        // The model tells which one it is; a person's keys ask it for another.
        currentIndex: frame.model.episode
        keyNavigationEnabled: false
        highlightFollowsCurrentItem: true
        highlightMoveDuration: 0
        highlight: null
        ScrollBar.vertical: ScrollHandle {}
        Accessible.role: Accessible.List
        Accessible.name: qsTr("Episodes")
        Keys.onUpPressed: frame.model.chooseEpisode(Math.max(0, frame.model.episode - 1))
        Keys.onDownPressed: frame.model.chooseEpisode(Math.min(count - 1, frame.model.episode + 1))
        Keys.onPressed: event => {
            if (event.key === Qt.Key_Home) frame.model.chooseEpisode(0);
            else if (event.key === Qt.Key_End) frame.model.chooseEpisode(count - 1);
            else return;
            event.accepted = true;
        }
        onCurrentIndexChanged: positionViewAtIndex(currentIndex, ListView.Contain)

        delegate: Item {
            id: row

            required property int index
            required property string title
            required property string state
            required property string verdict
            readonly property bool on: frame.model.episode === index

            objectName: "episode" + index
            width: ListView.view.width
            height: frame.rowHeight
            Accessible.role: Accessible.ListItem
            Accessible.name: title + ", " + verdict
            Accessible.selectable: true
            Accessible.selected: on
            Accessible.focusable: true
            Accessible.focused: on && list.activeFocus
            Accessible.onPressAction: take()

            function take() {
                list.forceActiveFocus();
                frame.model.chooseEpisode(index);
            }

            RowFrame {
                anchors.fill: parent
                radius: 6
                selected: row.on
                hovered: over.hovered
            }
            StateSymbol {
                id: symbol
                state: row.state
                size: Theme.px(14)
                anchors { left: parent.left; leftMargin: Theme.s2; verticalCenter: parent.verticalCenter }
            }
            Words {
                anchors {
                    left: symbol.right; right: parent.right; leftMargin: Theme.s2; rightMargin: Theme.s2
                    verticalCenter: parent.verticalCenter
                }
                text: row.title
                Accessible.ignored: true
            }
            HoverHandler { id: over }
            TapHandler {
                onTapped: row.take()
            }
        }
    }
}
