import QtQuick
import Marlet

/// What this program is, whose data it shows, and the work of others that it stands on.
Sheet {
    id: sheet

    readonly property SettingsModel model: App.settings

    title: qsTr("About Marlet")
    onAboutToShow: {
        model.credits.open();
        page.contentY = 0;
    }
    onOpened: page.forceActiveFocus(Qt.TabFocusReason)

    ScrollPage {
        id: page
        objectName: "aboutPage"
        anchors.fill: parent
        focus: true
        activeFocusOnTab: true
        Accessible.role: Accessible.Pane
        Accessible.name: sheet.title

        Item {
            width: parent.width
            height: Math.max(mark.height, names.height)
            Rectangle {
                id: mark
                anchors.left: parent.left
                width: Theme.px(64)
                height: width
                radius: Theme.s3
                color: Theme.accent
                Glyph {
                    anchors.centerIn: parent
                    name: "film"
                    size: Theme.px(36)
                    color: Theme.accentInk
                }
            }
            Column {
                id: names
                anchors { left: mark.right; leftMargin: Theme.s4; right: parent.right; verticalCenter: parent.verticalCenter }
                spacing: 2
                Words { objectName: "aboutName"; width: parent.width; text: "Marlet"; kind: Words.PageTitle }
                Words { objectName: "aboutVersion"; width: parent.width; wrapMode: Text.Wrap; text: sheet.model.versionLine }
                Words { objectName: "aboutBuilt"; width: parent.width; wrapMode: Text.Wrap; text: sheet.model.builtLine; kind: Words.Quiet }
            }
        }
        SettingsSection {
            title: qsTr("Details and artwork")
            Item {
                width: parent.width
                height: thanks.height + 2 * Theme.s3
                Column {
                    id: thanks
                    anchors { left: parent.left; right: parent.right; top: parent.top; margins: Theme.s3 }
                    spacing: Theme.s2
                    Words {
                        width: parent.width
                        text: "TMDB"
                        kind: Words.RowTitle
                        color: Theme.accent
                    }
                    Words {
                        objectName: "tmdbSentence"
                        width: parent.width
                        text: qsTr("This application uses TMDB and the TMDB APIs but is not endorsed, certified, or otherwise approved by TMDB.")
                        wrapMode: Text.Wrap
                    }
                    Words {
                        objectName: "appleSentence"
                        width: parent.width
                        text: qsTr("Apple TV and iTunes details and artwork from Apple.")
                        wrapMode: Text.Wrap
                    }
                }
            }
        }
        SettingsSection {
            title: qsTr("Open-source software")
            note: qsTr("Programs and libraries that came with your system: its package manager gives the source of the very version in use, too.")
            Repeater {
                model: sheet.model.credits.rows
                delegate: CreditLine {}
            }
        }
        SettingsSection {
            title: qsTr("Notices")
            Item {
                width: parent.width
                height: notices.height + 2 * Theme.s3
                TextEdit {
                    id: notices
                    objectName: "notices"
                    anchors { left: parent.left; right: parent.right; top: parent.top; margins: Theme.s3 }
                    text: sheet.model.credits.notices
                    textFormat: TextEdit.PlainText
                    wrapMode: TextEdit.Wrap
                    horizontalAlignment: TextEdit.AlignLeft
                    readOnly: true
                    selectByMouse: true
                    activeFocusOnPress: false
                    color: Theme.quiet
                    selectionColor: Theme.accent
                    selectedTextColor: Theme.accentInk
                    font.family: Theme.family
                    font.pixelSize: Theme.small
                    Accessible.role: Accessible.StaticText
                    Accessible.name: text
                }
            }
        }
    }
}
