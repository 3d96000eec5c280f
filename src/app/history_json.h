#pragma once

#include <optional>
#include <string>
#include <vector>

#include "app/history.h"

namespace marlet::HistoryJson {

/// One entry as a JSON object, dates in ISO 8601. A path that is not valid UTF-8 is kept whole
/// beside its readable form ("pathBytes", hexadecimal).
std::string encode(const HistoryEntry& entry);
/// The JSON array of encoded entries in that order.
std::string array(const std::vector<std::string>& encoded);
/// Nothing when the text is no such array. Unknown keys are passed over.
std::optional<std::vector<HistoryEntry>> decode(ByteView text);

}  // namespace marlet::HistoryJson
