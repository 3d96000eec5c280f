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

/// The optional reader of messy names on the person's own machine. This build has no model: unless
/// one is installed the seam answers "not available" and the rules stand alone.
namespace AIGuesser {

struct Input {
    std::string fileName;
    std::string folderPath;
    ExistingTags tags;
};

/// A model: instructions and prompt to a filled-in FileGuess; may throw. Everything stays on the
/// machine.
using Model = std::function<Task<FileGuess>(std::string instructions, std::string prompt)>;

/// Put in at start-up where the machine has one; an empty function takes it out. Main context.
void install(Model model);
/// Set for the run by "--no-ai".
void setDisabled(bool disabled);
bool disabled();
bool isAvailable();
/// The words for the Settings screen.
std::string availabilityNote();
std::string prompt(const Input& input);

}  // namespace AIGuesser

namespace ModelCall {
/// Nothing on any failure, or when there is no model.
Task<std::optional<Guess>> run(AIGuesser::Input input);
/// What the answer says, without what it may not say: half an episode number, a year before films.
std::optional<Guess> guessFrom(const FileGuess& answer);
}  // namespace ModelCall

namespace AIGuard {
/// Where the model's guess disagrees with the name, in words; empty when all is well.
std::vector<std::string> conflicts(const std::string& fileName, const std::string& folderPath,
                                   const Guess& guess);
}  // namespace AIGuard

}  // namespace marlet
