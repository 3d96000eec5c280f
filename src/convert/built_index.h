#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>

#include "foundation/bytes.h"
#include "foundation/syscalls.h"
#include "write/index_in_file.h"

namespace marlet {

/// The index of a file that was just built, read once, for changes in place: nothing in it moves.
class BuiltIndex {
public:
    /// Throws MFError when the file can't be read.
    explicit BuiltIndex(std::filesystem::path file);

    /// As it stands in the file; empty where the file has no whole index.
    ByteView moov() const { return index_ ? ByteView(index_->payload) : ByteView(); }
    /// Puts bytes in the place of those at `at` of the index, which has to hold as many there. The
    /// file is opened for the first that are others; `failure` is the sentence where it can't be.
    /// Throws MFError.
    void put(std::int64_t at, ByteView bytes, const char* failure);

private:
    std::filesystem::path file_;
    std::optional<IndexInFile> index_;
    FileHandle handle_;
};

}  // namespace marlet
