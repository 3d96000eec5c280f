#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>

#include "foundation/bytes.h"
#include "foundation/run_control.h"
#include "foundation/syscalls.h"

namespace marlet {

/// Bulk operations on files of any size: 16 MiB at a time, by position, past the page cache, with
/// a checkpoint at the head of every chunk. Failures are MFError "phrase: system text".
namespace FileOps {

inline constexpr std::size_t chunkSize = std::size_t{16} * 1024 * 1024;

struct Staged {
    std::string digest;       ///< SHA-256 of what was read and written, lower-case hexadecimal
    std::uint64_t bytes = 0;  ///< bytes copied
};

enum class BypassCache { No, Yes };

/// 0 on any failure.
std::uint64_t size(const std::filesystem::path& path);
/// Nothing on any failure.
std::optional<FileTime> mtime(const std::filesystem::path& path);
/// Bytes available to this person on the volume of the path (its nearest existing parent);
/// 0 on any failure.
std::int64_t freeSpace(const std::filesystem::path& at, bool important);

/// A durable copy that comes to exist under its final name whole or not at all; keeps the
/// modification date; replaces an existing destination at its last step.
void copy(const std::filesystem::path& from, const std::filesystem::path& to, RunControl& control,
          const Progress& progress = {});

/// A copy that hashes what it reads in the same pass. The target must not exist.
Staged stage(const std::filesystem::path& from, const std::filesystem::path& to,
             RunControl& control, const Progress& progress = {});

/// A private copy that shares its blocks with the source where the file system can, and is read
/// and written otherwise. The target must not exist. Nothing is flushed.
void cloneOrCopy(const std::filesystem::path& from, const std::filesystem::path& to,
                 RunControl& control, const Progress& progress = {});

/// With BypassCache::Yes the digest is of what the disk holds, not of what the cache remembers.
std::string hashFile(const std::filesystem::path& path, BypassCache bypass, RunControl& control,
                     const Progress& progress = {});

/// Byte by byte. Files of different sizes are unequal without being opened.
bool filesEqual(const std::filesystem::path& a, const std::filesystem::path& b, RunControl& control,
                const Progress& progress = {});

/// Rewrites the bytes of `file` with those of `with`: same inode, same attributes. No checkpoint:
/// the caller is in a critical section and holds the journal. A failure leaves `file` half written.
void overwriteInPlace(const std::filesystem::path& file, const std::filesystem::path& with,
                      const Progress& progress = {});

/// Writes all bytes at the offset; "write failed" otherwise.
void writeAll(int fd, ByteView bytes, std::uint64_t at);

/// Fills as much of the buffer as the file has from the offset on; "read failed" otherwise.
std::size_t readFull(int fd, std::span<std::uint8_t> buffer, std::uint64_t at);

/// Copies a range from one open file into another, at once on its way to the disk. "read failed"
/// when the range isn't all there.
void copyRange(int from, std::uint64_t at, std::uint64_t count, int to, std::uint64_t toAt);

/// The file's bytes, for small files; nothing when it can't be read or is larger than `limit`.
std::optional<Bytes> readSmall(const std::filesystem::path& path,
                               std::size_t limit = std::size_t{256} * 1024 * 1024);

}  // namespace FileOps
}  // namespace marlet
