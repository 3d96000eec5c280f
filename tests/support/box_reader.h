#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "foundation/bytes.h"

// A second, naive reader of MP4 bytes, so that the real one is not its own judge.
namespace marlet::test {

/// The payload of the nth child of that type; throws when there is none.
ByteView payloadOf(ByteView boxes, std::string_view type, int nth = 0);
bool hasChild(ByteView boxes, std::string_view type);
int countOf(ByteView boxes, std::string_view type);

/// A chunk of a track, and where in the file its table entry stands.
struct StoredChunk {
    std::size_t entryAt = 0;
    bool wide = false;
    std::uint64_t offset = 0;
    std::vector<std::uint32_t> sampleSizes;
    std::uint64_t bytes() const;
};
/// Through the file's own tables: first moov, `trak` at that position.
std::vector<StoredChunk> chunksOf(ByteView file, int trackIndex);
/// The bytes of all samples of a track, for asking whether a write left the media as it was.
std::vector<Bytes> samplesOf(ByteView file, int trackIndex);

/// The same file with each track's chunks stored behind each other, one track behind the other:
/// sound in stretches of a film's length. Nothing moves but media data and chunk offsets.
Bytes storedTrackByTrack(Bytes file);

}  // namespace marlet::test
