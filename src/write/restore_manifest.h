#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "foundation/bytes.h"
#include "foundation/dates.h"

namespace marlet::RestorePoints {

/// An account tag that a restore point leaves out: its type and its place, never its value.
struct Carried {
    std::string name;
    std::uint64_t index = 0;  ///< in the original list
    bool operator==(const Carried&) const = default;
};

/// "manifest.json" of a restore point.
struct Manifest {
    std::string path;  ///< of the file when the restore point was made
    Moment date{};
    std::uint64_t fileSize = 0;  ///< bytes, then
    std::string ilstSHA256;      ///< of "ilst.bin", lower-case hexadecimal
    std::vector<Carried> carried;
    bool operator==(const Manifest&) const = default;
};

/// Pretty-printed JSON; a path that isn't UTF-8 is repaired, since JSON can hold nothing else.
std::string encode(const Manifest& manifest);
/// Nothing unless every field is there and of its type.
std::optional<Manifest> decodeManifest(ByteView json);

}  // namespace marlet::RestorePoints
