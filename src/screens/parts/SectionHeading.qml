import QtQuick
import Marlet

/// What the lines below belong to.
Words {
    width: parent ? parent.width : implicitWidth
    kind: Words.Small
    font.weight: Font.DemiBold
    topPadding: Theme.s2
    bottomPadding: Theme.s1
    Accessible.role: Accessible.Heading
}
