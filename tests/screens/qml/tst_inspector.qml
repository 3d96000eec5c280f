import QtQuick
import QtTest
import Marlet
import MarletTest

TestCase {
    id: tests
    name: "Inspector"
    when: windowShown
    width: 1180
    height: 760
    visible: true

    InspectorView { id: view; width: 360; height: parent.height }

    function init() {
        Stage.clear();
        Stage.setSetting("artworkStyle", "tall");
        view.focus = true;
    }

    function cleanup() {
        const sheet = compareSheet();
        if (sheet.opened)
            sheet.close();
        tryVerify(() => !sheet.visible);
    }

    function compareSheet() {
        for (let at = 0; at < view.resources.length; ++at)
            if (view.resources[at].objectName === "compareSheet")
                return view.resources[at];
        return null;
    }

    function part(name) {
        const found = findChild(view, name);
        verify(found, name + " is there");
        return found;
    }

    /// The field under a label.
    function field(label) {
        const all = [];
        for (let key = 0; key < 10; ++key) {
            const each = findChild(view, "field" + key);
            if (each && each.label === label)
                return each;
        }
        fail("no field " + label);
        return null;
    }

    function placeFilm(more) {
        Stage.place([Object.assign({ name: "Charade (1963).m4v", title: "Charade", year: 1963 }, more ?? {})]);
    }

    function draftFilm(more) {
        Stage.draft("Charade (1963).m4v", Object.assign({
            title: "Charade", description: "A widow is pursued.", longDescription: "A widow is pursued by men.",
            cast: ["Cary Grant", "Audrey Hepburn"], directors: ["Stanley Donen"], writers: ["Peter Stone"],
            genre: "Thriller", rating: "PG", releaseDate: "1963-12-05",
            tall: ["/a.jpg", "/b.jpg", "/c.jpg"], wide: ["/w.jpg"]
        }, more ?? {}));
    }

    function test_without_a_selection_it_asks_for_one() {
        compare(part("inspectorEmpty").visible, true);
        compare(part("inspectorEmpty").title, "Select a movie or season");
    }

    function test_the_verdict_box_holds_reasons_and_the_yes() {
        placeFilm({ reasons: ["The length differs by 12 minutes", "The year differs"] });
        Stage.inspect("Charade (1963).m4v");
        compare(part("inspectorFile").text, "Charade (1963).m4v");
        compare(part("verdict").text, "Check this");
        compare(part("reason0").text, "The length differs by 12 minutes");
        compare(part("reason1").text, "The year differs");
        compare(part("inspectorSource").text, "Source: TMDB");
        const yes = part("confirm");
        compare(yes.text, "Yes, this is right");
        mouseClick(yes);
        verify(Stage.isConfirmed("Charade (1963).m4v"));
        tryCompare(part("verdict"), "text", "Ready");
        verify(!yes.visible);
    }

    function test_the_yes_can_be_given_by_keyboard() {
        placeFilm({ reasons: ["The year differs"] });
        Stage.inspect("Charade (1963).m4v");
        part("confirm").forceActiveFocus(Qt.TabFocusReason);
        keyClick(Qt.Key_Return);
        verify(Stage.isConfirmed("Charade (1963).m4v"));
    }

    function test_sources_data() {
        return [
            { tag: "tmdb", source: "Source: TMDB", apple: "" },
            { tag: "appleTV", source: "Source: Apple TV",
              apple: "The title, description, cast and artwork come from Apple" },
            { tag: "itunes", source: "Source: iTunes Store",
              apple: "The title, description, cast and artwork come from Apple" },
            { tag: "hand", source: "Tagged by hand", apple: "" }
        ];
    }

    function test_sources(data) {
        placeFilm({ source: data.tag });
        Stage.inspect("Charade (1963).m4v");
        compare(part("inspectorSource").text, data.source);
        compare(part("inspectorApple").text, data.apple);
        compare(part("inspectorApple").visible, data.apple !== "");
    }

    function test_without_a_match_a_button_opens_the_picker() {
        placeFilm({ match: false, reasons: ["Nothing found"] });
        Stage.inspect("Charade (1963).m4v");
        compare(part("inspectorMatch").text, "Not matched yet");
        compare(part("verdict").text, "Needs a look");
        verify(!part("compare").visible);
        mouseClick(part("pickMatch"));
        tryVerify(() => App.picker.open);
    }

    function placeSeason() {
        Stage.place([1, 2, 3].map(n => ({
            name: "A Show/S01E0" + n + ".mp4", show: "A Show", season: 1, episode: n,
            episodeTitle: "Part " + n, reasons: n === 2 ? ["The length differs"] : []
        })));
    }

    function test_a_season_lists_its_episodes_for_mouse_and_keys() {
        placeSeason();
        Stage.inspect("A Show/S01E01.mp4");
        const list = part("episodes");
        compare(list.count, 3);
        compare(findChild(list, "episode0").title, "S01E01 · Part 1");
        compare(findChild(list, "episode1").verdict, "Check this");
        mouseClick(findChild(list, "episode2"));
        compare(part("inspectorFile").text, "S01E03.mp4");
        keyClick(Qt.Key_Up);
        compare(part("inspectorFile").text, "S01E02.mp4");
        keyClick(Qt.Key_Home);
        compare(part("inspectorFile").text, "S01E01.mp4");
        keyClick(Qt.Key_End);
        keyClick(Qt.Key_Down);
        compare(part("inspectorFile").text, "S01E03.mp4");
    }

    function test_a_season_of_one_file_lists_it_too() {
        Stage.place([{ name: "A Show/S01E04.mp4", show: "A Show", season: 1, episode: 4, episodeTitle: "Part 4" }]);
        Stage.inspect("A Show/S01E04.mp4");
        const list = part("episodes");
        compare(list.count, 1);
        verify(list.visible);
        compare(findChild(list, "episode0").title, "S01E04 · Part 4");
        Stage.place([{ name: "Charade.mp4", title: "Charade", year: 1963 }]);
        Stage.inspect("Charade.mp4");
        tryCompare(list, "count", 0);
    }

    function test_pages_are_three_buttons() {
        placeFilm();
        draftFilm();
        Stage.inspect("Charade (1963).m4v");
        const pages = part("inspectorPages");
        compare(Array.from(pages.model), ["Details", "Tracks", "Artwork"]);
        mouseClick(findChild(pages, "segment2"));
        compare(App.inspector.page, 2);
        verify(findChild(view, "artworkGrid"));
        pages.forceActiveFocus(Qt.TabFocusReason);
        keyClick(Qt.Key_Left);
        compare(App.inspector.page, 1);
    }

    function test_fields_are_the_draft() {
        placeFilm();
        draftFilm();
        Stage.inspect("Charade (1963).m4v");
        const texts = {
            "Title": "Charade", "Description": "A widow is pursued.", "Long description": "A widow is pursued by men.",
            "Cast": "Cary Grant, Audrey Hepburn", "Director": "Stanley Donen", "Writer": "Peter Stone",
            "Genre": "Thriller", "Content rating": "PG", "Release date": "1963-12-05"
        };
        for (const label in texts)
            compare(field(label).text, texts[label], label);
        compare(field("Content rating").prompt, "R, TV-14");
        compare(field("Release date").prompt, "yyyy-mm-dd");
        verify(!findChild(view, "undoEdits").visible);

        const title = field("Title").field;
        mouseClick(title);
        title.selectAll();
        keyClick(Qt.Key_X);
        compare(Stage.draftOf("Charade (1963).m4v").title, "x");
        const cast = field("Cast").field;
        cast.forceActiveFocus();
        cast.cursorPosition = cast.length;
        for (const key of [Qt.Key_Comma, Qt.Key_Space])
            keyClick(key);
        compare(cast.text, "Cary Grant, Audrey Hepburn, ", "what is typed isn't tidied up under the hand");
        keyClick(Qt.Key_A);
        compare(Stage.draftOf("Charade (1963).m4v").cast, ["Cary Grant", "Audrey Hepburn", "a"]);

        const undo = part("undoEdits");
        tryVerify(() => undo.visible);
        compare(undo.text, "Undo my edits");
        mouseClick(undo);
        compare(Stage.draftOf("Charade (1963).m4v").title, "Charade");
        tryCompare(field("Cast"), "text", "Cary Grant, Audrey Hepburn");
        compare(field("Cast").field.text, "Cary Grant, Audrey Hepburn");
    }

    function test_undo_key_takes_back_the_last_edit() {
        placeFilm();
        draftFilm();
        Stage.inspect("Charade (1963).m4v");
        const genre = field("Genre").field;
        genre.forceActiveFocus();
        genre.selectAll();
        keyClick(Qt.Key_W);
        compare(Stage.draftOf("Charade (1963).m4v").genre, "w");
        part("inspectorPages").forceActiveFocus();
        keyClick(Qt.Key_Z, Qt.ControlModifier);
        compare(Stage.draftOf("Charade (1963).m4v").genre, "Thriller");
    }

    function test_an_episode_may_go_on_to_another() {
        placeSeason();
        Stage.draft("A Show/S01E01.mp4", { title: "Part 1", show: "A Show", season: 1, episode: 1 });
        Stage.inspect("A Show/S01E01.mp4");
        const to = field("To episode").field;
        to.forceActiveFocus();
        keyClick(Qt.Key_2);
        compare(Stage.draftOf("A Show/S01E01.mp4").episodeEnd, 2);
    }

    function test_a_dot_marks_what_differs_and_focus_shows_the_old_value() {
        placeFilm();
        draftFilm();
        Stage.film("Charade (1963).m4v", { title: "Old Title", genre: "Thriller" });
        Stage.inspect("Charade (1963).m4v");
        tryVerify(() => field("Title").mark);
        verify(!field("Genre").mark);
        compare(field("Title").oldValue, "Old Title");
        const old = part("oldValue0");
        verify(!old.visible);
        field("Title").field.forceActiveFocus();
        tryVerify(() => old.visible);
        compare(old.text, "In the file now: Old Title");
    }

    function test_details_on_their_way() {
        placeFilm();
        Stage.inspect("Charade (1963).m4v");
        compare(part("detailsFailed").text, "These details couldn't be loaded.");
        verify(part("detailsFailed").visible);
        compare(part("loadAgain").text, "Try again");
        compare(part("fetchingDetails").text, "Fetching details…");
    }

    function test_artwork_that_could_not_be_loaded_can_be_asked_for_again() {
        placeFilm();
        Stage.inspect("Charade (1963).m4v");
        App.inspector.page = 2;
        tryCompare(part("artworkLine"), "text", "The artwork couldn't be loaded.");
        compare(part("artworkAgain").text, "Try again");
        const asked = Stage.requestCount("/movie/");
        mouseClick(part("artworkAgain"));
        tryVerify(() => Stage.requestCount("/movie/") > asked);
    }

    function test_tracks_of_an_mp4() {
        placeFilm();
        draftFilm();
        Stage.film("Charade (1963).m4v", { sounds: ["eng", "fre"] });
        App.inspector.page = 1;
        Stage.inspect("Charade (1963).m4v");
        tryVerify(() => findChild(view, "sound1"));
        compare(part("subtitleNone").text, "No subtitles in this file.");
        compare(part("tracksFoot").text,
                "Untick a track to leave it out. Marlet then makes a new .m4v and leaves this file as it is.");
        verify(findChild(view, "soundFirst0").visible);
        mouseClick(findChild(view, "sound1"));
        tryCompare(part("tracksLeftOut"), "text",
            "1 track will be left out of a new .m4v saved in your output folder. This file isn't touched, and the picture stays exactly the same.");
        findChild(view, "sound1").forceActiveFocus(Qt.TabFocusReason);
        keyClick(Qt.Key_Space);
        tryVerify(() => !part("tracksLeftOut").parent.visible);
    }

    function test_tracks_of_a_mov() {
        Stage.place([{ name: "a.mov", title: "A" }]);
        App.inspector.page = 1;
        Stage.inspect("a.mov");
        compare(part("tracksFoot").text,
                "A QuickTime file is copied track for track into a new .m4v. Nothing is converted.");
        verify(!findChild(view, "sound0"));
    }

    function test_tracks_of_an_mkv() {
        Stage.plan("a.mkv", "rich");
        Stage.place([{ name: "a.mkv", title: "A" }]);
        App.inspector.page = 1;
        Stage.inspect("a.mkv");
        tryCompare(part("pictureCodec"), "text", "HEVC");
        compare(part("pictureNote").text, "Copied as it is");
        verify(findChild(view, "soundFirst0").visible);
        compare(part("soundMore").text, "2 more sound tracks, left out");
        compare(part("subtitleMore").text, "2 other subtitles");
        compare(part("tracksFoot").text,
                "Picture quality stays exactly the same. Chapters, cover, description, cast and ratings are included.");
        verify(!findChild(view, "sound4"));
        mouseClick(part("soundMore"));
        tryVerify(() => findChild(view, "sound4"));
        const french = findChild(view, "sound1");
        verify(french.checked);
        mouseClick(french);
        tryCompare(findChild(view, "sound1"), "note", "Left out");
    }

    function test_an_mkv_that_is_refused() {
        Stage.plan("a.mkv", "refused");
        Stage.place([{ name: "a.mkv", title: "A" }]);
        App.inspector.page = 1;
        Stage.inspect("a.mkv");
        tryCompare(part("tracksRefusal"), "text", "VP9 video can't be played by Apple TV. This file is skipped.");
    }

    function test_the_second_look_shows_how_far_it_is() {
        Stage.plan("a.mkv", "checking");
        Stage.place([{ name: "a.mkv", title: "A" }]);
        App.inspector.page = 1;
        Stage.inspect("a.mkv");
        tryCompare(part("tracksChecking"), "text", "Checking which subtitles are foreign-parts-only… 37 %");
    }

    function test_artwork_is_chosen_by_mouse_and_keys() {
        placeFilm();
        draftFilm();
        App.inspector.page = 2;
        Stage.inspect("Charade (1963).m4v");
        const grid = part("artworkGrid");
        compare(grid.count, 3);
        verify(findChild(grid, "artwork0").chosen);
        mouseClick(findChild(grid, "artwork1"));
        compare(Stage.draftOf("Charade (1963).m4v").chosenTall, "/b.jpg");
        tryVerify(() => findChild(grid, "artwork1").chosen);
        keyClick(Qt.Key_Right);
        keyClick(Qt.Key_Space);
        compare(Stage.draftOf("Charade (1963).m4v").chosenTall, "/c.jpg");
        compare(part("artworkNote").text, "Only the chosen image is written to the file.");
        verify(!findChild(view, "shareSeason").visible);
    }

    function test_the_shape_is_the_files_own() {
        placeFilm();
        draftFilm({ wide: [] });
        App.inspector.page = 2;
        Stage.inspect("Charade (1963).m4v");
        const shape = part("shape");
        compare(shape.label, "Shape");
        compare(Array.from(shape.model), ["Settings choice (tall)", "Wide, for Apple TV", "Tall, for Mac & iPhone"]);
        shape.chosen(1);
        compare(Stage.draftOf("Charade (1963).m4v").style, "wide");
        tryCompare(part("artworkLine"), "text", "No images in the database for this one.");
        shape.chosen(0);
        compare(Stage.draftOf("Charade (1963).m4v").style, "");
    }

    function test_a_season_shares_its_artwork() {
        placeSeason();
        for (const n of [1, 2])
            Stage.draft("A Show/S01E0" + n + ".mp4", { title: "Part " + n, show: "A Show", season: 1, episode: n,
                                                       seasonKey: "7-S1", tall: ["/a.jpg", "/b.jpg"] });
        App.inspector.page = 2;
        Stage.inspect("A Show/S01E01.mp4");
        const share = part("shareSeason");
        compare(share.text, "Use for every episode in this season");
        verify(share.checked);
        mouseClick(findChild(view, "artwork1"));
        compare(Stage.draftOf("A Show/S01E02.mp4").chosenTall, "/b.jpg");
        mouseClick(share);
        tryVerify(() => !App.inspector.artwork.shared);
        mouseClick(findChild(view, "artwork0"));
        compare(Stage.draftOf("A Show/S01E01.mp4").chosenTall, "/a.jpg");
        compare(Stage.draftOf("A Show/S01E02.mp4").chosenTall, "/b.jpg");
    }

    function test_the_cover_in_the_file_can_stay() {
        placeFilm();
        draftFilm();
        Stage.film("Charade (1963).m4v", { title: "Charade", cover: "red" });
        App.inspector.page = 2;
        Stage.inspect("Charade (1963).m4v");
        const grid = part("artworkGrid");
        tryCompare(grid, "count", 4);
        compare(findChild(grid, "artwork0").label, "In the file now");
        mouseClick(findChild(grid, "artwork0"));
        compare(Stage.draftOf("Charade (1963).m4v").chosenTall, "the file's");
        tryVerify(() => findChild(grid, "artwork0").chosen);
    }

    function test_the_comparison_opens_by_button_and_key() {
        placeFilm();
        draftFilm();
        Stage.film("Charade (1963).m4v", { title: "Old Title", genre: "Thriller", cover: "red" });
        Stage.inspect("Charade (1963).m4v");
        const sheet = compareSheet();
        tryVerify(() => App.inspector.compare.possible);
        mouseClick(part("compare"));
        tryVerify(() => sheet.opened);
        const list = findChild(sheet.contentItem, "compareList");
        tryVerify(() => findChild(list, "compare0") !== null);
        compare(findChild(list, "compare0").before, "Old Title");
        compare(findChild(list, "compare0").after, "Charade");
        verify(findChild(list, "compare0").differs);
        tryVerify(() => list.contentY === list.originY && list.originY < -100, 2000, "it begins with the covers");
        verify(findChild(list, "coverBefore").source.startsWith("image://art/inFile/"));
        verify(findChild(list, "coverAfter").source.startsWith("image://art/remote/"));
        keyClick(Qt.Key_Escape);
        tryVerify(() => !sheet.visible);
        keyClick(Qt.Key_D, Qt.ControlModifier);
        tryVerify(() => sheet.opened);
        mouseClick(findChild(sheet.contentItem, "compareDone"));
        tryVerify(() => !sheet.visible);
    }
}
