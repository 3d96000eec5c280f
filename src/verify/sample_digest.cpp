#include "verify/sample_digest.h"

#include <fcntl.h>

#include <algorithm>

#include "foundation/aligned_buffer.h"
#include "foundation/digest.h"
#include "foundation/errors.h"
#include "foundation/syscalls.h"
#include "verify/sample_order.h"

namespace marlet {

namespace {

constexpr std::uint64_t pieceSize = 8 * 1024 * 1024;

/// A few tools let samples share their bytes. An index that hands out every byte more often than
/// this is made to keep a reader busy.
constexpr std::uint64_t mostUses = 16;

/// The samples of one file on their way into the digests.
class Hashing {
public:
    Hashing(const std::filesystem::path& file, const MP4Summary& summary, RunControl& control,
            const std::function<void(std::uint64_t)>& done)
        : file_(FileHandle::open(file, O_RDONLY, "cannot open " + file.filename().string())),
          summary_(summary),
          control_(control),
          done_(done),
          digests_(summary.tracks.size()) {
        const auto attributes = Sys::fstat(file_.get());
        if (!attributes) failWithErrno("read failed");
        fileSize_ = attributes->size;
    }

    void checkPlaces() const;
    void sweep(const std::vector<std::size_t>& positions);
    void followTrack(std::size_t position);
    std::vector<std::string> hex();

private:
    void take(const SampleStretch& stretch, std::uint64_t readMost);
    void fill(std::uint64_t at, std::uint64_t most);

    FileHandle file_;
    const MP4Summary& summary_;
    RunControl& control_;
    const std::function<void(std::uint64_t)>& done_;
    std::vector<Sha256> digests_;
    std::uint64_t fileSize_ = 0;
    AlignedBuffer buffer_{pieceSize};
    std::uint64_t bufferAt_ = 0;  ///< the file's bytes from here on lie in the buffer
    std::uint64_t buffered_ = 0;
    std::uint64_t hashed_ = 0;  ///< since `done` was called last
};

/// Before a byte is read: every chunk lies in the file, and all of them in reasonable time.
void Hashing::checkPlaces() const {
    std::uint64_t total = 0;
    for (const Track& track : summary_.tracks) {
        for (const Chunk& chunk : track.chunks) {
            const std::uint64_t bytes = chunkBytes(track, chunk);
            if (chunk.offset > fileSize_ || bytes > fileSize_ - chunk.offset)
                throw MFError("track data runs past end of file");
            total += bytes;
            if (total / mostUses > fileSize_)
                throw MFError("the tracks claim far more data than the file holds");
        }
    }
}

/// One way through the file for all tracks that run forward: what lies in between is read along,
/// which no disk minds.
void Hashing::sweep(const std::vector<std::size_t>& positions) {
    SweepStretches stretches(summary_.tracks, positions);
    while (const auto stretch = stretches.next()) take(*stretch, pieceSize);
}

void Hashing::followTrack(std::size_t position) {
    for (TrackStretches stretches(summary_.tracks[position], position); !stretches.atEnd();
         stretches.advance())
        take(stretches.current(), stretches.current().bytes);
}

void Hashing::take(const SampleStretch& stretch, std::uint64_t readMost) {
    std::uint64_t at = stretch.offset;
    std::uint64_t left = stretch.bytes;
    while (left > 0) {
        if (at < bufferAt_ || at >= bufferAt_ + buffered_)
            fill(at, std::min(pieceSize, std::max(left, readMost)));
        const std::uint64_t skip = at - bufferAt_;
        const std::uint64_t count = std::min(left, buffered_ - skip);
        digests_[stretch.track].update(buffer_.bytes().subspan(skip, count));
        hashed_ += count;
        at += count;
        left -= count;
    }
}

void Hashing::fill(std::uint64_t at, std::uint64_t most) {
    if (buffered_ > 0) {
        if (done_) done_(hashed_);
        hashed_ = 0;
    }
    const ssize_t got = Sys::pread(file_.get(), buffer_.bytes().data(), most, at);
    if (got < 0) failWithErrno("read failed");
    if (got == 0) throw MFError("unexpected end of file");
    bufferAt_ = at;
    buffered_ = static_cast<std::uint64_t>(got);
    // The next piece is on its way from the disk while this one is hashed.
    if (most == pieceSize) Sys::readAhead(file_.get(), at + buffered_, pieceSize);
    control_.checkpoint();
}

std::vector<std::string> Hashing::hex() {
    if (done_) done_(hashed_);
    std::vector<std::string> all;
    for (Sha256& digest : digests_) all.push_back(digest.hex());
    return all;
}

}  // namespace

std::uint64_t sampleBytes(const MP4Summary& summary) {
    std::uint64_t total = 0;
    for (const Track& track : summary.tracks)
        for (const Chunk& chunk : track.chunks) total += chunkBytes(track, chunk);
    return total;
}

std::vector<std::string> sampleDigests(const std::filesystem::path& file, const MP4Summary& summary,
                                       RunControl& control,
                                       const std::function<void(std::uint64_t)>& done) {
    Hashing hashing(file, summary, control, done);
    hashing.checkPlaces();
    std::vector<std::size_t> forward;
    std::vector<std::size_t> others;
    for (std::size_t i = 0; i < summary.tracks.size(); i++)
        (runsForward(summary.tracks[i]) ? forward : others).push_back(i);
    hashing.sweep(forward);
    for (const std::size_t position : others) hashing.followTrack(position);
    return hashing.hex();
}

}  // namespace marlet
