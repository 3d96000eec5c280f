#include "identify/guess_model.h"

#include <utility>

#include "foundation/errors.h"
#include "foundation/text.h"
#include "identify/local_model.h"
#include "sources/http_session.h"

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

constexpr const char* forcedOff = "Off (forced for testing)";

std::string shown(const std::optional<int>& number) {
    return number ? std::to_string(*number) : "";
}

std::string shown(const std::optional<std::string>& text) {
    return text.value_or("");
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
    return state().model || LocalModel::isSet();
}

std::string availabilityNote() {
    return disabled() ? forcedOff : LocalModel::note();
}

Task<std::string> freshAvailabilityNote(CancelToken cancel) {
    if (disabled()) co_return forcedOff;
    auto looking = LocalModel::lookAgain(std::move(cancel));
    std::string note = co_await looking;
    co_return note;
}

std::string prompt(const Input& input) {
    std::string text = "File name: " + input.fileName + "\nFolder path: " + input.folderPath;
    const ExistingTags& tags = input.tags;
    if (tags.title || tags.show || tags.season || tags.episode || tags.year) {
        text += "\nExisting tags: title=" + shown(tags.title) + " show=" + shown(tags.show) +
                " season=" + shown(tags.season) + " episode=" + shown(tags.episode);
    }
    return Text::repairUtf8(viewOf(text));
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

Task<Answer> ask(AIGuesser::Input input, CancelToken cancel) {
    Answer answer;
    if (AIGuesser::disabled() || !AIGuesser::isAvailable()) co_return answer;
    const AIGuesser::Model installed = AIGuesser::state().model;
    const AIGuesser::Model model = installed ? installed : LocalModel::ask;
    try {
        auto asking = model(instructions, AIGuesser::prompt(input), cancel);
        const FileGuess said = co_await asking;
        answer.guess = guessFrom(said);
    } catch (const CancelError&) {
        throw;
    } catch (const TransportError&) {
        answer.silent = true;
    } catch (const std::exception&) {
        // The model is a helper: without its answer the rules stand alone.
    }
    co_return answer;
}

Task<std::optional<Guess>> run(AIGuesser::Input input, CancelToken cancel) {
    auto asking = ask(std::move(input), std::move(cancel));
    Answer answer = co_await asking;
    co_return std::move(answer.guess);
}

}  // namespace ModelCall
}  // namespace marlet
