#pragma once

#include <string>
#include <utility>
#include <vector>

#include "app/history_rows.h"

namespace marlet {

/// The pairs shown when a row is opened.
std::vector<std::pair<std::string, std::string>> historyRowDetails(const HistoryRow& row);

}  // namespace marlet
