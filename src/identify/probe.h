#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "foundation/bytes.h"
#include "foundation/records.h"

namespace marlet {

/// Reads a file just far enough to identify it. Never fails, never writes; blocking, so it runs
/// on a worker. Many may run at once.
namespace Probe {

ScannedFile read(const std::filesystem::path& file);
/// Four bytes, most significant first, each as the code point of that value: 0xA96E616D is "©nam".
std::string fourCC(std::uint32_t code);

}  // namespace Probe

/// A light reader of the front of a Matroska file (RFC 9559).
namespace EBML {

struct Info {
    std::optional<double> duration;  ///< seconds
    std::vector<TrackInfo> tracks;
    std::optional<std::string> title;
};

/// Reads at most the first 4 MiB.
std::optional<Info> read(const std::filesystem::path& file);
std::optional<Info> parse(ByteView bytes);

}  // namespace EBML
}  // namespace marlet
