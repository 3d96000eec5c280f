import QtQuick
import QtTest
import Marlet
import MarletTest

/// Ends the program, this one: whoever is still here at the end has failed.
TestCase {
    id: tests
    name: "QuitByKey"
    when: windowShown
    visible: true
    width: 1180
    height: 760

    RootView { id: root; anchors.fill: parent }
    Shortcuts { root: root }

    function ask() {
        keyClick(Qt.Key_Q, Qt.ControlModifier);
    }

    function test_it_waits_for_the_file_that_is_written_and_then_the_program_ends() {
        Stage.clear();
        Stage.queueJobs(["a.mp4"]);
        App.queue.start();
        tryCompare(App.queue, "stage", "running");
        Stage.setCritical(true);
        verify(!findChild(root, "quitting").visible);
        ask();
        tryVerify(() => App.quitWaits);
        tryVerify(() => findChild(root, "quitting").visible);
        compare(findChild(root, "quitting").text, "Marlet quits as soon as the file that is being written is finished.");
        Stage.setCritical(false);
        // Not before its record is in good hands.
        Stage.endJob("done", "Details written");
        wait(20000);
        fail("the program goes on");
    }
}
