import QtQuick
import QtQuick.Controls.Basic
import Marlet

/// A box to tick, with a quiet note behind its words. `checked` is what the model holds.
CheckBox {
    id: tick

    property string note
    signal ticked(bool on)

    padding: 0
    spacing: Theme.s2
    font.family: Theme.family
    font.pixelSize: Theme.body
    Accessible.name: note === "" ? text : text + ", " + note
    onToggled: ticked(checked)

    indicator: Rectangle {
        width: Theme.px(18)
        height: Theme.px(18)
        radius: 4
        x: tick.mirrored ? tick.width - width : 0
        // Beside the first line, however many there are.
        y: Math.max(0, Math.round((title.height / Math.max(1, title.lineCount) - height) / 2))
        color: tick.checked ? (tick.enabled ? Theme.accent : Theme.disabled) : "transparent"
        border.width: tick.checked ? 0 : 1
        border.color: tick.enabled ? Theme.tint(Theme.ink, 0.4) : Theme.disabled
        Glyph {
            anchors.centerIn: parent
            visible: tick.checked
            name: "check"
            size: parent.width - 4
            color: Theme.accentInk
        }
        FocusRing { shown: tick.visualFocus; radius: 6 }
    }
    contentItem: Column {
        leftPadding: tick.mirrored ? 0 : tick.indicator.width + tick.spacing
        rightPadding: tick.mirrored ? tick.indicator.width + tick.spacing : 0
        Words {
            id: title
            width: tick.availableWidth - parent.leftPadding - parent.rightPadding
            text: tick.text
            Accessible.ignored: true
            wrapMode: Text.Wrap
            color: tick.enabled ? Theme.ink : Theme.disabled
        }
        Words {
            visible: tick.note !== ""
            width: tick.availableWidth - parent.leftPadding - parent.rightPadding
            text: tick.note
            Accessible.ignored: true
            kind: Words.Small
            wrapMode: Text.Wrap
        }
    }
}
