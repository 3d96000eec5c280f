#include "foundation/bulk_read.h"

#include "foundation/syscalls.h"

namespace marlet {

BulkReader::BulkReader(int fd, Behind behind, std::uint64_t from)
    : fd_(fd), behind_(behind), at_(from), dropped_(from), asked_(from) {}

std::size_t BulkReader::read(std::span<std::uint8_t> piece) {
    // One chunk is always on its way from the disk while another is worked on.
    while (asked_ < at_ + FileOps::chunkSize) {
        constexpr std::uint64_t step = FileOps::chunkSize / 4;
        Sys::readAhead(fd_, asked_, step);
        asked_ += step;
    }
    const std::size_t count = FileOps::readFull(fd_, piece, at_);
    at_ += count;
    const bool isLast = count < piece.size();
    if (behind_ == Behind::Drop && (isLast || at_ - dropped_ >= FileOps::chunkSize)) {
        Sys::dropCache(fd_, dropped_, isLast ? 0 : at_ - dropped_);
        dropped_ = at_;
    }
    return count;
}

}  // namespace marlet
