#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "foundation/run_control.h"
#include "mp4/summary.h"

namespace marlet {

/// The bytes of all samples of the tracks.
std::uint64_t sampleBytes(const MP4Summary& summary);

/// One SHA-256 for each track of the summary over its samples in sample order, wherever the file
/// stores them. Reads pieces of at most 8 MiB, each followed by a checkpoint and by `done` with the
/// sample bytes that went into digests since. Throws MFError: "cannot open " and the name, "track
/// data runs past end of file", "unexpected end of file", "read failed"; and CancelError.
std::vector<std::string> sampleDigests(const std::filesystem::path& file, const MP4Summary& summary,
                                       RunControl& control,
                                       const std::function<void(std::uint64_t)>& done);

}  // namespace marlet
