import QtQuick
import QtTest
import Marlet
import MarletTest

/// Cases that are played in a window of the program itself, with what opens over it.
TestCase {
    id: tests

    required property MainWindow window
    when: windowShown

    function init() {
        Stage.clear();
        window.requestActivate();
        tryVerify(() => window.active && window.activeFocusItem);
    }
    function cleanup() {
        for (const name of ["settingsSheet", "aboutSheet", "keysSheet", "mainMenu", "clearHistory"]) {
            const open = part(name);
            open.close();
            tryVerify(() => !open.visible);
        }
        App.picker.close();
        Stage.clear();
    }
    /// Whatever has that name. What opens over the window is no child of an item, but of what opens
    /// it.
    function part(name) {
        function look(object) {
            if (!object) return null;
            if (object.objectName === name) return object;
            for (const list of [object.resources, object.children])
                for (let at = 0; list && at < list.length; ++at) {
                    const found = look(list[at]);
                    if (found) return found;
                }
            return object.contentItem && object.contentItem.parent !== object ? look(object.contentItem) : null;
        }
        const found = look(window.contentItem);
        verify(found, name + " is there");
        return found;
    }
}
