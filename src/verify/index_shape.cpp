#include "verify/index_shape.h"

#include <algorithm>
#include <array>
#include <optional>

#include "mp4/box_cursor.h"
#include "mp4/sample_entry.h"
#include "mp4/track_parser.h"

namespace marlet {

namespace {

/// Folders of folders: deeper than this is no film.
constexpr int deepest = 10;

bool isZero(ByteView bytes) {
    return std::ranges::all_of(bytes, [](std::uint8_t byte) { return byte == 0; });
}

/// The box at this place, if all of it lies in the range.
std::optional<BoxSpan> boxAt(ByteView data, std::int64_t at, std::int64_t to) {
    if (to - at < 8) return std::nullopt;
    BoxSpan box{BigEndian::u32(data, at + 4), true, at, at + 8, to};
    std::uint64_t size = BigEndian::u32(data, at);
    if (size == 1) {
        if (to - at < 16) return std::nullopt;
        size = BigEndian::u64(data, at + 8);
        box.start = at + 16;
    }
    if (size < static_cast<std::uint64_t>(box.start - at) ||
        size > static_cast<std::uint64_t>(to - at))
        return std::nullopt;
    box.end = at + static_cast<std::int64_t>(size);
    return box;
}

/// Boxes from end to end; QuickTime ends some lists with a word of zeros.
template <typename Judge>
bool allFit(ByteView data, std::int64_t from, std::int64_t to, Judge judge) {
    std::int64_t at = from;
    while (at < to) {
        if (to - at < 8) return isZero(slice(data, at, to));
        const auto box = boxAt(data, at, to);
        if (!box || !judge(*box)) return false;
        at = box->end;
    }
    return at == to;
}

bool fit(ByteView data, const BoxSpan& box, int depth);

bool childrenFit(ByteView data, std::int64_t from, std::int64_t to, int depth) {
    if (depth > deepest) return false;
    return allFit(data, from, to, [&](const BoxSpan& box) { return fit(data, box, depth); });
}

/// A table with a count at one place, and rows behind it.
bool rowsFit(ByteView data, const BoxSpan& box, std::int64_t countAt, std::int64_t width) {
    const std::int64_t rows = BigEndian::u32(data, box.start + countAt);
    return box.start + countAt + 4 + rows * width <= box.end;
}

bool sizesFit(ByteView data, const BoxSpan& box) {
    const bool isUniform = BigEndian::u32(data, box.start + 4) != 0;
    return box.end - box.start >= 12 && (isUniform || rowsFit(data, box, 8, 4));
}

bool metaFits(ByteView data, const BoxSpan& box, int depth) {
    // A full box, or QuickTime's plain one, which begins with a box at once.
    return childrenFit(data, box.start + 4, box.end, depth + 1) ||
           childrenFit(data, box.start, box.end, depth + 1);
}

bool sampleEntriesFit(ByteView data, const BoxSpan& box) {
    const ByteView stsd = slice(data, box.start, box.end);
    const int version = boxVersion(data, box);
    return allFit(stsd, 8, static_cast<std::int64_t>(stsd.size()), [&](const BoxSpan& entry) {
        const auto fixed = fixedFieldsLength(stsd, version, entry);
        return !fixed ||
               allFit(stsd, entry.start + *fixed, entry.end, [](const BoxSpan&) { return true; });
    });
}

/// As many chapters as are counted: a time of 8 bytes, a length, a title.
bool chaptersFit(ByteView data, const BoxSpan& box, int) {
    const auto byteAt = [&](std::int64_t at) {
        const ByteView byte = slice(data, at, std::min(at + 1, box.end));
        return byte.empty() ? 0 : byte[0];
    };
    std::int64_t at = box.start + (boxVersion(data, box) == 1 ? 8 : 4);
    for (int left = byteAt(at++); left > 0; left--) at += 9 + byteAt(at + 8);
    return at <= box.end;
}

/// How the payload of a box is judged, and how long it is at least.
struct Shape {
    BoxCode type;
    std::int64_t least;
    bool (*fits)(ByteView data, const BoxSpan& box, int depth);
};

bool folderFits(ByteView data, const BoxSpan& box, int depth) {
    return childrenFit(data, box.start, box.end, depth + 1);
}

template <std::int64_t width>
bool tableFits(ByteView data, const BoxSpan& box, int) {
    return rowsFit(data, box, 4, width);
}

constexpr std::array shapes = {
    Shape{boxCode("trak"), 8, folderFits},
    Shape{boxCode("mdia"), 8, folderFits},
    Shape{boxCode("minf"), 8, folderFits},
    Shape{boxCode("stbl"), 8, folderFits},
    Shape{boxCode("dinf"), 0, folderFits},
    Shape{boxCode("edts"), 0, folderFits},
    Shape{boxCode("tref"), 0, folderFits},
    Shape{boxCode("udta"), 0, folderFits},
    Shape{boxCode("meta"), 0, metaFits},
    Shape{boxCode("ilst"), 0, folderFits},
    Shape{boxCode("stsd"), 8,
          [](ByteView data, const BoxSpan& box, int) { return sampleEntriesFit(data, box); }},
    Shape{boxCode("dref"), 8,
          [](ByteView data, const BoxSpan& box, int depth) {
              return childrenFit(data, box.start + 8, box.end, depth + 1);
          }},
    Shape{boxCode("stsz"), 12,
          [](ByteView data, const BoxSpan& box, int) { return sizesFit(data, box); }},
    Shape{boxCode("chpl"), 5, chaptersFit},
    Shape{boxCode("stts"), 8, tableFits<8>},
    Shape{boxCode("ctts"), 8, tableFits<8>},
    Shape{boxCode("stsc"), 8, tableFits<12>},
    Shape{boxCode("stco"), 8, tableFits<4>},
    Shape{boxCode("co64"), 8, tableFits<8>},
    Shape{boxCode("stss"), 8, tableFits<4>},
    Shape{boxCode("elst"), 8,
          [](ByteView data, const BoxSpan& box, int) {
              return rowsFit(data, box, 4, boxVersion(data, box) == 1 ? 20 : 12);
          }},
};

/// Full boxes that have two versions at most.
constexpr std::array twoVersions = {boxCode("mvhd"), boxCode("tkhd"), boxCode("mdhd"),
                                    boxCode("stts"), boxCode("ctts"), boxCode("stsc"),
                                    boxCode("stsz"), boxCode("stco"), boxCode("co64"),
                                    boxCode("stss"), boxCode("elst"), boxCode("stsd")};

bool fit(ByteView data, const BoxSpan& box, int depth) {
    const bool hasVersion = std::ranges::find(twoVersions, box.code) != twoVersions.end();
    if (hasVersion && boxVersion(data, box) > 1) return false;
    const auto shape = std::ranges::find(shapes, box.code, &Shape::type);
    return shape == shapes.end() ||
           (box.end - box.start >= shape->least && shape->fits(data, box, depth));
}

}  // namespace

bool isWellFormed(ByteView moov) {
    return childrenFit(moov, 0, static_cast<std::int64_t>(moov.size()), 0);
}

}  // namespace marlet
