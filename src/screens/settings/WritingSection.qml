import QtQuick
import QtQuick.Dialogs
import Marlet

/// What is written, and where to.
SettingsSection {
    id: section

    readonly property SettingsModel model: App.settings

    objectName: "writingSection"
    title: qsTr("Writing")
    note: qsTr("For each preferred language an MKV keeps the best surround track plus a stereo track and that language's subtitles; the rest is left out (changeable per file). Fix for Apple TV rebuilds the sound layout of files over 1 second; the picture is never touched. With Media Library changes off, those files can be reviewed but not changed; with them on, each file's original tags and covers are saved and checked first. New files from MKV conversions go to the chosen folder; MP4 and M4V files are changed in place.")

    SettingLine {
        first: true
        text: qsTr("Preferred languages")
        wideControl: true
        TextBox {
            objectName: "languages"
            width: parent.width
            label: qsTr("Preferred languages")
            labelShown: false
            prompt: qsTr("English, French")
            text: section.model.languages
            onEdited: value => section.model.languages = value
        }
    }
    SettingLine {
        text: qsTr("Fix for Apple TV")
        Toggle {
            objectName: "fixForAppleTV"
            checked: section.model.fixForAppleTV
            Accessible.name: qsTr("Fix for Apple TV")
            onSwitched: on => section.model.fixForAppleTV = on
        }
    }
    SettingLine {
        text: qsTr("Allow changes to my Media Library")
        Toggle {
            objectName: "libraryWrites"
            checked: section.model.libraryWrites
            Accessible.name: qsTr("Allow changes to my Media Library")
            onSwitched: on => section.model.libraryWrites = on
        }
    }
    SettingLine {
        text: qsTr("Save new files to")
        wideControl: true
        Glyph {
            id: symbol
            anchors { left: parent.left; verticalCenter: choose.verticalCenter }
            name: "folder"
            size: Theme.px(16)
            color: section.model.sameFolder ? Theme.disabled : Theme.quiet
        }
        Words {
            objectName: "folderName"
            anchors { left: symbol.right; leftMargin: Theme.s2; right: choose.left; rightMargin: Theme.s3; verticalCenter: choose.verticalCenter }
            text: section.model.folder
            elide: Text.ElideMiddle
            color: section.model.sameFolder ? Theme.disabled : Theme.ink
        }
        PushButton {
            id: choose
            objectName: "chooseFolder"
            anchors.right: parent.right
            text: qsTr("Choose…")
            help: qsTr("Where should new files be saved?")
            onClicked: {
                panel.currentFolder = section.model.folderPlace;
                panel.open();
            }
        }
    }
    SettingLine {
        text: qsTr("Same folder as the original")
        Toggle {
            objectName: "sameFolder"
            checked: section.model.sameFolder
            Accessible.name: qsTr("Same folder as the original")
            onSwitched: on => section.model.sameFolder = on
        }
    }

    // What isn't seen lies in no line.
    data: [
        FolderDialog {
            id: panel
            objectName: "folderPanel"
            title: qsTr("Where should new files be saved?")
            onAccepted: section.model.saveNewFilesTo(selectedFolder)
        },
        Question {
            id: question
            objectName: "libraryQuestion"
            title: qsTr("Allow changes to your Media Library?")
            message: qsTr("Marlet will write details and artwork into the files you choose. Before it changes any file, it saves that file's original tags and covers on this Mac and checks the saved copy; if that fails, the file is not touched. You can put the originals back with Restore Original Details, for one file or a whole run from History. The picture and sound are never re-encoded.")
            acceptText: qsTr("Allow Changes")
            onAnswered: yes => section.model.answerLibraryQuestion(yes)
        },
        Connections {
            target: section.model
            function onLibraryQuestion() { question.open(); }
        }
    ]
}
