import QtQuick
import QtTest
import Marlet
import MarletTest

TestCase {
    id: tests
    name: "Queue"
    when: windowShown
    visible: true
    width: 1180
    height: 760

    readonly property string kept: "writing failed (pwrite: Input/output error). The verified copy is kept at /private/copy.mp4; Marlet finishes it the next time it opens"

    RootView { id: root; anchors.fill: parent }
    Shortcuts { root: root }

    function init() {
        Stage.clear();
        App.tab = 1;
        list().forceActiveFocus();
    }
    function cleanup() {
        while (App.queue.stage === "running") {
            Stage.endJob("done", "Details written");
            wait(1);
        }
        Stage.clear();
    }
    function part(name) { return findChild(findChild(root, "queueView"), name); }
    function list() { return part("jobList"); }
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
    function waitFor(stage) { tryVerify(() => App.queue.stage === stage); }
    /// Runs jobs of these names; each ends as told.
    function run(names, outcomes) {
        Stage.queueJobs(names);
        App.queue.start();
        for (const outcome of outcomes) {
            tryVerify(() => App.queue.runningRow >= 0);
            Stage.endJobWith(outcome);
            wait(1);
        }
        waitFor("finished");
    }

    function test_an_empty_queue_says_what_to_do() {
        const empty = part("queueEmpty");
        verify(empty.visible);
        compare(empty.title, "Nothing in the queue");
        compare(empty.line, "Review your files in Review, then add them to the queue.");
        verify(!list().visible);
    }

    function test_waiting_jobs_tell_where_files_go_and_start_by_click() {
        Stage.queueJobs(["a.mp4", "b.mp4"]);
        verify(!part("queueEmpty").visible);
        compare(part("runTitle").text, "2 waiting");
        compare(part("runDetail").text, "Files are changed in the folder of the original");
        compare(part("removeAll").text, "Remove All");
        compare(part("start").text, "Start");
        verify(!part("cancel").visible && !part("clearResults").visible);
        compare(inRow(0, "jobLabel").text, "Film a.mp4");
        compare(inRow(0, "jobSecond").text, "details and cover art · a.mp4");
        click(part("start"));
        waitFor("running");
    }

    function test_the_key_starts_and_return_alone_never_does() {
        Stage.queueJobs(["a.mp4"]);
        keyClick(Qt.Key_Return);
        keyClick(Qt.Key_Space);
        compare(App.queue.stage, "waiting");
        keyClick(Qt.Key_Return, Qt.ControlModifier);
        waitFor("running");
    }

    function test_a_waiting_job_is_removed_by_button_key_and_menu() {
        Stage.queueJobs(["a.mp4", "b.mp4", "c.mp4", "d.mp4"]);
        compare(inRow(1, "jobAway").help, "Remove from the queue");
        click(inRow(1, "jobAway"));
        tryVerify(() => list().count === 3);
        compare(Stage.queuedNames(), ["a.mp4", "c.mp4", "d.mp4"]);

        list().forceActiveFocus();
        list().currentIndex = 0;
        keyClick(Qt.Key_Down);
        keyClick(Qt.Key_Delete);
        tryVerify(() => list().count === 2);
        compare(Stage.queuedNames(), ["a.mp4", "d.mp4"]);

        const menu = part("jobMenu");
        click(row(0), 200, 20, Qt.RightButton);
        tryVerify(() => menu.opened);
        compare(menu.itemAt(0).text, "Remove from the queue");
        compare(menu.itemAt(1).text, "Show in Folder");
        verify(!menu.itemAt(2).visible);
        click(menu.itemAt(0));
        tryVerify(() => list().count === 1);
        compare(Stage.queuedNames(), ["d.mp4"]);

        // The same by keys alone.
        list().forceActiveFocus();
        list().currentIndex = 0;
        keyClick(Qt.Key_Menu);
        tryVerify(() => menu.opened);
        keyClick(Qt.Key_Down);
        keyClick(Qt.Key_Return);
        waitFor("empty");
    }

    function test_all_are_removed_at_once() {
        Stage.queueJobs(["a.mp4", "b.mp4"]);
        click(part("removeAll"));
        waitFor("empty");
        verify(part("queueEmpty").visible);
    }

    function test_a_run_shows_how_far_it_is_and_what_happens_now() {
        Stage.queueJobs(["a.mp4", "b.mp4"]);
        App.queue.start();
        Stage.reportStep("Copying", 0.5);
        tryCompare(App.queue, "progress", 0.25);
        compare(part("runTitle").text, "Making files Apple TV ready");
        compare(part("runDetail").text, "2 files");
        compare(part("runNow").text, "Film a.mp4: Copying");
        compare(part("runProgress").value, 0.25);
        compare(inRow(0, "jobWord").text, "50 %");
        compare(inRow(0, "jobSecond").text, "details and cover art · Copying");
        verify(inRow(0, "jobProgress").visible);
        verify(!inRow(1, "jobProgress").visible);
        compare(inRow(1, "jobWord").text, "Waiting");
        verify(!inRow(1, "jobAway").visible);
        Stage.endJob("done", "Details written");
        tryCompare(App.queue, "runningRow", 1);
        compare(inRow(0, "jobWord").text, "Done");
        Stage.endJob("done", "Details written");
        waitFor("finished");
        compare(part("runTitle").text, "All done");
        compare(part("runDetail").text, "2 done");
    }

    function test_pause_and_resume_by_click_and_by_space() {
        Stage.queueJobs(["a.mp4"]);
        App.queue.start();
        const button = part("pauseOrResume");
        compare(button.text, "Pause");
        click(button);
        tryCompare(button, "text", "Resume");
        verify(part("runPaused").visible);
        compare(part("runPaused").text, "Paused");
        compare(part("runDetail").text, "1 files");
        click(button);
        tryCompare(button, "text", "Pause");
        verify(!part("runPaused").visible);
        list().forceActiveFocus();
        keyClick(Qt.Key_Space);
        tryVerify(() => App.queue.paused);
        keyClick(Qt.Key_Space);
        tryVerify(() => !App.queue.paused);
    }

    function test_during_a_critical_section_pause_and_cancel_are_disabled_with_the_lock_line() {
        Stage.queueJobs(["a.mp4"]);
        App.queue.start();
        verify(part("pauseOrResume").enabled && part("cancel").enabled);
        verify(!part("runLock").visible);
        Stage.setCritical(true);
        tryVerify(() => !part("pauseOrResume").enabled);
        verify(!part("cancel").enabled);
        verify(part("runLock").visible);
        compare(part("runNow").text, "Writing a file: Pause and Cancel are locked until it's finished");
        keyClick(Qt.Key_Space);
        click(part("cancel"));
        verify(!App.queue.paused && !App.queue.cancelling);
        Stage.setCritical(false);
        tryVerify(() => part("pauseOrResume").enabled && part("cancel").enabled);
        verify(!part("runLock").visible);
    }

    function test_cancel_asks_nothing_and_ends_the_run() {
        Stage.queueJobs(["a.mp4", "b.mp4"]);
        App.queue.start();
        compare(part("cancel").text, "Cancel");
        click(part("cancel"));
        compare(part("runTitle").text, "Cancelling…");
        verify(!part("cancel").enabled);
        Stage.endJob("cancelled", "cancelled; the file was left untouched");
        waitFor("finished");
        compare(part("runTitle").text, "Finished, 2 cancelled");
        compare(part("runDetail").text, "0 done, 2 cancelled");
        compare(inRow(1, "jobHappened").text, "Cancelled.");
        compare(inRow(1, "jobNext").text, "Nothing was changed.");
    }

    function test_a_finished_run_with_one_failure_and_three_done_shows_both_counts() {
        const done = { status: "done", message: "Details written", output: "a.mp4" };
        run(["a.mp4", "b.mp4", "c.mp4", "d.mp4"],
            [done, done, { status: "failed", message: "Not enough free space" }, done]);
        compare(part("runTitle").text, "Finished, 1 failed");
        compare(part("runDetail").text, "3 done, 1 failed (the originals are untouched)");
        compare(part("retryFailed").text, "Retry Failed");
        compare(part("showAll").text, "Show All in Folder");
        compare(part("clearResults").text, "Clear Results");
        verify(part("retryFailed").visible && part("showAll").visible);
        // What failed is what is seen first.
        compare(inRow(0, "jobLabel").text, "Film c.mp4");
        compare(inRow(0, "jobHappened").text, "There isn't enough free space.");
        compare(inRow(0, "jobNext").text, "Free up some space, then press Retry.");
        compare(inRow(0, "jobWord").text, "Failed");
        click(part("retryFailed"));
        waitFor("running");
        tryCompare(App.queue, "runningRow", 2);
        Stage.endJobWith(done);
        waitFor("finished");
        compare(part("runTitle").text, "All done");
        verify(!part("retryFailed").visible);
        click(part("clearResults"));
        waitFor("empty");
    }

    function test_when_a_long_run_ends_the_list_shows_its_beginning() {
        const names = [], outcomes = [];
        for (let i = 0; i < 24; i++) {
            names.push("film " + i + ".mp4");
            outcomes.push({ status: i === 20 ? "failed" : "done", message: i === 20 ? "Not enough free space" : "Details written" });
        }
        run(names, outcomes);
        verify(list().contentHeight > list().height);
        tryVerify(() => list().contentY === list().originY - list().topMargin);
        compare(inRow(0, "jobWord").text, "Failed");
    }

    function test_nothing_to_show_or_retry_offers_neither() {
        run(["a.mp4"], [{ status: "skipped", message: "nothing to do" }]);
        compare(part("runDetail").text, "0 done, 1 skipped");
        verify(!part("showAll").visible && !part("retryFailed").visible);
        verify(part("clearResults").visible);
    }

    function test_technical_details_are_shown_by_click_and_by_return() {
        run(["a.mp4"], [{ status: "failed", message: "Not enough free space: need 2 GB", before: 2.5 }]);
        const details = inRow(0, "disclosed");
        compare(inRow(0, "disclosure").text, "Technical details");
        compare(inRow(0, "jobSecond").text, "details and cover art");
        verify(!inRow(0, "jobMore").visible);
        verify(!details.visible);
        click(inRow(0, "disclosure"));
        tryVerify(() => details.visible);
        compare(details.text, "Not enough free space: need 2 GB\nSound layout 2.50 s");
        list().forceActiveFocus();
        list().currentIndex = 0;
        keyClick(Qt.Key_Return);
        tryVerify(() => !details.visible);
    }

    function test_the_sound_layout_is_told_before_and_after() {
        run(["a.mp4"], [{ status: "done", message: "Details written", before: 3.214, after: 0.5 }]);
        compare(inRow(0, "jobSecond").text, "details and cover art · Details written");
        verify(!inRow(0, "disclosure").visible, "a row of what went well stays low");
        const low = row(0).height;
        compare(inRow(0, "jobMore").help, "Technical details");
        click(inRow(0, "jobMore"));
        tryVerify(() => inRow(0, "disclosed").visible);
        compare(inRow(0, "disclosed").text, "Details written\nSound layout 3.21 s → 0.50 s");
        verify(!inRow(0, "jobMore").visible);
        tryVerify(() => row(0).height > low);
        click(inRow(0, "disclosure"));
        tryVerify(() => !inRow(0, "disclosed").visible);
    }

    function test_a_file_that_may_be_damaged_shows_the_raw_sentence_first_data() {
        return [
            { tag: "kept copy", message: tests.kept, next: "Don't move the file. Open Marlet again: it finishes the write and checks it." },
            { tag: "identity", message: "the file's identity changed during the write; check it", next: "Check the file by playing it." }
        ];
    }
    function test_a_file_that_may_be_damaged_shows_the_raw_sentence_first(data) {
        run(["a.mp4", "b.mp4"], [{ status: "stopped", message: data.message }]);
        const happened = inRow(0, "jobHappened");
        tryVerify(() => happened.visible);
        compare(happened.text, data.message);
        tryVerify(() => happened.y < inRow(0, "jobNext").y);
        compare(inRow(0, "jobNext").text, data.next);
        compare(part("runTitle").text, "Finished, 1 failed");
        compare(part("runDetail").text, "0 done, 1 failed, 1 cancelled");
    }

    function test_a_row_is_one_sentence_to_a_screen_reader() {
        Stage.queueJobs(["a.mp4"]);
        compare(row(0).Accessible.name, "Film a.mp4, Waiting, details and cover art · a.mp4");
    }

    function test_everything_fits_the_narrowest_window() {
        tests.width = 720;
        run(["a.mp4", "b.mp4"], [{ status: "done", message: "Details written", output: "a.mp4" },
                                 { status: "failed", message: "Not enough free space" }]);
        const view = findChild(root, "queueView");
        for (const name of ["retryFailed", "showAll", "clearResults", "runTitle", "runDetail"]) {
            polish(part(name));
            const place = part(name).mapToItem(view, 0, 0);
            verify(place.x >= 0 && place.x + part(name).width <= view.width, name);
            verify(part(name).truncated !== true, name);
        }
        tests.width = 1180;
    }
}
