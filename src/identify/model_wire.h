#pragma once

#include <string>

#include "foundation/bytes.h"
#include "identify/guess_model.h"

namespace marlet {

/// The chat-completions JSON that the usual local model runners speak, with the answer bound by a
/// JSON schema ("response_format"). Everything that comes back is from outside: what isn't exactly
/// what was asked for is an MFError.
namespace ModelWire {

/// One system message with the instructions, one user message with the prompt, and the schema of a
/// FileGuess with its guide texts. Nothing of the sampling: the server's own defaults hold.
std::string question(const std::string& model, const std::string& instructions,
                     const std::string& prompt);
/// The guess in the first choice of a chat completion.
FileGuess answer(ByteView body);
/// The name of the first model in a server's list.
std::string firstModel(ByteView body);

}  // namespace ModelWire
}  // namespace marlet
