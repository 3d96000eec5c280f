import QtQuick
import QtTest
import Marlet
import MarletTest

TestCase {
    id: tests
    name: "Settings"
    when: windowShown
    visible: true
    width: 1180
    height: 760

    RootView { id: root; anchors.fill: parent }
    Shortcuts { root: root }

    function init() {
        Stage.clear();
        App.openSettings();
        tryVerify(() => sheet().opened);
        tryVerify(() => !App.settings.workFiles.busy && !App.settings.guessing.asking);
    }
    function cleanup() {
        for (const name of ["aboutSheet", "keysSheet", "settingsSheet"]) {
            const each = findChild(root, name);
            each.close();
            tryVerify(() => !each.visible);
        }
    }
    function sheet() { return findChild(root, "settingsSheet"); }
    function part(name) { return findChild(sheet().contentItem, name); }
    function page() { return part("settingsPage"); }
    /// The part, scrolled to where it can be clicked.
    function shown(name) {
        const item = part(name);
        page().reveal(item);
        // Not for a picture: where it lies already nothing is drawn.
        for (let each = item; each !== null; each = each.parent)
            if (isPolishScheduled(each)) waitForItemPolished(each);
        return item;
    }
    function choose(name, index) { mouseClick(findChild(shown(name), "segment" + index)); }
    function source(index) { return part("sourceList").itemAtIndex(index); }
    function titles() {
        const list = [];
        for (let i = 0; i < 3; i++) list.push(source(i).title);
        return list;
    }
    function inside(item, outer) {
        for (let each = item; each; each = each.parent) if (each === outer) return true;
        return false;
    }
    function focusOn(item) {
        item.forceActiveFocus(Qt.TabFocusReason);
        verify(item.activeFocus);
    }

    function test_opens_by_key_and_button_and_escape_closes_it() {
        keyClick(Qt.Key_Escape);
        tryVerify(() => !sheet().visible);
        keyClick(Qt.Key_Comma, Qt.ControlModifier);
        tryVerify(() => sheet().opened);
        compare(sheet().title, "Settings");
        mouseClick(part("sheetClose"));
        tryVerify(() => !sheet().visible);
        const button = findChild(root, "settingsButton");
        mouseClick(button);
        tryVerify(() => sheet().opened);
    }

    function test_appearance_applies_at_once() {
        compare(part("appearance").model, ["Automatic", "Light", "Dark"]);
        compare(part("appearance").current, 0);
        choose("appearance", 2);
        compare(Stage.setting("appearance"), "Dark");
        tryVerify(() => Theme.dark);
        focusOn(part("appearance"));
        keyClick(Qt.Key_Left);
        compare(Stage.setting("appearance"), "Light");
        tryVerify(() => !Theme.dark);
        keyClick(Qt.Key_Left);
        compare(Stage.setting("appearance"), "Automatic");
    }

    function test_artwork_style_is_stored() {
        compare(part("artworkStyle").model, ["Apple TV (wide)", "Mac & iPhone (tall)"]);
        compare(part("artworkStyle").current, 0);
        choose("artworkStyle", 1);
        compare(Stage.setting("artworkStyle"), "tall");
        focusOn(part("artworkStyle"));
        keyClick(Qt.Key_Left);
        compare(Stage.setting("artworkStyle"), "wide");
    }

    function test_sources_show_their_switch_or_that_they_are_always_on() {
        compare(titles(), ["Apple TV (unofficial)", "TMDB", "iTunes Store"]);
        verify(findChild(source(0), "sourceSwitch").visible);
        verify(!findChild(source(0), "alwaysOn").visible);
        for (const index of [1, 2]) {
            verify(!findChild(source(index), "sourceSwitch").visible);
            compare(findChild(source(index), "alwaysOn").text, "Always on");
        }
        compare(findChild(part("sourcesSection"), "sectionNote").text, "Marlet asks the first source that knows the show, season and episode (or the film), then the next one. Drag to change the order. Apple TV (unofficial) reads the Apple TV app's public catalogue, which Apple doesn't document: if it stops answering, Marlet quietly uses the next source.");
    }

    function test_the_switch_of_a_source_by_mouse_and_by_key() {
        Stage.setSetting("sourceOn.appleTV", true);
        shown("sourceList");
        const toggle = findChild(source(0), "sourceSwitch");
        verify(toggle.checked);
        mouseClick(toggle);
        compare(Stage.setting("sourceOn.appleTV"), false);
        focusOn(part("sourceList"));
        part("sourceList").currentIndex = 0;
        keyClick(Qt.Key_Space);
        compare(Stage.setting("sourceOn.appleTV"), true);
        verify(toggle.checked);
    }

    function test_sources_move_by_alt_and_arrow_and_the_keyboard_goes_along() {
        const list = part("sourceList");
        focusOn(list);
        list.currentIndex = 0;
        keyClick(Qt.Key_Down, Qt.AltModifier);
        compare(titles(), ["TMDB", "Apple TV (unofficial)", "iTunes Store"]);
        compare(list.currentIndex, 1);
        keyClick(Qt.Key_Down, Qt.AltModifier);
        keyClick(Qt.Key_Down, Qt.AltModifier);
        compare(titles(), ["TMDB", "iTunes Store", "Apple TV (unofficial)"]);
        compare(list.currentIndex, 2);
        keyClick(Qt.Key_Up);
        compare(list.currentIndex, 1);
        compare(titles(), ["TMDB", "iTunes Store", "Apple TV (unofficial)"]);
        keyClick(Qt.Key_Up, Qt.AltModifier);
        compare(titles(), ["iTunes Store", "TMDB", "Apple TV (unofficial)"]);
        compare(list.currentIndex, 0);
    }

    function test_sources_move_by_their_buttons() {
        shown("sourceList");
        verify(!findChild(source(0), "moveUp").enabled);
        verify(!findChild(source(2), "moveDown").enabled);
        compare(findChild(source(0), "moveDown").help, "Move Apple TV (unofficial) down");
        mouseClick(findChild(source(0), "moveDown"));
        compare(titles(), ["TMDB", "Apple TV (unofficial)", "iTunes Store"]);
        verify(findChild(source(1), "moveDown").activeFocus);
        keyClick(Qt.Key_Return);
        compare(titles(), ["TMDB", "iTunes Store", "Apple TV (unofficial)"]);
        verify(findChild(source(2), "moveUp").activeFocus);
    }

    function test_sources_move_by_dragging() {
        shown("sourceList");
        const list = part("sourceList");
        const step = list.rowHeight;
        mousePress(list, 200, step / 2);
        mouseMove(list, 200, step / 2 + 3);
        compare(list.dragFrom, -1);
        mouseMove(list, 200, step);
        compare(list.dragFrom, 0);
        mouseMove(list, 200, 2.4 * step);
        compare(list.dragTo, 2);
        compare(titles(), ["Apple TV (unofficial)", "TMDB", "iTunes Store"]);
        mouseRelease(list, 200, 2.4 * step);
        compare(titles(), ["TMDB", "iTunes Store", "Apple TV (unofficial)"]);
        compare(list.currentIndex, 2);
        compare(list.dragFrom, -1);
        // Beyond the list is its end, and back where it was is nothing.
        mousePress(list, 200, 1.5 * step);
        mouseMove(list, 200, 0.9 * step);
        mouseMove(list, 200, -3 * step);
        mouseRelease(list, 200, -3 * step);
        compare(titles(), ["iTunes Store", "TMDB", "Apple TV (unofficial)"]);
        mousePress(list, 200, 0.5 * step);
        mouseMove(list, 200, 1.5 * step);
        mouseMove(list, 200, 0.6 * step);
        mouseRelease(list, 200, 0.6 * step);
        compare(titles(), ["iTunes Store", "TMDB", "Apple TV (unofficial)"]);
    }

    function test_languages_are_stored_as_they_are_typed() {
        const box = shown("languages");
        compare(box.field.placeholderText, "English, French");
        compare(box.field.text, "English");
        mouseClick(box.field);
        keyClick(Qt.Key_A, Qt.ControlModifier);
        for (const letter of "German, ") keyClick(letter);
        compare(box.field.text, "German, ");
        compare(Stage.setting("keepLanguages"), "German,");
        for (const letter of "Thai") keyClick(letter);
        compare(Stage.setting("keepLanguages"), "German, Thai");
    }

    function test_switches_of_writing_data() {
        return [
            { tag: "fix", name: "fixForAppleTV", key: "fixForAppleTV", first: true },
            { tag: "same folder", name: "sameFolder", key: "outputSameFolder", first: false },
            { tag: "notification", name: "notifyAtEnd", key: "notifyAtEnd", first: true }
        ];
    }
    function test_switches_of_writing(data) {
        const toggle = shown(data.name);
        compare(toggle.checked, data.first);
        mouseClick(toggle);
        compare(Stage.setting(data.key), !data.first);
        compare(toggle.checked, !data.first);
        focusOn(toggle);
        keyClick(Qt.Key_Space);
        compare(Stage.setting(data.key), data.first);
        Stage.setSetting(data.key, !data.first);
        compare(toggle.checked, !data.first, "what somebody else stored is shown");
    }

    function test_the_library_question_cancelled_leaves_the_switch_off_and_is_not_asked_again() {
        const toggle = shown("libraryWrites");
        const question = findChild(sheet().contentItem, "libraryQuestion") || findChild(root, "libraryQuestion");
        mouseClick(toggle);
        tryVerify(() => question.opened);
        compare(question.title, "Allow changes to your Media Library?");
        compare(question.message, "Marlet will write details and artwork into the files you choose. Before it changes any file, it saves that file's original tags and covers on this Mac and checks the saved copy; if that fails, the file is not touched. You can put the originals back with Restore Original Details, for one file or a whole run from History. The picture and sound are never re-encoded.");
        compare(question.acceptText, "Allow Changes");
        compare(question.rejectText, "Cancel");
        verify(!toggle.checked, "nothing is allowed yet");
        keyClick(Qt.Key_Escape);
        tryVerify(() => !question.visible);
        verify(sheet().opened);
        verify(!toggle.checked);
        compare(Stage.setting("allowLibraryWrites"), undefined);
        compare(Stage.setting("libraryWritesExplained"), true);
        mouseClick(toggle);
        verify(!question.visible);
        verify(toggle.checked);
        compare(Stage.setting("allowLibraryWrites"), true);
    }

    function test_the_library_question_allowed_sets_the_switch() {
        const toggle = shown("libraryWrites");
        const question = findChild(sheet().contentItem, "libraryQuestion") || findChild(root, "libraryQuestion");
        focusOn(toggle);
        keyClick(Qt.Key_Space);
        tryVerify(() => question.opened);
        mouseClick(findChild(question.contentItem, "questionAccept"));
        tryVerify(() => !question.visible);
        verify(toggle.checked);
        compare(Stage.setting("allowLibraryWrites"), true);
        compare(Stage.setting("libraryWritesExplained"), true);
        mouseClick(toggle);
        compare(Stage.setting("allowLibraryWrites"), false);
    }

    function test_the_folder_for_new_files() {
        compare(part("folderName").text, "~/Desktop");
        compare(part("chooseFolder").help, "Where should new files be saved?");
        mouseClick(shown("sameFolder"));
        App.settings.saveNewFilesTo("file://" + Stage.library);
        compare(Stage.setting("outputFolder"), Stage.library);
        compare(Stage.setting("outputSameFolder"), false);
        verify(part("folderName").text.length > 0 && part("folderName").text !== "~/Desktop");
    }

    function test_texts_under_writing_and_guessing() {
        compare(findChild(part("writingSection"), "sectionNote").text, "For each preferred language an MKV keeps the best surround track plus a stereo track and that language's subtitles; the rest is left out (changeable per file). Fix for Apple TV rebuilds the sound layout of files over 1 second; the picture is never touched. With Media Library changes off, those files can be reviewed but not changed; with them on, each file's original tags and covers are saved and checked first. New files from MKV conversions go to the chosen folder; MP4 and M4V files are changed in place.");
        verify(findChild(part("guessSection"), "sectionNote").text.endsWith("only the cleaned-up title is sent to the database to search."));
    }

    function test_the_local_model() {
        const line = part("modelLine");
        compare(line.text, "On-device model");
        compare(line.note, "Off: no local model is set");
        verify(!part("askModel").enabled);
        const box = shown("modelAddress");
        mouseClick(box.field);
        for (const letter of "http://127.0.0.1:1") keyClick(letter);
        compare(Stage.setting("localModel"), "http://127.0.0.1:1");
        compare(line.note, "On this computer, not asked yet");
        keyClick(Qt.Key_Return);
        tryCompare(line, "note", "The local model doesn't answer");
        mouseClick(shown("askModel"));
        tryVerify(() => !App.settings.guessing.asking);
        mouseClick(shown("modelName").field);
        for (const letter of "small") keyClick(letter);
        compare(Stage.setting("localModelName"), "small");
    }

    function test_the_key_is_tried_and_a_typed_one_does_not_stay() {
        compare(part("keyOrigin").text, "The key in MARLET_TMDB_TOKEN is used, whatever the keyring holds.");
        mouseClick(shown("keyTry"));
        tryCompare(part("keyOrigin"), "note", "Key works.");
        const box = shown("keyField");
        compare(box.field.echoMode, TextInput.Password);
        verify(!part("keyKeep").enabled);
        mouseClick(box.field);
        for (const letter of "typed") keyClick(letter);
        verify(part("keyKeep").enabled);
        keyClick(Qt.Key_Return);
        compare(box.field.text, "");
        verify(!box.field.canUndo);
        // Without a keyring nothing is kept, and that is told.
        tryVerify(() => part("keyOrigin").note.startsWith("The keyring didn't take the key"));
        mouseClick(shown("keyRemove"));
        tryVerify(() => part("keyOrigin").note.startsWith("The keyring couldn't be changed."));
    }

    function test_a_half_typed_key_goes_with_the_sheet() {
        const box = shown("keyField");
        mouseClick(box.field);
        for (const letter of "half") keyClick(letter);
        compare(box.field.text, "half");
        sheet().close();
        tryVerify(() => !sheet().visible);
        compare(box.field.text, "");
    }

    function test_work_files_without_any() {
        compare(part("workFiles").text, "None");
        verify(!part("cleanUp").enabled);
    }

    function test_version_updates_and_credits() {
        verify(part("versionLine").text.startsWith("Version "));
        compare(part("updates").text, "Updates");
        compare(part("checkForUpdates").text, "Check for Updates…");
        compare(part("checkForUpdates").enabled, App.canCheckForUpdates);
        verify(!part("checkForUpdates").enabled);
        mouseClick(shown("credits"));
        const about = findChild(root, "aboutSheet");
        tryVerify(() => about.opened);
        keyClick(Qt.Key_Escape);
        tryVerify(() => !about.visible);
        verify(sheet().opened);
    }

    function test_tab_goes_through_all_controls_and_keeps_them_in_sight() {
        focusOn(part("appearance"));
        const seen = [];
        for (let i = 0; i < 40; i++) {
            const item = tests.Window.activeFocusItem;
            if (seen.includes(item)) break;
            seen.push(item);
            if (page().holds(item)) {
                const y = item.mapToItem(page(), 0, 0).y;
                verify(y >= 0 && y + item.height <= page().height + 1, item + " at " + y);
            }
            keyClick(Qt.Key_Tab);
        }
        verify(seen.some(item => inside(item, part("sourceList"))), "the list gives the keyboard to its row");
        for (const name of ["artworkStyle", "keyTry", "fixForAppleTV", "libraryWrites", "chooseFolder", "sameFolder", "notifyAtEnd", "credits"])
            verify(seen.includes(part(name)), name);
        for (const name of ["languages", "keyField", "modelAddress", "modelName"])
            verify(seen.includes(part(name).field), name);
        for (const item of seen) verify(item.Accessible.name !== "", item + " has no name");
    }

    function test_about_tells_whose_details_they_are_and_scrolls() {
        sheet().close();
        App.openAbout();
        const about = findChild(root, "aboutSheet");
        tryVerify(() => about.opened);
        const child = name => findChild(about.contentItem, name);
        compare(about.title, "About Marlet");
        compare(child("aboutName").text, "Marlet");
        verify(child("aboutVersion").text.startsWith("Version "));
        verify(child("aboutBuilt").text.startsWith("Built "));
        compare(child("tmdbSentence").text, "This application uses TMDB and the TMDB APIs but is not endorsed, certified, or otherwise approved by TMDB.");
        compare(child("appleSentence").text, "Apple TV and iTunes details and artwork from Apple.");
        compare(child("credit0").key, "GPAC (MP4Box and gpac)");
        compare(child("credit1").key, "FFmpeg");
        verify(child("notices").text.includes("WITHOUT WARRANTY OF ANY KIND"));
        const page = child("aboutPage");
        verify(page.contentHeight > page.height);
        keyClick(Qt.Key_PageDown);
        verify(page.contentY > 0);
        for (let i = 0; i < 30; i++) keyClick(Qt.Key_PageDown);
        compare(page.contentY, page.contentHeight - page.height);
        keyClick(Qt.Key_Escape);
        tryVerify(() => !about.visible);
    }

    function test_keys_are_listed_by_where_they_hold() {
        sheet().close();
        tryVerify(() => !sheet().visible);
        keyClick(Qt.Key_F1);
        const keys = findChild(root, "keysSheet");
        tryVerify(() => keys.opened);
        const list = findChild(keys.contentItem, "keyList");
        verify(list.count > 30);
        compare(list.itemAtIndex(0).spoken, "Ctrl+O: Add files");
        keyClick(Qt.Key_End);
        verify(list.contentY > 0);
        tryVerify(() => list.itemAtIndex(list.count - 1) !== null);
        compare(list.itemAtIndex(list.count - 1).spoken, "Alt+Down: Move a source of details down");
        keyClick(Qt.Key_Home);
        compare(list.contentY, list.originY);
        keyClick(Qt.Key_Escape);
        tryVerify(() => !keys.visible);
    }

    function test_the_sheet_fits_a_small_window() {
        verify(sheet().width <= 720 && sheet().height <= 560);
    }
}
