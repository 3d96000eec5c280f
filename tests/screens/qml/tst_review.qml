import QtQuick
import QtTest
import Marlet
import MarletTest

TestCase {
    id: tests
    name: "Review"
    when: windowShown
    visible: true
    width: 900
    height: 700

    ReviewView { id: view; anchors.fill: parent; focus: true }
    SignalSpy { id: files; target: view; signalName: "filesAsked" }

    function item(name) { return findChild(view, name); }
    function list() { return item("reviewList"); }
    function row(index) {
        list().forceLayout();
        return list().itemAtIndex(index);
    }
    function rows() {
        const titles = [];
        list().forceLayout();
        for (let i = 0; i < list().count; ++i)
            titles.push(row(i).title);
        return titles.join(", ");
    }
    function selected() {
        const titles = [];
        for (let i = 0; i < list().count; ++i)
            if (row(i).selected)
                titles.push(row(i).title);
        return titles.join(", ");
    }
    function placeThree() {
        Stage.place([
            { name: "Alpha.mp4", title: "Alpha", year: 1963 },
            { name: "Beta.mkv", title: "Beta", year: 1999, reasons: ["The length doesn't fit", "Another"] },
            { name: "Gamma.mp4", title: "Gamma", year: 2010, reasons: ["The year doesn't fit"] }
        ]);
    }
    /// Where a positioner has put it by then.
    function click(name) {
        tryVerify(() => item(name).enabled && item(name).visible, 5000, name);
        verify(waitForItemPolished(item(name).parent, 5000));
        mouseClick(item(name));
    }

    function init() {
        Stage.clear();
        view.forceActiveFocus();
        files.clear();
    }

    function test_an_empty_review_asks_for_files() {
        const drop = item("dropHere");
        verify(drop.visible);
        compare(drop.title, "Drop movies or TV shows here");
        compare(drop.line, "MP4, M4V, MKV and MOV. Whole folders and seasons are fine.");
        compare(drop.linkText, "choose files");
        mouseClick(findChild(drop, "emptyLink"));
        compare(files.count, 1);
    }

    function test_rows_show_their_state_in_words_and_their_first_reason() {
        placeThree();
        compare(rows(), "Alpha, Beta, Gamma");
        compare(row(0).verdict, "Ready");
        compare(row(0).sign, "ready");
        compare(row(1).verdict, "Check this");
        compare(row(1).sign, "look");
        compare(row(1).line, "The length doesn't fit");
        compare(row(1).badge, "MKV, will become M4V");
        compare(row(0).badge, "");
        compare(row(0).height, 64);
        compare(row(1).Accessible.name,
                "Beta, 1999. Check this. The length doesn't fit. MKV, will become M4V");
    }

    function test_a_season_counts_its_doubtful_episodes() {
        const episodes = [];
        for (let i = 1; i <= 3; ++i)
            episodes.push({ name: "e" + i + ".mp4", title: "Show", show: "Show", season: 1, episode: i,
                            reasons: i < 3 ? ["Only the file number to go on"] : [] });
        Stage.place(episodes);
        compare(list().count, 1);
        compare(row(0).verdict, "2 episodes need a look");
    }

    function test_a_click_selects_a_row_and_shows_its_first_file() {
        placeThree();
        mouseClick(row(1));
        compare(selected(), "Beta");
        compare(App.review.current, 1);
        verify(list().activeFocus);
        verify(row(1).current);
    }

    function test_control_and_shift_clicks_select_several() {
        placeThree();
        mouseClick(row(0));
        mouseClick(row(2), undefined, undefined, Qt.LeftButton, Qt.ControlModifier);
        compare(selected(), "Alpha, Gamma");
        compare(item("selectionCount").text, "2 selected");
        mouseClick(row(0));
        mouseClick(row(2), undefined, undefined, Qt.LeftButton, Qt.ShiftModifier);
        compare(selected(), "Alpha, Beta, Gamma");
    }

    function test_arrows_shift_and_control_a_select_by_keyboard() {
        placeThree();
        list().forceActiveFocus();
        keyClick(Qt.Key_Down);
        compare(selected(), "Alpha");
        keyClick(Qt.Key_Down, Qt.ShiftModifier);
        compare(selected(), "Alpha, Beta");
        keyClick(Qt.Key_A, Qt.ControlModifier);
        compare(selected(), "Alpha, Beta, Gamma");
        keyClick(Qt.Key_Escape);
        compare(selected(), "Beta");
    }

    function test_delete_removes_and_goes_on() {
        placeThree();
        mouseClick(row(0));
        keyClick(Qt.Key_Delete);
        tryCompare(list(), "count", 2);
        compare(rows(), "Beta, Gamma");
        compare(selected(), "Beta");
    }

    function test_double_click_and_return_open_the_inspector() {
        placeThree();
        App.inspectorShown = false;
        mouseDoubleClickSequence(row(1));
        verify(App.inspectorShown);
        App.inspectorShown = false;
        keyClick(Qt.Key_Return);
        verify(App.inspectorShown);
        App.inspectorShown = false;
    }

    function test_the_menu_opens_by_mouse_and_by_its_key_and_removes() {
        placeThree();
        mouseClick(row(2), undefined, undefined, Qt.RightButton);
        const menu = item("reviewMenu");
        tryVerify(() => menu.opened);
        compare(selected(), "Gamma");
        keyClick(Qt.Key_Escape);
        tryVerify(() => !menu.visible);
        list().forceActiveFocus();
        keyClick(Qt.Key_Menu);
        tryVerify(() => menu.opened);
        const names = [];
        for (let i = 0; i < menu.count; ++i)
            names.push(menu.itemAt(i).text);
        compare(names.join(", "), "Add to Queue, Accept This, Choose Match…, Refresh from Sources, Show in Folder, Remove from Review");
        verify(waitForItemPolished(menu.contentItem, 5000));
        mouseClick(menu.itemAt(5));
        tryCompare(list(), "count", 2);
        compare(rows(), "Alpha, Beta");
    }

    function test_the_filter_shows_what_needs_a_look_and_accept_these_goes_through_it() {
        placeThree();
        mouseClick(findChild(item("reviewFilter"), "segment1"));
        compare(rows(), "Beta, Gamma");
        compare(item("reviewFound").text, "2 of 3");
        list().forceActiveFocus();
        keyClick(Qt.Key_A, Qt.ControlModifier);
        const accept = item("acceptThese");
        verify(accept.visible);
        compare(accept.text, "Accept These");
        click("acceptThese");
        tryCompare(list(), "count", 0);
        verify(Stage.isConfirmed("Beta.mkv"));
        verify(Stage.isConfirmed("Gamma.mp4"));
        const nothing = item("nothingHere");
        verify(nothing.visible);
        compare(nothing.title, "Nothing needs a look");
        mouseClick(findChild(nothing, "emptyLink"));
        compare(rows(), "Alpha, Beta, Gamma");
        mouseClick(findChild(item("reviewFilter"), "segment2"));
        compare(list().count, 3);
    }

    function test_what_needs_checking_is_counted_and_a_click_filters() {
        placeThree();
        const link = item("needsChecking");
        compare(link.text, "2 need checking");
        mouseClick(link);
        compare(App.review.filter, 1);
        compare(rows(), "Beta, Gamma");
        mouseClick(row(0));
        App.review.acceptSelected();
        tryCompare(link, "text", "1 needs checking");
    }

    function test_the_search_is_reached_by_key_and_leads_back_to_the_list() {
        placeThree();
        keyClick(Qt.Key_F, Qt.ControlModifier);
        const search = item("reviewSearch");
        verify(search.activeFocus);
        keyClick(Qt.Key_B);
        keyClick(Qt.Key_E);
        compare(rows(), "Beta");
        keyClick(Qt.Key_Down);
        verify(list().activeFocus);
        compare(selected(), "Beta");
        keyClick(Qt.Key_F, Qt.ControlModifier);
        keyClick(Qt.Key_Escape);
        compare(search.text, "");
        compare(rows(), "Alpha, Beta, Gamma");
    }

    function test_a_search_that_finds_nothing_offers_all_again() {
        placeThree();
        keyClick(Qt.Key_F, Qt.ControlModifier);
        keyClick(Qt.Key_Z);
        verify(item("nothingHere").visible);
        mouseClick(findChild(item("nothingHere"), "emptyLink"));
        compare(item("reviewSearch").text, "");
        compare(rows(), "Alpha, Beta, Gamma");
    }

    function test_add_to_queue_needs_a_selection_and_add_all_something_ready() {
        Stage.place([{ name: "Beta.mp4", title: "Beta", reasons: ["The length doesn't fit"] }]);
        verify(!item("addToQueue").enabled);
        verify(!item("addAllToQueue").enabled);
        mouseClick(row(0));
        verify(item("addToQueue").enabled);
        verify(!item("addAllToQueue").enabled);
        click("acceptThese");
        tryVerify(() => item("addAllToQueue").enabled);
    }

    function test_control_return_adds_the_selection_and_add_all_the_rest() {
        Stage.makeFile("Charade (1963).mp4");
        placeThree();
        for (const title of ["Alpha", "Beta", "Gamma"])
            Stage.draft(title === "Beta" ? "Beta.mkv" : title + ".mp4", { title: title });
        mouseClick(row(0));
        keyClick(Qt.Key_Return, Qt.ControlModifier);
        tryVerify(() => Stage.queuedNames().length === 1);
        compare(Stage.queuedNames()[0], "Alpha.mp4");
        tryVerify(() => rows() === "Beta, Gamma");
        mouseClick(row(1));
        click("acceptThese");
        click("addAllToQueue");
        tryVerify(() => Stage.queuedNames().length === 2);
        tryVerify(() => rows() === "Beta");
    }

    function test_locked_files_say_so_and_cannot_be_added() {
        Stage.place([{ name: "Media Library/Alpha.mp4", title: "Alpha" }]);
        const bar = item("lockedBar");
        verify(bar.visible);
        compare(bar.text, "Files in your Media Library are locked: turn on “Allow changes to my Media Library” in Settings to write to them.");
        verify(!item("addAllToQueue").enabled);
        Stage.setSetting("allowLibraryWrites", true);
        Stage.settle();
        verify(!bar.visible);
        verify(item("addAllToQueue").enabled);
    }

    function test_f2_opens_the_match_picker() {
        placeThree();
        mouseClick(row(1));
        keyClick(Qt.Key_F2);
        tryVerify(() => App.picker.open);
        compare(App.picker.fileName, "Beta.mkv");
    }

    function test_thousands_of_rows_make_few_items() {
        Stage.placeMany(5000);
        compare(list().count, 5000);
        list().forceLayout();
        verify(list().contentItem.children.length < 60, list().contentItem.children.length);
        list().forceActiveFocus();
        keyClick(Qt.Key_End);
        compare(App.review.current, 4999);
        tryVerify(() => list().atYEnd);
        keyClick(Qt.Key_Home);
        tryVerify(() => list().atYBeginning);
        keyClick(Qt.Key_PageDown);
        verify(App.review.current > 3);
    }

    function test_a_correction_in_a_long_list_leaves_the_place() {
        Stage.placeMany(500);
        list().forceActiveFocus();
        App.review.click(250, Qt.NoModifier);
        const at = list().contentY;
        verify(at > 0);
        keyClick(Qt.Key_Delete);
        tryCompare(list(), "count", 499);
        compare(list().contentY, at);
        compare(App.review.current, 250);
    }
}
