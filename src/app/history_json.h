#pragma once

#include <optional>
#include <string>
#include <vector>

#include "app/history.h"

namespace marlet::HistoryJson {

/// A JSON array of the entries in that order, dates in ISO 8601. A path that is not valid UTF-8
/// is kept whole beside its readable form ("pathBytes", hexadecimal).
std::string encode(const std::vector<HistoryEntry>& entries);
/// Nothing when the text is no such array. Unknown keys are passed over.
std::optional<std::vector<HistoryEntry>> decode(ByteView text);

}  // namespace marlet::HistoryJson
