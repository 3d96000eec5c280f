#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>

#include "foundation/bytes.h"
#include "mp4/box.h"

// What the reading and the planning half of the tag block editor share.
namespace marlet::IlstEditor {

inline constexpr const char* unreadableIndex = "could not read the index box";

/// A region is held three times over while it is planned. Indexes of the longest films with their
/// padding stay below a tenth of this.
inline constexpr std::uint64_t largestRegion = 256ULL * 1024 * 1024;

/// Fails with "could not read the index box" when the file doesn't hold these bytes.
Bytes readRegion(const std::filesystem::path& file, std::uint64_t offset, std::uint64_t size);

/// The boxes on the way to the tag block, as far as they are there.
struct TagPath {
    std::optional<Box> udta;
    std::optional<Box> meta;
    std::optional<Box> ilst;
};
/// In a whole `moov` box, header included. First match at each step.
TagPath findTags(ByteView moov);

}  // namespace marlet::IlstEditor
