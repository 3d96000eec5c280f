import QtQuick
import QtQuick.Controls.Basic
import Marlet

/// On or off, at once. `checked` is what the model holds.
Switch {
    id: toggle

    property string help
    signal switched(bool on)

    padding: 0
    spacing: text === "" ? 0 : Theme.s3
    font.family: Theme.family
    font.pixelSize: Theme.body
    Accessible.name: text
    Accessible.description: help
    onToggled: switched(checked)

    indicator: Rectangle {
        width: Theme.px(34)
        height: Theme.px(20)
        radius: height / 2
        x: toggle.mirrored ? toggle.width - width : 0
        y: (toggle.height - height) / 2
        color: !toggle.enabled ? Theme.tint(Theme.ink, 0.1) : toggle.checked ? Theme.accent : Theme.tint(Theme.ink, 0.28)
        Rectangle {
            width: parent.height - 4
            height: width
            radius: width / 2
            y: 2
            x: (toggle.checked !== toggle.mirrored) ? parent.width - width - 2 : 2
            color: Theme.knob
            Behavior on x { NumberAnimation { duration: Theme.motion; easing.type: Easing.OutQuad } }
        }
        FocusRing { shown: toggle.visualFocus; radius: height / 2 }
    }
    contentItem: Words {
        leftPadding: toggle.mirrored ? 0 : toggle.indicator.width + toggle.spacing
        rightPadding: toggle.mirrored ? toggle.indicator.width + toggle.spacing : 0
        text: toggle.text
        Accessible.ignored: true
        wrapMode: Text.Wrap
        color: toggle.enabled ? Theme.ink : Theme.disabled
        verticalAlignment: Text.AlignVCenter
    }
}
