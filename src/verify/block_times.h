#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "matroska/mkv_file.h"

namespace marlet::ConvertVerify {

/// When the frames of one track come, while its blocks pass. A block has one time only: the frames
/// behind its first follow at the track's DefaultDuration, or else evenly up to the next block (RFC
/// 9559, 10.3).
class BlockTimes {
public:
    explicit BlockTimes(std::optional<std::uint64_t> frameLength) : frameLength_(frameLength) {}

    /// Adds the frames' times (ns) to the list, where one is given; those of the last block may
    /// change until the next one has come.
    void add(const MKVBlock& block, std::vector<std::int64_t>* times);
    /// Settles the last block's times.
    void finish(std::vector<std::int64_t>* times);

    /// Of the earliest frame; nothing without frames.
    const std::optional<std::int64_t>& start() const { return start_; }
    /// From the first block's time to the end of the last frame.
    double spanSeconds() const;

private:
    void spread(std::vector<std::int64_t>& times, double step) const;
    double frameLength() const;

    std::optional<std::uint64_t> frameLength_;  // of all frames, ns
    std::optional<std::int64_t> start_;
    std::int64_t firstTime_ = 0;
    std::int64_t lastTime_ = 0;
    std::size_t lastCount_ = 0;
    std::optional<std::uint64_t> lastDuration_;
    std::uint64_t framesBefore_ = 0;  // the last block
};

}  // namespace marlet::ConvertVerify
