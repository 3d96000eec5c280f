#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "foundation/bytes.h"
#include "helpers/source_file.h"

namespace marlet {

/// Reads a file at many places by turns: each reader of it (a track) has a window of its own that
/// is asked for ahead and dropped from the page cache behind. With one window for the whole file,
/// sound that lies behind its picture would wait for the disk at every slice.
class MediaReader {
public:
    /// `shares` are the bytes that each reader will read, in all.
    MediaReader(const SourceFile& file, const std::vector<std::uint64_t>& shares);

    /// Fills the part from `at`. "read failed: ...", or that the file became shorter.
    void read(std::size_t reader, std::span<std::uint8_t> part, std::uint64_t at);
    /// Tells that `reader` is about to read this much from `at`.
    void expect(std::size_t reader, std::uint64_t at, std::uint64_t bytes);

private:
    struct Window {
        std::uint64_t size = 0;   // how far ahead the disk works
        std::uint64_t asked = 0;  // end of what was asked for
        std::uint64_t read = 0;   // end of what was read last
        std::uint64_t kept = 0;   // start of what was read and not dropped
    };

    const SourceFile& file_;
    std::uint64_t keptBehind_;  // bytes behind a reader that stay in the page cache
    std::vector<Window> windows_;
};

}  // namespace marlet
