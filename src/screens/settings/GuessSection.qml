import QtQuick
import Marlet

/// The model that reads messy names, and whether it is there.
SettingsSection {
    id: section

    readonly property GuessSettings guessing: App.settings.guessing

    objectName: "guessSection"
    title: qsTr("Smart guessing")
    note: qsTr("The model of this computer is used to read messy file names. Titles and descriptions always come from the database. All guesses are processed on this computer, and only the cleaned-up title is sent to the database to search.")

    SettingLine {
        objectName: "modelLine"
        first: true
        text: qsTr("On-device model")
        note: section.guessing.asking ? qsTr("Asking…") : section.guessing.note
        PushButton {
            objectName: "askModel"
            text: qsTr("Ask Again")
            help: qsTr("Looks whether the model's server answers")
            enabled: section.guessing.canAsk && !section.guessing.asking
            onClicked: section.guessing.ask()
        }
    }
    SettingLine {
        text: qsTr("Address")
        note: section.guessing.fixed ? qsTr("MARLET_LOCAL_MODEL is set and comes first.") : ""
        wideControl: true
        TextBox {
            objectName: "modelAddress"
            width: parent.width
            label: qsTr("Address of the model")
            labelShown: false
            prompt: "http://127.0.0.1:8080"
            text: section.guessing.address
            enabled: !section.guessing.fixed
            onEdited: value => section.guessing.address = value
            onAccepted: section.guessing.ask()
        }
    }
    SettingLine {
        text: qsTr("Model")
        wideControl: true
        TextBox {
            objectName: "modelName"
            width: parent.width
            label: qsTr("Name of the model")
            labelShown: false
            prompt: qsTr("The first that the server has")
            text: section.guessing.name
            onEdited: value => section.guessing.name = value
            onAccepted: section.guessing.ask()
        }
    }
}
