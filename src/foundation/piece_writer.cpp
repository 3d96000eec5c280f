#include "foundation/piece_writer.h"

#include <system_error>

#include "foundation/file_ops.h"
#include "foundation/syscalls.h"

namespace marlet {

PieceWriter::PieceWriter(int fd, Behind behind, Thread thread)
    : fd_(fd), behind_(behind), ring_(pieceSize * pieces) {
    queue_.reserve(pieces);
    if (thread == Thread::None) return;
    try {
        thread_ = std::thread([this] { runThread(); });
    } catch (const std::system_error&) {
        // No thread to be had: the pieces are written by the caller, only slower.
    }
}

PieceWriter::~PieceWriter() {
    {
        const std::lock_guard guard(lock_);
        ending_ = true;
    }
    changed_.notify_all();
    if (thread_.joinable()) thread_.join();
}

std::span<std::uint8_t> PieceWriter::next() {
    std::unique_lock guard(lock_);
    changed_.wait(guard, [this] { return queue_.size() < pieces || failure_; });
    if (failure_) std::rethrow_exception(failure_);
    return ring_.bytes().subspan(nextPiece_ * pieceSize, pieceSize);
}

void PieceWriter::submit(std::size_t count, std::uint64_t at) {
    const Job job{ring_.bytes().subspan(nextPiece_ * pieceSize, count), at};
    nextPiece_ = (nextPiece_ + 1) % pieces;
    if (!thread_.joinable()) {
        write(job);
        return;
    }
    {
        const std::lock_guard guard(lock_);
        queue_.push_back(job);
    }
    changed_.notify_all();
}

void PieceWriter::drain() {
    std::unique_lock guard(lock_);
    changed_.wait(guard, [this] { return queue_.empty() || failure_; });
    if (failure_) std::rethrow_exception(failure_);
}

void PieceWriter::runThread() {
    std::unique_lock guard(lock_);
    for (;;) {
        changed_.wait(guard, [this] { return ending_ || (!queue_.empty() && !failure_); });
        if (ending_) return;
        const Job job = queue_.front();
        guard.unlock();
        std::exception_ptr failed;
        try {
            write(job);
        } catch (...) {
            failed = std::current_exception();
        }
        guard.lock();
        failure_ = failed;
        queue_.erase(queue_.begin());
        changed_.notify_all();
    }
}

void PieceWriter::write(const Job& job) {
    if (behind_ == Behind::Drop) flushBehind(job.at);
    FileOps::writeAll(fd_, job.bytes, job.at);
}

// The chunk just finished is sent off, and the one before it, by now on the disk or nearly so, is
// waited for and dropped: the disk is never idle, and at most two chunks are in the cache.
void PieceWriter::flushBehind(std::uint64_t at) {
    if (!begun_) {
        begun_ = true;
        chunkStart_ = inFlightStart_ = at;
    }
    if (at - chunkStart_ < FileOps::chunkSize) return;
    Sys::startFlush(fd_, chunkStart_, at - chunkStart_);
    if (chunkStart_ > inFlightStart_)
        Sys::flushAndDropCache(fd_, inFlightStart_, chunkStart_ - inFlightStart_);
    inFlightStart_ = chunkStart_;
    chunkStart_ = at;
}

}  // namespace marlet
