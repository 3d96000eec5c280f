import QtQuick
import QtTest
import Marlet
import MarletTest

// The program's own window with the system's text at once, one and a half and twice its size.
Item {
    width: 100
    height: 100

    MainWindow { id: main; width: 720; height: 640 }

    WindowCase {
        window: main
        name: "LargeText"

        function test_sizes_data() {
            const sizes = [];
            for (const width of [720, 1440])
                for (const factor of [1, 1.5, 2]) sizes.push({ tag: width + " px, text times " + factor, width: width, factor: factor });
            return sizes;
        }

        /// The part of an item that can be seen, in the window.
        function sight(item) {
            const place = item.mapToItem(null, 0, 0);
            let left = place.x, top = place.y, right = place.x + item.width, bottom = place.y + item.height;
            for (let above = item.parent; above; above = above.parent) {
                if (!above.clip) continue;
                const at = above.mapToItem(null, 0, 0);
                left = Math.max(left, at.x);
                top = Math.max(top, at.y);
                right = Math.min(right, at.x + above.width);
                bottom = Math.min(bottom, at.y + above.height);
            }
            return right - left > 1 && bottom - top > 1 ? { left: left, top: top, right: right, bottom: bottom } : null;
        }
        function isButton(item) { return item.down !== undefined && item.text !== undefined; }
        function isField(item) { return item.cursorPosition !== undefined && item.readOnly === false; }
        function controlsIn(item, found = []) {
            if (!item.visible || item.opacity === 0) return found;
            if (isButton(item) || isField(item)) found.push(item);
            for (let at = 0; at < item.children.length; ++at) controlsIn(item.children[at], found);
            return found;
        }
        function isWithin(item, other) {
            for (let above = item; above; above = above.parent) if (above === other) return true;
            return false;
        }
        function wordsCutIn(item) {
            if (!item.visible) return "";
            if (item.truncated === true) return item.text;
            for (let at = 0; at < item.children.length; ++at) {
                const cut = wordsCutIn(item.children[at]);
                if (cut !== "") return cut;
            }
            return "";
        }
        /// Nothing that can be used sticks out of the window, lies on another or has its words cut.
        function check(where, root) {
            // All is in its place once it was drawn.
            grabImage(window.contentItem);
            const controls = controlsIn(root).map(item => ({ item: item, sight: sight(item) })).filter(each => each.sight);
            verify(controls.length > 0, where + ": there is something to use");
            for (const each of controls) {
                const told = where + ": " + (each.item.objectName || each.item.text) + " ";
                const place = each.item.mapToItem(null, 0, 0);
                verify(place.x >= -1 && place.x + each.item.width <= window.width + 1, told + "sticks out, " + place.x + " " + each.item.width);
                if (isButton(each.item)) compare(wordsCutIn(each.item), "", told + "is cut");
                for (const other of controls) {
                    if (isWithin(each.item, other.item) || isWithin(other.item, each.item)) continue;
                    const apart = each.sight.right <= other.sight.left + 1 || other.sight.right <= each.sight.left + 1
                               || each.sight.bottom <= other.sight.top + 1 || other.sight.bottom <= each.sight.top + 1;
                    verify(apart, told + "lies on " + (other.item.objectName || other.item.text));
                }
            }
        }
        function prepare(data) {
            window.width = data.width;
            window.height = data.width === 720 ? 640 : 900;
            tryCompare(window.contentItem, "width", data.width);
            Stage.setTextScale(data.factor);
            compare(Theme.body, Math.round(13 * data.factor));
        }
        function placeFilms() {
            Stage.place([
                { name: "Charade (1963).mkv", title: "Charade", year: 1963 },
                { name: "Detour.mp4", title: "Detour", year: 1945, reasons: ["The length differs by 12 minutes"] }
            ]);
        }

        function test_review_data() { return test_sizes_data(); }
        function test_review(data) {
            prepare(data);
            check("empty", window.contentItem);
            placeFilms();
            App.review.click(1, Qt.NoModifier);
            App.review.setFilter(1);
            check("rows", window.contentItem);
        }

        function test_inspector_data() { return test_sizes_data(); }
        function test_inspector(data) {
            prepare(data);
            placeFilms();
            Stage.draft("Detour.mp4", { title: "Detour", tall: ["/a.jpg", "/b.jpg"] });
            Stage.inspect("Detour.mp4");
            const view = part("inspectorView");
            const over = part("inspectorSheet");
            tryVerify(() => view.visible && view.width > 300 && (over.opened || !over.visible));
            for (const page of [0, 1, 2]) {
                App.inspector.page = page;
                check("page " + page, view);
            }
            App.inspectorShown = false;
            tryVerify(() => !over.visible);
        }

        function test_queue_data() { return test_sizes_data(); }
        function test_queue(data) {
            prepare(data);
            Stage.queueJobs(["a.mp4", "b.mp4"]);
            App.tab = 1;
            check("waiting", window.contentItem);
            App.queue.start();
            Stage.reportStep("Copying", 0.5);
            check("running", window.contentItem);
            Stage.endJob("failed", "verification failed: the sound of track 2 differs");
            Stage.endJob("done", "Details written");
            check("finished", window.contentItem);
        }

        function test_history_data() { return test_sizes_data(); }
        function test_history(data) {
            prepare(data);
            Stage.addHistory([{ title: "Sintel", result: "failed", message: "writing failed" }, { title: "Charade" }]);
            App.tab = 2;
            const list = part("historyList");
            tryVerify(() => list.itemAtIndex(0) !== null);
            list.itemAtIndex(0).toggle();
            tryVerify(() => findChild(list, "detailAgain") !== null);
            check("opened", window.contentItem);
            App.askToClearHistory();
            const question = part("clearHistory");
            tryVerify(() => question.opened);
            check("a question", question.contentItem);
        }

        function test_sheets_data() { return test_sizes_data(); }
        function test_sheets(data) {
            prepare(data);
            for (const name of ["settingsSheet", "aboutSheet", "keysSheet"]) {
                const sheet = part(name);
                sheet.open();
                tryVerify(() => sheet.opened);
                const page = name === "settingsSheet" ? findChild(sheet.contentItem, "settingsPage") : null;
                check(name, sheet.contentItem);
                if (page)
                    for (page.contentY = 0; page.contentY < page.contentHeight - page.height - 1;
                         page.contentY = Math.min(page.contentY + page.height / 2, page.contentHeight - page.height))
                        check(name + " at " + page.contentY, sheet.contentItem);
                sheet.close();
                tryVerify(() => !sheet.visible);
            }
        }

        function test_picker_data() { return test_sizes_data(); }
        function test_picker(data) {
            prepare(data);
            Stage.place([{ name: "tin.s1e01.mkv", show: "The Tin Observatory", title: "The Tin Observatory", season: 1, episode: 1,
                           duration: 22 * 60 }]);
            Stage.openPicker("tin.s1e01.mkv");
            const sheet = part("matchPicker");
            tryVerify(() => sheet.opened);
            tryVerify(() => findChild(sheet.contentItem, "pickerResult0") !== null, 15000);
            check("results", sheet.contentItem);
            App.picker.pane.use();
            tryVerify(() => App.picker.pane.show.open && findChild(sheet.contentItem, "pickerEpisode0") !== null, 15000);
            check("episodes", sheet.contentItem);
            App.picker.tagByHand();
            tryVerify(() => findChild(sheet.contentItem, "handTitle") !== null);
            check("the hand form", sheet.contentItem);
        }

        function test_a_long_notice_scrolls_to_its_end_by_keyboard() {
            prepare({ width: 720, factor: 2 });
            const sentence = "What else there is to be told of it at some length. ";
            Stage.setNotice(sentence.repeat(30) + "The very end.");
            const bar = part("notice");
            const words = findChild(bar, "noticeWords");
            verify(bar.height < window.height * 0.55, "the page stays usable");
            verify(words.contentHeight > words.height);
            compare(wordsCutIn(bar), "");
            words.forceActiveFocus(Qt.TabFocusReason);
            keyClick(Qt.Key_End);
            fuzzyCompare(words.contentY + words.height, words.contentHeight, 1);
            keyClick(Qt.Key_Home);
            compare(words.contentY, 0);
            Stage.setNotice("Short.");
            verify(!words.activeFocusOnTab);
        }
    }
}
