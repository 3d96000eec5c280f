#pragma once

#include <atomic>
#include <cstdint>
#include <functional>

#include "foundation/run_control.h"

namespace marlet {

/// Below so many bytes a second thread costs more than it saves.
inline constexpr std::uint64_t worthAThread = std::uint64_t{32} << 20;

/// What was read of two files together, told as a part of the whole proof.
class ReadShare {
public:
    ReadShare(std::uint64_t total, double start, double length, const StepProgress& progress);

    void add(std::uint64_t bytes) { bytes_ += bytes; }
    /// On the job's thread alone.
    void tell() const;

private:
    std::uint64_t total_;
    double start_;
    double length_;
    std::atomic<std::uint64_t> bytes_ = 0;
    const StepProgress& progress_;
};

/// Reads a file, calling back with the bytes of each piece.
using Reading = std::function<void(const std::function<void(std::uint64_t)>&)>;

/// Runs two readings at once, one on a thread of its own and one on the calling thread, where
/// progress is told. A failure of either ends both and is thrown.
void sideBySide(const Reading& onThread, const Reading& here, ReadShare& share);

}  // namespace marlet
