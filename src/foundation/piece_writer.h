#pragma once

#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <mutex>
#include <span>
#include <thread>
#include <vector>

#include "foundation/aligned_buffer.h"
#include "foundation/bytes.h"

namespace marlet {

/// What becomes of written bytes in the page cache.
enum class Behind {
    Keep,  ///< they are read back soon
    Drop,  ///< sent to the disk and dropped as the writing goes on
};

/// Writes pieces to one file, in order and by position, on a thread of its own, while the caller
/// fills and hashes the next ones: a small ring of pieces, whatever the size of the file.
class PieceWriter {
public:
    static constexpr std::size_t pieceSize = std::size_t{1024} * 1024;
    static constexpr std::size_t pieces = 8;

    enum class Thread { None, Own };
    PieceWriter(int fd, Behind behind, Thread thread);
    /// Ends the thread; what was not written yet is given up.
    ~PieceWriter();
    PieceWriter(const PieceWriter&) = delete;
    PieceWriter& operator=(const PieceWriter&) = delete;

    /// The next free piece of the ring, to be filled and handed to submit(). Throws the failure
    /// of an earlier piece.
    std::span<std::uint8_t> next();
    /// Writes the first `count` bytes of the piece that next() gave.
    void submit(std::size_t count, std::uint64_t at);
    /// Waits until all is written; throws the failure of a piece.
    void drain();

private:
    struct Job {
        ByteView bytes;
        std::uint64_t at = 0;
    };

    void runThread();
    void write(const Job& job);
    void flushBehind(std::uint64_t at);

    const int fd_;
    const Behind behind_;
    AlignedBuffer ring_;
    std::size_t nextPiece_ = 0;  // the caller's alone
    // The writing side's alone: the start of the chunk being written, and of the one before it,
    // which is on its way to the disk.
    std::uint64_t chunkStart_ = 0;
    std::uint64_t inFlightStart_ = 0;
    bool begun_ = false;

    std::mutex lock_;
    std::condition_variable changed_;
    std::vector<Job> queue_;      // guarded by lock_; at most `pieces`, its first is in work
    std::exception_ptr failure_;  // guarded by lock_
    bool ending_ = false;         // guarded by lock_
    std::thread thread_;
};

}  // namespace marlet
