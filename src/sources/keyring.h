#pragma once

#include <optional>
#include <string>

namespace marlet {

/// The person's keyring (the Secret Service or KWallet), asked for at most 3 seconds and never
/// replaced by a plain file. Without a session bus or an application object there is none.
/// Main context only.
namespace Keyring {

bool isThere();
/// Nothing when the keyring has none, is locked, or doesn't answer in time.
std::optional<std::string> read(const std::string& name);
bool write(const std::string& name, const std::string& secret);
/// True when the keyring has none of that name afterwards.
bool remove(const std::string& name);

}  // namespace Keyring
}  // namespace marlet
