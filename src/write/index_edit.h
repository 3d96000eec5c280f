#pragma once

#include <cstdint>
#include <optional>

#include "foundation/bytes.h"
#include "mp4/box.h"

/// Edits of an index in memory. `moov` is the payload of that box.
namespace marlet::IndexEdit {

/// The tag block and the boxes around it: udta / meta / ilst.
struct TagBlock {
    Box udta;
    Box meta;
    Box ilst;
};
/// Nothing without all three. `meta` may be a full box or, as QuickTime has it, a plain one.
std::optional<TagBlock> tagBlock(ByteView moov);

/// The block's bytes with a size that is true wherever they are put: one that runs to the end of
/// its box says 0.
Bytes blockBytes(ByteView moov, const Box& ilst);

/// Adds `delta` to every place in the file at `from` or behind it: `stco` and `co64` of all tracks
/// (ISO/IEC 14496-12, 8.7.5), and `saio` (8.7.9), which encrypted tracks have. Fails with "bad
/// chunk offset table" and "chunk offset would exceed 4 GB".
void shiftOffsets(Bytes& moov, std::uint64_t from, std::int64_t delta);

/// Adds `delta` to the sizes of the boxes around the block.
void resizeAround(Bytes& moov, const TagBlock& block, std::int64_t delta);

/// The header of a `moov` box of 8 or 16 bytes for a size that includes it. Fails with "moov too
/// large".
Bytes moovHeader(std::uint64_t size, int headerLength);

}  // namespace marlet::IndexEdit
