#include "helpers/track_tables.h"

#include <string>

#include "foundation/errors.h"
#include "mp4/sample_tables.h"

namespace marlet {

namespace {

std::uint32_t load32(const std::uint8_t* at) {
    return std::uint32_t{at[0]} << 24 | std::uint32_t{at[1]} << 16 | std::uint32_t{at[2]} << 8 |
           std::uint32_t{at[3]};
}

std::uint64_t load64(const std::uint8_t* at) {
    return std::uint64_t{load32(at)} << 32 | load32(at + 4);
}

[[noreturn]] void failTable(BoxCode type) {
    throw MFError("a sample table (" + RawBoxes::name(type) + ") doesn't fit into its box");
}

/// Rows behind a full box's version and flags, `skip` bytes of other fields, and their number.
TableRows rowsOf(ByteView index, const RawBox& box, std::size_t width, std::size_t skip = 0) {
    const std::size_t head = 8 + skip;
    if (box.end - box.start < head) failTable(box.code);
    const std::uint32_t count =
        BigEndian::u32(index, static_cast<std::int64_t>(box.start + 4 + skip));
    if (count > (box.end - box.start - head) / width) failTable(box.code);
    return {index.data() + box.start + head, count};
}

void readSizes(ByteView index, const RawBox& stsz, TrackTables& tables) {
    if (stsz.end - stsz.start < 12) failTable(stsz.code);
    const auto at = static_cast<std::int64_t>(stsz.start);
    tables.uniformSize = BigEndian::u32(index, at + 4);
    tables.samples = BigEndian::u32(index, at + 8);
    if (tables.samples > SampleTables::Budget::mostSamples)
        throw MFError("a track claims more samples than a film can have");
    if (tables.uniformSize == 0) tables.sizes = rowsOf(index, stsz, 4, 4);
}

}  // namespace

std::uint32_t TrackTables::sizeOf(std::uint32_t sample) const {
    return uniformSize != 0 ? uniformSize : load32(sizes.first + std::size_t{sample} * 4);
}

std::uint64_t TrackTables::bytesOf(std::uint32_t firstSample, std::uint32_t count) const {
    if (uniformSize != 0) return std::uint64_t{uniformSize} * count;
    std::uint64_t sum = 0;
    for (std::uint32_t i = 0; i < count; i++) sum += sizeOf(firstSample + i);
    return sum;
}

std::uint64_t TrackTables::offsetOf(std::uint32_t chunk) const {
    return wideOffsets ? load64(offsets.first + std::size_t{chunk} * 8)
                       : load32(offsets.first + std::size_t{chunk} * 4);
}

TrackTables trackTables(ByteView index, const RawBox& stbl) {
    const auto stsz = RawBoxes::only(index, stbl, boxCode("stsz"));
    const auto stts = RawBoxes::only(index, stbl, boxCode("stts"));
    const auto stsc = RawBoxes::only(index, stbl, boxCode("stsc"));
    const auto stco = RawBoxes::only(index, stbl, boxCode("stco"));
    const auto co64 = RawBoxes::only(index, stbl, boxCode("co64"));
    if (RawBoxes::only(index, stbl, boxCode("stz2")))
        throw MFError(
            "a track tells its sample sizes in the compact form (stz2), which isn't read");
    if (stco && co64) throw MFError("a track has two tables of chunk offsets");
    if (!stsz || !stts || !stsc || !(stco || co64)) throw MFError("incomplete sample table");

    TrackTables tables;
    readSizes(index, *stsz, tables);
    tables.times = rowsOf(index, *stts, 8);
    tables.toChunk = rowsOf(index, *stsc, 12);
    tables.wideOffsets = co64.has_value();
    tables.offsets = co64 ? rowsOf(index, *co64, 8) : rowsOf(index, *stco, 4);
    return tables;
}

void ChunkCursor::enterRow() {
    const std::uint8_t* at = tables_->toChunk.first + std::size_t{row_} * 12;
    row_++;
    const bool isLast = row_ == tables_->toChunk.count;
    // Chunk numbers count from 1, so that the next row's first is this row's end counted from 0.
    const std::uint32_t first = load32(at);
    const std::uint32_t next = isLast ? 0 : load32(at + 12);
    const std::uint32_t end = isLast ? tables_->offsets.count : next - 1;
    if (first != chunk_ + 1 || (!isLast && next <= first))
        throw MFError("a track's chunk table (stsc) doesn't run forward from the first chunk");
    if (end > tables_->offsets.count)
        throw MFError("a track's chunk table (stsc) names chunks that have no offset");
    rowEnd_ = end;
    perChunk_ = load32(at + 4);
    description_ = load32(at + 8);
}

std::optional<StoredChunk> ChunkCursor::next() {
    while (chunk_ == rowEnd_ && row_ < tables_->toChunk.count) enterRow();
    if (chunk_ == rowEnd_) {
        if (sample_ < tables_->samples) throw MFError("a track has samples that no chunk holds");
        return std::nullopt;
    }
    if (perChunk_ > tables_->samples - sample_) throw MFError("sample table inconsistent");
    const StoredChunk chunk{tables_->offsetOf(chunk_), tables_->bytesOf(sample_, perChunk_),
                            sample_, perChunk_, description_};
    chunk_++;
    sample_ += perChunk_;
    return chunk;
}

std::uint32_t TimeCursor::next() {
    while (left_ == 0) {
        if (row_ == rows_.count) return 0;
        const std::uint8_t* at = rows_.first + std::size_t{row_} * 8;
        row_++;
        left_ = load32(at);
        const std::uint32_t duration = load32(at + 4);
        // Writers have stored negative steps here; they are no time at all.
        duration_ = (duration & 0x80000000U) != 0 ? 0 : duration;
    }
    left_--;
    return duration_;
}

}  // namespace marlet
