import QtQuick
import Marlet

/// The pictures on offer, of one shape.
Column {
    id: page

    required property InspectorArtwork model
    signal reached(Item cell)
    signal againAsked()

    spacing: Theme.s3

    Choice {
        objectName: "shape"
        width: parent.width
        label: qsTr("Shape")
        model: page.model.shapes
        currentIndex: page.model.shape
        onChosen: index => page.model.setShape(index)
    }
    Toggle {
        objectName: "shareSeason"
        visible: page.model.canShare
        width: parent.width
        text: qsTr("Use for every episode in this season")
        checked: page.model.shared
        onSwitched: on => page.model.share(on)
    }
    Words {
        objectName: "artworkLine"
        visible: text !== ""
        width: parent.width
        text: page.model.line
        kind: Words.Quiet
        horizontalAlignment: Text.AlignHCenter
        wrapMode: Text.Wrap
        topPadding: Theme.s6
        bottomPadding: again.visible ? 0 : Theme.s6
    }
    LinkButton {
        id: again
        objectName: "artworkAgain"
        visible: page.model.failed
        anchors.horizontalCenter: parent.horizontalCenter
        text: qsTr("Try again")
        onClicked: page.againAsked()
    }
    ArtworkGrid {
        // Each cell has its gap at its end.
        width: parent.width + gap
        visible: count > 0
        artwork: page.model
        onReached: cell => page.reached(cell)
    }
    Words {
        objectName: "artworkNote"
        visible: page.model.line === ""
        width: parent.width
        text: qsTr("Only the chosen image is written to the file.")
        kind: Words.Small
        wrapMode: Text.Wrap
    }
}
