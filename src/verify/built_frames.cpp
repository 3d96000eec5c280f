#include <algorithm>
#include <queue>

#include "foundation/errors.h"
#include "foundation/syscalls.h"
#include "matroska/byte_window.h"
#include "verify/conversion_frames.h"

namespace marlet::ConvertVerify {

namespace {

constexpr std::size_t mostParameterSets = 4096;
/// Read ahead, and behind a leap: leaps back and forth must not cost more than the samples.
constexpr ByteWindow::Reach reach = {std::size_t{128} << 10, std::size_t{4} << 20};
/// No frame of a source is larger, so a larger sample can't be one of them.
constexpr std::uint32_t mostSampleBytes = std::uint32_t{128} << 20;
/// As in the proof of a rebuild: an index that hands out every byte more often than this is made
/// to keep a reader busy.
constexpr std::uint64_t mostUses = 16;

/// One of the tracks on the way through the file.
struct Place {
    SampleCursor cursor;
    std::size_t track = 0;
    bool operator>(const Place& other) const { return cursor.offset() > other.cursor.offset(); }
};
using Places = std::priority_queue<Place, std::vector<Place>, std::greater<>>;

void checkClaims(const std::vector<BuiltFrames>& tracks, std::uint64_t fileSize) {
    std::uint64_t total = 0;
    for (const BuiltFrames& built : tracks)
        for (const std::uint32_t size : built.track->sizes) total += size;
    if (total / mostUses > fileSize)
        throw MFError("the tracks claim far more data than the file holds");
}

void note(ByteView sample, BuiltFrames& built) {
    const NALFormat& format = built.reading.format;
    built.keys.push_back(keyOf(frameDigest(sample, built.reading.skip, format.lengthSize)));
    if (format.lengthSize == 0) return;
    NALWalk walk(sample, format.lengthSize);
    while (const auto unit = walk.next())
        if (format.isParameterSet((*unit)[0]) && built.parameterSets.size() < mostParameterSets)
            built.parameterSets.insert(parameterSetKey(*unit));
}

/// False when it isn't all there.
bool readSample(ByteWindow& window, const SampleCursor& at, BuiltFrames& built) {
    ByteView sample;
    if (at.size() > mostSampleBytes) return false;
    if (at.size() > 0) sample = window.at(at.offset(), at.size());
    if (sample.size() < at.size()) return false;
    note(sample, built);
    return true;
}

}  // namespace

void SampleCursor::advance() {
    offset_ += size();
    number_++;
    settle();
}

void SampleCursor::settle() {
    while (!atEnd()) {
        const Chunk& chunk = track_->chunks[chunk_];
        const std::uint64_t end =
            std::min<std::uint64_t>(std::uint64_t{chunk.first} + chunk.count, track_->sizes.size());
        if (number_ < chunk.first || (number_ == chunk.first && number_ < end)) {
            number_ = chunk.first;
            offset_ = chunk.offset;
        }
        if (number_ < end) return;
        chunk_++;
    }
}

std::vector<Ref> refs(const Track& track) {
    std::vector<Ref> all;
    all.reserve(track.sizes.size());
    std::int64_t time = 0;
    for (SampleCursor cursor(track); !cursor.atEnd(); cursor.advance()) {
        const std::size_t i = cursor.number();
        const std::int64_t shift = i < track.ctts.size() ? track.ctts[i] : 0;
        all.push_back({cursor.offset(), cursor.size(), time + shift});
        time += i < track.durations.size() ? track.durations[i] : 0;
    }
    return all;
}

void readBuilt(int fd, std::vector<BuiltFrames>& tracks, RunControl& control,
               const BytesDone& done) {
    const auto attributes = Sys::fstat(fd);
    if (!attributes) failWithErrno("read failed");
    checkClaims(tracks, attributes->size);
    ByteWindow window(fd, attributes->size, reach);
    Places places;
    for (std::size_t i = 0; i < tracks.size(); i++) {
        tracks[i].keys.reserve(tracks[i].track->sizes.size());
        if (const SampleCursor cursor(*tracks[i].track); !cursor.atEnd()) places.push({cursor, i});
    }
    std::uint64_t bytes = 0;
    for (std::uint64_t count = 0; !places.empty(); count++) {
        constexpr std::uint64_t between = 500;
        if (count % between == 0) {
            control.checkpoint();
            if (done) done(bytes);
            bytes = 0;
        }
        Place place = places.top();
        places.pop();
        if (!readSample(window, place.cursor, tracks[place.track])) continue;
        bytes += place.cursor.size();
        place.cursor.advance();
        if (!place.cursor.atEnd()) places.push(place);
    }
    if (done) done(bytes);
}

}  // namespace marlet::ConvertVerify
