#pragma once

#include <optional>
#include <string>

namespace marlet {

/// Which service token to use, and whether the program runs unattended. The token lives in memory
/// only: never in a file, a setting, a log or a command line.
namespace KeyStore {

/// The first of: MARLET_TMDB_TOKEN; the keyring (not in an automated run); what was compiled in.
std::optional<std::string> builtIn();
/// RunMode::automated.
bool automated();

}  // namespace KeyStore
}  // namespace marlet
