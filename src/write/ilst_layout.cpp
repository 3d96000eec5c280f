#include <fcntl.h>

#include <algorithm>

#include "foundation/file_ops.h"
#include "foundation/syscalls.h"
#include "mp4/box.h"
#include "write/ilst_editor.h"
#include "write/ilst_region.h"

namespace marlet::IlstEditor {

namespace {

using TagRestore::Top;

constexpr const char* unusualOrder = "unusual box order; not edited in place";

std::uint64_t endOf(const Top& box) {
    return box.offset + box.size;
}
bool isPadding(const Top& box) {
    return box.type == "free" || box.type == "skip";
}

std::size_t onlyMoov(const std::vector<Top>& boxes) {
    const auto isMoov = [](const Top& box) { return box.type == "moov"; };
    if (std::count_if(boxes.begin(), boxes.end(), isMoov) != 1)
        throw MFError("the file has no single index box (moov)");
    const auto moov = std::find_if(boxes.begin(), boxes.end(), isMoov);
    if (moov->header != 8) throw MFError("the index box uses a 64-bit size");
    return static_cast<std::size_t>(moov - boxes.begin());
}

/// The two shapes: `ftyp`, padding, `moov`, padding, `mdat`, anything; and anything with `mdat`,
/// `moov`, padding to the end.
Layout describe(const std::vector<Top>& boxes) {
    const std::size_t moov = onlyMoov(boxes);
    const auto isMdat = [](const Top& box) { return box.type == "mdat"; };
    const auto firstMdat = std::find_if(boxes.begin(), boxes.end(), isMdat);
    if (firstMdat == boxes.end()) throw MFError("the file has no media data box");

    Layout layout;
    layout.moovPos = boxes[moov].offset;
    layout.moovSize = boxes[moov].size;
    layout.total = endOf(boxes.back());

    const auto behindMoov = boxes.begin() + static_cast<std::ptrdiff_t>(moov) + 1;
    if (std::all_of(behindMoov, boxes.end(), isPadding)) {
        layout.kind = Layout::Kind::last;
        layout.trailingFree = layout.total - endOf(boxes[moov]);
        return layout;
    }
    if (boxes.front().type != "ftyp" || firstMdat < behindMoov) throw MFError(unusualOrder);
    for (auto box = boxes.begin() + 1; box != firstMdat; ++box)
        if (box->type != "moov" && !isPadding(*box))
            throw MFError("unexpected boxes beside the index; not edited in place");
    layout.kind = Layout::Kind::front;
    layout.gapStart = endOf(boxes.front());
    layout.leadingFree = layout.moovPos - layout.gapStart;
    layout.mdatPos = firstMdat->offset;
    return layout;
}

/// Far more items than any tag block holds; what claims more is meant to exhaust memory.
constexpr std::size_t mostItems = 65536;

std::size_t itemCount(ByteView data, const Box& ilst) {
    std::size_t count = 0;
    for (std::int64_t at = ilst.start; at + 8 <= ilst.end; count++) {
        std::uint64_t size = BigEndian::u32(data, at);
        if (size == 1) size = BigEndian::u64(data, at + 8);
        if (size < 8 || size > static_cast<std::uint64_t>(ilst.end - at)) return count + 1;
        at += static_cast<std::int64_t>(size);
    }
    return count;
}

}  // namespace

Layout layout(const std::filesystem::path& file) {
    return describe(TagRestore::topLevel(file));
}

Bytes readRegion(const std::filesystem::path& file, std::uint64_t offset, std::uint64_t size) {
    const FileHandle handle = FileHandle::open(file, O_RDONLY, unreadableIndex);
    const auto stat = Sys::fstat(handle.get());
    if (!stat || offset > stat->size || size > stat->size - offset || size > largestRegion)
        throw MFError(unreadableIndex);
    Bytes bytes(size);
    if (FileOps::readFull(handle.get(), bytes, offset) != size) throw MFError(unreadableIndex);
    return bytes;
}

Bytes readMoov(const std::filesystem::path& file, const Layout& layout) {
    return readRegion(file, layout.moovPos, layout.moovSize);
}

TagPath findTags(ByteView moov) {
    TagPath path;
    path.udta = find(moov, 8, static_cast<std::int64_t>(moov.size()), {"udta"});
    if (path.udta) path.meta = find(moov, path.udta->start, path.udta->end, {"meta"});
    // `meta` is a full box: its children stand behind a version and flags word.
    if (path.meta) path.ilst = find(moov, path.meta->start + 4, path.meta->end, {"ilst"});
    return path;
}

std::vector<Atom> currentIlst(const std::filesystem::path& file) {
    const Bytes moov = readMoov(file, layout(file));
    const auto ilst = findTags(moov).ilst;
    if (!ilst) return {};
    if (itemCount(moov, *ilst) > mostItems) throw MFError(unreadableIndex);
    return parse(slice(moov, ilst->boxStart, ilst->end));
}

}  // namespace marlet::IlstEditor
