import QtQuick
import Marlet

/// One source's tab: a search and its results, or the page of the show that was opened.
FocusScope {
    id: page

    required property PickerPane pane

    function focusField() {
        if (pane.show.open) {
            episodes.focusField();
        } else {
            field.forceActiveFocus();
            field.selectAll();
        }
    }
    Shortcut {
        sequence: "Escape"
        enabled: !App.picker.hand.open && !episodes.listOpen
        onActivated: App.picker.back()
    }
    Shortcut {
        sequence: "Ctrl+F"
        enabled: !App.picker.hand.open
        onActivated: page.focusField()
    }

    readonly property string query: pane.query
    onQueryChanged: if (field.text !== query) field.text = query
    Component.onCompleted: {
        field.text = query;
        focusField();
    }

    FocusScope {
        anchors.fill: parent
        visible: !page.pane.show.open
        focus: visible
        onVisibleChanged: if (visible) results.forceActiveFocus()

        SearchBox {
            id: field
            objectName: "pickerQuery"
            focus: true
            anchors { left: parent.left; right: parent.right; top: parent.top }
            prompt: page.pane.prompt
            onEdited: value => page.pane.type(value)
            onAccepted: {
                page.pane.search();
                results.forceActiveFocus();
            }
            Keys.onDownPressed: results.forceActiveFocus()
        }
        PickerResults {
            id: results
            pane: page.pane
            anchors {
                left: parent.left; right: parent.right; top: field.bottom; bottom: parent.bottom
                topMargin: Theme.s2
            }
            onFieldAsked: field.forceActiveFocus()
        }
    }
    PickerEpisodes {
        id: episodes
        anchors.fill: parent
        visible: page.pane.show.open
        show: page.pane.show
        onVisibleChanged: if (visible) focusList()
    }
}
