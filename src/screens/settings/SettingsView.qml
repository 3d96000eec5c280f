import QtQuick
import Marlet

/// What the person can set. Each setting is stored as soon as it changes.
Sheet {
    id: sheet

    readonly property SettingsModel model: App.settings

    title: qsTr("Settings")
    onAboutToShow: {
        model.open();
        flick.contentY = 0;
    }
    onOpened: look.forceActiveFocus(Qt.TabFocusReason)

    ScrollPage {
        id: flick
        objectName: "settingsPage"
        anchors.fill: parent

        SettingsSection {
            title: qsTr("Appearance")
            SettingLine {
                first: true
                text: qsTr("Appearance")
                Segments {
                    id: look
                    objectName: "appearance"
                    label: qsTr("Appearance")
                    model: [qsTr("Automatic"), qsTr("Light"), qsTr("Dark")]
                    current: sheet.model.appearance
                    onChosen: index => sheet.model.appearance = index
                }
            }
        }
        SettingsSection {
            title: qsTr("Artwork")
            SettingLine {
                first: true
                text: qsTr("Artwork for")
                Segments {
                    objectName: "artworkStyle"
                    label: qsTr("Artwork for")
                    model: [qsTr("Apple TV (wide)"), qsTr("Mac & iPhone (tall)")]
                    current: sheet.model.artwork
                    onChosen: index => sheet.model.artwork = index
                }
            }
        }
        SettingsSection {
            objectName: "sourcesSection"
            title: qsTr("Where details come from")
            note: qsTr("Marlet asks the first source that knows the show, season and episode (or the film), then the next one. Drag to change the order. Apple TV (unofficial) reads the Apple TV app's public catalogue, which Apple doesn't document: if it stops answering, Marlet quietly uses the next source.")
            SourceList {}
        }
        KeySection { id: key }
        WritingSection {}
        GuessSection {}
        SettingsSection {
            title: qsTr("Notifications")
            SettingLine {
                first: true
                text: qsTr("Tell when a run has ended")
                note: qsTr("Only while Marlet's window isn't in front")
                Toggle {
                    objectName: "notifyAtEnd"
                    checked: sheet.model.notifyAtEnd
                    Accessible.name: qsTr("Tell when a run has ended")
                    onSwitched: on => sheet.model.notifyAtEnd = on
                }
            }
        }
        SettingsSection {
            title: qsTr("Work files")
            note: qsTr("While Marlet works on a file it keeps copies in a folder of its own. One that a crash left behind is cleaned up here, unless a job or a recovery needs it.")
            SettingLine {
                first: true
                text: sheet.model.workFiles.usage === "" ? qsTr("Measuring…") : sheet.model.workFiles.usage
                note: sheet.model.workFiles.result
                objectName: "workFiles"
                PushButton {
                    objectName: "cleanUp"
                    text: qsTr("Clean Up")
                    enabled: sheet.model.workFiles.canCleanUp
                    onClicked: sheet.model.workFiles.cleanUp()
                }
            }
        }
        SettingsSection {
            title: qsTr("About")
            SettingLine {
                first: true
                objectName: "versionLine"
                text: sheet.model.versionLine
                PushButton {
                    objectName: "credits"
                    text: qsTr("Credits")
                    onClicked: App.openAbout()
                }
            }
            SettingLine {
                objectName: "updates"
                text: qsTr("Updates")
                note: sheet.model.updates
                PushButton {
                    objectName: "checkForUpdates"
                    text: qsTr("Check for Updates…")
                    enabled: App.canCheckForUpdates
                    onClicked: App.checkForUpdates()
                }
            }
        }
    }
    onClosed: key.forget()
}
