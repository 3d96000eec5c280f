#pragma once

#include <cstdint>

#include "foundation/file_ops.h"
#include "foundation/run_control.h"

namespace marlet {

/// Reads a file from its start past the page cache: the kernel is asked for what comes next, and
/// what was read is dropped chunk by chunk.
class BulkReader {
public:
    enum class Behind { Keep, Drop };
    BulkReader(int fd, Behind behind, std::uint64_t from = 0);

    /// Fills the piece as far as the file goes, "read failed" otherwise.
    std::size_t read(std::span<std::uint8_t> piece);
    std::uint64_t at() const { return at_; }

private:
    int fd_;
    Behind behind_;
    std::uint64_t at_;
    std::uint64_t dropped_;
    std::uint64_t asked_;
};

/// Where a bulk operation stands: a checkpoint at the head of each chunk, a report at its end.
/// The report of a chunk always comes before the checkpoint of the next.
class ChunkSteps {
public:
    /// `control` may be null: a critical section has nothing to check.
    ChunkSteps(RunControl* control, const Progress& progress, std::uint64_t size)
        : control_(control), progress_(progress), size_(size > 0 ? size : 1) {}

    void head() const {
        if (control_ != nullptr) control_->checkpoint();
    }
    void done(std::uint64_t bytes) const {
        if (progress_) progress_(static_cast<double>(bytes) / static_cast<double>(size_));
    }

private:
    RunControl* control_;
    const Progress& progress_;
    std::uint64_t size_;
};

}  // namespace marlet
