#pragma once

#include <optional>
#include <string>
#include <vector>

#include "foundation/records.h"
#include "sources/async.h"

namespace marlet {

/// The optional reader of messy names on the person's own machine. This build has no model: the
/// seam answers "not available" and the rules stand alone.
namespace AIGuesser {

struct Input {
    std::string fileName;
    std::string folderPath;
    ExistingTags tags;
};

/// Set for the run by "--no-ai".
void setDisabled(bool disabled);
bool disabled();
bool isAvailable();

}  // namespace AIGuesser

namespace ModelCall {
Task<std::optional<Guess>> run(AIGuesser::Input input);
}

namespace AIGuard {
/// Where the model's guess disagrees with the name, in words; empty when all is well.
std::vector<std::string> conflicts(const std::string& fileName, const std::string& folderPath,
                                   const Guess& guess);
}

}  // namespace marlet
