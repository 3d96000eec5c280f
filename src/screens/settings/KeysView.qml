import QtQuick
import QtQuick.Controls.Basic
import Marlet

/// All keys, by where they hold.
Sheet {
    id: sheet

    title: qsTr("Keys")
    onAboutToShow: list.positionViewAtBeginning()
    onOpened: list.forceActiveFocus(Qt.TabFocusReason)

    ListView {
        id: list

        function scrollBy(distance: real) {
            contentY = Math.max(originY, Math.min(originY + contentHeight - height, contentY + distance));
        }

        objectName: "keyList"
        anchors.fill: parent
        clip: true
        focus: true
        activeFocusOnTab: true
        boundsBehavior: Flickable.StopAtBounds
        cacheBuffer: 4000
        keyNavigationEnabled: false
        model: App.settings.keys
        Accessible.role: Accessible.List
        Accessible.name: sheet.title
        ScrollBar.vertical: ScrollHandle {}
        Keys.onPressed: event => {
            if (event.key === Qt.Key_Up) scrollBy(-Theme.px(48));
            else if (event.key === Qt.Key_Down) scrollBy(Theme.px(48));
            else if (event.key === Qt.Key_PageUp) scrollBy(-height);
            else if (event.key === Qt.Key_PageDown) scrollBy(height);
            else if (event.key === Qt.Key_Home) scrollBy(-contentHeight);
            else if (event.key === Qt.Key_End) scrollBy(contentHeight);
            else return;
            event.accepted = true;
        }
        section.property: "place"
        section.delegate: SectionHeading {
            required property string section
            text: section
            color: Theme.ink
            font.pixelSize: Theme.body
            topPadding: Theme.s3
        }
        delegate: Item {
            id: row

            required property int index
            required property list<string> caps
            required property string does
            required property string spoken

            objectName: "key" + index
            width: ListView.view ? ListView.view.width - Theme.s3 : 0
            x: Theme.mirrored ? Theme.s3 : 0
            height: Math.max(Theme.px(30), does.implicitHeight + Theme.s1)
            Accessible.role: Accessible.ListItem
            Accessible.name: spoken

            Row {
                id: caps
                anchors { left: parent.left; verticalCenter: parent.verticalCenter }
                width: Theme.px(176)
                spacing: Theme.s1
                Repeater {
                    model: row.caps
                    delegate: Rectangle {
                        required property string modelData
                        width: Math.max(height, cap.implicitWidth + 2 * Theme.s2)
                        height: Theme.px(22)
                        radius: Theme.s1
                        color: Theme.dark ? Theme.raised : Theme.card
                        border.color: Theme.tint(Theme.ink, 0.18)
                        Words {
                            id: cap
                            anchors.centerIn: parent
                            text: parent.modelData
                            kind: Words.Small
                            color: Theme.ink
                            Accessible.ignored: true
                        }
                    }
                }
            }
            Words {
                id: does
                wrapMode: Text.Wrap
                Accessible.ignored: true
                anchors { left: caps.right; right: parent.right; verticalCenter: parent.verticalCenter }
                text: row.does
            }
        }
    }
}
