import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts
import Marlet

/// Which one is this? A tab for each source, and the form for what no source has.
Sheet {
    id: sheet

    readonly property bool wanted: App.picker.open
    readonly property PickerPane pane: App.picker.pane
    readonly property bool byHand: App.picker.hand.open

    objectName: "matchPicker"
    title: byHand ? qsTr("Tag it by hand") : qsTr("Which one is this?")
    closePolicy: Popup.NoAutoClose
    onWantedChanged: wanted ? open() : close()
    onAboutToHide: if (wanted) App.picker.close()

    Words {
        id: file
        objectName: "pickerFile"
        anchors { left: parent.left; right: length.left; top: parent.top; rightMargin: Theme.s2 }
        text: App.picker.fileName
        kind: Words.Quiet
        elide: Text.ElideMiddle
    }
    Words {
        id: length
        objectName: "pickerLength"
        anchors { right: parent.right; top: parent.top }
        text: App.picker.fileFacts
        kind: Words.Quiet
    }

    GridLayout {
        id: tabs
        readonly property bool tight: places.implicitWidth + kinds.implicitWidth + columnSpacing > width
        anchors { left: parent.left; right: parent.right; top: file.bottom; topMargin: Theme.s3 }
        visible: !sheet.byHand
        height: visible ? implicitHeight : 0
        columns: tight ? 1 : 3
        columnSpacing: Theme.s3
        rowSpacing: Theme.s2
        Segments {
            id: places
            Layout.fillWidth: true
            Layout.maximumWidth: implicitWidth
            objectName: "pickerTabs"
            visible: model.length > 1
            label: qsTr("Where to look")
            model: App.picker.tabs
            current: App.picker.tab
            onChosen: index => App.picker.setTab(index)
        }
        Item { visible: !tabs.tight; Layout.fillWidth: true }
        Segments {
            id: kinds
            Layout.fillWidth: true
            Layout.maximumWidth: implicitWidth
            objectName: "pickerKind"
            label: qsTr("What it is")
            model: [qsTr("Movie"), qsTr("TV show")]
            current: sheet.pane.tv ? 1 : 0
            onChosen: index => sheet.pane.setTV(index === 1)
        }
    }

    Loader {
        id: page
        focus: true
        anchors {
            left: parent.left; right: parent.right; bottom: parent.bottom
            top: sheet.byHand ? file.bottom : tabs.bottom
            topMargin: Theme.s3
        }
        active: sheet.visible
        sourceComponent: sheet.byHand ? hand : sheet.pane.database ? database : shop
    }
    Component {
        id: database
        PickerPage { pane: App.picker.pane }
    }
    Component {
        id: shop
        ExternalPickerPane { pane: App.picker.pane }
    }
    Component {
        id: hand
        HandPage { form: App.picker.hand }
    }

    footer: GridLayout {
        id: foot
        readonly property bool tight: (sheet.byHand ? 0 : link.implicitWidth) + answers.implicitWidth + Theme.px(120) > width
        width: sheet.width - 2 * Theme.s4
        columns: tight ? 1 : 2
        columnSpacing: Theme.s2
        rowSpacing: Theme.s2
        RowLayout {
            visible: !foot.tight || !sheet.byHand
            spacing: Theme.s2
            LinkButton {
                id: link
                objectName: "notListed"
                visible: !sheet.byHand
                text: qsTr("Not listed? Tag it by hand…")
                onClicked: App.picker.tagByHand()
            }
            Words {
                objectName: "pickerFoot"
                Layout.fillWidth: true
                text: sheet.byHand ? "" : sheet.pane.foot
                wrapMode: Text.Wrap
                maximumLineCount: 3
                kind: Words.Small
                horizontalAlignment: Text.AlignRight
            }
        }
        RowLayout {
            id: answers
            spacing: Theme.s2
            Layout.alignment: Qt.AlignRight
            PushButton {
                objectName: "pickerCancel"
                text: sheet.byHand ? qsTr("Back") : qsTr("Cancel")
                onClicked: sheet.byHand ? App.picker.back() : App.picker.close()
            }
            PushButton {
                objectName: "pickerUse"
                readonly property bool opensShow: sheet.pane.tv && !sheet.pane.show.open
                primary: true
                text: sheet.byHand ? qsTr("Tag by Hand") : opensShow ? qsTr("Show Episodes") : qsTr("Use This")
                enabled: sheet.byHand ? App.picker.hand.canTag
                       : sheet.pane.show.open ? sheet.pane.show.canUse : sheet.pane.canUse
                onClicked: sheet.byHand ? App.picker.hand.tag()
                         : sheet.pane.show.open ? sheet.pane.show.use() : sheet.pane.use()
            }
        }
    }
}
