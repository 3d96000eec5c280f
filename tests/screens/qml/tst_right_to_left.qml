import QtQuick
import QtTest
import Marlet
import MarletTest

// The window of the program itself: what opens over it lies in it.
Item {
    id: stand
    width: 100
    height: 100

    MainWindow { id: main; width: 1280; height: 760 }
    Glyph { id: onward; name: "chevronRight"; size: 32; color: "black" }
    Glyph { id: back; y: 40; name: "chevronLeft"; size: 32; color: "black" }
    Glyph { id: play; x: 40; name: "play"; size: 32; color: "black" }

    WindowCase {
        window: main
        name: "RightToLeft"

        /// Each case begins with it.
        function turn() {
            main.width = 1280;
            Stage.setRightToLeft(true);
        }

        function inside(item, name) {
            const found = findChild(item, name);
            verify(found, name + " is there");
            return found;
        }
        function leftOf(item) { return item.mapToItem(null, 0, 0).x; }
        function rightOf(item) { return item.mapToItem(null, item.width, 0).x; }
        function placeFilms() {
            Stage.place([{ name: "Charade (1963).mkv", title: "Charade", year: 1963 },
                         { name: "Detour.mp4", title: "Detour", year: 1945, reasons: ["The year differs"] }]);
        }

        function test_tabs_are_at_the_right_and_buttons_at_the_left() {
            turn();
            verify(Theme.mirrored);
            compare(rightOf(part("tab0")), window.width - Theme.s2);
            verify(rightOf(part("addButton")) < window.width / 2);
            verify(leftOf(part("menuButton")) < leftOf(part("addButton")));
            Stage.setRightToLeft(false);
            verify(!Theme.mirrored);
            compare(leftOf(part("tab0")), Theme.s2);
            verify(leftOf(part("addButton")) > window.width / 2);
        }

        function test_a_row_begins_at_the_right_and_its_words_with_it() {
            turn();
            placeFilms();
            App.tab = 0;
            const list = part("reviewList");
            tryVerify(() => list.itemAtIndex(0) !== null);
            const row = list.itemAtIndex(0);
            verify(leftOf(row) > leftOf(list), "the handle lies beside the row");
            const title = Array.from(findAll(row, each => each.text === "Charade"))[0];
            const badge = Array.from(findAll(row, each => each.text === "MKV, will become M4V"))[0];
            verify(leftOf(badge) < leftOf(title));
            verify(rightOf(title) > rightOf(row) - Theme.px(140));
        }
        function findAll(item, wanted, found = []) {
            if (wanted(item)) found.push(item);
            for (let at = 0; at < item.children.length; ++at) findAll(item.children[at], wanted, found);
            return found;
        }

        function test_words_are_aligned_at_the_side_where_rows_begin() {
            turn();
            Stage.setNotice("2 files still need a look.");
            const words = findAll(part("notice"), each => each.text === "2 files still need a look." && each.lineCount)[0];
            compare(words.effectiveHorizontalAlignment, Text.AlignRight);
            Stage.setRightToLeft(false);
            compare(words.effectiveHorizontalAlignment, Text.AlignLeft);
        }

        function test_the_inspector_is_at_the_left_beside_and_over_the_content() {
            turn();
            placeFilms();
            Stage.inspect("Detour.mp4");
            const view = part("inspectorView");
            tryVerify(() => view.visible && view.width > 300);
            compare(leftOf(view), 0);
            const label = findAll(view, each => each.text === "Needs a look" || each.text === "Check this")[0];
            verify(rightOf(label) > rightOf(view) - Theme.px(60), "the verdict stands beside its symbol");
            window.width = 800;
            const sheet = part("inspectorSheet");
            tryVerify(() => sheet.opened);
            compare(sheet.edge, Qt.LeftEdge);
            App.inspectorShown = false;
            tryVerify(() => !sheet.visible);
        }

        function test_a_sheet_is_mirrored_too() {
            turn();
            App.openSettings();
            const sheet = part("settingsSheet");
            tryVerify(() => sheet.opened);
            const body = sheet.contentItem;
            verify(rightOf(inside(body, "sheetClose")) < leftOf(body) + 80);
            const segments = inside(body, "appearance");
            verify(leftOf(inside(segments, "segment0")) > leftOf(inside(segments, "segment2")));
            verify(rightOf(segments) < leftOf(body) + body.width / 2, "the control is at the end of its line");
        }

        function test_arrow_keys_follow_the_eye() {
            turn();
            App.openSettings();
            const sheet = part("settingsSheet");
            tryVerify(() => sheet.opened);
            const segments = inside(sheet.contentItem, "appearance");
            segments.forceActiveFocus(Qt.TabFocusReason);
            const before = segments.current;
            keyClick(Qt.Key_Left);
            tryCompare(segments, "current", before + 1);
            keyClick(Qt.Key_Right);
            tryCompare(segments, "current", before);
        }

        function test_the_picker_lists_from_the_right_and_its_buttons_end_at_the_left() {
            turn();
            Stage.place([{ name: "Sintel (2010).mkv", title: "Sintel", year: 2010, match: false }]);
            Stage.openPicker("Sintel (2010).mkv");
            const sheet = part("matchPicker");
            tryVerify(() => sheet.opened);
            const body = sheet.contentItem;
            const cancel = inside(body, "pickerCancel"), use = inside(body, "pickerUse");
            tryVerify(() => rightOf(use) < leftOf(cancel) && leftOf(use) === leftOf(body) + Theme.s4);
            const field = inside(body, "pickerQuery");
            verify(field.rightPadding > field.leftPadding, "the glass is at the right");
            tryVerify(() => findChild(body, "pickerResult0") !== null, 15000);
            const row = findChild(body, "pickerResult0");
            const title = findAll(row, each => each.text === row.title)[0];
            compare(title.effectiveHorizontalAlignment, Text.AlignRight);
        }

        function test_symbols_that_point_along_a_row_turn_round() {
            Stage.setRightToLeft(false);
            // The tip of an angle is at the half of its height.
            const isDark = (item, x) => grabImage(item).pixel(x, 16).hslLightness < 0.5;
            const playing = grabImage(play);
            verify(isDark(onward, 20) && !isDark(onward, 11));
            verify(isDark(back, 11) && !isDark(back, 20));
            Stage.setRightToLeft(true);
            tryVerify(() => isDark(onward, 11) && !isDark(onward, 20));
            verify(isDark(back, 20) && !isDark(back, 11));
            verify(grabImage(play).equals(playing), "time runs the same way everywhere");
        }

        function test_names_of_files_are_read_from_the_left() {
            turn();
            const name = "שלום (2010).mp4";
            Stage.place([{ name: name, title: "Shalom", year: 2010 }]);
            Stage.inspect(name);
            compare(App.inspector.fileName, "\u2066" + name + "\u2069");
            Stage.openPicker(name);
            compare(App.picker.fileName, "\u2066" + name + "\u2069");
            App.picker.close();
            Stage.clear();
            Stage.place([{ name: "Charade.mp4", title: "Charade" }]);
            Stage.inspect("Charade.mp4");
            compare(App.inspector.fileName, "Charade.mp4");
        }

        function test_progress_fills_from_the_right() {
            turn();
            Stage.queueJobs(["a.mp4"]);
            App.tab = 1;
            App.queue.start();
            Stage.reportStep("Copying", 0.5);
            const bar = part("runProgress");
            tryVerify(() => bar.value > 0.4);
            const filled = findAll(bar, each => each !== bar && Qt.colorEqual(each.color ?? "black", Theme.accent))[0];
            fuzzyCompare(rightOf(filled), rightOf(bar), 0.5);
            verify(leftOf(filled) > leftOf(bar) + bar.width * 0.3);
        }

        function test_details_of_history_stand_under_their_title() {
            turn();
            Stage.addHistory([{ title: "Sintel", name: "Sintel.mp4" }]);
            App.tab = 2;
            const list = part("historyList");
            tryVerify(() => list.itemAtIndex(0) !== null);
            const row = list.itemAtIndex(0);
            row.toggle();
            tryVerify(() => findChild(row, "detail0") !== null && findChild(row, "detail0").width > 0);
            const title = findChild(row, "historyTitle");
            const value = findChild(row, "detail0");
            verify(rightOf(value) < rightOf(title));
            verify(leftOf(value) >= leftOf(row));
        }
    }
}
