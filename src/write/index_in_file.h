#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>

#include "foundation/bytes.h"
#include "mp4/box.h"

namespace marlet {

/// A file's index box and where it lies.
struct IndexInFile {
    TagRestore::Top box;
    Bytes payload;

    /// Where in the file a byte of the payload stands.
    std::uint64_t fileOffset(std::int64_t at) const {
        return box.offset + static_cast<std::uint64_t>(box.header + at);
    }
};

/// Nothing for a file whose top level has no whole `moov`. Fails like loadMoov.
std::optional<IndexInFile> readIndex(const std::filesystem::path& file);

}  // namespace marlet
