import QtQuick
import QtQuick.Controls.Basic
import Marlet

/// The words that explain a control to whoever rests the pointer on it.
ToolTip {
    id: hint

    delay: 600
    padding: Theme.s2
    contentItem: Words {
        text: hint.text
        kind: Words.Small
        color: Theme.ink
        wrapMode: Text.Wrap
        width: Math.min(implicitWidth, Theme.px(320))
    }
    background: Rectangle {
        color: Theme.raised
        radius: 6
        border.color: Theme.hairline
    }
}
