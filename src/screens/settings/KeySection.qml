import QtQuick
import Marlet

/// The person's own TMDB key. What is typed goes to the keyring and out of the field.
SettingsSection {
    id: section

    readonly property KeySettings key: App.settings.key

    function forget() {
        // Text that is set leaves nothing to undo.
        box.field.text = "";
    }
    function keep() {
        key.keep(box.field.text);
        forget();
    }

    title: qsTr("TMDB key")
    note: qsTr("A key of your own is kept in your keyring and sent to TMDB alone. Marlet tries it before it is kept.")

    SettingLine {
        objectName: "keyOrigin"
        first: true
        text: section.key.origin
        note: section.key.result
        Row {
            spacing: Theme.s2
            PushButton {
                objectName: "keyTry"
                text: qsTr("Try")
                help: qsTr("Asks TMDB whether the key in use works")
                enabled: !section.key.busy
                onClicked: section.key.tryKey()
            }
            PushButton {
                objectName: "keyRemove"
                text: qsTr("Remove")
                help: qsTr("Takes your key out of the keyring")
                enabled: !section.key.busy
                onClicked: section.key.remove()
            }
        }
    }
    SettingLine {
        text: qsTr("Your key")
        wideControl: true
        TextBox {
            id: box
            objectName: "keyField"
            anchors.left: parent.left
            width: parent.width - keep.width - Theme.s2
            label: qsTr("Your key")
            labelShown: false
            prompt: qsTr("API Read Access Token")
            secret: true
            enabled: !section.key.busy
            onAccepted: if (keep.enabled) section.keep()
        }
        PushButton {
            id: keep
            objectName: "keyKeep"
            anchors.right: parent.right
            text: qsTr("Keep")
            enabled: !section.key.busy && box.field.text.trim() !== ""
            onClicked: section.keep()
        }
    }
}
