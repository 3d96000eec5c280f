import QtQuick
import QtTest
import Marlet
import MarletTest

TestCase {
    id: tests
    name: "History"
    when: windowShown
    visible: true
    width: 1180
    height: 760

    RootView { id: root; anchors.fill: parent }
    Shortcuts { root: root }

    function init() {
        Stage.clear();
        App.tab = 2;
        tryVerify(() => App.history.stage === "empty");
    }
    function cleanup() {
        while (App.queue.stage === "running") {
            Stage.endJob("done", "Details written");
            wait(1);
        }
        Stage.clear();
    }
    function part(name) { return findChild(findChild(root, "historyView"), name); }
    function list() { return part("historyList"); }
    /// Once everything lies where it will.
    function polish(item) {
        for (let each = item; each !== null; each = each.parent)
            if (isPolishScheduled(each)) waitForItemPolished(each);
    }
    function click(item, ...how) {
        polish(item);
        mouseClick(item, ...how);
    }
    function row(index) {
        list().forceLayout();
        tryVerify(() => list().itemAtIndex(index) !== null);
        return list().itemAtIndex(index);
    }
    function inRow(index, name) { return findChild(row(index), name); }
    function fill() {
        for (const name of ["Charade.mp4", "Sintel.mp4", "Metropolis.mp4"]) Stage.makeFile(name);
        Stage.addHistory([
            { title: "Charade", year: 1963, result: "failed", message: "Not enough free space", batch: "run 3" },
            { title: "Sintel", year: 2010, message: "Details written", batch: "run 2" },
            { title: "Metropolis", year: 1927, message: "Details written", daysAgo: 1 }
        ]);
        tryVerify(() => list().count === 3);
    }

    function test_nothing_yet_says_what_will_be_here() {
        const empty = part("historyEmpty");
        verify(empty.visible);
        compare(empty.title, "Nothing yet");
        compare(empty.line, "Files Marlet changes will be listed here.");
        verify(!part("exportButton").enabled && !part("clearHistoryButton").enabled);
    }

    function test_days_have_headings_and_rows_their_texts() {
        fill();
        verify(!part("historyEmpty").visible);
        compare(inRow(0, "historyTitle").text, "Charade");
        compare(inRow(0, "historySub").text, "1963");
        compare(inRow(0, "historyText").text, "Failed: there isn't enough free space. Free up some space, then press Retry.");
        compare(inRow(1, "historyText").text, "Tagged · details and cover updated in place");
        verify(inRow(1, "historyTime").text !== "");
        compare(row(0).ListView.section, "Today");
        compare(row(2).ListView.section, "Yesterday");
    }

    function test_the_filter_goes_by_click_and_by_key() {
        fill();
        const filter = part("historyFilter");
        compare(filter.model, ["All", "Done", "Not done"]);
        click(findChild(filter, "segment1"));
        tryVerify(() => list().count === 2);
        filter.forceActiveFocus();
        keyClick(Qt.Key_Right);
        tryVerify(() => list().count === 1);
        compare(inRow(0, "historyTitle").text, "Charade");
        click(findChild(filter, "segment0"));
        tryVerify(() => list().count === 3);
    }

    function test_the_search_is_reached_by_its_key_and_leaves_what_fits() {
        fill();
        const search = part("historySearch");
        keyClick(Qt.Key_F, Qt.ControlModifier);
        verify(search.activeFocus);
        for (const key of [Qt.Key_S, Qt.Key_I, Qt.Key_N, Qt.Key_T]) keyClick(key);
        tryVerify(() => list().count === 1);
        compare(inRow(0, "historyTitle").text, "Sintel");
        keyClick(Qt.Key_Q);
        tryVerify(() => part("historyNothing").visible);
        compare(part("historyNothing").title, "Nothing here yet.");
        keyClick(Qt.Key_Escape);
        tryVerify(() => list().visible && list().count === 3);
    }

    function test_a_click_opens_a_row_and_shows_its_details() {
        fill();
        click(row(0), 200, 20);
        tryVerify(() => row(0).open && row(0).details.length > 0);
        compare(row(0).details, ["File", "Charade.mp4", "What happened", "There isn't enough free space.",
                                 "What to do", "Free up some space, then press Retry.",
                                 "Technical", "Not enough free space"]);
        compare(inRow(0, "detail0").text, "Charade.mp4");
        compare(inRow(0, "detailShow").text, "Show in Folder");
        compare(inRow(0, "detailAgain").text, "Try Again");
        verify(!inRow(0, "detailRestore").visible);
        click(row(0), 200, 20);
        tryVerify(() => !row(0).open);
    }

    function test_the_keyboard_moves_opens_and_destroys_nothing() {
        fill();
        list().forceActiveFocus();
        list().currentIndex = 0;
        keyClick(Qt.Key_Down);
        compare(list().currentIndex, 1);
        keyClick(Qt.Key_Return);
        tryVerify(() => row(1).open);
        keyClick(Qt.Key_Space);
        tryVerify(() => !row(1).open);
        keyClick(Qt.Key_Delete);
        keyClick(Qt.Key_Backspace);
        compare(Stage.historyCount(), 3);
        keyClick(Qt.Key_End);
        compare(list().currentIndex, 2);
        keyClick(Qt.Key_Home);
        compare(list().currentIndex, 0);
    }

    function test_the_menu_offers_a_restore_only_where_there_is_one() {
        fill();
        Stage.keepOriginal("Sintel.mp4");
        const menu = part("historyMenu");
        click(row(2), 200, 20, Qt.RightButton);
        tryVerify(() => menu.opened);
        compare(menu.itemAt(0).text, "Show in Folder");
        compare(menu.itemAt(1).text, "Try Again");
        compare(menu.itemAt(2).text, "Restore Original Details…");
        tryVerify(() => row(2).restorable === 0);
        verify(!menu.itemAt(2).enabled);
        keyClick(Qt.Key_Escape);
        tryVerify(() => !menu.visible);

        list().forceActiveFocus();
        list().currentIndex = 1;
        keyClick(Qt.Key_Menu);
        tryVerify(() => menu.opened);
        tryVerify(() => menu.itemAt(2).enabled);
        keyClick(Qt.Key_Escape);
        tryVerify(() => !menu.visible);
    }

    function test_a_restore_asks_and_then_runs() {
        fill();
        Stage.keepOriginal("Sintel.mp4");
        click(row(1), 200, 20);
        tryVerify(() => row(1).restorable === 1);
        const question = part("restoreQuestion");
        click(inRow(1, "detailRestore"));
        tryVerify(() => question.opened);
        compare(question.title, "Restore original details?");
        compare(question.message, "The tags and covers these 1 file had before Marlet first changed them are put back. The picture and sound are not touched.");
        compare(question.acceptText, "Restore 1");
        compare(question.rejectText, "Cancel");
        keyClick(Qt.Key_Escape);
        tryVerify(() => !question.visible);
        compare(Stage.queuedNames(), []);

        click(inRow(1, "detailRestore"));
        tryVerify(() => question.opened);
        click(findChild(question.contentItem, "questionAccept"));
        tryVerify(() => App.tab === 1);
        compare(Stage.queuedNames(), ["Sintel.mp4"]);
        tryVerify(() => App.queue.stage === "finished");
    }

    function test_try_again_hands_the_files_to_review() {
        fill();
        click(row(0), 200, 20);
        tryVerify(() => row(0).open);
        click(inRow(0, "detailAgain"));
        tryVerify(() => App.tab === 0);
        tryVerify(() => Stage.fileNames().length === 1, 10000);
        compare(Stage.fileNames(), ["Charade.mp4"]);
    }

    function test_clear_history_asks() {
        fill();
        compare(part("clearHistoryButton").text, "Clear History…");
        click(part("clearHistoryButton"));
        const question = findChild(root, "clearHistory");
        tryVerify(() => question.opened);
        click(findChild(question.contentItem, "questionAccept"));
        tryVerify(() => part("historyEmpty").visible);
        compare(Stage.historyCount(), 0);
    }

    function test_export_offers_its_name_and_tells_when_it_is_done() {
        fill();
        compare(part("exportButton").text, "Export");
        compare(part("exportButton").help, "Export History as CSV");
        verify(App.history.exportPlace().toString().endsWith("/Marlet%20History.csv") ||
               App.history.exportPlace().toString().endsWith("/Marlet History.csv"));
        App.history.exportTo("file://" + Stage.library + "/Marlet History.csv");
        tryCompare(App, "toast", "Saved “Marlet History.csv”");
        verify(Stage.exists("Marlet History.csv"));
        App.history.exportTo("file://" + Stage.library + "/no folder/a.csv");
        tryVerify(() => App.notice.startsWith("History couldn't be saved as “a.csv”: "));
    }

    function test_narrow_windows_keep_every_command() {
        tests.width = 720;
        fill();
        verify(part("clearHistoryIcon").visible && part("exportButton").visible);
        const view = findChild(root, "historyView");
        for (const name of ["historyFilter", "historySearch", "clearHistoryIcon", "exportButton"]) {
            polish(part(name));
            const place = part(name).mapToItem(view, 0, 0);
            verify(place.x >= 0 && place.x + part(name).width <= view.width, name);
        }
        const search = part("historySearch"), icon = part("clearHistoryIcon");
        verify(search.mapToItem(view, 0, 0).x + search.width <= icon.mapToItem(view, 0, 0).x);
        compare(part("exportButton").help, "Export History as CSV");
        tests.width = 1180;
    }
}
