import QtQuick
import QtTest
import Marlet
import MarletTest

TestCase {
    id: tests
    name: "Picker"
    when: windowShown
    width: 1180
    height: 760

    MatchPickerView { id: sheet }

    readonly property string film: "some.film.mkv"
    readonly property var pane: App.picker.pane
    readonly property var show: App.picker.pane.show
    readonly property var hand: App.picker.hand

    function init() {
        Stage.clear();
        tryVerify(() => !sheet.visible);
    }

    function part(name: string): var { return findChild(sheet.contentItem, name); }
    /// Once it lies where it will.
    function polish(item: Item) {
        for (let each = item; each !== null; each = each.parent)
            if (isPolishScheduled(each)) waitForItemPolished(each);
    }
    function click(name: string) {
        const item = part(name);
        verify(item !== null, name);
        polish(item);
        mouseClick(item);
    }
    function openFilm(title: string) {
        Stage.place([{ name: film, title: title, duration: 113 * 60, match: false }]);
        Stage.openPicker(film);
        tryVerify(() => sheet.opened);
    }
    function episode(number: int): var {
        return {
            name: "Tin/tin " + number + ".mkv", title: "The Tin Observatory",
            show: "The Tin Observatory", season: 1, episode: number, duration: 22 * 60
        };
    }
    function openShow(files: var, number: int) {
        Stage.place(files);
        Stage.openPicker(episode(number).name);
        tryVerify(() => sheet.opened);
        rows("pickerResults");
        part("pickerResults").forceActiveFocus();
        // Two shows have that name.
        keyClick(Qt.Key_Home);
        while (!part("pickerResult" + pane.result).facts.startsWith("2017")) keyClick(Qt.Key_Down);
        keyClick(Qt.Key_Return);
        rows("pickerEpisodes");
    }
    function rows(list: string) {
        tryVerify(() => part(list) !== null && part(list).visible && part(list).count > 0, 20000);
        polish(part(list));
    }
    function empty(name: string): var {
        tryVerify(() => part(name) !== null && part(name).visible, 20000);
        return part(name);
    }

    function test_the_guess_is_searched_at_once_and_a_click_and_the_button_take_a_film() {
        openFilm("Sintel");
        compare(sheet.title, "Which one is this?");
        compare(part("pickerQuery").text, "Sintel");
        compare(part("pickerQuery").prompt, "Search the database");
        compare(part("pickerFile").text, film);
        compare(part("pickerLength").text, "113 min");
        rows("pickerResults");
        click("pickerResult0");
        click("pickerUse");
        tryVerify(() => !App.picker.open, 20000);
        compare(Stage.matchedTitle(film), "Sintel");
        verify(Stage.isConfirmed(film));
    }

    function test_a_double_click_takes_a_film() {
        openFilm("Detour");
        rows("pickerResults");
        mouseDoubleClickSequence(part("pickerResult0"));
        tryVerify(() => !App.picker.open, 20000);
        compare(Stage.matchedTitle(film), "Detour");
    }

    function test_all_by_keyboard() {
        openFilm("Charade");
        rows("pickerResults");
        verify(part("pickerQuery").activeFocus);
        keyClick(Qt.Key_A, Qt.ControlModifier);
        for (const letter of "jekyll") keyClick(letter);
        tryVerify(() => part("pickerResults").count === 3, 20000);
        keyClick(Qt.Key_Down);
        verify(part("pickerResults").activeFocus);
        compare(pane.result, 0);
        keyClick(Qt.Key_Down);
        keyClick(Qt.Key_Down);
        keyClick(Qt.Key_Down);
        compare(pane.result, 2);
        keyClick(Qt.Key_Home);
        compare(pane.result, 0);
        keyClick(Qt.Key_End);
        compare(pane.result, 2);
        keyClick(Qt.Key_F, Qt.ControlModifier);
        verify(part("pickerQuery").activeFocus);
        keyClick(Qt.Key_Return);
        verify(part("pickerResults").activeFocus);
        rows("pickerResults");
        keyClick(Qt.Key_Return);
        tryVerify(() => !App.picker.open, 20000);
        compare(Stage.matchedTitle(film), "Dr. Jekyll and Mr. Hyde");
    }

    function test_escape_goes_back_step_by_step_and_closes() {
        openShow([episode(1)], 1);
        click("notListed");
        verify(hand.open);
        compare(sheet.title, "Tag it by hand");
        wait(50);  // the page before goes with the next turn of the event loop, and its keys with it
        keyClick(Qt.Key_Escape);
        verify(!hand.open);
        verify(show.open);
        wait(50);
        keyClick(Qt.Key_Escape);
        verify(!show.open);
        verify(App.picker.open);
        keyClick(Qt.Key_Escape);
        verify(!App.picker.open);
        tryVerify(() => !sheet.visible);
    }

    function test_cancel_and_the_cross_close() {
        openFilm("Charade");
        click("pickerCancel");
        verify(!App.picker.open);
        tryVerify(() => !sheet.visible);
        Stage.openPicker(film);
        tryVerify(() => sheet.opened);
        click("sheetClose");
        tryVerify(() => !App.picker.open);
        compare(Stage.matchedTitle(film), "");
    }

    function test_a_film_of_the_files_length_is_marked() {
        Stage.place([{ name: film, title: "Charade", duration: 113 * 60, match: false }]);
        Stage.openPicker(film);
        rows("pickerResults");
        tryVerify(() => part("fits0").visible, 20000);
        compare(part("fits0").text, "fits this file's length");
    }

    function test_nothing_found() {
        openFilm("No Such Film");
        const told = empty("pickerNothing");
        compare(told.title, "Nothing found");
        compare(told.line, "Try fewer words, or the title as it appears on the poster.");
        verify(!part("pickerUse").enabled);
    }

    function test_a_failure_is_told_and_can_be_tried_again() {
        Stage.setFault('{"times":0,"status":500}');
        openFilm("Metropolis");
        const told = empty("pickerFailure");
        compare(told.title, "Couldn't reach the database.");
        compare(App.toast, "Couldn't reach the database.");
        Stage.setFault("");
        mouseClick(findChild(told, "emptyLink"));
        rows("pickerResults");
        verify(!told.visible);
    }

    function test_a_slow_answer_shows_that_it_is_waited_for() {
        Stage.setFault('{"path":"search/movie","times":1,"delayMs":1500}');
        openFilm("Nosferatu");
        verify(!part("pickerWaiting").visible);
        tryVerify(() => part("pickerWaiting").visible, 20000);
        rows("pickerResults");
        tryVerify(() => !part("pickerWaiting").visible);
    }

    function test_movie_and_show_are_two_searches() {
        openFilm("The Tin Observatory");
        empty("pickerNothing");
        mouseClick(findChild(part("pickerKind"), "segment1"));
        rows("pickerResults");
        compare(part("pickerUse").text, "Show Episodes");
        mouseClick(findChild(part("pickerKind"), "segment0"));
        empty("pickerNothing");
        compare(part("pickerUse").text, "Use This");
    }

    function test_a_season_with_its_own_episode_chosen() {
        openShow([episode(3)], 3);
        compare(show.episode, 2);
        compare(part("pickerEpisode2").title, "Cloud Cover");
        compare(part("pickerEpisode2").file, "tin 3.mkv");
        compare(part("pickerEpisode2").facts, "22 min · 28 Sep 2017");
        verify(part("pickerEpisodes").activeFocus);
        keyClick(Qt.Key_Up);
        keyClick(Qt.Key_Return);
        tryVerify(() => !App.picker.open, 20000);
        compare(Stage.match(episode(3).name).episodeTitle, "The Wrong End of the Telescope");
    }

    function test_specials_are_a_season() {
        openShow([episode(1)], 1);
        const season = part("pickerSeason");
        compare(season.box.displayText, "Season 1");
        season.box.forceActiveFocus();
        keyClick(Qt.Key_End);
        tryCompare(season.box, "displayText", "Specials");
        tryVerify(() => part("pickerEpisode0") !== null && part("pickerEpisode0").title === "The Longest Night", 20000);
        click("pickerEpisode1");
        click("pickerUse");
        tryVerify(() => !App.picker.open, 20000);
        compare(Stage.match(episode(1).name).season, 0);
        compare(Stage.match(episode(1).name).episode, 2);
    }

    function test_a_season_that_stops_too_early_leads_to_the_form() {
        openShow([episode(47)], 47);
        verify(/^The database stops at episode \d+; this file says episode 47$/.test(part("showNote").text));
        verify(!part("pickerUse").enabled);
        click("notListed");
        compare(part("handIntro").text, "The database has no such episode of The Tin Observatory. Type what you know; Marlet keeps your words and uses the show's and season's artwork. It stays marked “Check this” until you say it's right.");
        compare(part("handSeason").text, "1");
        compare(part("handEpisode").text, "47");
        verify(!part("pickerUse").enabled);
        part("handTitle").field.forceActiveFocus();
        for (const letter of "Lens") keyClick(letter);
        keyClick(Qt.Key_Tab);
        for (const letter of "it falls") keyClick(letter);
        keyClick(Qt.Key_Tab);
        for (const letter of "2019") keyClick(letter);
        verify(part("handDateWrong").visible);
        verify(!part("pickerUse").enabled);
        for (const letter of "-01-02") keyClick(letter);
        verify(!part("handDateWrong").visible);
        compare(part("pickerUse").text, "Tag by Hand");
        compare(part("pickerCancel").text, "Back");
        click("pickerUse");
        tryVerify(() => !App.picker.open);
        const now = Stage.match(episode(47).name);
        verify(now.byHand);
        compare(now.episodeTitle, "Lens");
        compare(now.episode, 47);
    }

    function test_return_tags_by_hand_from_the_numbers_too_data() {
        return [{ tag: "handSeason" }, { tag: "handEpisode" }];
    }
    function test_return_tags_by_hand_from_the_numbers_too(data) {
        openShow([episode(47)], 47);
        click("notListed");
        part("handTitle").field.forceActiveFocus();
        for (const letter of "Lens") keyClick(letter);
        part(data.tag).field.forceActiveFocus();
        keyClick(Qt.Key_Return);
        tryVerify(() => !App.picker.open);
        compare(Stage.match(episode(47).name).episodeTitle, "Lens");
    }

    function test_a_film_of_that_name_is_offered() {
        openShow([episode(47)], 47);
        click("notListed");
        verify(!part("filmOffer").visible);
        part("handTitle").field.forceActiveFocus();
        for (const letter of "The Kid") keyClick(letter);
        tryVerify(() => part("filmOffer").visible, 20000);
        compare(part("filmOfferTitle").text, "TMDB lists a film called “The Kid”");
        compare(part("useFilm").text, "Use Its Details");
        click("useFilm");
        tryVerify(() => hand.description !== "", 20000);
        verify(part("handDate").field.text.startsWith("1921-"));
        verify(!part("filmOffer").visible);
        click("pickerCancel");
        verify(!hand.open);
        verify(App.picker.open);
    }

    function test_the_search_across_a_show() {
        openShow([episode(1)], 1);
        compare(part("pickerWords").prompt, "Search every season and Specials");
        keyClick(Qt.Key_F, Qt.ControlModifier);
        verify(part("pickerWords").activeFocus);
        for (const letter of "peri") keyClick(letter);
        tryVerify(() => part("pickerEpisodes").count === 1, 20000);
        compare(part("pickerEpisode0").number, "S00E03");
        for (const letter of "x") keyClick(letter);
        compare(empty("showEmpty").title, "No episode in any season or Specials has those words.");
        keyClick(Qt.Key_Backspace);
        keyClick(Qt.Key_Return);
        verify(part("pickerEpisodes").activeFocus);
        keyClick(Qt.Key_Return);
        tryVerify(() => !App.picker.open, 20000);
        compare(Stage.match(episode(1).name).episodeTitle, "Perihelion");
    }

    function test_refresh_from_tmdb() {
        openShow([episode(1)], 1);
        const button = part("pickerRefresh");
        compare(button.Accessible.name, "Refresh from TMDB");
        compare(button.help, "Downloads this show again, ignoring what Marlet saved earlier");
        mouseClick(button);
        tryVerify(() => App.toast === "Refreshed from TMDB.", 20000);
    }

    function test_a_whole_season_at_once() {
        openShow([episode(1), episode(2), episode(3)], 2);
        const tick = part("wholeSeason");
        compare(tick.text, "Use this show for all 3 episodes of this season");
        mouseClick(tick);
        verify(show.whole);
        compare(part("pickerEpisode0").file, "tin 1.mkv");
        click("pickerUse");
        tryVerify(() => !App.picker.open, 20000);
        compare(Stage.match(episode(1).name).episodeTitle, "First Light");
        compare(Stage.match(episode(3).name).episodeTitle, "Cloud Cover");
    }

    function test_the_tab_of_a_shop() {
        openFilm("Charade");
        mouseClick(findChild(part("pickerTabs"), "segment1"));
        compare(part("pickerQuery").prompt, "Search iTunes Store");
        compare(part("pickerFoot").text, "Details and artwork from Apple's iTunes Store");
        rows("pickerResults");
        keyClick(Qt.Key_F, Qt.ControlModifier);
        keyClick(Qt.Key_A, Qt.ControlModifier);
        for (const letter of "zzz") keyClick(letter);
        keyClick(Qt.Key_Return);
        const told = empty("pickerNothing");
        compare(told.title, "Nothing found on iTunes Store");
        compare(told.line, "Try fewer words, or look in another tab.");
        compare(part("notListed").text, "Not listed? Tag it by hand…");
    }

    function test_every_row_is_one_sentence() {
        openShow([episode(3)], 3);
        compare(part("pickerEpisode2").Accessible.name,
                "Season 1, episode 3, Cloud Cover, 22 min · 28 Sep 2017, this is what tin 3.mkv says");
        compare(part("pickerEpisode2").Accessible.role, Accessible.ListItem);
    }
}
