#include "sources/key_store.h"

#include <cstdlib>

#include "foundation/run_mode.h"
#include "foundation/text.h"
#include "sources/hidden_text.h"
#include "sources/keyring.h"

namespace marlet::KeyStore {
namespace {

constexpr const char* keyringName = "tmdb";

/// What the keyring said, once asked.
std::optional<std::optional<std::string>>& remembered() {
    static std::optional<std::optional<std::string>> answer;
    return answer;
}

/// A stray line end from a copied token would break the header it travels in.
std::optional<std::string> usable(const std::string& token) {
    std::string trimmed = Text::trim(token);
    if (trimmed.empty()) return std::nullopt;
    return trimmed;
}

std::optional<std::string> fromEnvironment() {
    const char* value = std::getenv("MARLET_TMDB_TOKEN");
    return value == nullptr ? std::nullopt : usable(value);
}

std::optional<std::string> fromKeyring() {
    if (automated()) return std::nullopt;
    if (!remembered()) {
        if (!Keyring::isThere()) return std::nullopt;
        const auto secret = Keyring::read(keyringName);
        remembered() = secret ? usable(*secret) : std::nullopt;
    }
    return *remembered();
}

std::optional<std::string> compiledIn() {
    static constexpr HiddenText token(MARLET_TMDB_TOKEN);
    return usable(token.reveal());
}

}  // namespace

std::optional<std::string> builtIn() {
    if (auto token = fromEnvironment()) return token;
    if (auto token = fromKeyring()) return token;
    return compiledIn();
}

bool keep(const std::string& token) {
    const auto wanted = usable(token);
    if (!wanted || automated() || !Keyring::write(keyringName, *wanted)) return false;
    remembered() = wanted;
    return true;
}

bool forget() {
    if (automated() || !Keyring::remove(keyringName)) return false;
    remembered() = std::optional<std::string>();
    return true;
}

Origin origin() {
    if (fromEnvironment()) return Origin::environment;
    if (fromKeyring()) return Origin::keyring;
    return compiledIn() ? Origin::compiledIn : Origin::none;
}

bool automated() {
    return RunMode::automated();
}

}  // namespace marlet::KeyStore
