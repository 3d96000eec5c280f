#include "identify/guess_model.h"

#include <gtest/gtest.h>

#include "foundation/errors.h"
#include "support/qt_app.h"

namespace marlet {
namespace {

Task<FileGuess> answering(FileGuess answer) {
    co_return answer;
}

Task<FileGuess> breaking() {
    throw MFError("out of memory");
    co_return FileGuess{};
}

class GuessModel : public testing::Test {
protected:
    GuessModel() { test::qtApp(); }
    ~GuessModel() override {
        AIGuesser::install({});
        AIGuesser::setDisabled(false);
    }
};

TEST_F(GuessModel, ThereIsNoneUntilOneIsInstalled) {
    EXPECT_FALSE(AIGuesser::isAvailable());
    EXPECT_EQ(AIGuesser::availabilityNote(), "Off: no local model is set");
    EXPECT_EQ(Async::wait(ModelCall::run({"Heat 1995.mp4", "/dl", {}})), std::nullopt);
}

TEST_F(GuessModel, ARunWithoutTheModelSaysThatItWasForced) {
    AIGuesser::install([](std::string, std::string, CancelToken) { return answering({}); });
    EXPECT_TRUE(AIGuesser::isAvailable());
    AIGuesser::setDisabled(true);
    EXPECT_TRUE(AIGuesser::disabled());
    EXPECT_EQ(AIGuesser::availabilityNote(), "Off (forced for testing)");
}

TEST_F(GuessModel, ForcedOffItIsNotAskedByAnyone) {
    bool asked = false;
    AIGuesser::install([&asked](std::string, std::string, CancelToken) {
        asked = true;
        return answering({false, "Heat", 1995, 0, 0});
    });
    AIGuesser::setDisabled(true);
    EXPECT_EQ(Async::wait(ModelCall::run({"Heat 1995.mp4", "/dl", {}})), std::nullopt);
    EXPECT_FALSE(asked);
    AIGuesser::setDisabled(false);
    EXPECT_TRUE(Async::wait(ModelCall::run({"Heat 1995.mp4", "/dl", {}})));
    EXPECT_TRUE(asked);
}

TEST_F(GuessModel, ItIsAskedWithNameAndFolder) {
    std::string prompt;
    AIGuesser::install([&prompt](std::string, std::string asked, CancelToken) {
        prompt = asked;
        return answering({false, " Heat \n", 1995, 0, 0});
    });
    const auto guess = Async::wait(ModelCall::run({"Heat 1995.mp4", "/dl", {}}));
    EXPECT_EQ(prompt, "File name: Heat 1995.mp4\nFolder path: /dl");
    ASSERT_TRUE(guess);
    EXPECT_EQ(guess->title, "Heat");
    EXPECT_EQ(guess->year, 1995);
    EXPECT_EQ(guess->kind, MediaKind::movie);
    EXPECT_EQ(guess->source, Guess::Source::ai);
}

TEST_F(GuessModel, TagsAreToldWithAnEmptyTextForWhatIsAbsent) {
    ExistingTags tags;
    tags.show = "Sheds";
    tags.season = 2;
    EXPECT_EQ(AIGuesser::prompt({"a.mp4", "/dl", tags}),
              "File name: a.mp4\nFolder path: /dl\n"
              "Existing tags: title= show=Sheds season=2 episode=");
}

TEST_F(GuessModel, AFailureGivesNothing) {
    AIGuesser::install([](std::string, std::string, CancelToken) { return breaking(); });
    EXPECT_EQ(Async::wait(ModelCall::run({"Heat 1995.mp4", "/dl", {}})), std::nullopt);
}

TEST_F(GuessModel, AnEmptyTitleGivesNothing) {
    EXPECT_EQ(ModelCall::guessFrom({false, " \n ", 1995, 0, 0}), std::nullopt);
}

TEST_F(GuessModel, AnEpisodeNeedsBothItsNumbers) {
    const auto half = ModelCall::guessFrom({true, "Sheds", 0, 2, 0});
    EXPECT_EQ(half->kind, MediaKind::movie);
    EXPECT_EQ(half->season, std::nullopt);
    const auto whole = ModelCall::guessFrom({true, "Sheds", 0, 2, 5});
    EXPECT_EQ(whole->kind, MediaKind::tv);
    EXPECT_EQ(whole->season, 2);
    EXPECT_EQ(whole->episode, 5);
}

TEST_F(GuessModel, AFilmKeepsNoEpisodeNumbers) {
    const auto film = ModelCall::guessFrom({false, "Sheds", 0, 2, 5});
    EXPECT_EQ(film->kind, MediaKind::movie);
    EXPECT_EQ(film->episode, std::nullopt);
}

TEST_F(GuessModel, YearsCountFrom1901Up) {
    EXPECT_EQ(ModelCall::guessFrom({false, "Heat", 1900, 0, 0})->year, std::nullopt);
    EXPECT_EQ(ModelCall::guessFrom({false, "Heat", 1901, 0, 0})->year, 1901);
}

}  // namespace
}  // namespace marlet
