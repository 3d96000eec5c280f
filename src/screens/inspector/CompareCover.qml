import QtQuick
import Marlet

/// One of two covers, under its column's name.
Column {
    id: cover

    property string heading
    property string source
    property string words  ///< under it
    property bool wide: false

    spacing: Theme.s2

    Words {
        width: parent.width
        text: cover.heading
        font.weight: Font.DemiBold
    }
    Poster {
        visible: cover.source !== ""
        anchors.left: parent.left
        width: cover.wide ? Math.min(parent.width, Theme.px(213)) : Theme.px(80)
        height: Theme.px(120)
        source: cover.source
        kind: "image"
        crop: false
        Accessible.role: Accessible.Graphic
        Accessible.name: cover.heading
    }
    Rectangle {
        visible: cover.source === ""
        anchors.left: parent.left
        width: cover.wide ? Math.min(parent.width, Theme.px(213)) : Theme.px(80)
        height: Theme.px(120)
        radius: Theme.posterRadius
        color: Theme.tint(Theme.ink, 0.05)
        Words {
            anchors.centerIn: parent
            width: parent.width - Theme.s3
            text: qsTr("No cover")
            kind: Words.Small
            wrapMode: Text.Wrap
            horizontalAlignment: Text.AlignHCenter
        }
    }
    Words {
        visible: cover.words !== ""
        width: parent.width
        text: cover.words
        kind: Words.Small
        wrapMode: Text.Wrap
    }
}
