#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>

#include "foundation/bytes.h"
#include "helpers/raw_box.h"

namespace marlet {

/// The rows of a table as they lie in the index.
struct TableRows {
    const std::uint8_t* first = nullptr;
    std::uint32_t count = 0;
};

/// A track's sample tables (ISO/IEC 14496-12, 8.6.1 and 8.7), left where they are: expanded to a
/// value a sample they could be a thousand times the size of the index.
struct TrackTables {
    std::uint32_t uniformSize = 0;  ///< 0: each sample has a row of `sizes`
    std::uint32_t samples = 0;
    TableRows sizes;    ///< 32 bits
    TableRows times;    ///< (count, duration)
    TableRows toChunk;  ///< (first chunk, samples a chunk, description)
    TableRows offsets;  ///< 32 or 64 bits
    bool wideOffsets = false;

    std::uint32_t sizeOf(std::uint32_t sample) const;
    std::uint64_t bytesOf(std::uint32_t firstSample, std::uint32_t count) const;
    std::uint64_t offsetOf(std::uint32_t chunk) const;
};

/// The tables of a `stbl`. Fails with a sentence when one is missing, is there twice, passes its
/// box, or has a form that isn't handled (`stz2`). Their content is judged by ChunkCursor.
TrackTables trackTables(ByteView index, const RawBox& stbl);

/// A chunk as the tables tell it.
struct StoredChunk {
    std::uint64_t offset = 0;
    std::uint64_t bytes = 0;
    std::uint32_t firstSample = 0;
    std::uint32_t samples = 0;
    std::uint32_t description = 0;  ///< index into `stsd`, from 1
};

/// Goes through the chunks of a track in the order of its samples. Fails with a sentence when
/// `stsc` runs backwards or the samples and the chunks don't fit each other.
class ChunkCursor {
public:
    explicit ChunkCursor(const TrackTables& tables) : tables_(&tables) {}
    std::optional<StoredChunk> next();

private:
    void enterRow();

    const TrackTables* tables_;
    std::uint32_t row_ = 0;     // rows of stsc entered so far
    std::uint32_t chunk_ = 0;   // from 0
    std::uint32_t rowEnd_ = 0;  // chunk behind the last one of the row
    std::uint32_t perChunk_ = 0;
    std::uint32_t description_ = 0;
    std::uint32_t sample_ = 0;
};

/// Goes through the durations of a track's samples; samples past the table have none.
class TimeCursor {
public:
    explicit TimeCursor(const TrackTables& tables) : rows_(tables.times) {}
    std::uint32_t next();

private:
    TableRows rows_;
    std::uint32_t row_ = 0;
    std::uint32_t left_ = 0;
    std::uint32_t duration_ = 0;
};

}  // namespace marlet
