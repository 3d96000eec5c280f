import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Templates as T
import Marlet

/// A question with two answers. Escape and Return give the one that changes nothing unless the
/// person goes to the other.
Popup {
    id: question

    property string title
    property string message
    property string acceptText
    property string rejectText: qsTr("Cancel")
    property bool danger: false
    signal answered(bool yes)

    property bool told: false
    function answer(yes: bool) {
        if (told) return;
        told = true;
        close();
        answered(yes);
    }

    parent: T.Overlay.overlay
    anchors.centerIn: parent
    width: Math.min(Theme.px(440), (parent ? parent.width : 440) - 2 * Theme.s6)
    modal: true
    focus: true
    padding: Theme.s6
    closePolicy: Popup.CloseOnEscape
    onAboutToShow: told = false
    onOpened: reject.forceActiveFocus(Qt.TabFocusReason)
    onClosed: answer(false)
    T.Overlay.modal: Rectangle { color: Theme.shade }

    background: Rectangle {
        color: Theme.dark ? Theme.card : Theme.window
        radius: 12
        border.color: Theme.hairline
    }
    contentItem: Column {
        spacing: Theme.s3
        Keys.onUpPressed: scroll.contentY = Math.max(0, scroll.contentY - Theme.px(48))
        Keys.onDownPressed: scroll.contentY = Math.max(0, Math.min(scroll.contentHeight - scroll.height, scroll.contentY + Theme.px(48)))
        Accessible.role: Accessible.AlertMessage
        Accessible.name: question.title + " " + question.message
        Words {
            id: heading
            width: parent.width
            text: question.title
            kind: Words.Heading
            wrapMode: Text.Wrap
            Accessible.ignored: true
        }
        // In a low window the words scroll and the answers stay.
        Flickable {
            id: scroll
            readonly property bool scrolls: contentHeight > height + 1
            width: parent.width
            height: Math.min(contentHeight, Math.max(Theme.px(48), (question.parent ? question.parent.height : 480) - 4 * Theme.s6
                                                     - heading.height - Theme.control - 3 * Theme.s3))
            contentHeight: words.height
            clip: true
            interactive: scrolls
            boundsBehavior: Flickable.StopAtBounds
            ScrollBar.vertical: ScrollHandle {}
            Words {
                id: words
                width: scroll.width - Theme.s3
                x: Theme.mirrored ? Theme.s3 : 0
                text: question.message
                wrapMode: Text.Wrap
                Accessible.ignored: true
            }
        }
        Item { width: 1; height: Theme.s1 }
        Row {
            id: answers
            anchors.right: parent.right
            spacing: Theme.s2
            PushButton {
                id: reject
                objectName: "questionReject"
                text: question.rejectText
                onClicked: question.answer(false)
            }
            PushButton {
                objectName: "questionAccept"
                text: question.acceptText
                primary: !question.danger
                danger: question.danger
                onClicked: question.answer(true)
            }
        }
    }
}
