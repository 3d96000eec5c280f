#pragma once

#include <optional>
#include <string>
#include <vector>

#include "foundation/records.h"

namespace marlet {

/// The person's order of sources and which are in use.
namespace SourceSettings {

/// Every source once: repeats dropped, missing ones added behind in their default order.
std::vector<SourceID> normalised(const std::vector<SourceID>& list);
std::vector<SourceID> order();
void setOrder(const std::vector<SourceID>& list);
/// The sources in use, in order. An unset Apple TV switch means on; an automated run leaves
/// Apple TV out unless "--apple-tv" was given; "--sources=" is the whole list.
std::vector<SourceID> active();
std::optional<std::vector<SourceID>> testSources();
bool allowAppleTVInTests();

}  // namespace SourceSettings
}  // namespace marlet
