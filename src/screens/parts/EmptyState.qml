import QtQuick
import Marlet

/// A page with nothing on it: a drawing, a sentence, what to do.
Item {
    id: empty

    property string drawing: "film"
    property string title
    property string line
    property string linkText
    signal linked()

    /// Words come before the drawing.
    readonly property bool small: height < Theme.px(230)

    Column {
        width: Math.min(parent.width - 2 * Theme.s6, Theme.px(420))
        anchors.horizontalCenter: parent.horizontalCenter
        y: Math.max(Theme.s6, parent.height * 0.4 - height / 2)
        spacing: Theme.s2

        Rectangle {
            visible: !empty.small
            width: Theme.px(88)
            height: width
            radius: width / 2
            color: Theme.tint(Theme.accent, 0.1)
            anchors.horizontalCenter: parent.horizontalCenter
            Glyph { anchors.centerIn: parent; name: empty.drawing; size: Theme.px(40); color: Theme.accent }
        }
        Item { visible: !empty.small; width: 1; height: Theme.s2 }
        Words {
            width: parent.width
            text: empty.title
            kind: Words.PageTitle
            horizontalAlignment: Text.AlignHCenter
            wrapMode: Text.Wrap
        }
        Words {
            visible: text !== ""
            width: parent.width
            text: empty.line
            kind: Words.Quiet
            horizontalAlignment: Text.AlignHCenter
            wrapMode: Text.Wrap
        }
        LinkButton {
            objectName: "emptyLink"
            visible: text !== ""
            text: empty.linkText
            width: Math.min(implicitWidth, parent.width)
            anchors.horizontalCenter: parent.horizontalCenter
            onClicked: empty.linked()
        }
    }
}
