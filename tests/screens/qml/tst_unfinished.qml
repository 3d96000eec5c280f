import QtQuick
import QtTest
import Marlet
import MarletTest

/// What an earlier run left is offered, and comes back or goes as a person says.
TestCase {
    id: tests
    name: "Unfinished"
    when: windowShown
    visible: true
    width: 900
    height: 700

    RootView { id: root; anchors.fill: parent }

    function init() { Stage.clear(); }
    function cleanup() {
        while (App.queue.stage === "running") {
            Stage.endJob("done", "Details written");
            wait(1);
        }
    }
    function part(name) { return findChild(root, name); }
    function bar() { return part("unfinishedBar"); }
    function question() { return part("discardQuestion"); }
    function click(item) {
        for (let each = item; each !== null; each = each.parent)
            if (isPolishScheduled(each)) waitForItemPolished(each);
        mouseClick(item);
    }

    function test_without_any_there_is_no_bar() {
        verify(!bar().visible);
    }

    function test_it_says_how_much_and_nothing_comes_back_unasked() {
        Stage.leaveUnfinished(["Charade.mp4", "Sintel.mp4"], ["Detour.mp4"]);
        verify(bar().visible);
        compare(bar().text, "3 files from last time are still waiting: 2 in the queue, 1 corrected in Review.");
        compare(part("resumeUnfinished").text, "Resume");
        compare(part("discardUnfinished").text, "Discard");
        compare(Stage.fileNames(), []);
        compare(Stage.queuedNames(), []);
        verify(part("dropHere").visible, "files can be dropped all the same");
    }

    function test_resume_brings_back_queue_and_corrections_and_starts_nothing() {
        Stage.leaveUnfinished(["Charade.mp4", "Sintel.mp4"], ["Detour.mp4"]);
        click(part("resumeUnfinished"));
        tryVerify(() => Stage.queuedNames().length === 2);
        compare(Stage.queuedNames(), ["Charade.mp4", "Sintel.mp4"]);
        compare(Stage.fileNames(), ["Detour.mp4"]);
        verify(Stage.isConfirmed("Detour.mp4"));
        compare(App.queue.stage, "waiting");
        tryVerify(() => !bar().visible);
    }

    function test_resume_by_keyboard() {
        Stage.leaveUnfinished([], ["Detour.mp4"]);
        compare(bar().text, "1 file from last time is still waiting, corrected in Review.");
        part("resumeUnfinished").forceActiveFocus(Qt.TabFocusReason);
        keyClick(Qt.Key_Return);
        tryVerify(() => Stage.fileNames().length === 1);
        tryVerify(() => !bar().visible);
    }

    function test_the_tab_key_reaches_both() {
        Stage.leaveUnfinished([], ["Detour.mp4"]);
        part("dropHere").forceActiveFocus(Qt.TabFocusReason);
        const seen = [];
        for (let i = 0; i < 20; i++) {
            seen.push(tests.Window.activeFocusItem);
            keyClick(Qt.Key_Tab);
        }
        verify(seen.includes(part("discardUnfinished")));
        verify(seen.includes(part("resumeUnfinished")));
    }

    function test_discard_asks_and_escape_keeps_the_offer() {
        Stage.leaveUnfinished(["Charade.mp4"], []);
        click(part("discardUnfinished"));
        tryVerify(() => question().opened);
        compare(question().title, "Discard what is left from last time?");
        compare(question().message, "Marlet forgets the corrections that you made and what waited in the queue. Your movie and TV files aren't affected.");
        compare(question().acceptText, "Discard");
        keyClick(Qt.Key_Escape);
        tryVerify(() => !question().visible);
        verify(bar().visible);
        click(part("discardUnfinished"));
        tryVerify(() => question().opened);
        click(findChild(question().contentItem, "questionReject"));
        tryVerify(() => !question().visible);
        verify(bar().visible);
    }

    function test_discard_ends_the_offer_and_leaves_the_films() {
        Stage.leaveUnfinished(["Charade.mp4"], ["Detour.mp4"]);
        click(part("discardUnfinished"));
        tryVerify(() => question().opened);
        click(findChild(question().contentItem, "questionAccept"));
        tryVerify(() => !bar().visible);
        compare(Stage.fileNames(), []);
        compare(Stage.queuedNames(), []);
        verify(Stage.exists("Charade.mp4") && Stage.exists("Detour.mp4"));
    }

    function test_during_a_run_it_stays_offered_and_says_why() {
        Stage.leaveUnfinished(["Charade.mp4"], []);
        Stage.queueJobs(["a.mp4"]);
        App.queue.start();
        click(part("resumeUnfinished"));
        tryVerify(() => App.toast !== "");
        verify(bar().visible);
        compare(Stage.queuedNames(), ["a.mp4"]);
    }
}
