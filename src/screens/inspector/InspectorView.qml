import QtQuick
import QtQuick.Controls.Basic
import Marlet

/// The selected file or season: what it is taken to be, and what will become of it.
FocusScope {
    id: view

    readonly property InspectorModel model: App.inspector
    readonly property Item focusItem: Window.activeFocusItem
    onFocusItemChanged: reveal(focusItem)

    /// Scrolls to what the keyboard has reached.
    function reveal(item: Item): void {
        let inside = item;
        while (inside && inside !== page)
            inside = inside.parent;
        if (!inside)
            return;
        const top = item.mapToItem(page, 0, 0).y - Theme.s4;
        const bottom = top + Math.min(item.height, flick.height - 2 * Theme.s4) + 2 * Theme.s4;
        if (top < flick.contentY)
            flick.contentY = Math.max(0, top);
        else if (bottom > flick.contentY + flick.height)
            flick.contentY = Math.min(bottom - flick.height, Math.max(0, flick.contentHeight - flick.height));
    }

    Accessible.role: Accessible.Pane
    Accessible.name: qsTr("Inspector")

    Shortcut {
        sequence: "Ctrl+D"
        enabled: view.visible && view.model.compare.possible
        onActivated: compare.open()
    }
    Shortcut {
        sequence: "Ctrl+Z"
        enabled: view.visible && view.model.hasDraft
        onActivated: view.model.details.undo()
    }

    EmptyState {
        objectName: "inspectorEmpty"
        anchors.fill: parent
        visible: view.model.empty
        drawing: "sidebar"
        title: qsTr("Select a movie or season")
    }

    Flickable {
        id: flick

        anchors.fill: parent
        visible: !view.model.empty
        contentWidth: width
        contentHeight: page.height + 2 * Theme.s4
        boundsBehavior: Flickable.StopAtBounds
        clip: true
        ScrollBar.vertical: ScrollHandle {}

        Column {
            id: page

            x: Theme.s4
            y: Theme.s4
            width: flick.width - 2 * Theme.s4
            spacing: Theme.s3

            InspectorHead {
                width: parent.width
                model: view.model
                onCompareAsked: compare.open()
            }
            VerdictBox {
                width: parent.width
                model: view.model
            }
            EpisodeList {
                width: parent.width
                visible: count > 0
                model: view.model
            }
            Segments {
                objectName: "inspectorPages"
                width: parent.width
                label: qsTr("Pages")
                model: [qsTr("Details"), qsTr("Tracks"), qsTr("Artwork")]
                current: view.model.page
                onChosen: index => view.model.page = index
            }
            Loader {
                id: loader

                width: parent.width
                sourceComponent: [detailsPage, tracksPage, artworkPage][view.model.page]
            }
        }
    }

    Component { id: detailsPage; DetailsPage { model: view.model } }
    Component { id: tracksPage; TracksPage { model: view.model.tracks } }
    Component {
        id: artworkPage
        ArtworkPage {
            model: view.model.artwork
            onReached: cell => view.reveal(cell)
            onAgainAsked: view.model.loadAgain()
        }
    }

    CompareSheet {
        id: compare
        objectName: "compareSheet"
        model: view.model.compare
        fileName: view.model.fileName
    }
}
