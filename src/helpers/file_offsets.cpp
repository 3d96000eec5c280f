#include "helpers/file_offsets.h"

#include "foundation/errors.h"

namespace marlet::FileOffsets {

namespace {

/// Reads fields of a size that the box itself tells.
class Fields {
public:
    Fields(ByteView data, std::size_t from, std::size_t to) : data_(data), at_(from), to_(to) {}

    std::uint64_t next(std::size_t size) {
        if (to_ - at_ < size) throw MFError("the file has a broken table of item locations (iloc)");
        std::uint64_t value = 0;
        for (std::size_t i = 0; i < size; i++) value = value << 8 | data_[at_++];
        return value;
    }
    void skip(std::size_t size) { next(size); }

private:
    ByteView data_;
    std::size_t at_;
    std::size_t to_;
};

/// True when an item's bytes are told by their place in this file.
bool pointsIntoFile(ByteView data, const RawBox& iloc) {
    Fields fields(data, iloc.start, iloc.end);
    const std::uint64_t version = fields.next(1);
    fields.skip(3);
    const std::uint64_t sizes = fields.next(2);
    const std::size_t offsetSize = sizes >> 12 & 15;
    const std::size_t lengthSize = sizes >> 8 & 15;
    const std::size_t baseSize = sizes >> 4 & 15;
    const std::size_t indexSize = version == 0 ? 0 : sizes & 15;
    const std::size_t idSize = version < 2 ? 2 : 4;
    const std::uint64_t count = fields.next(idSize);
    for (std::uint64_t i = 0; i < count; i++) {
        fields.skip(idSize);
        const std::uint64_t method = version == 0 ? 0 : fields.next(2) & 15;
        const bool isHere = fields.next(2) == 0;
        fields.skip(baseSize);
        const std::uint64_t extents = fields.next(2);
        if (method == 0 && isHere && extents > 0) return true;
        for (std::uint64_t e = 0; e < extents; e++)
            fields.skip(indexSize + offsetSize + lengthSize);
    }
    return false;
}

void refuseItems(ByteView data, const RawBox& iloc) {
    if (pointsIntoFile(data, iloc))
        throw MFError(
            "the file keeps items by their place in the file (iloc), which can't be laid out anew");
}

/// `meta` is a full box here and a plain one in QuickTime; what is no list of boxes in either form
/// has no `iloc` that a reader would find.
void refuseInMetaBox(ByteView data, const RawBox& meta) {
    for (const std::size_t skip : {std::size_t{4}, std::size_t{0}}) {
        if (meta.end - meta.start < skip) continue;
        BoxCursor boxes(data, static_cast<std::int64_t>(meta.start + skip),
                        static_cast<std::int64_t>(meta.end));
        while (const auto box = boxes.next()) {
            if (box->code == boxCode("iloc"))
                refuseItems(data, {box->code, static_cast<std::size_t>(box->boxStart),
                                   static_cast<std::size_t>(box->start),
                                   static_cast<std::size_t>(box->end)});
        }
    }
}

/// trak/mdia/minf/stbl is the deepest place that any reader looks into.
constexpr int deepest = 4;

void search(ByteView data, std::size_t from, std::size_t to, int depth = 0) {
    BoxCursor boxes(data, static_cast<std::int64_t>(from), static_cast<std::int64_t>(to));
    while (const auto span = boxes.next()) {
        const RawBox box{span->code, static_cast<std::size_t>(span->boxStart),
                         static_cast<std::size_t>(span->start),
                         static_cast<std::size_t>(span->end)};
        switch (box.code) {
            case boxCode("trak"):
            case boxCode("mdia"):
            case boxCode("minf"):
            case boxCode("stbl"):
            case boxCode("udta"):
                if (depth < deepest) search(data, box.start, box.end, depth + 1);
                break;
            case boxCode("meta"):
                refuseInMetaBox(data, box);
                break;
            case boxCode("saio"):
                throw MFError(
                    "the file keeps data beside its samples (saio), which can't be laid out anew");
            default:
                break;
        }
    }
}

}  // namespace

void refuseInMeta(ByteView meta) {
    StrictBoxes boxes(meta, 0, meta.size());
    if (const auto box = boxes.next()) refuseInMetaBox(meta, *box);
}

void refuseInIndex(ByteView moov, const RawBox& root) {
    search(moov, root.start, root.end);
}

}  // namespace marlet::FileOffsets
