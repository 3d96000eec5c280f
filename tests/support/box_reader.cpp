#include "support/box_reader.h"

#include <algorithm>
#include <limits>
#include <numeric>
#include <stdexcept>
#include <string>

namespace marlet::test {

namespace {

struct Found {
    ByteView payload;
    int count = 0;
};

Found lookFor(ByteView boxes, std::string_view type, int nth) {
    Found found;
    std::size_t at = 0;
    while (at + 8 <= boxes.size()) {
        const auto pos = static_cast<std::int64_t>(at);
        std::uint64_t size = BigEndian::u32(boxes, pos);
        const std::size_t header = size == 1 ? 16 : 8;
        if (size == 1) size = BigEndian::u64(boxes, pos + 8);
        if (size == 0) size = boxes.size() - at;
        if (size < header || size > boxes.size() - at) break;
        if (BigEndian::fourCC(boxes, pos + 4) == type && found.count++ == nth)
            found.payload = boxes.subspan(at + header, static_cast<std::size_t>(size) - header);
        at += static_cast<std::size_t>(size);
    }
    return found;
}

std::uint32_t samplesInChunk(ByteView stsc, std::uint32_t chunk) {
    std::uint32_t samples = 0;
    for (std::int64_t row = 0; row < BigEndian::u32(stsc, 4); row++)
        if (BigEndian::u32(stsc, 8 + 12 * row) <= chunk)
            samples = BigEndian::u32(stsc, 12 + 12 * row);
    return samples;
}

void overwrite(Bytes& file, std::size_t at, const Bytes& with) {
    std::copy(with.begin(), with.end(), file.begin() + static_cast<std::ptrdiff_t>(at));
}

void setOffset(Bytes& file, const StoredChunk& chunk, std::uint64_t offset) {
    Bytes value;
    if (chunk.wide)
        BigEndian::put64(value, offset);
    else
        BigEndian::put32(value, static_cast<std::uint32_t>(offset));
    overwrite(file, chunk.entryAt, value);
}

}  // namespace

ByteView payloadOf(ByteView boxes, std::string_view type, int nth) {
    const Found found = lookFor(boxes, type, nth);
    if (found.count <= nth) throw std::runtime_error("no " + std::string(type) + " box");
    return found.payload;
}

bool hasChild(ByteView boxes, std::string_view type) {
    return countOf(boxes, type) > 0;
}

int countOf(ByteView boxes, std::string_view type) {
    return lookFor(boxes, type, std::numeric_limits<int>::max()).count;
}

std::uint64_t StoredChunk::bytes() const {
    return std::accumulate(sampleSizes.begin(), sampleSizes.end(), std::uint64_t{0});
}

std::vector<StoredChunk> chunksOf(ByteView file, int trackIndex) {
    const ByteView trak = payloadOf(payloadOf(file, "moov"), "trak", trackIndex);
    const ByteView stbl = payloadOf(payloadOf(payloadOf(trak, "mdia"), "minf"), "stbl");
    const ByteView stsz = payloadOf(stbl, "stsz");
    const ByteView stsc = payloadOf(stbl, "stsc");
    const bool wide = hasChild(stbl, "co64");
    const ByteView offsets = payloadOf(stbl, wide ? "co64" : "stco");
    const std::uint32_t uniform = BigEndian::u32(stsz, 4);

    std::vector<StoredChunk> chunks;
    std::int64_t sample = 0;
    for (std::uint32_t number = 1; number <= BigEndian::u32(offsets, 4); number++) {
        const std::int64_t row = 8 + std::int64_t{number - 1} * (wide ? 8 : 4);
        StoredChunk chunk;
        chunk.entryAt = static_cast<std::size_t>(offsets.data() - file.data() + row);
        chunk.wide = wide;
        chunk.offset = wide ? BigEndian::u64(offsets, row) : BigEndian::u32(offsets, row);
        for (std::uint32_t left = samplesInChunk(stsc, number); left > 0; left--, sample++)
            chunk.sampleSizes.push_back(uniform != 0 ? uniform
                                                     : BigEndian::u32(stsz, 12 + 4 * sample));
        chunks.push_back(chunk);
    }
    return chunks;
}

std::vector<Bytes> samplesOf(ByteView file, int trackIndex) {
    std::vector<Bytes> samples;
    for (const StoredChunk& chunk : chunksOf(file, trackIndex)) {
        auto at = static_cast<std::int64_t>(chunk.offset);
        for (const std::uint32_t size : chunk.sampleSizes) {
            const ByteView bytes = slice(file, at, at + size);
            samples.emplace_back(bytes.begin(), bytes.end());
            at += size;
        }
    }
    return samples;
}

Bytes storedTrackByTrack(Bytes file) {
    const Bytes before = file;
    const int tracks = countOf(payloadOf(before, "moov"), "trak");
    std::vector<std::vector<StoredChunk>> all;
    std::uint64_t next = std::numeric_limits<std::uint64_t>::max();
    for (int t = 0; t < tracks; t++) {
        all.push_back(chunksOf(before, t));
        for (const StoredChunk& chunk : all.back()) next = std::min(next, chunk.offset);
    }
    for (const auto& chunks : all) {
        for (const StoredChunk& chunk : chunks) {
            const auto from = static_cast<std::int64_t>(chunk.offset);
            const ByteView bytes =
                slice(before, from, from + static_cast<std::int64_t>(chunk.bytes()));
            overwrite(file, static_cast<std::size_t>(next), {bytes.begin(), bytes.end()});
            setOffset(file, chunk, next);
            next += chunk.bytes();
        }
    }
    return file;
}

}  // namespace marlet::test
