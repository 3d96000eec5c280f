#pragma once

#include <cstdint>
#include <filesystem>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "foundation/bytes.h"

namespace marlet {

/// One box of the ISO base media file format (ISO/IEC 14496-12, 4.2) inside a byte array.
struct Box {
    std::string type;           ///< Latin-1 as UTF-8 ("©nam"); empty when past the buffer
    std::int64_t boxStart = 0;  ///< offset of the size field
    std::int64_t start = 0;     ///< offset of the payload
    std::int64_t end = 0;       ///< just past the box, clamped to the range walked
    bool operator==(const Box&) const = default;
};

/// The boxes of the range. A walk that goes bad gives what it found so far.
std::vector<Box> children(ByteView data, std::int64_t from, std::int64_t to);
/// Follows type names, first match at each step, never backtracking.
std::optional<Box> find(ByteView data, std::int64_t from, std::int64_t to,
                        std::initializer_list<std::string_view> path);

/// The payload of the file's first `moov` box. Fails with "no-moov", "moov box has an odd size",
/// or the system's text.
Bytes loadMoov(const std::filesystem::path& file);

/// The top level of a file.
namespace TagRestore {

struct Top {
    std::string type;
    std::uint64_t offset = 0;
    std::uint64_t size = 0;
    int header = 8;  ///< 8 or 16 bytes
    bool operator==(const Top&) const = default;
};

/// Top-level boxes in file order; stops silently at a box that doesn't fit. An unreadable file
/// has none.
std::vector<Top> topLevel(const std::filesystem::path& file);

}  // namespace TagRestore
}  // namespace marlet
