#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>

#include "foundation/bytes.h"
#include "foundation/piece_writer.h"
#include "foundation/syscalls.h"

namespace marlet {

/// A file that is written from front to back and comes to exist under its name whole or not at
/// all: until finish() it has a name of its own, and goes on every other way out. A small ring of
/// pieces is all its memory, a thread of its own writes, and what is written starts on its way to
/// the disk at once. Most films stay in the page cache, where their proof finds them; a larger one
/// doesn't fill it.
class NewFile {
public:
    /// "cannot create the output: ..."; replaces what has the partial name.
    explicit NewFile(const std::filesystem::path& path);
    ~NewFile();
    NewFile(const NewFile&) = delete;
    NewFile& operator=(const NewFile&) = delete;

    void append(ByteView bytes);
    void appendZeros(std::uint64_t count);
    /// Gives ever the next free memory to `fill`, until `count` bytes are filled.
    void appendFilled(std::uint64_t count,
                      const std::function<void(std::span<std::uint8_t> part)>& fill);
    std::uint64_t size() const { return at_; }

    /// Writes the rest and gives the file its name. "write failed: ..."
    void finish();

private:
    void submit();
    void flushBehind();

    std::filesystem::path path_;
    std::filesystem::path partial_;
    FileHandle file_;
    PieceWriter writer_;
    std::span<std::uint8_t> piece_;  // being filled
    std::size_t filled_ = 0;
    std::uint64_t at_ = 0;
    std::uint64_t flushed_ = 0;
    std::uint64_t keptBehind_;  // bytes that stay in the page cache
    std::uint64_t dropped_ = 0;
    bool finished_ = false;
};

}  // namespace marlet
