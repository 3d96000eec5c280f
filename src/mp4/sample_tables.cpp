#include "mp4/sample_tables.h"

#include <algorithm>

#include "foundation/errors.h"
#include "mp4/large_pages.h"
#include "mp4/track_parser.h"

namespace marlet::SampleTables {

namespace {

/// An entry may claim this many samples more than the size table has.
constexpr std::uint64_t entrySlack = 0x1000000;
/// Bytes that a chunk costs: its record, and what sorting the chunks of a track by their place in
/// the file takes beside it. Offsets cost four bytes in the index, and samples are not needed.
constexpr std::uint64_t chunkCost = sizeof(Chunk) + 40;

std::uint32_t load32(const std::uint8_t* at) {
    return static_cast<std::uint32_t>(at[0]) << 24 | static_cast<std::uint32_t>(at[1]) << 16 |
           static_cast<std::uint32_t>(at[2]) << 8 | at[3];
}

std::uint64_t load64(const std::uint8_t* at) {
    return static_cast<std::uint64_t>(load32(at)) << 32 | load32(at + 4);
}

/// Rows of one width, checked once to lie in the buffer and then read without checks. A table may
/// overrun its box as long as it stays inside the index.
class Rows {
public:
    Rows(ByteView data, std::int64_t at, std::uint64_t count, std::size_t width,
         const char* failure)
        : width_(width), count_(count) {
        const auto first = static_cast<std::uint64_t>(at);
        if (first > data.size() || count > (data.size() - first) / width) throw MFError(failure);
        rows_ = data.data() + first;
    }

    std::uint64_t count() const { return count_; }
    const std::uint8_t* operator[](std::uint64_t row) const { return rows_ + row * width_; }

private:
    const std::uint8_t* rows_ = nullptr;
    std::size_t width_;
    std::uint64_t count_;
};

/// The usual form: version and flags, the number of entries, the entries.
Rows entries(ByteView data, const BoxSpan& box, std::size_t width, const char* failure) {
    return {data, box.start + 8, BigEndian::u32(data, box.start + 4), width, failure};
}

/// The samples that a table of (count, value) entries claims, judged before any is expanded.
std::uint64_t claimedSamples(const Rows& runs, std::uint64_t sampleCount, Budget& budget,
                             const char* failure) {
    budget.spendRows(runs.count(), failure);
    std::uint64_t sum = 0;
    for (std::uint64_t i = 0; i < runs.count(); i++) {
        const std::uint32_t count = load32(runs[i]);
        if (count > sampleCount + entrySlack) throw MFError(failure);
        sum += count;
        if (sum > Budget::mostSamples) throw MFError(failure);
    }
    return sum;
}

/// The last of the two words of an entry, as often as the first one says.
template <typename Value, typename Decode>
std::vector<Value> expand(const Rows& runs, std::uint64_t total, Decode decode) {
    std::vector<Value> values;
    reserveLarge(values, static_cast<std::size_t>(total));
    for (std::uint64_t i = 0; i < runs.count(); i++)
        values.insert(values.end(), load32(runs[i]), decode(load32(runs[i] + 4)));
    return values;
}

/// `stco` or `co64` as it lies in the index.
struct ChunkOffsets {
    Rows rows;
    bool wide;
    std::uint64_t operator[](std::uint64_t i) const {
        return wide ? load64(rows[i]) : load32(rows[i]);
    }
};

ChunkOffsets chunkOffsets(ByteView data, const Boxes& boxes) {
    const bool wide = boxes.co64.has_value();
    return {entries(data, wide ? *boxes.co64 : *boxes.stco, wide ? 8 : 4, "bad chunk offsets"),
            wide};
}

/// The chunks that share one row of `stsc`: numbers from 0, the end excluded, and only numbers
/// that the offset table has.
struct ChunkRun {
    std::uint64_t begin = 0;
    std::uint64_t end = 0;
    std::uint32_t samplesPerChunk = 0;
};

ChunkRun chunkRun(const Rows& stsc, std::uint64_t row, std::uint64_t chunkCount) {
    const std::uint32_t first = load32(stsc[row]);
    // Numbers count from 1; there is no chunk 0 that a row could start at.
    if (first == 0) throw MFError("bad stsc");
    const bool isLast = row + 1 == stsc.count();
    const std::uint64_t next = isLast ? chunkCount + 1 : load32(stsc[row + 1]);
    ChunkRun run{first - 1ULL, std::min(next == 0 ? 0 : next - 1, chunkCount),
                 load32(stsc[row] + 4)};
    run.end = std::max(run.begin, run.end);
    return run;
}

/// The number of chunks that `stsc` makes, once it is sure that `stsz` has their samples.
std::uint64_t claimedChunks(const Rows& stsc, std::uint64_t chunkCount, std::uint64_t sampleCount) {
    std::uint64_t chunkSum = 0;
    std::uint64_t sampleSum = 0;
    for (std::uint64_t i = 0; i < stsc.count(); i++) {
        const ChunkRun run = chunkRun(stsc, i, chunkCount);
        const std::uint64_t here = run.end - run.begin;
        // Fewer than 2^32 chunks of fewer than 2^32 samples, on a sum below 2^32.
        sampleSum += here * run.samplesPerChunk;
        if (sampleSum > sampleCount) throw MFError("sample table inconsistent");
        chunkSum += here;
        // Rows that lead back make more chunks than there are offsets, without end.
        if (chunkSum > Budget::mostSamples) throw MFError("bad stsc");
    }
    return chunkSum;
}

}  // namespace

void Budget::spendBytes(std::uint64_t bytes, const char* failure) {
    if (bytes > bytesLeft_) throw MFError(failure);
    bytesLeft_ -= bytes;
}

void Budget::spendRows(std::uint64_t rows, const char* failure) {
    if (rows > rowsLeft_) throw MFError(failure);
    rowsLeft_ -= rows;
}

Boxes boxes(ByteView data, const BoxSpan& stbl) {
    Boxes found;
    BoxCursor cursor(data, stbl.start, stbl.end);
    while (const auto box = cursor.next()) {
        switch (box->code) {
            case boxCode("stsz"):
                found.stsz = box;
                break;
            case boxCode("stts"):
                found.stts = box;
                break;
            case boxCode("stsc"):
                found.stsc = box;
                break;
            case boxCode("stco"):
                found.stco = box;
                break;
            case boxCode("co64"):
                found.co64 = box;
                break;
            case boxCode("stsd"):
                found.stsd = box;
                break;
            case boxCode("ctts"):
                found.ctts = box;
                break;
            case boxCode("stss"):
                found.stss = box;
                break;
            default:
                break;
        }
    }
    return found;
}

std::vector<std::uint32_t> sizes(ByteView data, const BoxSpan& stsz, Budget& budget) {
    constexpr const char* failure = "bad stsz";
    const std::uint32_t uniform = BigEndian::u32(data, stsz.start + 4);
    const std::uint32_t count = BigEndian::u32(data, stsz.start + 8);
    // Twelve bytes can claim thousands of millions; no film has them.
    if (count > Budget::mostSamples) throw MFError(failure);
    if (uniform != 0) {
        budget.spendBytes(count * sizeof(std::uint32_t), failure);
        return std::vector<std::uint32_t>(count, uniform);
    }
    const Rows rows(data, stsz.start + 12, count, 4, failure);
    budget.spendBytes(count * sizeof(std::uint32_t), failure);
    std::vector<std::uint32_t> values;
    reserveLarge(values, count);
    for (std::uint32_t i = 0; i < count; i++) values.push_back(load32(rows[i]));
    return values;
}

std::vector<std::uint32_t> durations(ByteView data, const BoxSpan& stts, std::uint64_t sampleCount,
                                     Budget& budget) {
    constexpr const char* failure = "bad stts";
    const Rows runs = entries(data, stts, 8, failure);
    const std::uint64_t total = claimedSamples(runs, sampleCount, budget, failure);
    budget.spendBytes(total * sizeof(std::uint32_t), failure);
    // Writers have stored negative steps here; they are no time at all.
    return expand<std::uint32_t>(
        runs, total, [](std::uint32_t delta) { return (delta & 0x80000000U) != 0 ? 0U : delta; });
}

std::vector<Chunk> chunks(ByteView data, const Boxes& boxes, std::uint64_t sampleCount,
                          Budget& budget) {
    const ChunkOffsets offsets = chunkOffsets(data, boxes);
    const Rows stsc = entries(data, *boxes.stsc, 12, "bad stsc");
    budget.spendRows(stsc.count(), "bad stsc");
    const std::uint64_t total = claimedChunks(stsc, offsets.rows.count(), sampleCount);
    budget.spendBytes(total * chunkCost, "bad stsc");

    std::vector<Chunk> chunks;
    reserveLarge(chunks, static_cast<std::size_t>(total));
    std::uint32_t sample = 0;
    for (std::uint64_t i = 0; i < stsc.count(); i++) {
        const ChunkRun run = chunkRun(stsc, i, offsets.rows.count());
        for (std::uint64_t number = run.begin; number < run.end; number++) {
            chunks.push_back({offsets[number], sample, run.samplesPerChunk});
            sample += run.samplesPerChunk;
        }
    }
    return chunks;
}

std::vector<std::int64_t> compositionOffsets(ByteView data, const BoxSpan& ctts,
                                             std::uint64_t sampleCount, Budget& budget) {
    constexpr const char* failure = "bad ctts";
    const Rows runs = entries(data, ctts, 8, failure);
    const std::uint64_t total = claimedSamples(runs, sampleCount, budget, failure);
    budget.spendBytes(total * sizeof(std::int64_t), failure);
    if (boxVersion(data, ctts) == 0)
        return expand<std::int64_t>(
            runs, total, [](std::uint32_t offset) { return static_cast<std::int64_t>(offset); });
    return expand<std::int64_t>(runs, total, [](std::uint32_t offset) {
        return static_cast<std::int64_t>(static_cast<std::int32_t>(offset));
    });
}

std::vector<std::uint32_t> syncSamples(ByteView data, const BoxSpan& stss, Budget& budget) {
    constexpr const char* failure = "bad stss";
    const Rows rows = entries(data, stss, 4, failure);
    if (rows.count() > Budget::mostSamples) throw MFError(failure);
    budget.spendBytes(rows.count() * sizeof(std::uint32_t), failure);
    std::vector<std::uint32_t> values(static_cast<std::size_t>(rows.count()));
    for (std::size_t i = 0; i < values.size(); i++) values[i] = load32(rows[i]);
    return values;
}

}  // namespace marlet::SampleTables
