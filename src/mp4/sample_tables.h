#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "foundation/bytes.h"
#include "mp4/box_cursor.h"
#include "mp4/summary.h"

// The tables of a track's `stbl` (ISO/IEC 14496-12, 8.6 and 8.7), expanded to one value a sample.
namespace marlet::SampleTables {

/// What the tables of one index may cost altogether. Run-length tables make much from little, and
/// a table may lie over another one's bytes, so a small index could ask for any amount.
class Budget {
public:
    /// Samples that one table may claim: over 300 hours of sound at 48 kHz AAC.
    static constexpr std::uint64_t mostSamples = 67'108'864;
    /// Expanded tables of all tracks together: sizes and times of the largest track, and a quarter.
    static constexpr std::uint64_t mostBytes = 640ULL << 20;
    /// Rows that fit into the largest index when none is read twice.
    static constexpr std::uint64_t mostRows = (1ULL << 30) / 8;

    /// Both fail with the text when the index asks for more than a film could.
    void spendBytes(std::uint64_t bytes, const char* failure);
    void spendRows(std::uint64_t rows, const char* failure);

private:
    std::uint64_t bytesLeft_ = mostBytes;
    std::uint64_t rowsLeft_ = mostRows;
};

/// The children of `stbl` that are read; of two of a type the last.
struct Boxes {
    std::optional<BoxSpan> stsz, stts, stsc, stco, co64, stsd, ctts, stss;
    bool complete() const { return stsz && stts && stsc && (stco || co64); }
};
Boxes boxes(ByteView data, const BoxSpan& stbl);

/// "bad stsz"
std::vector<std::uint32_t> sizes(ByteView data, const BoxSpan& stsz, Budget& budget);
/// "bad stts"
std::vector<std::uint32_t> durations(ByteView data, const BoxSpan& stts, std::uint64_t sampleCount,
                                     Budget& budget);
/// "bad chunk offsets", "bad stsc", "sample table inconsistent"
std::vector<Chunk> chunks(ByteView data, const Boxes& boxes, std::uint64_t sampleCount,
                          Budget& budget);
/// "bad ctts"
std::vector<std::int64_t> compositionOffsets(ByteView data, const BoxSpan& ctts,
                                             std::uint64_t sampleCount, Budget& budget);
/// "bad stss"
std::vector<std::uint32_t> syncSamples(ByteView data, const BoxSpan& stss, Budget& budget);

}  // namespace marlet::SampleTables
