#include "helpers/new_file.h"

#include <fcntl.h>

#include <algorithm>
#include <cstring>

namespace marlet {

namespace {

/// What the ring may still hold unwritten, and a little.
constexpr std::uint64_t inWork = 2 * PieceWriter::pieces * PieceWriter::pieceSize;
constexpr std::uint64_t flushStep = std::uint64_t{16} << 20;
/// So far behind, a disk is done with what it was sent.
constexpr std::uint64_t smallestKept = std::uint64_t{256} << 20;

std::filesystem::path partialName(const std::filesystem::path& path) {
    std::filesystem::path partial = path;
    partial += ".partial";
    return partial;
}

FileHandle create(const std::filesystem::path& partial) {
    Sys::unlink(partial);
    return FileHandle::open(partial, O_WRONLY | O_CREAT | O_EXCL, "cannot create the output", 0644);
}

}  // namespace

NewFile::NewFile(const std::filesystem::path& path)
    : path_(path),
      partial_(partialName(path)),
      file_(create(partial_)),
      writer_(file_.get(), Behind::Keep, PieceWriter::Thread::Own),
      keptBehind_(std::max(smallestKept, Sys::cacheShare())) {}

NewFile::~NewFile() {
    if (!finished_) Sys::unlink(partial_);
}

void NewFile::appendFilled(std::uint64_t count,
                           const std::function<void(std::span<std::uint8_t> part)>& fill) {
    while (count > 0) {
        if (piece_.empty()) piece_ = writer_.next();
        const auto part = piece_.subspan(filled_, static_cast<std::size_t>(std::min<std::uint64_t>(
                                                      count, piece_.size() - filled_)));
        fill(part);
        filled_ += part.size();
        at_ += part.size();
        count -= part.size();
        if (filled_ == piece_.size()) submit();
    }
}

void NewFile::append(ByteView bytes) {
    appendFilled(bytes.size(), [&bytes](std::span<std::uint8_t> part) {
        std::memcpy(part.data(), bytes.data(), part.size());
        bytes = bytes.subspan(part.size());
    });
}

void NewFile::appendZeros(std::uint64_t count) {
    appendFilled(count, [](std::span<std::uint8_t> part) {
        std::fill(part.begin(), part.end(), std::uint8_t{0});
    });
}

void NewFile::submit() {
    writer_.submit(filled_, at_ - filled_);
    piece_ = {};
    filled_ = 0;
    flushBehind();
}

void NewFile::flushBehind() {
    if (at_ < flushed_ + flushStep + inWork) return;
    Sys::startFlush(file_.get(), flushed_, flushStep);
    flushed_ += flushStep;
    if (flushed_ < dropped_ + flushStep + keptBehind_) return;
    Sys::dropCache(file_.get(), dropped_, flushStep);
    dropped_ += flushStep;
}

void NewFile::finish() {
    if (filled_ > 0) submit();
    writer_.drain();
    if (Sys::rename(partial_, path_) != 0) failWithErrno("cannot create the output");
    finished_ = true;
}

}  // namespace marlet
