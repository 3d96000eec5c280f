#pragma once

#include <cstdint>
#include <filesystem>
#include <string_view>
#include <vector>

#include "foundation/bytes.h"
#include "foundation/syscalls.h"
#include "matroska/mkv_file.h"

namespace marlet {

/// Makes a Matroska file of one sound track, for decoders that must meet nothing else of a source
/// (RFC 9559; elements by RFC 8794).
namespace MKVWriter {

/// The shortest that can hold the value and isn't all ones; too large a value becomes unknown.
Bytes size(std::uint64_t value);
Bytes element(std::uint32_t id, ByteView payload);
/// Big-endian, in as few bytes as hold it, one at least.
Bytes number(std::uint32_t id, std::uint64_t value);
Bytes real(std::uint32_t id, double value);
Bytes text(std::uint32_t id, std::string_view value);

/// All that stands before the clusters: EBML header, a Segment of unknown size, Info and Tracks.
Bytes front(const MKVTrack& track);

/// Writes the file while the frames come in. At most one cluster is in memory.
class SoundFile {
public:
    /// Replaces what is there. Throws MFError "write failed: ...", as all of its steps do.
    SoundFile(const std::filesystem::path& file, const MKVTrack& track);

    /// The frames of one block, as they really are. Each but the first comes a millisecond after
    /// the one before: a laced block has one time only, and so they stay apart.
    void add(std::int64_t timeNs, const std::vector<Bytes>& frames);
    /// Writes what is left. MFError when no block was ever added.
    void finish();

private:
    void write(ByteView bytes);
    void closeCluster();

    FileHandle file_;
    std::uint64_t at_ = 0;
    bool isOpen_ = false;  // a cluster is
    std::int64_t start_ = 0;
    Bytes body_;
};

}  // namespace MKVWriter
}  // namespace marlet
