#include "write/index_edit.h"

#include <limits>

#include "foundation/errors.h"
#include "mp4/box_cursor.h"
#include "mp4/track_parser.h"

namespace marlet::IndexEdit {

namespace {

constexpr const char* badTable = "bad chunk offset table";
constexpr std::uint64_t largest32 = std::numeric_limits<std::uint32_t>::max();
constexpr std::uint32_t wideSize = 1;  // the size follows in 64 bits
constexpr std::uint32_t openSize = 0;  // to the end of the box around it

void put(Bytes& bytes, std::int64_t at, std::uint64_t value, int width) {
    for (int i = width - 1; i >= 0; i--, value >>= 8)
        bytes[static_cast<std::size_t>(at + i)] = static_cast<std::uint8_t>(value);
}

/// A list of places in the file, behind its count.
struct OffsetTable {
    std::int64_t countAt = 0;
    std::int64_t width = 4;  ///< bytes an entry
};

/// Nothing for a box that is no such table.
std::optional<OffsetTable> tableIn(ByteView moov, const BoxSpan& box) {
    constexpr std::int64_t header = 4;  // version and flags
    if (box.code == boxCode("stco")) return OffsetTable{box.start + header, 4};
    if (box.code == boxCode("co64")) return OffsetTable{box.start + header, 8};
    if (box.code != boxCode("saio")) return std::nullopt;
    const bool namesKind = (BigEndian::u32(moov, box.start) & 1) != 0;
    return OffsetTable{box.start + header + (namesKind ? 8 : 0),
                       boxVersion(moov, box) == 0 ? 4 : 8};
}

std::uint64_t moved(std::uint64_t offset, std::int64_t delta, std::int64_t width) {
    const auto distance = static_cast<std::uint64_t>(delta < 0 ? -delta : delta);
    if (delta < 0) {
        if (offset < distance) throw MFError(badTable);
        return offset - distance;
    }
    if (offset > std::numeric_limits<std::uint64_t>::max() - distance) throw MFError(badTable);
    if (width == 4 && offset + distance > largest32)
        throw MFError("chunk offset would exceed 4 GB");
    return offset + distance;
}

void shiftTable(Bytes& moov, const BoxSpan& box, const OffsetTable& table, std::uint64_t from,
                std::int64_t delta) {
    std::int64_t at = table.countAt + 4;
    if (at > box.end) throw MFError(badTable);
    const std::uint32_t count = BigEndian::u32(moov, table.countAt);
    if (count > static_cast<std::uint64_t>((box.end - at) / table.width)) throw MFError(badTable);
    for (std::uint32_t i = 0; i < count; i++, at += table.width) {
        const std::uint64_t offset =
            table.width == 8 ? BigEndian::u64(moov, at) : BigEndian::u32(moov, at);
        if (offset >= from)
            put(moov, at, moved(offset, delta, table.width), static_cast<int>(table.width));
    }
}

void shiftTrack(Bytes& moov, const BoxSpan& trak, std::uint64_t from, std::int64_t delta) {
    const auto stbl = findSpan(moov, trak, {boxCode("mdia"), boxCode("minf"), boxCode("stbl")});
    if (!stbl) return;
    BoxCursor cursor(moov, stbl->start, stbl->end);
    while (const auto box = cursor.next())
        if (const auto table = tableIn(moov, *box)) shiftTable(moov, *box, *table, from, delta);
}

void resize(Bytes& moov, const Box& box, std::int64_t delta) {
    const auto size = static_cast<std::uint64_t>(box.end - box.boxStart + delta);
    const std::uint32_t stated = BigEndian::u32(moov, box.boxStart);
    if (stated == wideSize) {
        put(moov, box.boxStart + 8, size, 8);
    } else if (stated != openSize) {
        put(moov, box.boxStart, size, 4);
    }
}

}  // namespace

std::optional<TagBlock> tagBlock(ByteView moov) {
    const auto udta = find(moov, 0, static_cast<std::int64_t>(moov.size()), {"udta"});
    if (!udta) return std::nullopt;
    const auto meta = find(moov, udta->start, udta->end, {"meta"});
    if (!meta) return std::nullopt;
    auto ilst = find(moov, meta->start + 4, meta->end, {"ilst"});
    if (!ilst) ilst = find(moov, meta->start, meta->end, {"ilst"});
    if (!ilst) return std::nullopt;
    return TagBlock{*udta, *meta, *ilst};
}

Bytes blockBytes(ByteView moov, const Box& ilst) {
    const ByteView block = slice(moov, ilst.boxStart, ilst.end);
    Bytes bytes(block.begin(), block.end());
    constexpr std::size_t wideHeader = 16;
    if (BigEndian::u32(bytes, 0) == wideSize && bytes.size() >= wideHeader)
        put(bytes, 8, bytes.size(), 8);
    else
        put(bytes, 0, bytes.size(), 4);
    return bytes;
}

void shiftOffsets(Bytes& moov, std::uint64_t from, std::int64_t delta) {
    BoxCursor cursor(moov, 0, static_cast<std::int64_t>(moov.size()));
    while (const auto box = cursor.next())
        if (box->code == boxCode("trak")) shiftTrack(moov, *box, from, delta);
}

void resizeAround(Bytes& moov, const TagBlock& block, std::int64_t delta) {
    resize(moov, block.udta, delta);
    resize(moov, block.meta, delta);
}

Bytes moovHeader(std::uint64_t size, int headerLength) {
    Bytes header;
    const bool isWide = headerLength == 16;
    if (!isWide && size > largest32) throw MFError("moov too large");
    BigEndian::put32(header, isWide ? wideSize : static_cast<std::uint32_t>(size));
    append(header, viewOf("moov"));
    if (isWide) BigEndian::put64(header, size);
    return header;
}

}  // namespace marlet::IndexEdit
