#include "foundation/file_ops.h"

#include <fcntl.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <limits>

#include "foundation/bulk_read.h"
#include "foundation/digest.h"
#include "foundation/durable.h"
#include "foundation/errors.h"
#include "foundation/piece_writer.h"

namespace marlet::FileOps {

namespace fs = std::filesystem;

namespace {

constexpr int createNew = O_WRONLY | O_CREAT | O_EXCL;
constexpr mode_t newFileMode = 0644;
constexpr std::size_t piecesPerChunk = chunkSize / PieceWriter::pieceSize;

/// What a stream of bytes from one file to another needs.
struct Stream {
    int from = -1;
    int to = -1;
    Behind behind = Behind::Drop;
    std::uint64_t size = 0;   // of the source, for the progress
    std::uint64_t start = 0;  // both files' offset of the first byte
    Sha256* digest = nullptr;
};

/// Reads, hashes and hands over one chunk, and waits until it is written. A read that fails lets
/// the pieces before it end first, so that failures come in the order of the bytes.
std::uint64_t pumpChunk(BulkReader& reader, PieceWriter& writer, Sha256* digest) {
    std::uint64_t total = 0;
    for (std::size_t i = 0; i < piecesPerChunk; i++) {
        const std::span<std::uint8_t> piece = writer.next();
        const std::uint64_t at = reader.at();
        std::size_t count = 0;
        try {
            count = reader.read(piece);
        } catch (const MFError&) {
            writer.drain();
            throw;
        }
        if (count > 0) {
            if (digest != nullptr) digest->update(piece.first(count));
            writer.submit(count, at);
        }
        total += count;
        if (count < piece.size()) break;
    }
    writer.drain();
    return total;
}

/// Copies to the end of the source; gives the number of bytes from `start` on.
std::uint64_t pump(const Stream& stream, const ChunkSteps& steps) {
    const bool isSmall = stream.size <= PieceWriter::pieceSize;
    PieceWriter writer(stream.to, stream.behind,
                       isSmall ? PieceWriter::Thread::None : PieceWriter::Thread::Own);
    BulkReader reader(stream.from, BulkReader::Behind::Drop, stream.start);
    std::uint64_t total = 0;
    for (;;) {
        steps.head();
        const std::uint64_t count = pumpChunk(reader, writer, stream.digest);
        total += count;
        if (count > 0) steps.done(stream.start + total);
        if (count < chunkSize) return total;
    }
}

/// Removes a file of ours on every way out but the good one.
class RemoveUnlessDone {
public:
    explicit RemoveUnlessDone(const fs::path& path) : path_(path) {}
    ~RemoveUnlessDone() {
        if (!done_) Sys::unlink(path_);
    }
    RemoveUnlessDone(const RemoveUnlessDone&) = delete;
    RemoveUnlessDone& operator=(const RemoveUnlessDone&) = delete;
    void done() { done_ = true; }

private:
    const fs::path& path_;
    bool done_ = false;
};

/// Lets the kernel move the bytes, chunk by chunk, for as long as it can; gives where it stopped.
/// Its failures are not told apart here: the reading and writing that follows tells them.
std::uint64_t copyInKernel(const Stream& stream, const ChunkSteps& steps) {
    std::uint64_t at = 0;
    while (at < stream.size) {
        steps.head();
        const std::uint64_t end = std::min<std::uint64_t>(at + chunkSize, stream.size);
        while (at < end) {
            const ssize_t count = Sys::copyFileRange(stream.from, at, stream.to, at, end - at);
            if (count <= 0) return at;
            at += static_cast<std::uint64_t>(count);
        }
        steps.done(at);
    }
    return at;
}

}  // namespace

std::uint64_t size(const fs::path& path) {
    const auto found = Sys::stat(path);
    return found ? found->size : 0;
}

std::optional<FileTime> mtime(const fs::path& path) {
    const auto found = Sys::stat(path);
    if (!found) return std::nullopt;
    return found->mtime;
}

// The system has no second, larger number for important use: nothing is freed on demand.
std::int64_t freeSpace(const fs::path& at, bool /*important*/) {
    std::error_code failed;
    fs::path place = fs::absolute(at, failed);
    if (failed) return 0;
    for (;;) {
        if (const auto bytes = Sys::availableBytes(place)) {
            constexpr auto most =
                static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max());
            return static_cast<std::int64_t>(std::min(*bytes, most));
        }
        const bool isMissing = errno == ENOENT || errno == ENOTDIR;
        if (!isMissing || !place.has_relative_path()) return 0;
        place = place.parent_path();
    }
}

void copy(const fs::path& from, const fs::path& to, RunControl& control, const Progress& progress) {
    fs::path partial = to;
    partial += ".partial";
    Sys::unlink(partial);
    const std::uint64_t bytes = size(from);
    const auto modified = mtime(from);

    const FileHandle source = FileHandle::open(from, O_RDONLY, "cannot open source");
    FileHandle target = FileHandle::open(partial, createNew, "cannot create copy", newFileMode);
    RemoveUnlessDone remover(partial);
    pump({.from = source.get(), .to = target.get(), .size = bytes},
         ChunkSteps(&control, progress, bytes));
    if (modified) Sys::setModified(partial, *modified);
    if (Sys::fsync(target.get()) != 0) failWithErrno("cannot finish copy");
    Sys::dropCache(target.get(), 0, 0);
    target.close();
    Durable::rename(partial, to, "cannot finish copy");
    remover.done();
}

Staged stage(const fs::path& from, const fs::path& to, RunControl& control,
             const Progress& progress) {
    const std::uint64_t bytes = size(from);
    const FileHandle source = FileHandle::open(from, O_RDONLY, "cannot open the video to read it");
    const FileHandle target =
        FileHandle::open(to, createNew, "cannot create the staged copy", newFileMode);
    Sha256 digest;
    const std::uint64_t copied = pump({.from = source.get(),
                                       .to = target.get(),
                                       .behind = Behind::Keep,
                                       .size = bytes,
                                       .digest = &digest},
                                      ChunkSteps(&control, progress, bytes));
    return {digest.hex(), copied};
}

void cloneOrCopy(const fs::path& from, const fs::path& to, RunControl& control,
                 const Progress& progress) {
    const std::uint64_t bytes = size(from);
    const FileHandle source = FileHandle::open(from, O_RDONLY, "cannot open source");
    const FileHandle target = FileHandle::open(to, createNew, "cannot create copy", newFileMode);
    RemoveUnlessDone remover(to);
    const ChunkSteps steps(&control, progress, bytes);
    steps.head();
    if (Sys::clone(target.get(), source.get()) == 0) {
        if (bytes > 0) steps.done(bytes);
    } else {
        Stream stream{
            .from = source.get(), .to = target.get(), .behind = Behind::Keep, .size = bytes};
        stream.start = copyInKernel(stream, steps);
        if (stream.start < bytes) pump(stream, steps);
    }
    remover.done();
}

std::string hashFile(const fs::path& path, BypassCache bypass, RunControl& control,
                     const Progress& progress) {
    const FileHandle file = FileHandle::open(path, O_RDONLY, "cannot open file to hash");
    const bool bypasses = bypass == BypassCache::Yes;
    // What is still on its way to the disk gets there first, and the cache forgets it.
    if (bypasses) Sys::flushAndDropCache(file.get(), 0, 0);
    const ChunkSteps steps(&control, progress, size(path));
    BulkReader reader(file.get(), bypasses ? BulkReader::Behind::Drop : BulkReader::Behind::Keep);
    const AlignedBuffer buffer(PieceWriter::pieceSize);
    Sha256 digest;
    for (;;) {
        steps.head();
        const std::uint64_t start = reader.at();
        std::size_t count = buffer.bytes().size();
        while (reader.at() - start < chunkSize && count == buffer.bytes().size()) {
            count = reader.read(buffer.bytes());
            digest.update(buffer.bytes().first(count));
        }
        if (reader.at() > start) steps.done(reader.at());
        if (reader.at() - start < chunkSize) return digest.hex();
    }
}

bool filesEqual(const fs::path& a, const fs::path& b, RunControl& control,
                const Progress& progress) {
    const std::uint64_t bytes = size(a);
    if (bytes != size(b)) return false;
    const FileHandle first = FileHandle::open(a, O_RDONLY, "cannot open file to compare");
    const FileHandle second = FileHandle::open(b, O_RDONLY, "cannot open file to compare");
    for (const FileHandle* file : {&first, &second}) Sys::flushAndDropCache(file->get(), 0, 0);
    const ChunkSteps steps(&control, progress, bytes);
    BulkReader reader(first.get(), BulkReader::Behind::Drop);
    BulkReader other(second.get(), BulkReader::Behind::Drop);
    const AlignedBuffer buffer(PieceWriter::pieceSize);
    const AlignedBuffer otherBuffer(PieceWriter::pieceSize);
    for (;;) {
        steps.head();
        const std::uint64_t start = reader.at();
        std::size_t count = buffer.bytes().size();
        while (reader.at() - start < chunkSize && count == buffer.bytes().size()) {
            count = reader.read(buffer.bytes());
            if (other.read(otherBuffer.bytes()) != count ||
                std::memcmp(buffer.bytes().data(), otherBuffer.bytes().data(), count) != 0)
                return false;
        }
        if (reader.at() > start) steps.done(reader.at());
        if (reader.at() - start < chunkSize) return true;
    }
}

void overwriteInPlace(const fs::path& file, const fs::path& with, const Progress& progress) {
    const std::uint64_t bytes = size(with);
    const FileHandle source = FileHandle::open(with, O_RDONLY, "cannot open rebuilt file");
    const FileHandle target = FileHandle::open(file, O_WRONLY, "cannot open video for writing");
    const std::uint64_t written = pump({.from = source.get(), .to = target.get(), .size = bytes},
                                       ChunkSteps(nullptr, progress, bytes));
    if (Sys::ftruncate(target.get(), written) != 0) failWithErrno("cannot set final size");
    if (Sys::fsync(target.get()) != 0) failWithErrno("write failed");
    Sys::dropCache(target.get(), 0, 0);
}

void writeAll(int fd, ByteView bytes, std::uint64_t at) {
    while (!bytes.empty()) {
        const ssize_t count = Sys::pwrite(fd, bytes.data(), bytes.size(), at);
        if (count < 0) failWithErrno("write failed");
        // A device that takes nothing and names no error would otherwise be asked for ever.
        if (count == 0) failWith("write failed", ENOSPC);
        at += static_cast<std::uint64_t>(count);
        bytes = bytes.subspan(static_cast<std::size_t>(count));
    }
}

std::size_t readFull(int fd, std::span<std::uint8_t> buffer, std::uint64_t at) {
    std::size_t filled = 0;
    while (filled < buffer.size()) {
        const ssize_t count =
            Sys::pread(fd, buffer.data() + filled, buffer.size() - filled, at + filled);
        if (count < 0) failWithErrno("read failed");
        if (count == 0) break;
        filled += static_cast<std::size_t>(count);
    }
    return filled;
}

void copyRange(int from, std::uint64_t at, std::uint64_t count, int to, std::uint64_t toAt) {
    // Not by copy_file_range: a range that doesn't lie on blocks is never shared, and the kernel
    // takes three times as long to pass it on page by page.
    constexpr std::uint64_t pieceSize = std::uint64_t{1} << 20U;
    Bytes piece(static_cast<std::size_t>(std::min(count, pieceSize)));
    while (count > 0) {
        const auto wanted = static_cast<std::size_t>(std::min(count, pieceSize));
        if (readFull(from, std::span(piece).first(wanted), at) < wanted)
            failWith("read failed", EIO);
        writeAll(to, ByteView(piece).first(wanted), toAt);
        Sys::startFlush(to, toAt, wanted);
        at += wanted;
        toAt += wanted;
        count -= wanted;
    }
}

std::optional<Bytes> readSmall(const fs::path& path, std::size_t limit) {
    // Without waiting: a pipe of that name has no writer, and is not meant anyway.
    const FileHandle file(Sys::open(path, O_RDONLY | O_NONBLOCK));
    if (!file.isOpen()) return std::nullopt;
    const auto found = Sys::fstat(file.get());
    if (!found || !found->isRegular || found->size > limit) return std::nullopt;
    // One byte more than it says shows whether it has grown since.
    Bytes content(static_cast<std::size_t>(found->size) + 1);
    try {
        for (std::size_t filled = 0;;) {
            filled += readFull(file.get(), std::span(content).subspan(filled), filled);
            if (filled > limit) return std::nullopt;
            if (filled < content.size()) {
                content.resize(filled);
                return content;
            }
            content.resize(std::min(limit + 1, content.size() * 2 + 4096));
        }
    } catch (const MFError&) {
        return std::nullopt;
    }
}

}  // namespace marlet::FileOps
