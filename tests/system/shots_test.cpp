// Pictures of the real program's windows, taken where there is no display.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <set>
#include <thread>

#include "support/media.h"
#include "system/program_run.h"

namespace marlet::test {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::UnorderedElementsAre;
using Arguments = std::vector<std::string>;

struct Picture {
    int width = 0;
    int height = 0;
    std::size_t shades = 0;  ///< how many different ones
    double brightness = 0;   ///< on average, 0 to 255
    std::string grey;        ///< of each point
};

Picture pictureOf(const fs::path& file) {
    Picture picture;
    // ISO/IEC 15948: the signature, then IHDR, which begins with both.
    const Bytes head = readFile(file);
    if (head.size() < 24) return picture;
    picture.width = static_cast<int>(BigEndian::u32(head, 16));
    picture.height = static_cast<int>(BigEndian::u32(head, 20));
    picture.grey = ffmpeg({"-i", file.string(), "-f", "rawvideo", "-pix_fmt", "gray", "pipe:1"});
    double sum = 0;
    std::set<char> shades;
    for (const char each : picture.grey) {
        shades.insert(each);
        sum += static_cast<unsigned char>(each);
    }
    picture.shades = shades.size();
    picture.brightness = sum / static_cast<double>(std::max<std::size_t>(picture.grey.size(), 1));
    return picture;
}

class Shots : public testing::Test {
protected:
    Shots() {
        for (const char* name :
             {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM", "MARLET_SHOT_WATCHER"})
            unsetenv(name);
        fs::permissions(runtime_.path(), fs::perms::owner_all);
        run_.environment["XDG_RUNTIME_DIR"] = runtime_.path().string();
    }
    std::string film(const std::string& name) {
        const fs::path file = run_.library() / name;
        makeMovie(file, {.tags = {{"title", "old title"}}});
        return file.string();
    }
    std::string folder(const std::string& name) const { return (pictures_ / name).string(); }
    std::vector<std::string> names(const std::string& name) const {
        std::vector<std::string> found = namesIn(pictures_ / name);
        std::ranges::sort(found);
        return found;
    }
    Picture picture(const std::string& name) const { return pictureOf(pictures_ / name); }
    /// A picture that shows something: text has many shades.
    void expectSomething(const std::string& name) const { expectSomething(picture(name), name); }
    static void expectSomething(const Picture& shown, const std::string& name) {
        EXPECT_GT(shown.shades, 20u) << name;
        EXPECT_GT(shown.width, 0) << name;
    }
    ProgramRun run_;
    TempFolder pictures_;
    TempFolder runtime_;
};

TEST_F(Shots, AScanTakesTheEmptyWindowAndTheList) {
    film("Charade (1963).m4v");
    const auto result = run_.marlet({"--scan", run_.library().string(), "--snapshots",
                                     folder("scan"), "--appearance", "light", "--quit"});
    EXPECT_EQ(result.status, 0);
    EXPECT_THAT(result.errors, IsEmpty());
    EXPECT_THAT(names("scan"), ElementsAre("1-drop.png", "2-list.png"));
    const Picture empty = picture("scan/1-drop.png");
    const Picture list = picture("scan/2-list.png");
    EXPECT_EQ(empty.width, 1180);
    EXPECT_EQ(empty.height, 760);
    expectSomething("scan/1-drop.png");
    expectSomething("scan/2-list.png");
    EXPECT_NE(empty.grey, list.grey);
    EXPECT_GT(empty.brightness, 180);
}

TEST_F(Shots, AWriteTakesEveryScreenInBothLooksAndThenWrites) {
    const auto result =
        run_.marlet({"--tag", film("Charade (1963).m4v"), "--confirm-all", "--shots", folder("all"),
                     "--review", "evening", "--window", "1000x700", "--quit"});
    EXPECT_THAT(result.lines("RESULT"), ElementsAre(HasSubstr("done")));
    EXPECT_THAT(result.errors, IsEmpty());
    const Arguments screens = {"review",  "details",  "tracks", "artwork", "match",
                               "history", "settings", "about",  "queue",   "finished"};
    EXPECT_EQ(names("all").size(), 2 * screens.size());
    std::set<std::string> different;
    for (const std::string& screen : screens) {
        const std::string name = "all/evening-" + screen;
        ASSERT_TRUE(fs::exists(pictures_ / (name + ".png"))) << name;
        ASSERT_TRUE(fs::exists(pictures_ / (name + "-dark.png"))) << name;
        const Picture light = picture(name + ".png");
        const Picture dark = picture(name + "-dark.png");
        EXPECT_EQ(light.width, 1000) << name;
        EXPECT_EQ(light.height, 700) << name;
        expectSomething(light, name);
        expectSomething(dark, name + "-dark");
        EXPECT_GT(light.brightness, dark.brightness + 50) << name;
        different.insert(light.grey);
    }
    EXPECT_EQ(different.size(), screens.size());
}

TEST_F(Shots, WithShotsOnlyNothingIsWritten) {
    const std::string file = film("Charade (1963).m4v");
    const Bytes before = readFile(file);
    const auto result = run_.marlet({"--tag", file, "--confirm-all", "--shots", folder("only"),
                                     "--shots-only", "--appearance=dark", "--quit"});
    EXPECT_THAT(result.lines("RESULT"), IsEmpty());
    EXPECT_EQ(readFile(file), before);
    EXPECT_THAT(names("only"),
                UnorderedElementsAre("marlet-review.png", "marlet-details.png", "marlet-tracks.png",
                                     "marlet-artwork.png", "marlet-match.png", "marlet-history.png",
                                     "marlet-settings.png", "marlet-about.png"));
    EXPECT_LT(picture("only/marlet-review.png").brightness, 100);
}

TEST_F(Shots, TheFileAndTheTitleOfThePicturesCanBeChosen) {
    const Arguments films = {"--tag", film("Charade (1963).m4v"), "--tag",
                             film("Detour (1945).m4v")};
    const auto shown = [&](const std::string& to, const Arguments& more) {
        Arguments arguments = films;
        arguments.insert(arguments.end(),
                         {"--shots", folder(to), "--shots-only", "--appearance=light", "--quit"});
        arguments.insert(arguments.end(), more.begin(), more.end());
        run_.marlet(arguments);
        return picture(to + "/marlet-details.png").grey;
    };
    const std::string first = shown("first", {"--select", "Charade"});
    const std::string second = shown("second", {"--select", "Detour"});
    EXPECT_NE(first, second);
    EXPECT_EQ(shown("file", {"--inspect-file", "Detour"}), second);
}

TEST_F(Shots, AMadeUpFailureIsShownAndNotKept) {
    const auto history = [&](const std::string& to, Arguments more) {
        more.insert(more.end(), {"--shots", folder(to), "--appearance=light"});
        run_.marlet(more);
        return picture(to + "/marlet-history.png").grey;
    };
    const std::string without = history("without", {});
    EXPECT_NE(history("with", {"--sample-failure"}), without);
    EXPECT_EQ(history("after", {}), without);
}

TEST_F(Shots, PicturesThatNeedNoFilesEndTheProgram) {
    const auto result = run_.marlet({"--empty-shots", folder("empty"), "--picker-demo",
                                     folder("demo"), "--appearance", "light"});
    EXPECT_EQ(result.status, 0);
    EXPECT_THAT(result.errors, IsEmpty());
    EXPECT_THAT(names("empty"), ElementsAre("history.png", "queue.png", "review.png"));
    EXPECT_THAT(names("demo"), ElementsAre("film.png", "show.png"));
    for (const char* name : {"empty/review.png", "empty/queue.png", "empty/history.png",
                             "demo/film.png", "demo/show.png"})
        expectSomething(name);
    EXPECT_NE(picture("demo/film.png").grey, picture("demo/show.png").grey);
    EXPECT_EQ(run_.catalogue().requestCount("search"), 0);
}

TEST_F(Shots, PicturesForOthersAreLargeAndEachFilmHasItsArtwork) {
    run_.marlet({"--tag", film("Charade (1963).m4v"), "--tag", film("Detour (1945).m4v"),
                 "--website-shots", folder("web"), "--poster-picks", folder("art"), "--appearance",
                 "light", "--shots-only", "--quit"});
    EXPECT_THAT(names("web"), ElementsAre("artwork.png", "history.png", "match.png", "review.png"));
    EXPECT_EQ(picture("web/review.png").width, 1440);
    EXPECT_EQ(picture("web/review.png").height, 900);
    EXPECT_THAT(names("art"), ElementsAre("Charade.png", "Detour.png"));
    EXPECT_EQ(picture("art/Charade.png").width, 1180);
    EXPECT_NE(picture("art/Charade.png").grey, picture("art/Detour.png").grey);
}

TEST_F(Shots, AboutIsTakenAloneOrOverTheWindowWhichComesFirst) {
    run_.marlet({"--snapshot-about", folder("about.png"), "--appearance=light"});
    const Picture alone = picture("about.png");
    EXPECT_LT(alone.width, 1180);
    EXPECT_GT(alone.width, 300);
    expectSomething("about.png");
    run_.marlet({"--snapshot-about", folder("not.png"), "--snapshot-about-window",
                 folder("window.png"), "--scan", run_.library().string(), "--appearance=light"});
    EXPECT_EQ(picture("window.png").width, 1180);
    EXPECT_FALSE(fs::exists(folder("not.png")));
    // The sheet darkens the window below it.
    run_.marlet({"--empty-shots", folder("plain"), "--appearance=light"});
    EXPECT_NE(picture("window.png").grey, picture("plain/review.png").grey);
}

void until(const std::function<bool()>& holds) {
    while (!holds()) std::this_thread::sleep_for(std::chrono::milliseconds(2));
}

TEST_F(Shots, KeptOpenTheProgramStaysUntilItIsEnded) {
    const auto process = run_.start("marlet", {"--snapshot-about", folder("a.png"), "--keep-open"});
    until([&] { return process->hasEnded() || fs::exists(folder("a.png")); });
    EXPECT_FALSE(process->hasEnded());
    process->signal(SIGTERM);
    EXPECT_EQ(process->wait(), 0);
}

TEST_F(Shots, AWatcherIsAskedForEachPictureAndWaitedFor) {
    run_.environment["MARLET_SHOT_WATCHER"] = "";
    const auto process =
        run_.start("marlet", {"--empty-shots", folder("seen"), "--appearance=light"});
    for (const char* name : {"review", "queue", "history"}) {
        const fs::path file = pictures_ / (std::string("seen/") + name);
        until([&] { return process->hasEnded() || fs::exists(file.string() + ".req"); });
        ASSERT_FALSE(process->hasEnded());
        EXPECT_TRUE(fs::exists(file.string() + ".png"));
        EXPECT_THAT(names("seen"), testing::Contains(std::string(name) + ".req"));
        writeFile(file.string() + ".done", {});
    }
    EXPECT_EQ(process->wait(), 0);
    EXPECT_THAT(names("seen"), ElementsAre("history.png", "queue.png", "review.png"));
}

TEST_F(Shots, APictureThatCantBeWrittenIsToldAndIsAFailure) {
    pictures_.write("file", std::string_view("in the way"));
    const auto result =
        run_.marlet({"--snapshot-about", folder("file/about.png"), "--strict-exit"});
    EXPECT_EQ(result.errors, "marlet: can't write " + folder("file/about.png") + "\n");
    EXPECT_EQ(result.status, 2);
}

}  // namespace
}  // namespace marlet::test
