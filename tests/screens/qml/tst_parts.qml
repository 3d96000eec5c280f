import QtQuick
import QtTest
import Marlet
import MarletTest

Item {
    width: 400
    height: 300

    Poster { id: poster; width: 36; height: 54 }

    TestCase {
        name: "Parts"
        when: windowShown

        function init() {
            Stage.clear();
            poster.otherSource = "";
            poster.source = "";
        }

        readonly property string gone: "image://art/saved//L25vd2hlcmUvcG9zdGVyLmpwZw"
        readonly property string there: Stage.madePicture()

        function test_a_poster_that_is_gone_gives_way_to_the_other_one() {
            verify(there !== "");
            poster.otherSource = there;
            poster.source = gone;
            tryVerify(() => poster.loaded, 10000);
            verify(poster.missed);
        }

        function test_a_row_used_again_asks_for_its_own_poster_first() {
            poster.otherSource = there;
            poster.source = gone;
            tryVerify(() => poster.loaded, 10000);
            poster.source = there;
            verify(!poster.missed);
            tryVerify(() => poster.loaded, 10000);
        }

        function test_without_any_picture_the_drawing_stays() {
            poster.source = gone;
            wait(300);
            verify(!poster.loaded);
            verify(!poster.missed);
        }
    }
}
