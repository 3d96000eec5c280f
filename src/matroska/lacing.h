#pragma once

#include <cstdint>
#include <vector>

#include "foundation/bytes.h"
#include "matroska/mkv_file.h"

namespace marlet {

/// Several frames in one block (RFC 9559, 10.3).
namespace Lacing {

/// Bits 1 and 2 of a block's flags.
enum class Kind { None = 0, Xiph = 1, Fixed = 2, EBML = 3 };

/// The whole head of the lace must lie within this many bytes.
inline constexpr std::size_t longestHead = 4096;

/// How many bytes of a laced payload of `size` bytes hold its head for certain, when its first
/// byte is `first`. Never more than the longest head.
std::size_t headLength(Kind kind, std::uint8_t first, std::uint64_t size);

/// Where the frames of a laced payload lie, which begins at `offset` of the file with the bytes
/// of `head`. Nothing when its sizes don't add up.
std::vector<MKVBlock::Frame> frames(Kind kind, ByteView head, std::uint64_t offset,
                                    std::uint64_t size);

}  // namespace Lacing
}  // namespace marlet
