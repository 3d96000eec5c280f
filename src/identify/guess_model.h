#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "foundation/records.h"
#include "sources/async.h"

namespace marlet {

/// What a language model must answer, in this order. The guide texts of the fields are its own.
struct FileGuess {
    bool isTVEpisode = false;
    std::string title;
    int year = 0;  ///< 0 when it isn't in the input
    int season = 0;
    int episode = 0;
};

/// The optional reader of messy names on the person's own machine: LocalModel, or what a test
/// installs in its place. Without one the rules stand alone.
namespace AIGuesser {

struct Input {
    std::string fileName;
    std::string folderPath;
    ExistingTags tags;
};

/// A model: instructions and prompt to a filled-in FileGuess. May throw: TransportError when there
/// was no answer, CancelError when cancelled, anything else for an answer that is none.
using Model =
    std::function<Task<FileGuess>(std::string instructions, std::string prompt, CancelToken)>;

/// In place of the machine's own; an empty function takes it out. Main context.
void install(Model model);
/// Set for the run by "--no-ai".
void setDisabled(bool disabled);
bool disabled();
/// Tells nothing that would have to be asked for: a model is never started by this.
bool isAvailable();
/// The words for the Settings screen.
std::string availabilityNote();
/// The same once the model's server was asked whether it is there.
Task<std::string> freshAvailabilityNote(CancelToken cancel = {});
/// Valid UTF-8, whatever the file's name and tags hold.
std::string prompt(const Input& input);

}  // namespace AIGuesser

namespace ModelCall {
struct Answer {
    std::optional<Guess> guess;  ///< nothing on any failure, or when there is no model
    bool silent = false;         ///< nobody answered at all
};
/// Throws nothing but CancelError. A call knows nothing of the calls before it.
Task<Answer> ask(AIGuesser::Input input, CancelToken cancel = {});
/// The guess of ask.
Task<std::optional<Guess>> run(AIGuesser::Input input, CancelToken cancel = {});
/// What the answer says, without what it may not say: half an episode number, a year before films.
std::optional<Guess> guessFrom(const FileGuess& answer);
}  // namespace ModelCall

namespace AIGuard {
/// Where the model's guess disagrees with the name, in words; empty when all is well.
std::vector<std::string> conflicts(const std::string& fileName, const std::string& folderPath,
                                   const Guess& guess);
}  // namespace AIGuard

}  // namespace marlet
