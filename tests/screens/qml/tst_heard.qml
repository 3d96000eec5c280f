import QtQuick
import QtTest
import Marlet
import MarletTest

// What a screen reader finds in the program's own window.
Item {
    width: 100
    height: 100

    MainWindow { id: main; width: 1280; height: 760 }

    WindowCase {
        window: main
        name: "Heard"

        readonly property var needName: [
            Accessible.Button, Accessible.CheckBox, Accessible.RadioButton, Accessible.ComboBox, Accessible.ProgressBar,
            Accessible.EditableText, Accessible.Link, Accessible.List, Accessible.ListItem, Accessible.PageTab,
            Accessible.PageTabList, Accessible.MenuItem, Accessible.Graphic, Accessible.AlertMessage, Accessible.Table,
            Accessible.Row, Accessible.Heading, Accessible.StaticText, Accessible.Pane, Accessible.Grouping
        ]

        function heard() { return Stage.heard(window); }
        /// Whatever the keyboard reaches, and whatever can be pressed, has a role and a name.
        function checkNames(where) {
            const nodes = heard();
            verify(nodes.length > 10, where + ": there is something to hear");
            for (const node of nodes) {
                const told = where + ": role " + node.role + ", " + node.objectName + " “" + node.description + "” at " + node.place;
                if (node.focusable) verify(node.role !== Accessible.NoRole, told + " has no role");
                if (node.focusable || needName.includes(node.role)) {
                    // The toolkit keeps back the name of a field for what is secret.
                    const secret = node.role === Accessible.EditableText && node.description !== "";
                    verify(node.name.trim() !== "" || secret, told + " has no name");
                }
            }
            return nodes;
        }
        function named(nodes, role, word) {
            return nodes.filter(node => node.role === role && node.name.includes(word));
        }
        function placeFilms() {
            Stage.place([
                { name: "Charade (1963).mkv", title: "Charade", year: 1963 },
                { name: "Detour.mp4", title: "Detour", year: 1945, reasons: ["The length differs by 12 minutes"] },
                { name: "A Show/S01E01.mp4", show: "A Show", season: 1, episode: 1, episodeTitle: "Part 1" },
                { name: "A Show/S01E02.mp4", show: "A Show", season: 1, episode: 2, episodeTitle: "Part 2" }
            ]);
        }

        function test_review_and_its_rows() {
            checkNames("Review, empty");
            placeFilms();
            const nodes = checkNames("Review");
            for (const [title, verdict] of [["Charade", "Ready"], ["Detour", "Check this"], ["A Show", "Ready"]]) {
                const rows = named(nodes, Accessible.ListItem, title);
                compare(rows.length, 1, title);
                verify(rows[0].name.includes(verdict), rows[0].name);
                verify(rows[0].focusable && rows[0].pressable, title);
            }
            compare(named(nodes, Accessible.StaticText, "Charade").length, 0, "a row is one sentence");
            verify(Stage.pressHeard(window, named(nodes, Accessible.ListItem, "Detour")[0].name));
            compare(named(heard(), Accessible.ListItem, "Detour")[0].selected, true);
            Stage.setNotice("One file was left out.");
            verify(named(checkNames("a notice"), Accessible.AlertMessage, "One file was left out.").length === 1);
        }

        function test_the_inspector_page_by_page() {
            placeFilms();
            Stage.draft("Detour.mp4", { title: "Detour", tall: ["/a.jpg", "/b.jpg"], wide: ["/w.jpg"] });
            Stage.setSetting("artworkStyle", "tall");
            Stage.inspect("Detour.mp4");
            for (const page of [0, 1, 2]) {
                App.inspector.page = page;
                checkNames("inspector, page " + page);
            }
            const cells = heard().filter(node => node.role === Accessible.RadioButton);
            verify(cells.length >= 2);
            for (const cell of cells) verify(cell.focusable && cell.pressable, cell.name);
        }

        function test_episodes_of_a_season_can_be_pressed() {
            placeFilms();
            Stage.inspect("A Show/S01E01.mp4");
            const rows = named(checkNames("a season"), Accessible.ListItem, "S01E02 · Part 2");
            compare(rows.length, 1);
            verify(rows[0].name.includes("Ready") && rows[0].focusable);
            verify(Stage.pressHeard(window, rows[0].name));
            compare(App.inspector.episode, 1);
            const now = named(heard(), Accessible.ListItem, "S01E02 · Part 2")[0];
            verify(now.selected && now.focused);
        }

        function test_the_picker_its_results_its_episodes_and_the_hand_form() {
            Stage.place([{ name: "tin.s1e01.mkv", show: "The Tin Observatory", title: "The Tin Observatory", season: 1, episode: 1,
                           duration: 22 * 60 }]);
            Stage.openPicker("tin.s1e01.mkv");
            tryVerify(() => named(heard(), Accessible.ListItem, "The Tin Observatory").length >= 2, 15000);
            const results = checkNames("results");
            const show = named(results, Accessible.ListItem, "2017").filter(node => node.name.includes("The Tin Observatory"))[0];
            verify(show.focusable && show.pressable);
            verify(Stage.pressHeard(window, show.name));
            tryVerify(() => named(heard(), Accessible.ListItem, "First Light").length === 1, 15000);
            checkNames("episodes");
            App.picker.tagByHand();
            tryVerify(() => App.picker.hand.open);
            checkNames("the hand form");
        }

        function test_jobs_and_their_progress_at_quarters() {
            Stage.queueJobs(["a.mp4", "b.mp4"]);
            App.tab = 1;
            tryVerify(() => named(heard(), Accessible.ListItem, "Film b.mp4").length === 1);
            const waiting = named(checkNames("a queue that waits"), Accessible.ListItem, "Film b.mp4");
            verify(waiting[0].name.includes("Waiting") && waiting[0].pressable && waiting[0].focusable);
            App.queue.start();
            const told = [];
            for (const far of [0.1, 0.24, 0.3, 0.4, 0.55, 0.74, 0.8]) {
                Stage.reportStep("Copying", far);
                const row = findChild(window.contentItem, "jobList").itemAtIndex(0);
                tryVerify(() => Math.abs(row.fraction - far) < 0.001);
                for (const node of heard()) {
                    if (node.role === Accessible.ProgressBar) compare(node.value % 0.25, 0, node.name + " " + node.value);
                    if (node.role === Accessible.ListItem && node.name.includes("Film a.mp4") && !told.includes(node.name))
                        told.push(node.name);
                    if (node.objectName === "tab1" && !told.includes(node.name))
                        told.push(node.name);
                }
            }
            compare(told.filter(name => name.includes("Film a.mp4")).length, 4, told.join("\n"));
            verify(told.filter(name => name.startsWith("Queue")).length <= 4, told.join("\n"));
            checkNames("a run");
            Stage.endJob("failed", "verification failed: the sound of track 2 differs");
            Stage.endJob("done", "Details written");
            const failed = named(checkNames("a run that ended"), Accessible.ListItem, "Film a.mp4")[0];
            verify(failed.name.includes("Failed"), failed.name);
            compare(named(heard(), Accessible.StaticText, "Technical details").length, 0);
            const job = findChild(window.contentItem, "jobList").itemAtIndex(0);
            verify(!job.open);
            verify(Stage.pressHeard(window, failed.name));
            tryVerify(() => findChild(window.contentItem, "jobList").itemAtIndex(0).open);
        }

        function test_rows_of_history() {
            Stage.addHistory([{ title: "Sintel", result: "failed", message: "writing failed" }, { title: "Charade" }]);
            App.tab = 2;
            tryVerify(() => named(heard(), Accessible.ListItem, "Sintel").length === 1);
            const rows = checkNames("History");
            const row = named(rows, Accessible.ListItem, "Sintel")[0];
            verify(row.focusable && row.pressable);
            verify(row.name.includes("Failed"), row.name);
            compare(named(rows, Accessible.StaticText, "Sintel").length, 0, "a row is one sentence");
            verify(Stage.pressHeard(window, row.name));
            tryVerify(() => heard().some(node => node.role === Accessible.Button && node.name.startsWith("Try Again")));
            checkNames("History, opened");
        }

        function test_sheets_questions_and_menus() {
            App.openSettings();
            tryVerify(() => part("settingsSheet").opened);
            checkNames("Settings");
            part("settingsSheet").close();
            App.openAbout();
            tryVerify(() => part("aboutSheet").opened);
            checkNames("About");
            part("aboutSheet").close();
            part("keysSheet").open();
            tryVerify(() => part("keysSheet").opened);
            checkNames("Keys");
            part("keysSheet").close();
            part("mainMenu").popup();
            tryVerify(() => part("mainMenu").opened);
            const entries = checkNames("the menu").filter(node => node.role === Accessible.MenuItem);
            verify(entries.length >= 8 && entries.every(node => node.pressable));
            verify(Stage.pressHeard(window, entries.filter(node => node.name.startsWith("Show Inspector"))[0].name));
            verify(App.inspectorShown);
            tryVerify(() => !part("mainMenu").visible);
            App.inspectorShown = false;
            App.askToClearHistory();
            tryVerify(() => part("clearHistory").opened);
            verify(named(checkNames("a question"), Accessible.AlertMessage, "It can't be undone").length === 1);
        }

        function test_segments_tell_which_is_on_and_where_the_keyboard_is() {
            placeFilms();
            const filter = part("reviewFilter");
            filter.forceActiveFocus(Qt.TabFocusReason);
            keyClick(Qt.Key_Right);
            const on = heard().filter(node => node.name === "Need a look")[0];
            verify(on.selected && on.checked && on.focused && on.focusable && on.pressable);
            verify(!heard().filter(node => node.name === "All")[0].checked);
            verify(Stage.pressHeard(window, "Show or hide the inspector (Ctrl+Alt+I)"));
            verify(App.inspectorShown, "once, not twice");
            App.inspectorShown = false;
            verify(Stage.pressHeard(window, "All"));
            tryCompare(filter, "current", 0);
            verify(heard().filter(node => node.name.startsWith("Review, "))[0].checked);
        }
    }
}
