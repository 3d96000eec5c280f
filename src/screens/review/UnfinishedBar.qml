import QtQuick
import Marlet

/// What an earlier run of the program left unfinished.
NoticeBar {
    id: bar

    objectName: "unfinishedBar"
    text: App.review.unfinished
    glyph: "history"
    closable: false

    PushButton {
        objectName: "discardUnfinished"
        text: qsTr("Discard")
        onClicked: question.open()
    }
    PushButton {
        objectName: "resumeUnfinished"
        text: qsTr("Resume")
        primary: true
        onClicked: App.review.resumeUnfinished()
    }
    Question {
        id: question
        objectName: "discardQuestion"
        title: qsTr("Discard what is left from last time?")
        message: qsTr("Marlet forgets the corrections that you made and what waited in the queue. Your movie and TV files aren't affected.")
        acceptText: qsTr("Discard")
        danger: true
        onAnswered: yes => {
            if (yes)
                App.review.discardUnfinished();
        }
    }
}
