import QtQuick
import Marlet

/// A program or library of others: its name and version, what it does here, its licence, and
/// where its source is.
Item {
    id: line

    required property int index
    required property string key
    required property string version
    required property string use
    required property string license
    required property string source
    required property string spoken

    objectName: "credit" + index
    width: parent ? parent.width : 0
    height: words.height + 2 * Theme.s2
    Accessible.role: Accessible.ListItem
    Accessible.name: spoken

    Hairline {
        visible: line.index > 0
        anchors { left: parent.left; right: parent.right; top: parent.top; leftMargin: Theme.s3 }
    }
    Column {
        id: words
        anchors { left: parent.left; leftMargin: Theme.s3; right: link.left; rightMargin: Theme.s3; verticalCenter: parent.verticalCenter }
        spacing: 1
        Row {
            width: parent.width
            spacing: 6
            Words { text: line.key; font.weight: Font.Medium; Accessible.ignored: true }
            Words { objectName: "creditVersion"; text: line.version; kind: Words.Quiet; Accessible.ignored: true }
        }
        Words {
            width: parent.width
            text: qsTr("%1 · %2").arg(line.use).arg(line.license)
            kind: Words.Small
            wrapMode: Text.Wrap
            Accessible.ignored: true
        }
    }
    LinkButton {
        id: link
        objectName: "creditSource"
        anchors { right: parent.right; rightMargin: Theme.s3; verticalCenter: parent.verticalCenter }
        text: qsTr("Source")
        help: line.source
        Accessible.name: qsTr("Source of %1").arg(line.key)
        onClicked: Qt.openUrlExternally(line.source)
    }
}
