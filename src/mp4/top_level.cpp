// The top level of a file, read box by box without reading what is in the boxes.

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>

#include "foundation/errors.h"
#include "foundation/syscalls.h"
#include "mp4/box.h"
#include "mp4/large_pages.h"

namespace marlet {

namespace {

/// An index of this size or more is not believed. Ten hours of film need some tens of MB.
constexpr std::uint64_t oddIndexSize = 0x40000000;
/// A film in fragments of a second has two boxes a second; a hostile file could have one every
/// eight bytes.
constexpr int mostTopBoxes = 1 << 20;

/// Reads until the buffer is full or the file ends.
std::size_t readAt(int fd, std::span<std::uint8_t> buffer, std::uint64_t at) {
    std::size_t done = 0;
    while (done < buffer.size()) {
        const ssize_t got = Sys::pread(fd, buffer.data() + done, buffer.size() - done, at + done);
        if (got < 0) failWithErrno("read failed");
        if (got == 0) break;
        done += static_cast<std::size_t>(got);
    }
    return done;
}

/// Steps over the top-level boxes of an open file.
class TopCursor {
public:
    explicit TopCursor(const std::filesystem::path& file)
        // O_NONBLOCK: a pipe that is named like a film must not hold up the reader.
        : file_(FileHandle::open(file, O_RDONLY | O_NONBLOCK, "cannot open the file")) {
        const off_t end = ::lseek(file_.get(), 0, SEEK_END);
        if (end < 0) failWithErrno("cannot tell the file's length");
        length_ = static_cast<std::uint64_t>(end);
    }

    int fd() const { return file_.get(); }
    std::uint64_t length() const { return length_; }

    /// The box at the cursor with its stated size, which may pass the end of the file. Nothing at
    /// the end and where no box can stand.
    std::optional<TagRestore::Top> next() {
        if (pos_ > length_ || length_ - pos_ < 8 || given_ == mostTopBoxes) return std::nullopt;
        std::array<std::uint8_t, 16> bytes{};
        const std::size_t got = readAt(file_.get(), bytes, pos_);
        if (got < 8) return std::nullopt;
        const auto top = decode(ByteView(bytes).first(got));
        if (!top) return std::nullopt;
        // Stays just past the end when the box does, so that the sum can't wrap.
        pos_ += std::min(top->size, length_ - pos_ + 1);
        given_++;
        return top;
    }

private:
    std::optional<TagRestore::Top> decode(ByteView bytes) const {
        TagRestore::Top top{BigEndian::fourCC(bytes, 4), pos_, BigEndian::u32(bytes, 0), 8};
        if (top.size == 0) top.size = length_ - pos_;
        if (top.size == 1) {
            top.header = 16;
            top.size = BigEndian::u64(bytes, 8);
        }
        if (top.size < static_cast<std::uint64_t>(top.header)) return std::nullopt;
        return top;
    }

    FileHandle file_;
    std::uint64_t length_ = 0;
    std::uint64_t pos_ = 0;
    int given_ = 0;
};

}  // namespace

namespace {

/// As much of the range as the file has.
Bytes readPayload(int fd, std::uint64_t at, std::uint64_t size) {
    // In steps: what the vector clears is still in the processor's cache when it is filled, and a
    // read that fails has not cost memory for all that was to come.
    constexpr std::uint64_t step = 1 << 20;
    Bytes payload;
    reserveLarge(payload, static_cast<std::size_t>(size));
    while (payload.size() < size) {
        const std::size_t done = payload.size();
        const auto wanted = static_cast<std::size_t>(std::min(step, size - done));
        payload.resize(done + wanted);
        const std::size_t got = readAt(fd, std::span(payload).subspan(done), at + done);
        payload.resize(done + got);
        if (got < wanted) break;
    }
    return payload;
}

}  // namespace

Bytes loadMoov(const std::filesystem::path& file) {
    TopCursor cursor(file);
    auto box = cursor.next();
    while (box && box->type != "moov") box = cursor.next();
    if (!box) throw MFError("no-moov");

    const auto header = static_cast<std::uint64_t>(box->header);
    const std::uint64_t size = std::min(box->size, cursor.length() - box->offset);
    if (size <= header || size - header >= oddIndexSize) throw MFError("moov box has an odd size");

    return readPayload(cursor.fd(), box->offset + header, size - header);
}

namespace TagRestore {

std::vector<Top> topLevel(const std::filesystem::path& file) {
    std::vector<Top> boxes;
    try {
        TopCursor cursor(file);
        while (const auto top = cursor.next()) {
            if (top->size > cursor.length() - top->offset) break;
            boxes.push_back(*top);
        }
    } catch (const MFError&) {
        // An unreadable file has the boxes that could be read.
    }
    return boxes;
}

}  // namespace TagRestore
}  // namespace marlet
