import QtQuick
import Marlet

/// A picture that comes when it comes: until then, and where there is none, a quiet drawing.
Rectangle {
    id: poster

    property string source
    property string otherSource  // for when that one can't be had
    property string kind: "film"  // the drawing: a glyph's name
    property bool crop: true
    // One pixel stands for "there is no such picture".
    readonly property bool loaded: picture.status === Image.Ready && picture.implicitWidth > 1
    property string missedSource
    readonly property bool missed: otherSource !== "" && missedSource === source

    // A picture that was asked for before is there, or known to be gone, at once and in silence.
    function look() {
        const gone = picture.status === Image.Error || (picture.status === Image.Ready && picture.implicitWidth <= 1);
        if (gone && !missed && otherSource !== "") missedSource = source;
    }

    implicitWidth: 36
    implicitHeight: 54
    radius: Theme.posterRadius
    color: Theme.tint(Theme.ink, 0.07)

    Glyph {
        anchors.centerIn: parent
        visible: !poster.loaded
        name: poster.kind
        size: Math.min(poster.width, poster.height) * 0.45
        color: Theme.disabled
    }
    Timer {
        id: later
        interval: 0
        onTriggered: poster.look()
    }
    Image {
        id: picture
        anchors.fill: parent
        source: poster.missed ? poster.otherSource : poster.source
        onStatusChanged: poster.look()
        onSourceChanged: later.restart()
        asynchronous: true
        cache: true
        fillMode: poster.crop ? Image.PreserveAspectCrop : Image.PreserveAspectFit
        sourceSize.width: Math.ceil(poster.width * Screen.devicePixelRatio)
        smooth: true
        opacity: status === Image.Ready ? 1 : 0
        Behavior on opacity { NumberAnimation { duration: Theme.motion } }
    }
    Rectangle {
        anchors.fill: parent
        color: "transparent"
        radius: parent.radius
        border.color: Theme.hairline
    }
}
