#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "foundation/bytes.h"

namespace marlet {

/// Fills as much of the buffer as there is at the offset; a failing read ends it like the end of
/// the file.
std::size_t readWhatIsThere(int fd, std::uint64_t at, std::span<std::uint8_t> into);

/// The bytes of a file around the place where a walk stands. A walk that goes from one near place
/// to the next is read further and further ahead, up to a limit; one that leaps reads little.
class ByteWindow {
public:
    struct Reach {
        std::size_t least = 0;  ///< bytes read after a leap
        std::size_t most = 0;   ///< bytes read ahead at most
    };
    /// For walks that look at everything that they pass.
    static constexpr Reach headers = {32, std::size_t{16} * 1024};
    /// For walks from block to block: the head of an element and of a block, and no frames.
    static constexpr Reach blocks = {32, 32};

    ByteWindow(int fd, std::uint64_t fileSize, Reach reach);

    /// At most `count` bytes, fewer at the end of the file; good until the next call.
    ByteView at(std::uint64_t offset, std::size_t count);
    int fd() const { return fd_; }

private:
    bool isNear(std::uint64_t offset) const;

    int fd_;
    std::uint64_t fileSize_;
    Reach reach_;
    std::size_t ahead_;
    std::uint64_t start_ = 0;
    std::size_t have_ = 0;
    Bytes buffer_;
};

}  // namespace marlet
