#pragma once

#include <optional>
#include <string>

#include "app/history_entry.h"
#include "foundation/bytes.h"

namespace marlet::HistoryJson {

/// One entry as a JSON object on one line, dates in ISO 8601. A path that is not valid UTF-8 is
/// kept whole beside its readable form ("pathBytes", hexadecimal).
std::string encode(const HistoryEntry& entry);
/// The JSON array of them in that order, an entry a line.
std::string encode(const HistoryList& entries);
/// Nothing when the text is no such array. Unknown keys are passed over.
std::optional<HistoryList> decode(ByteView text);
/// Where the first entry of such an array begins (or its end, when it has none): what stands from
/// there on can follow other entries. Only for a text that could be decoded.
std::size_t firstEntryAt(ByteView text);

}  // namespace marlet::HistoryJson
