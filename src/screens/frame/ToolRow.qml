import QtQuick
import QtQuick.Controls.Basic
import Marlet

/// Above the content: its title, what the page adds of its own, then add, inspector and settings.
Item {
    id: tools

    property string title
    signal addAsked()
    signal folderAsked()
    signal keysAsked()

    implicitHeight: Theme.px(56)

    Words {
        anchors { left: parent.left; leftMargin: Theme.s4; right: buttons.left; verticalCenter: parent.verticalCenter }
        text: tools.title
        kind: Words.PageTitle
        Accessible.role: Accessible.Heading
    }
    Row {
        id: buttons
        anchors { right: parent.right; rightMargin: Theme.s3; verticalCenter: parent.verticalCenter }
        spacing: Theme.s1
        PushButton {
            objectName: "addButton"
            text: qsTr("Add File")
            glyph: "plus"
            help: qsTr("Add movies, episodes or folders (Ctrl+O)")
            onClicked: tools.addAsked()
        }
        IconButton {
            objectName: "inspectorButton"
            visible: App.tab === 0
            glyph: "sidebar"
            help: qsTr("Show or hide the inspector (Ctrl+Alt+I)")
            checked: App.inspectorShown
            onClicked: App.inspectorShown = !App.inspectorShown
        }
        IconButton {
            objectName: "settingsButton"
            glyph: "settings"
            help: qsTr("Settings")
            onClicked: App.openSettings()
        }
        IconButton {
            objectName: "menuButton"
            glyph: "dots"
            help: qsTr("More")
            onClicked: menu.popup(0, height + 4)
            MainMenu {
                id: menu
                onAddAsked: tools.addAsked()
                onFolderAsked: tools.folderAsked()
                onKeysAsked: tools.keysAsked()
            }
        }
    }
}
