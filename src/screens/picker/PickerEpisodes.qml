import QtQuick
import QtQuick.Controls.Basic
import Marlet

/// The page of a show: season, episodes, a search through all of them, and the choice for a whole
/// season.
FocusScope {
    id: page

    required property PickerShow show
    readonly property bool listOpen: season.box.popup.visible

    function focusList() { list.forceActiveFocus(); }
    function focusField() {
        if (!words.visible) return list.forceActiveFocus();
        words.forceActiveFocus();
        words.selectAll();
    }

    readonly property string query: show.words
    onQueryChanged: if (!words.activeFocus && words.text.trim() !== query) words.text = query

    /// With large text in a low window all of it scrolls, not the list alone.
    Flickable {
        id: flick

        readonly property Item focused: Window.activeFocusItem

        function reveal(item: Item) {
            const top = item.mapToItem(all, 0, 0).y;
            if (top < contentY) contentY = Math.max(0, top);
            else if (top + item.height > contentY + height)
                contentY = Math.max(0, Math.min(top, top + item.height - height));
        }

        anchors.fill: parent
        contentHeight: Math.max(height, head.height + words.height + note.height + whole.height + Theme.px(150))
        interactive: contentHeight > height
        clip: interactive
        boundsBehavior: Flickable.StopAtBounds
        onFocusedChanged: {
            for (let each = focused; each; each = each.parent) if (each === all) reveal(focused);
        }

        FocusScope {
            id: all
            focus: true
            width: flick.width
            height: flick.contentHeight

            // The season stands below the show where there is no room beside it.
            Item {
                id: head

                readonly property bool tight: page.width < Theme.px(480)

                height: tight ? what.height + pick.height + Theme.s2 : Math.max(what.height, pick.height)
                anchors { left: parent.left; right: parent.right; top: parent.top }
                Item {
                    id: what
                    height: Theme.px(51)
                    anchors {
                        left: parent.left; top: parent.top
                        right: head.tight ? parent.right : pick.left; rightMargin: head.tight ? 0 : Theme.s2
                    }
                    IconButton {
                        id: back
                        objectName: "showBack"
                        glyph: "chevronLeft"
                        help: qsTr("Back to the results")
                        anchors { left: parent.left; verticalCenter: parent.verticalCenter }
                        onClicked: page.show.close()
                    }
                    Poster {
                        id: picture
                        width: Theme.px(34)
                        height: Theme.px(51)
                        anchors { left: back.right; leftMargin: Theme.s2 }
                        source: page.show.poster
                        kind: "episode"
                    }
                    Column {
                        spacing: 2
                        anchors { left: picture.right; right: parent.right; leftMargin: Theme.s2; verticalCenter: parent.verticalCenter }
                        Words { width: parent.width; text: page.show.title; kind: Words.RowTitle }
                        Words { width: parent.width; text: page.show.facts; kind: Words.Quiet }
                    }
                }
                Row {
                    id: pick
                    spacing: Theme.s2
                    anchors.right: parent.right
                    y: head.tight ? what.height + Theme.s2 : (head.height - height) / 2
                    Words {
                        text: qsTr("Season")
                        kind: Words.Quiet
                        anchors.verticalCenter: parent.verticalCenter
                        Accessible.ignored: true
                    }
                    Choice {
                        id: season
                        objectName: "pickerSeason"
                        width: Theme.px(150)
                        model: page.show.seasons
                        currentIndex: page.show.season
                        box.Accessible.name: qsTr("Season")
                        onChosen: index => page.show.pickSeason(index)
                    }
                }
            }
            SearchBox {
                id: words
                objectName: "pickerWords"
                visible: page.show.searchesAll
                height: visible ? implicitHeight : 0
                anchors {
                    left: parent.left; right: refresh.left; rightMargin: Theme.s2
                    top: head.bottom; topMargin: visible ? Theme.s2 : 0
                }
                prompt: qsTr("Search every season and Specials")
                onEdited: value => page.show.search(value)
                onAccepted: list.forceActiveFocus()
                Keys.onDownPressed: list.forceActiveFocus()
            }
            PushButton {
                id: refresh
                objectName: "pickerRefresh"
                visible: page.show.searchesAll
                anchors { right: parent.right; top: words.top }
                glyph: "refresh"
                text: qsTr("Refresh from TMDB")
                help: qsTr("Downloads this show again, ignoring what Marlet saved earlier")
                onClicked: page.show.refresh()
            }
            ProgressLine {
                objectName: "showWaiting"
                anchors { left: parent.left; right: parent.right; top: words.bottom; topMargin: Theme.s1 }
                height: 3
                z: 1
                indeterminate: true
                visible: page.show.waiting
                label: qsTr("Fetching episodes")
            }
            NoticeBar {
                id: note
                objectName: "showNote"
                anchors { left: parent.left; right: parent.right; top: words.bottom; topMargin: text === "" ? 0 : Theme.s2 }
                text: page.show.note
                glyph: "triangle"
                tone: Theme.look
                closable: false
                radius: Theme.radius
            }
            PickerList {
                id: list
                objectName: "pickerEpisodes"
                focus: true
                anchors {
                    left: parent.left; right: parent.right; top: note.bottom; bottom: whole.top
                    topMargin: Theme.s2; bottomMargin: whole.visible ? Theme.s2 : 0
                }
                rowHeight: Theme.px(54)
                model: page.show.episodes
                chosen: page.show.episode
                Accessible.name: qsTr("Episodes")
                onPicked: row => page.show.episode = row
                onAccepted: page.show.use()
                onLeftAtTop: page.focusField()
                whole: page.show.whole
                delegate: PickerEpisodeRow {}
            }
            EmptyState {
                objectName: "showEmpty"
                anchors.fill: list
                visible: page.show.emptyTitle !== ""
                drawing: "episode"
                title: page.show.emptyTitle
            }
            EmptyState {
                objectName: "showFailure"
                anchors.fill: list
                visible: page.show.failure !== "" && list.count === 0
                drawing: "failed"
                title: page.show.failure
                line: page.show.failureHelp
                linkText: qsTr("Try again")
                onLinked: page.show.tryAgain()
            }
            NoticeBar {
                objectName: "showNotTaken"
                anchors { left: list.left; right: list.right; bottom: list.bottom }
                text: list.count > 0 ? page.show.failure : ""
                glyph: "failed"
                tone: Theme.failed
                closable: false
                radius: Theme.radius
            }
            Tick {
                id: whole
                objectName: "wholeSeason"
                visible: page.show.wholeCount > 0 && page.show.words === ""
                height: visible ? implicitHeight : 0
                anchors { left: parent.left; right: parent.right; bottom: parent.bottom }
                text: page.show.wholeText
                note: page.show.wholeNote
                checked: page.show.whole
                onTicked: on => page.show.setWhole(on)
            }
        }
    }
}
