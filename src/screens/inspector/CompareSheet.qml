import QtQuick
import QtQuick.Controls.Basic
import Marlet

/// What is in the file now beside what will be written, covers included.
Sheet {
    id: sheet

    required property InspectorCompare model
    property string fileName
    /// Beside the labels there is no room for two columns: they stand below them.
    readonly property bool tight: list.width < Theme.px(500)
    readonly property int labelWidth: tight ? 0 : Theme.px(128)
    readonly property int columnsAt: tight ? 0 : labelWidth + Theme.s3

    title: qsTr("Before and After")
    footer: PushButton {
        objectName: "compareDone"
        text: qsTr("Done")
        primary: true
        onClicked: sheet.close()
    }
    onAboutToShow: list.atTop = true
    onOpened: {
        list.forceActiveFocus();
        list.contentY = list.originY;
    }

    ListView {
        id: list

        // What stands above the rows becomes higher as its words and covers come.
        property bool atTop: true
        readonly property real column: (width - sheet.columnsAt - Theme.s3) / 2

        objectName: "compareList"
        anchors.fill: parent
        clip: true
        focus: true
        currentIndex: -1
        spacing: 1
        boundsBehavior: Flickable.StopAtBounds
        model: sheet.model.fields
        onOriginYChanged: if (atTop) contentY = originY
        onMovementStarted: atTop = false
        ScrollBar.vertical: ScrollHandle {}
        Accessible.role: Accessible.Table
        Accessible.name: sheet.model.head
        Keys.onUpPressed: flick(0, 900)
        Keys.onDownPressed: {
            atTop = false;
            flick(0, -900);
        }

        header: Column {
            width: list.width
            spacing: Theme.s3
            bottomPadding: Theme.s3

            Words {
                width: parent.width
                text: sheet.fileName
                kind: Words.Quiet
                elide: Text.ElideMiddle
            }
            Words {
                objectName: "compareHead"
                width: parent.width
                text: sheet.model.head
                kind: Words.Heading
                wrapMode: Text.Wrap
            }
            Row {
                width: parent.width
                spacing: Theme.s3
                Item {
                    visible: !sheet.tight
                    width: sheet.labelWidth
                    height: 1
                }
                CompareCover {
                    objectName: "coverBefore"
                    width: list.column
                    heading: sheet.model.left
                    source: sheet.model.coverBefore
                    wide: sheet.model.wide
                }
                CompareCover {
                    objectName: "coverAfter"
                    width: list.column
                    heading: sheet.model.right
                    source: sheet.model.coverAfter
                    wide: sheet.model.wide
                    words: sheet.model.coverWords
                }
            }
        }
        delegate: Rectangle {
            id: row

            required property int index
            required property string label
            required property string before
            required property string after
            required property bool differs
            required property string spoken

            objectName: "compare" + index
            width: list.width
            height: lines.y + Math.max(sheet.tight ? 0 : name.implicitHeight, old.implicitHeight, fresh.implicitHeight) + Theme.s2
            radius: 6
            color: differs ? Theme.tint(Theme.accent, 0.07) : "transparent"
            Accessible.role: Accessible.Row
            Accessible.name: spoken

            Rectangle {
                visible: row.differs
                anchors { left: parent.left; leftMargin: Theme.s2 - 2 }
                y: Theme.s2 + Math.round(Theme.body * 0.5)
                width: 6
                height: 6
                radius: 3
                color: Theme.accent
            }
            Words {
                id: name
                anchors { left: parent.left; leftMargin: Theme.s2 + 10 }
                y: Theme.s2
                width: (sheet.tight ? row.width : sheet.labelWidth) - Theme.s2 - 10
                text: row.label
                Accessible.ignored: true
                kind: Words.Small
                wrapMode: Text.Wrap
                color: row.differs ? Theme.ink : Theme.quiet
            }
            Row {
                id: lines
                anchors { left: parent.left; leftMargin: sheet.tight ? Theme.s2 : sheet.columnsAt }
                y: sheet.tight ? name.y + name.height + 2 : Theme.s2
                spacing: Theme.s3
                Words {
                    id: old
                    width: list.column - (sheet.tight ? Theme.s2 : 0)
                    text: row.before === "" ? "–" : row.before
                    kind: Words.Quiet
                    wrapMode: Text.Wrap
                    maximumLineCount: 8
                    Accessible.ignored: true
                }
                Words {
                    id: fresh
                    width: list.column - Theme.s2
                    text: row.after === "" ? "–" : row.after
                    color: row.differs ? Theme.ink : Theme.quiet
                    wrapMode: Text.Wrap
                    maximumLineCount: 8
                    Accessible.ignored: true
                }
            }
        }
        footer: Words {
            objectName: "compareFoot"
            width: list.width
            topPadding: Theme.s3
            text: sheet.model.foot
            kind: Words.Small
            wrapMode: Text.Wrap
        }
    }
}
