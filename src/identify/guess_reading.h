#pragma once

#include <optional>
#include <vector>

#include "identify/filename_rules.h"
#include "identify/guess_model.h"

namespace marlet {

/// Rules first, and the model only for a name that the rules can't trust.
namespace GuessReading {

/// A tidy or a confident name is never sent to the model.
bool wantsModel(const FilenameRules::Parse& parse);
/// The reading that stands, once the model has answered (or hasn't). Where the answer disagrees
/// with the name, the rules' reading is kept with the disagreement noted.
std::optional<Guess> settled(const FilenameRules::Parse& parse, std::optional<Guess> model,
                             const AIGuesser::Input& input);
/// One reading per file, in that order; the model is asked one name at a time.
Task<std::vector<std::optional<Guess>>> readAll(std::vector<ScannedFile> files, bool useModel,
                                                CancelToken cancel);

}  // namespace GuessReading
}  // namespace marlet
