import QtQuick
import Marlet

/// A word or two in a tinted box.
Rectangle {
    id: badge

    property string text
    property color tone: Theme.quiet
    property bool silent: false  ///< its row says it

    visible: text !== ""
    implicitWidth: words.implicitWidth + 2 * Theme.s2
    implicitHeight: words.implicitHeight + 6
    radius: 4
    color: Theme.tint(tone, 0.12)
    Words {
        id: words
        anchors.centerIn: parent
        text: badge.text
        kind: Words.Small
        color: badge.tone
        Accessible.ignored: badge.silent
        width: Math.min(implicitWidth, badge.width - 2 * Theme.s2)
    }
}
