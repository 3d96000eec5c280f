import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts
import Marlet

/// The hand form: what a person knows of an episode or a film that no source has.
FocusScope {
    id: page

    required property HandForm form

    Component.onCompleted: title.field.forceActiveFocus()
    Shortcut {
        sequence: "Escape"
        enabled: page.form.open
        onActivated: App.picker.back()
    }

    ScrollView {
        id: scroll
        anchors.fill: parent
        contentWidth: availableWidth
        Accessible.ignored: true
        ScrollBar.horizontal.policy: ScrollBar.AlwaysOff
        ScrollBar.vertical: ScrollHandle {
            parent: scroll
            x: Theme.mirrored ? 0 : scroll.width - width
            height: scroll.height
        }

        ColumnLayout {
            width: scroll.availableWidth
            spacing: Theme.s3

            Words {
                objectName: "handIntro"
                Layout.fillWidth: true
                text: page.form.intro
                kind: Words.Quiet
                wrapMode: Text.Wrap
            }
            RowLayout {
                Layout.fillWidth: true
                spacing: Theme.s3
                TextBox {
                    objectName: "handSeason"
                    Layout.preferredWidth: Theme.px(72)
                    Layout.alignment: Qt.AlignBottom
                    visible: page.form.tv
                    label: qsTr("Season")
                    text: page.form.season
                    field.inputMethodHints: Qt.ImhDigitsOnly
                    onEdited: value => page.form.season = value
                    onAccepted: page.form.tag()
                }
                TextBox {
                    objectName: "handEpisode"
                    Layout.preferredWidth: Theme.px(72)
                    Layout.alignment: Qt.AlignBottom
                    visible: page.form.tv
                    label: qsTr("Episode ")
                    text: page.form.episode
                    field.inputMethodHints: Qt.ImhDigitsOnly
                    onEdited: value => page.form.episode = value
                    onAccepted: page.form.tag()
                }
                TextBox {
                    id: title
                    objectName: "handTitle"
                    Layout.fillWidth: true
                    label: qsTr("Title")
                    text: page.form.title
                    field.focus: true
                    onEdited: value => page.form.title = value
                    onAccepted: page.form.tag()
                }
            }
            Rectangle {
                objectName: "filmOffer"
                visible: page.form.film !== ""
                Layout.fillWidth: true
                implicitHeight: Math.max(told.implicitHeight, use.implicitHeight) + 2 * Theme.s3
                radius: Theme.radius
                color: Theme.tint(Theme.accent, 0.1)
                Accessible.role: Accessible.Grouping
                Accessible.name: told.children[0].text
                Glyph {
                    id: mark
                    name: "film"
                    color: Theme.accent
                    size: Theme.px(20)
                    anchors { left: parent.left; leftMargin: Theme.s3; verticalCenter: parent.verticalCenter }
                }
                Column {
                    id: told
                    spacing: 2
                    anchors {
                        left: mark.right; right: use.left; margins: Theme.s3
                        verticalCenter: parent.verticalCenter
                    }
                    Words {
                        objectName: "filmOfferTitle"
                        width: parent.width
                        text: qsTr("TMDB lists a film called “%1”").arg(page.form.film)
                        font.weight: Font.DemiBold
                        wrapMode: Text.Wrap
                    }
                    Words {
                        width: parent.width
                        text: qsTr("Use its title, story, date and cast for this episode?")
                        kind: Words.Small
                        wrapMode: Text.Wrap
                    }
                }
                PushButton {
                    id: use
                    objectName: "useFilm"
                    text: qsTr("Use Its Details")
                    anchors { right: parent.right; rightMargin: Theme.s3; verticalCenter: parent.verticalCenter }
                    onClicked: page.form.useFilm()
                }
            }
            LongBox {
                objectName: "handDescription"
                Layout.fillWidth: true
                label: qsTr("Description")
                text: page.form.description
                onEdited: value => page.form.description = value
            }
            TextBox {
                objectName: "handDate"
                Layout.fillWidth: true
                Layout.maximumWidth: Theme.px(280)
                label: qsTr("Release date (yyyy-mm-dd, optional)")
                text: page.form.date
                onEdited: value => page.form.date = value
                onAccepted: page.form.tag()
            }
            Words {
                objectName: "handDateWrong"
                Layout.fillWidth: true
                visible: page.form.dateWrong
                text: qsTr("That isn't a date like 2026-11-21.")
                color: Theme.failed
                wrapMode: Text.Wrap
            }
            NoticeBar {
                objectName: "handFailure"
                Layout.fillWidth: true
                text: page.form.failure
                glyph: "failed"
                tone: Theme.failed
                closable: false
                radius: Theme.radius
            }
        }
    }
}
