#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "catalogue/catalogue.h"

namespace marlet::catalogue::Shapes {

/// Cast members in the order of billing, counting on from firstOrder.
nlohmann::json castList(const std::vector<Credit>& cast, int firstOrder = 0);
/// Directors, then writers, then one more job that no client here asks for.
nlohmann::json crewList(const std::vector<std::string>& directors,
                        const std::vector<Credit>& writers);

}  // namespace marlet::catalogue::Shapes
