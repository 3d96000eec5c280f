import QtQuick
import Marlet

/// What becomes of picture, sound and subtitles.
Column {
    id: page

    required property InspectorTracks model
    readonly property bool ready: model.busy === "" && model.container !== "mov"

    spacing: Theme.s3

    Column {
        visible: page.model.busy !== ""
        width: parent.width
        spacing: 6
        Words { objectName: "tracksBusy"; width: parent.width; text: page.model.busy; kind: Words.Quiet }
        ProgressLine { width: parent.width; indeterminate: true; label: page.model.busy }
    }
    Column {
        visible: page.model.picture !== ""
        width: parent.width
        spacing: Theme.s1
        SectionHeading { text: qsTr("Picture") }
        Row {
            width: parent.width
            spacing: Theme.s2
            Glyph { name: "film"; size: Theme.px(18); color: Theme.quiet }
            Words { objectName: "pictureCodec"; text: page.model.picture }
            Words { objectName: "pictureNote"; text: page.model.pictureNote; kind: Words.Quiet }
        }
    }
    Rectangle {
        visible: page.model.refusal !== ""
        width: parent.width
        height: refusal.height + 2 * Theme.s3
        radius: Theme.radius
        color: Theme.tint(Theme.look, Theme.dark ? 0.14 : 0.1)
        StateSymbol { id: mark; state: "look"; y: Theme.s3; anchors { left: parent.left; leftMargin: Theme.s3 } }
        Words {
            id: refusal
            objectName: "tracksRefusal"
            anchors { left: mark.right; right: parent.right; leftMargin: Theme.s2; rightMargin: Theme.s3 }
            y: Theme.s3
            text: page.model.refusal
            wrapMode: Text.Wrap
        }
    }
    TrackTicks {
        visible: page.ready && page.model.refusal === ""
        width: parent.width
        name: "sound"
        heading: qsTr("Sound")
        tracks: page.model.sounds
        none: page.model.noSounds
        more: page.model.moreSounds
        open: page.model.open
        onKept: (key, keep) => page.model.keepSound(key, keep)
        onOpenAsked: open => page.model.open = open
    }
    TrackTicks {
        visible: page.ready && page.model.refusal === ""
        width: parent.width
        name: "subtitle"
        heading: qsTr("Subtitles")
        tracks: page.model.subtitles
        none: page.model.noSubtitles
        more: page.model.moreSubtitles
        open: page.model.open
        onKept: (key, keep) => page.model.keepSubtitle(key, keep)
        onOpenAsked: open => page.model.open = open
    }
    Column {
        visible: page.model.checking !== ""
        width: parent.width
        spacing: 6
        Words {
            objectName: "tracksChecking"
            width: parent.width
            text: page.model.checking
            kind: Words.Small
            wrapMode: Text.Wrap
        }
        ProgressLine { width: parent.width; value: page.model.checked; label: qsTr("Checking subtitles") }
    }
    Hairline { visible: page.model.foot !== "" && page.ready; width: parent.width; height: 1 }
    Words {
        objectName: "tracksFoot"
        visible: text !== ""
        width: parent.width
        text: page.model.foot
        kind: page.model.container === "mov" ? Words.Body : Words.Small
        wrapMode: Text.Wrap
    }
    Rectangle {
        visible: page.model.leavesOut !== ""
        width: parent.width
        height: leavesOut.height + 2 * Theme.s3
        radius: Theme.radius
        color: Theme.tint(Theme.accent, 0.1)
        Words {
            id: leavesOut
            objectName: "tracksLeftOut"
            x: Theme.s3
            y: Theme.s3
            width: parent.width - 2 * Theme.s3
            text: page.model.leavesOut
            wrapMode: Text.Wrap
        }
    }
}
