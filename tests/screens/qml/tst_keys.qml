import QtQuick
import QtQml
import QtTest
import Marlet
import MarletTest

/// Every key that the sheet of keys lists does what it says. A key that is listed and not driven
/// here fails.
TestCase {
    id: tests
    name: "Keys"
    when: windowShown
    visible: true
    width: 1180
    height: 760

    RootView { id: root; anchors.fill: parent }
    Shortcuts { root: root }

    SignalSpy { id: files; target: root; signalName: "filesAsked" }
    SignalSpy { id: folders; target: root; signalName: "folderAsked" }
    Instantiator {
        id: listed
        model: App.settings.keys
        delegate: QtObject {
            required property string place
            required property list<string> caps
        }
    }

    readonly property var sheets: ["settingsSheet", "aboutSheet", "keysSheet", "compareSheet"]
    readonly property var modifiers: ({ Ctrl: Qt.ControlModifier, Shift: Qt.ShiftModifier, Alt: Qt.AltModifier })
    property string pressed

    function init() {
        Stage.clear();
        files.clear();
        folders.clear();
    }
    function cleanup() {
        App.picker.close();
        tryVerify(() => !part("matchPicker").visible);
        for (const name of sheets) {
            const sheet = part(name);
            if (sheet === null) continue;
            sheet.close();
            tryVerify(() => !sheet.visible);
        }
        for (const name of ["mainMenu", "reviewMenu", "jobMenu", "historyMenu"]) part(name).close();
        while (App.queue.stage === "running") {
            Stage.endJob("done", "Details written");
            wait(1);
        }
    }
    function part(name) { return findChild(root, name); }
    /// The key that the test is about.
    function press() {
        const caps = pressed.split("+");
        const name = caps.pop();
        const key = name === "," ? Qt.Key_Comma : Qt["Key_" + name];
        verify(key !== undefined, name);
        keyClick(key, caps.reduce((sum, cap) => sum | modifiers[cap], Qt.NoModifier));
    }
    function opens(name) { tryVerify(() => part(name).opened, 5000, name); }
    function list(name) {
        const view = part(name);
        view.forceActiveFocus(Qt.TabFocusReason);
        view.forceLayout();
        return view;
    }

    function films() {
        Stage.place([
            { name: "Alpha.mp4", title: "Alpha", year: 1963 },
            { name: "Beta.mp4", title: "Beta", year: 1999, reasons: ["The length doesn't fit"] },
            { name: "Gamma.mp4", title: "Gamma", year: 2010, reasons: ["The year doesn't fit"] }
        ]);
        const rows = list("reviewList");
        App.review.click(1, Qt.NoModifier);
        return rows;
    }
    function selected() {
        const rows = part("reviewList");
        let count = 0;
        for (let i = 0; i < rows.count; i++) if (rows.itemAtIndex(i).selected) count++;
        return count;
    }
    function inspected() {
        films();
        Stage.draft("Beta.mp4", { title: "Beta", genre: "Drama" });
        App.inspectorShown = true;
        Stage.inspect("Beta.mp4");
        tryVerify(() => App.inspector.hasDraft);
    }
    function jobs() {
        Stage.queueJobs(["a.mp4", "b.mp4"]);
        App.tab = 1;
        const rows = list("jobList");
        rows.currentIndex = 0;
        return rows;
    }
    function past() {
        App.tab = 2;
        tryCompare(App.history, "stage", "empty");
        Stage.addHistory([{ title: "Charade" }, { title: "Sintel", batch: "run 2" }]);
        tryCompare(part("historyList"), "count", 2);
        const rows = list("historyList");
        rows.currentIndex = 0;
        tryVerify(() => rows.currentItem !== null);
        return rows;
    }
    function picker() {
        Stage.place([{ name: "some.mkv", title: "Sintel", match: false }]);
        Stage.openPicker("some.mkv");
        opens("matchPicker");
        tryVerify(() => part("pickerResults") !== null && part("pickerResults").count > 0, 20000);
    }
    function sources() {
        App.openSettings();
        opens("settingsSheet");
        const rows = list("sourceList");
        rows.currentIndex = 1;
        return rows;
    }

    readonly property var acts: ({
        "Anywhere: Ctrl+O": () => { press(); compare(files.count, 1); },
        "Anywhere: Ctrl+Shift+O": () => { press(); compare(folders.count, 1); },
        "Anywhere: Ctrl+1": () => { App.tab = 2; press(); compare(App.tab, 0); },
        "Anywhere: Ctrl+2": () => { press(); compare(App.tab, 1); },
        "Anywhere: Ctrl+3": () => { press(); compare(App.tab, 2); },
        "Anywhere: Ctrl+Alt+I": () => { press(); verify(App.inspectorShown); press(); verify(!App.inspectorShown); },
        "Anywhere: Ctrl+,": () => { press(); opens("settingsSheet"); },
        "Anywhere: F1": () => { press(); opens("keysSheet"); },
        "Anywhere: Ctrl+Q": () => skip("It ends the program: tst_quit_by_key.qml presses it."),
        "Anywhere: Escape": () => {
            App.openAbout();
            opens("aboutSheet");
            press();
            tryVerify(() => !part("aboutSheet").visible);
        },
        "Review: Ctrl+F": () => { films(); press(); verify(part("reviewList").parent.activeFocus); verify(!part("reviewList").activeFocus); },
        "Review: Up": () => { const rows = films(); press(); compare(rows.currentIndex, 0); },
        "Review: Down": () => { const rows = films(); press(); compare(rows.currentIndex, 2); },
        "Review: Ctrl+A": () => { films(); press(); compare(selected(), 3); },
        "Review: Return": () => { films(); press(); verify(App.inspectorShown); },
        "Review: F2": () => { films(); press(); opens("matchPicker"); },
        "Review: Ctrl+Return": () => {
            films();
            Stage.draft("Alpha.mp4", { title: "Alpha" });
            App.review.click(0, Qt.NoModifier);
            press();
            tryVerify(() => Stage.queuedNames().length === 1, 20000);
        },
        "Review: Ctrl+Shift+Return": () => { films(); press(); verify(Stage.isConfirmed("Beta.mp4")); verify(!Stage.isConfirmed("Gamma.mp4")); },
        "Review: Delete": () => { films(); press(); compare(Stage.fileNames(), ["Alpha.mp4", "Gamma.mp4"]); },
        "Review: Shift+F10": () => { films(); press(); opens("reviewMenu"); },
        "Inspector: Ctrl+Z": () => {
            inspected();
            App.inspector.details.edit(0, "Gamma");
            compare(Stage.draftOf("Beta.mp4").title, "Gamma");
            press();
            compare(Stage.draftOf("Beta.mp4").title, "Beta");
        },
        "Inspector: Ctrl+D": () => { inspected(); tryVerify(() => App.inspector.compare.possible); press(); opens("compareSheet"); },
        "Which one is this?: Ctrl+F": () => { picker(); part("pickerResults").forceActiveFocus(); press(); verify(part("pickerQuery").activeFocus); },
        "Which one is this?: Return": () => {
            picker();
            part("pickerResults").forceActiveFocus();
            press();
            tryVerify(() => !App.picker.open, 20000);
            compare(Stage.matchedTitle("some.mkv"), "Sintel");
        },
        "Which one is this?: Escape": () => { picker(); press(); verify(!App.picker.open); },
        "Queue: Ctrl+Return": () => { jobs(); press(); tryCompare(App.queue, "stage", "running"); },
        "Queue: Space": () => {
            jobs();
            App.queue.start();
            tryCompare(App.queue, "stage", "running");
            press();
            tryVerify(() => App.queue.paused);
            press();
            tryVerify(() => !App.queue.paused);
        },
        "Queue: Return": () => {
            jobs();
            App.queue.start();
            for (let i = 0; i < 2; i++) Stage.endJob("failed", "Not enough free space");
            tryCompare(App.queue, "stage", "finished");
            const rows = list("jobList");
            rows.currentIndex = 0;
            press();
            tryVerify(() => rows.itemAtIndex(0).open);
            press();
            tryVerify(() => !rows.itemAtIndex(0).open);
        },
        "Queue: Delete": () => { jobs(); press(); compare(Stage.queuedNames(), ["b.mp4"]); },
        "Queue: Shift+F10": () => { jobs(); press(); opens("jobMenu"); },
        "History: Ctrl+F": () => { past(); press(); verify(part("historySearch").activeFocus); },
        "History: Return": () => { const rows = past(); press(); tryVerify(() => rows.itemAtIndex(0)?.open === true); },
        "History: Shift+F10": () => { past(); press(); opens("historyMenu"); },
        "Settings: Alt+Up": () => { const rows = sources(); press(); compare(rows.currentIndex, 0); compare(rows.itemAtIndex(0).title, "TMDB"); },
        "Settings: Alt+Down": () => { const rows = sources(); press(); compare(rows.currentIndex, 2); compare(rows.itemAtIndex(2).title, "TMDB"); }
    })

    function test_every_listed_key_data() {
        const rows = [];
        for (let i = 0; i < listed.count; i++) {
            const entry = listed.objectAt(i);
            rows.push({ tag: entry.place + ": " + Array.from(entry.caps).join("+"), keys: Array.from(entry.caps).join("+") });
        }
        verify(rows.length > 30);
        return rows;
    }
    function test_every_listed_key(data) {
        pressed = data.keys;
        verify(acts[data.tag] !== undefined, data.tag + " is driven here");
        acts[data.tag]();
    }
    function test_all_that_is_driven_is_listed() {
        compare(Object.keys(acts).length, listed.count);
    }
}
