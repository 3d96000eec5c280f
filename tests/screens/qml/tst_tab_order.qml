import QtQuick
import QtTest
import Marlet
import MarletTest

// Tab through the program's own window: it comes to all that can be used and back, and at each step
// one sees where it is.
Item {
    width: 100
    height: 100

    MainWindow { id: main; width: 1280; height: 760 }

    WindowCase {
        window: main
        name: "TabOrder"

        function nameOf(item) {
            return item.Accessible.name;
        }
        /// The names of what Tab comes to, until it comes to the first again.
        function round(where) {
            const first = window.activeFocusItem;
            verify(first, where + ": the keyboard is somewhere");
            const names = [], seen = [];
            let before = grabImage(window.contentItem);
            for (let step = 0; step < 80; ++step) {
                keyClick(Qt.Key_Tab);
                const item = window.activeFocusItem;
                if (seen.includes(item)) break;
                seen.push(item);
                const told = where + ", step " + step + ": " + item.objectName + " " + nameOf(item);
                verify(item.visible && item.enabled, told);
                verify(nameOf(item) !== "", told + " has no name");
                const now = grabImage(window.contentItem);
                verify(!now.equals(before), told + " can't be seen to have the keyboard");
                before = now;
                names.push(nameOf(item));
            }
            verify(seen.length < 80, where + ": it comes round");
            verify(seen.length > 3, where + ": " + names.join(", "));
            return names;
        }
        function inOrder(names, wanted) {
            let at = -1;
            // The round may begin anywhere.
            const twice = names.concat(names);
            for (const name of wanted) {
                const next = twice.findIndex((each, index) => index > at && each.startsWith(name));
                verify(next > at, name + " after " + (twice[at] ?? "the start") + " in " + names.join(" | "));
                at = next;
            }
            verify(at < twice.length);
        }

        function test_review() {
            Stage.place([{ name: "Charade.mp4", title: "Charade", year: 1963 },
                         { name: "Detour.mp4", title: "Detour", year: 1945, reasons: ["The year differs"] }]);
            Stage.draft("Detour.mp4", { title: "Detour" });
            Stage.inspect("Detour.mp4");
            inOrder(round("Review"), ["Review", "Queue", "History", "Add File", "Search Review", "Which rows are shown",
                                      "Detour", "1 need", "Add to Queue", "Choose Another Match", "Pages", "Title"]);
        }
        function test_empty_review() {
            inOrder(round("empty"), ["Review", "Queue", "History", "Add File", "Settings", "More", "choose files"]);
        }
        function test_queue() {
            Stage.queueJobs(["a.mp4", "b.mp4"]);
            App.tab = 1;
            inOrder(round("Queue"), ["Review", "Queue", "History", "Add File", "Remove All", "Start", "Film a.mp4"]);
        }
        function test_history() {
            Stage.addHistory([{ title: "Sintel" }]);
            App.tab = 2;
            inOrder(round("History"), ["History", "Add File", "Which entries", "Search History", "Clear History", "Export", "Sintel"]);
        }
        function test_a_sheet_keeps_the_keyboard() {
            App.openSettings();
            tryVerify(() => window.activeFocusItem && nameOf(window.activeFocusItem) === "Appearance");
            const names = round("Settings");
            verify(!names.includes("Add File"), names.join(", "));
            inOrder(names, ["Appearance", "Artwork for", "Apple TV (unofficial)", "Preferred languages", "Fix for Apple TV"]);
        }
    }
}
