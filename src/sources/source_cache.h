#pragma once

#include <chrono>
#include <filesystem>
#include <optional>
#include <string>

#include "foundation/bytes.h"

namespace marlet {

/// Answers of the catalogues without a client of their own, one file per key, good for 6 hours.
/// Entries are never deleted here: the caches folder is the person's to clear. Keys hold no token.
namespace SourceCache {

using Instant = std::chrono::system_clock::time_point;

/// Nothing when there is no answer, or it is too old, or from before the last refresh.
std::optional<Bytes> read(const std::string& key, Instant now = std::chrono::system_clock::now());
void write(ByteView data, const std::string& key);
/// Whether what was learnt at that instant still counts.
bool isGood(Instant learnt, Instant now = std::chrono::system_clock::now());

/// What was saved earlier no longer counts. Starts in the distant past.
Instant notBefore();
void setNotBefore(Instant instant);
/// From now on everything is asked anew.
void refresh();

/// Made when needed.
std::filesystem::path dir();

}  // namespace SourceCache
}  // namespace marlet
