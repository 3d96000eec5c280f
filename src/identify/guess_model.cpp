#include "identify/guess_model.h"

#include <utility>

#include "foundation/errors.h"
#include "foundation/text.h"

namespace marlet {
namespace AIGuesser {
namespace {

struct State {
    Model model;
    bool disabled = false;
};

State& state() {
    static State all;
    return all;
}

std::string shown(const std::optional<int>& number) {
    return number ? std::to_string(*number) : "";
}

}  // namespace

void install(Model model) {
    state().model = std::move(model);
}

void setDisabled(bool disabled) {
    state().disabled = disabled;
}

bool disabled() {
    return state().disabled;
}

bool isAvailable() {
    return static_cast<bool>(state().model);
}

std::string availabilityNote() {
    if (disabled()) return "Off (forced for testing)";
    return isAvailable() ? "On this Mac" : "Not available";
}

std::string prompt(const Input& input) {
    std::string text = "File name: " + input.fileName + "\nFolder path: " + input.folderPath;
    const ExistingTags& tags = input.tags;
    if (tags.title || tags.show || tags.season || tags.episode || tags.year) {
        text += "\nExisting tags: title=" + tags.title.value_or("") +
                " show=" + tags.show.value_or("") + " season=" + shown(tags.season) +
                " episode=" + shown(tags.episode);
    }
    return text;
}

}  // namespace AIGuesser

namespace ModelCall {
namespace {

constexpr const char* instructions =
    "You clean up messy video file names. Extract only what is written in the input. Never invent "
    "a year, season or episode; use 0 when it is not there. Keep every word and number of the "
    "title exactly as written, including sequel numbers such as 2049 or II. Copy the year when it "
    "is written. Do not add facts about the title.";

/// Films begin here; anything lower is a model's way to say "none".
constexpr int firstYear = 1901;

}  // namespace

std::optional<Guess> guessFrom(const FileGuess& answer) {
    Guess guess;
    guess.source = Guess::Source::ai;
    guess.title = Text::trim(answer.title);
    if (guess.title.empty()) return std::nullopt;
    if (answer.isTVEpisode && answer.season > 0 && answer.episode > 0) {
        guess.kind = MediaKind::tv;
        guess.season = answer.season;
        guess.episode = answer.episode;
    }
    if (answer.year >= firstYear) guess.year = answer.year;
    return guess;
}

Task<std::optional<Guess>> run(AIGuesser::Input input) {
    std::optional<Guess> guess;
    const AIGuesser::Model model = AIGuesser::state().model;
    if (!model) co_return guess;
    try {
        auto asking = model(instructions, AIGuesser::prompt(input));
        const FileGuess answer = co_await asking;
        guess = guessFrom(answer);
    } catch (const CancelError&) {
        throw;
    } catch (const std::exception&) {
        // The model is a helper: without its answer the rules stand alone.
    }
    co_return guess;
}

}  // namespace ModelCall
}  // namespace marlet
