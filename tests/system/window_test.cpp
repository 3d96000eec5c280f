// The real program in a real window, driven as a person drives it: what is done is looked for in
// the files on disk, in History, and on the screen.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>

#include <filesystem>
#include <nlohmann/json.hpp>

#include "support/media.h"
#include "system/window_run.h"

namespace marlet::test {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;

/// A film of that length, which takes no time to make: a picture a second.
void makeLongFilm(const fs::path& file, int seconds) {
    ffmpeg({"-f", "lavfi", "-i",
            "color=c=navy:size=64x36:rate=1:duration=" + std::to_string(seconds), "-c:v", "libx264",
            "-preset", "ultrafast", file.string()});
}

std::string titleOf(const fs::path& film) {
    std::string title = probeValue(film, "format_tags=title");
    while (title.ends_with('\n')) title.pop_back();
    return title;
}

bool hasCover(const fs::path& film) {
    return contains(probeValue(film, "stream=codec_name"), "mjpeg") ||
           contains(probeValue(film, "stream=codec_name"), "png");
}

/// Each byte encoded that isn't a letter, a digit or a slash.
std::string address(const fs::path& path) {
    std::string text = "file://";
    for (const char each : path.string()) {
        const auto byte = static_cast<unsigned char>(each);
        char code[4];
        std::snprintf(code, sizeof code, "%%%02X", byte);
        text += std::isalnum(byte) != 0 || each == '/' ? std::string(1, each) : code;
    }
    return text;
}

class Window : public testing::Test {
protected:
    void SetUp() override {
        if (const auto no = WindowRun::missing()) GTEST_SKIP() << *no;
        run_ = std::make_unique<WindowRun>();
    }
    fs::path place(const std::string& name) const { return run_->library() / name; }
    /// Titles by what came of them, oldest first.
    std::vector<std::string> history() const {
        std::vector<std::string> lines;
        const fs::path file = run_->data() / "history.json";
        if (!fs::exists(file)) return lines;
        const auto entries = nlohmann::json::parse(readFile(file));
        for (const auto& entry : entries)
            lines.push_back(entry.at("title").get<std::string>() + ": " +
                            entry.at("result").get<std::string>() +
                            (entry.value("isRestore", false) ? ", restored" : ""));
        std::ranges::sort(lines);
        return lines;
    }
    /// One certain film goes from the command line to a queue that waits on the screen.
    fs::path queueOne() {
        const fs::path film = place("Detour (1945).mp4");
        makeLongFilm(film, 68 * 60);
        run_->start({film.string()});
        run_->see("Detour, 1945. Ready*");
        run_->press("Add All to Queue");
        run_->press("Queue, 1 waiting");
        run_->see("Start");
        return film;
    }

    std::unique_ptr<WindowRun> run_;
};

TEST_F(Window, AFolderIsDroppedCorrectedQueuedPausedCancelledWrittenAndRestored) {
    const std::vector<fs::path> films = {place("Charade (1963).mp4"), place("Detour (1945).mp4"),
                                         place("Sintl.mp4")};
    makeLongFilm(films[0], 113 * 60);
    makeLongFilm(films[1], 68 * 60);
    makeMovie(films[2]);
    std::vector<Bytes> originals;
    for (const fs::path& film : films) originals.push_back(readFile(film));
    const auto expectOriginals = [&] {
        for (std::size_t i = 0; i < films.size(); i++) EXPECT_EQ(readFile(films[i]), originals[i]);
    };
    const auto packets = packetHashes(films[2]);

    // Dropped.
    run_->start();
    run_->see("Drop movies or TV shows here");
    EXPECT_EQ(run_->drag({address(run_->library())}), "copied\n");
    run_->see("Charade, 1963. Ready*");
    run_->see("Detour, 1945. Ready*");
    run_->see("1 needs checking");

    // Corrected.
    run_->pressRow("Sintl. Needs a look*");
    run_->hand().press("ctrl+alt+i");
    run_->press("Find the Match…");
    run_->see("Which one is this?");
    run_->until("the search field", [&] { return run_->see("Search the database").focused; });
    run_->hand().type("Sintel");
    run_->hand().press("Return");
    run_->pressRow("Sintel, 2010*");
    run_->press("Use This");
    run_->see("Sintel, 2010. Ready*");

    // Queued and begun; the first film's copy gets no further than its first byte.
    run_->press("Add All to Queue");
    run_->press("Queue, 3 waiting");
    run_->holdWrites(run_->work());
    run_->press("Start");
    run_->untilHeld();
    run_->press("Pause");
    run_->see("Paused");
    run_->letGo();
    // Time enough for a run that isn't paused.
    run_->press("History, 0 items");
    run_->see("Nothing yet");
    run_->press("Queue, *");
    run_->see("Paused");
    run_->see("Resume");
    expectOriginals();

    // On with it, and cancelled.
    run_->holdWrites(run_->work());
    run_->press("Resume");
    run_->press("Cancel");
    run_->letGo();
    run_->see("Finished, 3 cancelled");
    expectOriginals();
    EXPECT_THAT(history(), ElementsAre());
    EXPECT_TRUE(!fs::exists(run_->work()) || fs::is_empty(run_->work()));

    // Once more, to the end.
    run_->press("Retry Failed");
    run_->see("All done");
    run_->see("3 done");
    EXPECT_EQ(titleOf(films[0]), "Charade");
    EXPECT_EQ(titleOf(films[1]), "Detour");
    EXPECT_EQ(titleOf(films[2]), "Sintel");
    for (const fs::path& film : films) EXPECT_TRUE(hasCover(film)) << film;
    EXPECT_EQ(packetHashes(films[2]).size(), packets.size() + 1);
    EXPECT_THAT(history(), ElementsAre("Charade: done", "Detour: done", "Sintel: done"));

    // The original details of one come back.
    run_->press("History, 3 items");
    run_->pressRow("Sintel, 2010*");
    run_->press("Restore Original Details…");
    run_->see("Restore original details?*");
    run_->press("Restore 1*");
    run_->press("Queue*");
    run_->see("All done");
    EXPECT_EQ(titleOf(films[2]), "");
    EXPECT_FALSE(hasCover(films[2]));
    EXPECT_EQ(packetHashes(films[2]), packets);
    EXPECT_EQ(titleOf(films[0]), "Charade");
    EXPECT_THAT(history(), ElementsAre("Charade: done", "Detour: done", "Sintel: done",
                                       "Sintel: done, restored"));

    run_->close();
    EXPECT_EQ(run_->ended(), "");
}

using Ending = void (*)(WindowRun&);
class WindowEnding : public Window, public testing::WithParamInterface<Ending> {};

TEST_P(WindowEnding, WhileAFileIsChangedItSaysSoAndEndsWhenTheFileIsFinished) {
    const fs::path film = queueOne();
    run_->holdWrites(film);
    run_->press("Start");
    run_->untilHeld();
    run_->see("Writing a file: Pause and Cancel are locked until it's finished");
    run_->press("Pause");
    run_->press("Cancel");
    GetParam()(*run_);
    run_->see("Marlet quits as soon as the file that is being written is finished.");
    EXPECT_FALSE(run_->isShown("Paused"));
    EXPECT_FALSE(run_->isShown("Resume"));
    EXPECT_FALSE(run_->program().hasEnded());
    run_->letGo();
    EXPECT_EQ(run_->ended(), "");
    EXPECT_EQ(titleOf(film), "Detour");
    EXPECT_TRUE(hasCover(film));
    EXPECT_FALSE(fs::exists(run_->data() / "pending-write.json"));
}

TEST_P(WindowEnding, OtherwiseItEndsAtOnceTheFileIsAsItWasAndTheJobIsOfferedAgain) {
    const fs::path film = queueOne();
    const Bytes original = readFile(film);
    run_->holdWrites(run_->work());
    run_->press("Start");
    run_->untilHeld();
    GetParam()(*run_);
    EXPECT_EQ(run_->ended(), "");
    EXPECT_EQ(readFile(film), original);
    run_->letGo();

    run_->start();
    EXPECT_TRUE(fs::is_empty(run_->work()));
    run_->press("Resume");
    run_->press("Queue, 1 waiting");
    run_->press("Start");
    run_->see("All done");
    EXPECT_EQ(titleOf(film), "Detour");
    GetParam()(*run_);
    EXPECT_EQ(run_->ended(), "");
}

INSTANTIATE_TEST_SUITE_P(By, WindowEnding,
                         testing::Values([](WindowRun& run) { run.close(); },
                                         [](WindowRun& run) { run.program().signal(SIGTERM); }),
                         [](const auto& each) {
                             return each.index == 0 ? "TheCloseButton" : "ASignal";
                         });

TEST_F(Window, AFileWhoseNameIsNotUtf8IsDroppedAndWrittenAndWhatIsElsewhereIsTold) {
    const fs::path film = place("Caf\xE9") / "Detour (1945) \xFC.mp4";
    fs::create_directories(film.parent_path());
    makeLongFilm(film, 68 * 60);
    run_->start();
    EXPECT_EQ(run_->drag({"http://example.org/film.mp4"}), "copied\n");
    run_->see(
        "“http://example.org/film.mp4” isn't on this computer. Copy it here first, then add "
        "it.");
    EXPECT_EQ(run_->drag({"smb://server/a.mp4", address(film), "smb://server/b.mp4"}), "copied\n");
    run_->see("2 of those aren't on this computer. Copy them here first, then add them.");
    run_->see("Detour, 1945. Ready*");
    run_->press("Add All to Queue");
    run_->press("Queue, 1 waiting");
    run_->press("Start");
    run_->see("All done");
    // FFmpeg is given its bytes as they are.
    EXPECT_EQ(titleOf(film), "Detour");
    EXPECT_THAT(history(), ElementsAre("Detour: done"));
    run_->close();
    EXPECT_EQ(run_->ended(), "");
}

TEST_F(Window, AFileOfTheCommandLineWhoseNameIsNotUtf8IsFound) {
    const fs::path film = place("Detour (1945) \xFC.mp4");
    makeLongFilm(film, 68 * 60);
    run_->start({film.string()});
    run_->see("Detour, 1945. Ready*");
    run_->close();
    EXPECT_EQ(run_->ended(), "");
}

TEST_F(Window, EveryControlOfEveryPageHasANameForAScreenReader) {
    const auto expectNamed = [&](const char* page) {
        EXPECT_THAT(run_->nameless(), ElementsAre()) << "on " << page;
    };
    const auto leave = [&](const std::string& page) {
        run_->hand().press("Escape");
        run_->until(page + " to be gone", [&] { return !run_->isShown(page); });
    };
    fs::create_directories(place("The Tin Observatory (2017)") / "Season 1");
    makeMovie(place("Sintl.mp4"));
    makeMovie(place("The Tin Observatory (2017)") / "Season 1" / "The Tin Observatory S01E01.mkv");
    run_->start();
    run_->see("choose files");
    expectNamed("the empty Review");
    run_->press("Queue*");
    run_->see("Nothing in the queue");
    expectNamed("the empty Queue");
    run_->press("History*");
    run_->see("Nothing yet");
    expectNamed("the empty History");
    run_->press("Review*");
    EXPECT_EQ(run_->drag({address(run_->library())}), "copied\n");
    run_->pressRow("Sintl. Needs a look*");
    run_->press("Show or hide the inspector*");
    run_->see("Find the Match…");
    expectNamed("the inspector of a film without match");
    run_->pressRow("The Tin Observatory*");
    for (const char* page : {"Tracks", "Artwork", "Details"}) {
        run_->press(page);
        expectNamed(page);
    }
    run_->press("Choose Another Match…");
    run_->see("Which one is this?");
    expectNamed("the match picker");
    leave("Which one is this?");
    run_->press("Settings");
    run_->see("Close");
    expectNamed("Settings");
    leave("Close");
    run_->hand().press("F1");
    run_->see("Close");
    expectNamed("Keys");
    leave("Close");
    run_->press("More");
    run_->press("About Marlet*");
    run_->see("Close");
    expectNamed("About");
    run_->close();
    EXPECT_EQ(run_->ended(), "");
}

TEST_F(Window, ThePanelOffersAFilmWhoseNameIsInUpperCase) {
    makeMovie(place("FILM.MP4"));
    writeFile(place("notes.txt"), {});
    const fs::path before = fs::current_path();
    fs::current_path(run_->library());
    run_->start();
    fs::current_path(before);
    run_->hand().press("ctrl+o");
    run_->see("Choose movies, TV episodes or folders. Marlet only reads them.");
    const Seen film = run_->see("FILM.MP4");
    EXPECT_FALSE(run_->isShown("notes.txt"));
    run_->hand().click(film.centre());
    run_->press("Add Files");
    run_->see("Film*");
    run_->close();
    EXPECT_EQ(run_->ended(), "");
}

}  // namespace
}  // namespace marlet::test
