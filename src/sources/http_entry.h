#pragma once

#include <optional>
#include <string>

#include "sources/http_message.h"

namespace marlet::HttpEntry {

/// A cached answer as the bytes of its file: a mark, the lengths, the key, the headers, the body
/// and a SHA-256 over all of it.
Bytes encode(const std::string& key, const HttpAnswer& answer);
/// Nothing unless the bytes are whole and the key is this one.
std::optional<HttpAnswer> decode(ByteView bytes, const std::string& key);

}  // namespace marlet::HttpEntry
