#include "identify/guess_reading.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "foundation/errors.h"
#include "identify/made_up_files.h"
#include "support/qt_app.h"

namespace marlet {
namespace {

using test::fileOf;
using test::filmGuess;
using testing::ElementsAre;

constexpr const char* obscure = "/dl/Some.Obscure.Film.1080p.BluRay.x264.mkv";

Guess fromModel(const std::string& title, std::optional<int> year = {}) {
    Guess guess = filmGuess(title, year);
    guess.source = Guess::Source::ai;
    return guess;
}

AIGuesser::Input inputOf(const std::string& fileName) {
    return {fileName, "/dl", {}};
}

Task<FileGuess> answering(std::string title) {
    co_return FileGuess{false, title, 0, 0, 0};
}

class GuessReadingTest : public testing::Test {
protected:
    GuessReadingTest() { test::qtApp(); }
    ~GuessReadingTest() override {
        AIGuesser::install({});
        AIGuesser::setDisabled(false);
    }
    /// Every prompt the model got; it answers this title each time.
    void installModel(const std::string& title) {
        AIGuesser::install([this, title](std::string, std::string prompt, CancelToken) {
            prompts.push_back(prompt);
            return answering(title);
        });
    }
    std::vector<std::optional<Guess>> read(const std::vector<std::string>& paths,
                                           bool useModel = true) {
        std::vector<ScannedFile> files;
        for (const std::string& path : paths) files.push_back(fileOf(path));
        return Async::wait(GuessReading::readAll(files, useModel, {}));
    }
    std::vector<std::string> prompts;
};

TEST_F(GuessReadingTest, ATidyOrConfidentNameIsNeverSentToTheModel) {
    const Guess film = filmGuess("Heat");
    EXPECT_FALSE(GuessReading::wantsModel({film, false, true}));
    EXPECT_FALSE(GuessReading::wantsModel({film, true, true}));
    EXPECT_FALSE(GuessReading::wantsModel({film, false, false}));
    EXPECT_TRUE(GuessReading::wantsModel({film, true, false}));
    EXPECT_TRUE(GuessReading::wantsModel({std::nullopt, true, false}));
}

TEST_F(GuessReadingTest, OnlyTheMessyNameReachesTheModel) {
    installModel("Some Obscure Film");
    const auto guesses = read({"/dl/Heat (1995).mp4", obscure, "/dl/Frasier.S03E07.x264.mkv"});
    EXPECT_THAT(
        prompts,
        ElementsAre("File name: Some.Obscure.Film.1080p.BluRay.x264.mkv\nFolder path: /dl"));
    EXPECT_EQ(guesses[0]->source, Guess::Source::rules);
    EXPECT_EQ(guesses[1]->source, Guess::Source::ai);
    EXPECT_EQ(guesses[2]->kind, MediaKind::tv);
}

TEST_F(GuessReadingTest, WithoutAModelTheRulesStand) {
    const auto guesses = read({obscure});
    EXPECT_EQ(guesses[0]->title, "Some Obscure Film");
    EXPECT_EQ(guesses[0]->source, Guess::Source::rules);
}

TEST_F(GuessReadingTest, ASwitchedOffModelIsNotAsked) {
    installModel("Some Obscure Film");
    read({obscure}, false);
    AIGuesser::setDisabled(true);
    read({obscure});
    EXPECT_TRUE(prompts.empty());
}

TEST_F(GuessReadingTest, AnAnswerThatAgreesWithTheNameIsTaken) {
    const FilenameRules::Parse parse{filmGuess("Heat x"), true, false};
    const Guess model = fromModel("Heat", 1995);
    EXPECT_EQ(GuessReading::settled(parse, model, inputOf("Heat.1995.mkv")), model);
}

TEST_F(GuessReadingTest, AFilmWithoutAYearTakesTheNamesYear) {
    const auto guess = GuessReading::settled({}, fromModel("Heat"), inputOf("Heat.1995.mkv"));
    EXPECT_EQ(guess->year, 1995);
    EXPECT_EQ(guess->conflict, std::nullopt);
}

TEST_F(GuessReadingTest, AnAnswerThatInventsWordsIsSetAsideForTheRulesGuess) {
    const FilenameRules::Parse parse{filmGuess("The Matrix", 1999), true, false};
    const auto guess = GuessReading::settled(parse, fromModel("The Matrix Reloaded", 1999),
                                             inputOf("The.Matrix.1999.mkv"));
    EXPECT_EQ(guess->title, "The Matrix");
    EXPECT_EQ(guess->source, Guess::Source::rules);
    EXPECT_EQ(guess->conflict, "The model added “reloaded”, which isn't in the name");
}

TEST_F(GuessReadingTest, SeveralConflictsAreOneNote) {
    const auto guess =
        GuessReading::settled({}, fromModel("The Matrix", 2003), inputOf("The.Matrix.1999.mkv"));
    EXPECT_EQ(guess->source, Guess::Source::ai);
    EXPECT_EQ(guess->conflict,
              "The model left out “1999” from the file name; File says 1999, model says 2003");
}

TEST_F(GuessReadingTest, ManyNamesKeepTheirOrder) {
    std::vector<std::string> paths;
    for (int i = 0; i < 200; i++) paths.push_back("/dl/Sheds S01E" + std::to_string(i) + ".mkv");
    const auto guesses = read(paths);
    for (int i = 0; i < 200; i++) EXPECT_EQ(guesses[static_cast<std::size_t>(i)]->episode, i);
}

TEST_F(GuessReadingTest, ACancelledReadingEnds) {
    CancelToken cancel;
    cancel.cancel();
    EXPECT_THROW(Async::wait(GuessReading::readAll({fileOf(obscure)}, true, cancel)), CancelError);
}

}  // namespace
}  // namespace marlet
