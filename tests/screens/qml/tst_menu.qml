import QtQuick
import QtTest
import Marlet
import MarletTest

/// The main menu: each command by mouse, by keyboard in the menu, and by its key without the menu.
TestCase {
    id: tests
    name: "Menu"
    when: windowShown
    visible: true
    width: 1180
    height: 760

    RootView { id: root; anchors.fill: parent }
    Shortcuts { root: root }

    SignalSpy { id: files; target: root; signalName: "filesAsked" }
    SignalSpy { id: folders; target: root; signalName: "folderAsked" }
    SignalSpy { id: keys; target: root; signalName: "keysAsked" }

    readonly property var sheets: ["settingsSheet", "aboutSheet", "keysSheet"]
    readonly property var names: ["menuAdd", "menuFolder", "menuInspector", "menuClear", "menuSettings", "menuKeys", "menuUpdates", "menuAbout", "menuQuit"]

    function init() {
        Stage.clear();
        for (const spy of [files, folders, keys]) spy.clear();
    }
    function cleanup() {
        menu().close();
        for (const name of sheets) {
            findChild(root, name).close();
            tryVerify(() => !findChild(root, name).visible);
        }
        tryVerify(() => !menu().visible);
    }
    function menu() { return findChild(root, "mainMenu"); }
    function entry(name) {
        for (let i = 0; i < menu().count; i++)
            if (menu().itemAt(i).objectName === name) return menu().itemAt(i);
        return null;
    }
    function open() {
        mouseClick(findChild(root, "menuButton"));
        tryVerify(() => menu().opened);
    }
    function choose(name) {
        open();
        waitForItemPolished(menu().contentItem);
        mouseClick(entry(name));
        tryVerify(() => !menu().visible);
    }
    /// As a person does who has no mouse: open, go down, Return.
    function chooseByKeys(name) {
        findChild(root, "menuButton").forceActiveFocus(Qt.TabFocusReason);
        keyClick(Qt.Key_Return);
        tryVerify(() => menu().opened);
        for (let i = 0; i < 20 && menu().itemAt(menu().currentIndex) !== entry(name); i++)
            keyClick(Qt.Key_Down);
        compare(menu().itemAt(menu().currentIndex), entry(name));
        keyClick(Qt.Key_Return);
        tryVerify(() => !menu().visible);
    }
    function opens(name) { tryVerify(() => findChild(root, name).opened, 5000, name); }

    function test_it_lists_the_commands_with_their_keys() {
        open();
        const seen = [];
        for (let i = 0; i < menu().count; i++)
            if (menu().itemAt(i).objectName !== "") seen.push(menu().itemAt(i).objectName);
        compare(seen, names);
        const texts = { menuAdd: "Add File…", menuFolder: "Add Folder…", menuInspector: "Show Inspector", menuClear: "Clear History…", menuSettings: "Settings", menuKeys: "Keys", menuUpdates: "Check for Updates…", menuAbout: "About Marlet", menuQuit: "Quit" };
        const caps = { menuAdd: "Ctrl+O", menuFolder: "Ctrl+Shift+O", menuInspector: "Ctrl+Alt+I", menuClear: "", menuSettings: "Ctrl+,", menuKeys: "F1", menuUpdates: "", menuAbout: "", menuQuit: "Ctrl+Q" };
        for (const name of names) {
            compare(entry(name).text, texts[name]);
            compare(entry(name).keys, caps[name], name);
            verify(entry(name).width >= entry(name).implicitWidth, name + " is not cut");
        }
        keyClick(Qt.Key_Escape);
        tryVerify(() => !menu().visible);
    }

    function test_commands_data() {
        return [
            { tag: "Add File", name: "menuAdd", press: () => keyClick(Qt.Key_O, Qt.ControlModifier), check: () => compare(files.count, 1) },
            { tag: "Add Folder", name: "menuFolder", press: () => keyClick(Qt.Key_O, Qt.ControlModifier | Qt.ShiftModifier), check: () => compare(folders.count, 1) },
            { tag: "Show Inspector", name: "menuInspector", press: () => keyClick(Qt.Key_I, Qt.ControlModifier | Qt.AltModifier), check: () => verify(App.inspectorShown) },
            { tag: "Settings", name: "menuSettings", press: () => keyClick(Qt.Key_Comma, Qt.ControlModifier), check: () => opens("settingsSheet") },
            { tag: "Keys", name: "menuKeys", press: () => keyClick(Qt.Key_F1), check: () => opens("keysSheet") },
            { tag: "About", name: "menuAbout", check: () => opens("aboutSheet") },
            { tag: "Clear History", name: "menuClear", check: () => {
                opens("clearHistory");
                compare(App.tab, 2);
                keyClick(Qt.Key_Escape);
                tryVerify(() => !findChild(root, "clearHistory").visible);
            } }
        ];
    }
    function test_commands(data) {
        choose(data.name);
        data.check();
        again();
        chooseByKeys(data.name);
        data.check();
        if (data.press === undefined) return;
        again();
        data.press();
        data.check();
    }
    function again() {
        cleanup();
        init();
    }

    function test_the_inspectors_command_says_what_it_will_do() {
        App.inspectorShown = true;
        compare(entry("menuInspector").text, "Hide Inspector");
        choose("menuInspector");
        verify(!App.inspectorShown);
        compare(entry("menuInspector").text, "Show Inspector");
        keyClick(Qt.Key_I, Qt.ControlModifier | Qt.AltModifier);
        compare(entry("menuInspector").text, "Hide Inspector");
        keyClick(Qt.Key_I, Qt.ControlModifier | Qt.AltModifier);
        verify(!App.inspectorShown);
    }

    function test_updates_are_looked_for_only_where_the_program_can() {
        verify(!App.canCheckForUpdates);
        open();
        verify(!entry("menuUpdates").enabled);
        mouseClick(entry("menuUpdates"));
        verify(menu().opened, "a click on what can't be done does nothing");
    }

    /// In each state of the program: all but the updates can be chosen.
    function test_what_can_be_chosen_in_each_state_data() {
        return [
            { tag: "nothing yet", set: () => {} },
            { tag: "files in Review", set: () => Stage.place([{ name: "a.mp4", title: "A" }]) },
            { tag: "a waiting queue", set: () => { Stage.queueJobs(["a.mp4"]); App.tab = 1; } },
            { tag: "a run", set: () => run() },
            { tag: "a paused run", set: () => { run(); App.queue.pause(); } },
            { tag: "a file being written", set: () => { run(); Stage.setCritical(true); } },
            { tag: "a finished run", set: () => { run(); Stage.endJob("done", "Details written"); tryCompare(App.queue, "stage", "finished"); } },
            { tag: "History", set: () => { Stage.addHistory([{ title: "A" }]); App.tab = 2; } }
        ];
    }
    function run() {
        Stage.queueJobs(["a.mp4"]);
        App.tab = 1;
        App.queue.start();
        tryCompare(App.queue, "stage", "running");
    }
    function test_what_can_be_chosen_in_each_state(data) {
        data.set();
        open();
        for (const name of names) compare(entry(name).enabled, name !== "menuUpdates", name);
        menu().close();
        tryVerify(() => !menu().visible);
        keyClick(Qt.Key_O, Qt.ControlModifier);
        compare(files.count, 1);
        keyClick(Qt.Key_2, Qt.ControlModifier);
        compare(App.tab, 1);
    }

    function test_under_a_sheet_the_keys_of_the_window_rest() {
        App.openSettings();
        opens("settingsSheet");
        keyClick(Qt.Key_2, Qt.ControlModifier);
        compare(App.tab, 0);
        keyClick(Qt.Key_O, Qt.ControlModifier);
        compare(files.count, 0);
        keyClick(Qt.Key_Escape);
        tryVerify(() => !findChild(root, "settingsSheet").visible);
        keyClick(Qt.Key_2, Qt.ControlModifier);
        compare(App.tab, 1);
    }
}
