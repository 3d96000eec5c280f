#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "app/virtual_map.h"
#include "foundation/records.h"
#include "sources/async.h"

namespace marlet {
namespace Headless {

/// What a name was read as, against what the real name says: "READ_OK", "READ_WRONG", or
/// "READ_NONE" when the fake name said just the same, or nothing at all was there to be read.
std::string readingLabel(const VirtualMap::Entry& entry, const ResolvedFile& file);
/// The scored text of a virtual run; `resolved` in any order.
std::string virtualText(const std::vector<VirtualMap::Entry>& map,
                        std::vector<ResolvedFile> resolved);
/// Identifies the fake names, with nothing but TMDB, and prints what came of it. False when the
/// map can't be read, or the report not be written.
Task<bool> runVirtual(std::filesystem::path mapFile, std::optional<std::filesystem::path> report);

}  // namespace Headless
}  // namespace marlet
