#pragma once

#include <optional>
#include <string>

#include "identify/guess_model.h"
#include "sources/async.h"

namespace marlet {

/// The model of this machine: any server on a loopback address that speaks the chat-completions
/// JSON. Off until a person sets its address; read from the settings each time, so that a change
/// takes effect at the next file. Main context only.
namespace LocalModel {

/// The server's root as set, without "/v1" or a slash at its end; empty when it is off. The
/// variable MARLET_LOCAL_MODEL comes before the setting "localModel", even when it is empty.
std::string root();
/// Why the address that is set isn't used; nothing when it is, or when none is set.
std::optional<std::string> refusal();
/// Whether there is a model to ask, as far as the settings tell.
bool isSet();
/// What is known of it without asking.
std::string note();
/// Asks the server for its models, which makes none of them start, and gives the note after that.
Task<std::string> lookAgain(CancelToken cancel);
/// Throws TransportError when nobody answers, MFError when what comes back is no guess, and
/// CancelError. The model is "localModelName", else the first of the server's own list.
Task<FileGuess> ask(std::string instructions, std::string prompt, CancelToken cancel);

}  // namespace LocalModel
}  // namespace marlet
