#pragma once

#include <optional>
#include <string>

namespace marlet {

/// Which service token to use, and whether the program runs unattended. The token lives in memory
/// only: never in a file, a setting, a log or a command line.
namespace KeyStore {

/// The first of: MARLET_TMDB_TOKEN; the keyring (not in an automated run, and asked once in a
/// process); what was compiled in.
std::optional<std::string> builtIn();
/// Puts the person's own token into the keyring; false when that didn't work, and then nothing is
/// stored anywhere.
bool keep(const std::string& token);
/// Takes the person's own token out of the keyring; false when that didn't work. No environment
/// and no compiled-in token is touched.
bool forget();
/// Where builtIn's token comes from.
enum class Origin { none, environment, keyring, compiledIn };
Origin origin();
/// RunMode::automated.
bool automated();

}  // namespace KeyStore
}  // namespace marlet
