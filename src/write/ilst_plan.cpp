#include <fcntl.h>

#include <algorithm>
#include <limits>
#include <string>

#include "foundation/file_ops.h"
#include "foundation/syscalls.h"
#include "write/ilst_editor.h"
#include "write/ilst_region.h"

namespace marlet::IlstEditor {

namespace {

constexpr std::int64_t smallestBox = 8;

/// A metadata box of handler type `mdir`, as iTunes writes it.
Bytes metaBox(ByteView ilst) {
    Bytes handler = be32(0);
    append(handler, be32(0));
    append(handler, viewOf("mdirappl"));
    handler.resize(handler.size() + 9);
    Bytes payload = be32(0);
    append(payload, box("hdlr", handler));
    append(payload, ilst);
    return box("meta", payload);
}

/// Adds to the 32-bit size of the box at `at`. Sizes below 8 mean a 64-bit or open-ended box.
void grow(Bytes& data, std::int64_t at, std::int64_t delta) {
    const std::int64_t old = BigEndian::u32(data, at);
    const std::int64_t size = old + delta;
    if (old < smallestBox || size < smallestBox || size > std::numeric_limits<std::uint32_t>::max())
        throw MFError("a tag container uses a 64-bit size; not edited");
    const Bytes word = be32(static_cast<std::uint32_t>(size));
    std::copy(word.begin(), word.end(), data.begin() + at);
}

/// `moov` with the bytes from `from` to `to` replaced.
Bytes spliced(const Bytes& moov, std::int64_t from, std::int64_t to, ByteView with) {
    Bytes out;
    out.reserve(moov.size() - static_cast<std::size_t>(to - from) + with.size());
    out.insert(out.end(), moov.begin(), moov.begin() + from);
    append(out, with);
    out.insert(out.end(), moov.begin() + to, moov.end());
    return out;
}

void appendFree(Bytes& region, std::int64_t size) {
    append(region, be32(static_cast<std::uint32_t>(size)));
    append(region, viewOf("free"));
    region.resize(region.size() + static_cast<std::size_t>(size - smallestBox));
}

bool isBoxOrNothing(std::int64_t size) {
    return size == 0 || size >= smallestBox;
}

/// Only whole boxes may stand behind the index when the file's length is set: what no box covers
/// (a box cut short, stray bytes) would be cut off, and no undo could bring it back.
void requireWholeFile(const std::filesystem::path& file, const Layout& layout) {
    if (FileOps::size(file) != layout.total)
        throw MFError("unusual box order; not edited in place");
}

Bytes frontRegion(const Layout& layout, const Bytes& oldRegion, const Bytes& moov) {
    const auto room = static_cast<std::int64_t>(oldRegion.size());
    const auto needed = static_cast<std::int64_t>(moov.size());
    auto lead = static_cast<std::int64_t>(layout.leadingFree);
    std::int64_t pad = room - lead - needed;
    if (pad < 0) {
        lead = 0;
        pad = room - needed;
    }
    if (!isBoxOrNothing(pad)) {
        const auto oldSize = static_cast<std::int64_t>(layout.moovSize);
        throw NoRoom("the tag block grew by " + std::to_string(needed - oldSize) +
                     " bytes and the padding beside it is " + std::to_string(room - oldSize) +
                     " bytes");
    }
    Bytes region;
    region.reserve(oldRegion.size());
    region.insert(region.end(), oldRegion.begin(), oldRegion.begin() + lead);
    append(region, moov);
    if (pad > 0) appendFree(region, pad);
    return region;
}

/// Nothing lies behind the last box, so the file may change its length; free space that is there
/// is kept as long as what remains of it is a box.
Bytes lastRegion(const Layout& layout, const Bytes& oldRegion, const Bytes& moov) {
    const auto rest =
        static_cast<std::int64_t>(oldRegion.size()) - static_cast<std::int64_t>(moov.size());
    Bytes region;
    region.reserve(std::max(oldRegion.size(), moov.size()));
    append(region, moov);
    if (layout.trailingFree > 0 && rest >= smallestBox) appendFree(region, rest);
    return region;
}

}  // namespace

Bytes replaceIlst(const Bytes& moov, const Bytes& newIlst) {
    const TagPath path = findTags(moov);
    const auto end = static_cast<std::int64_t>(moov.size());
    Bytes out;
    if (path.ilst)
        out = spliced(moov, path.ilst->boxStart, path.ilst->end, newIlst);
    else if (path.meta)
        out = spliced(moov, path.meta->end, path.meta->end, newIlst);
    else if (path.udta)
        out = spliced(moov, path.udta->end, path.udta->end, metaBox(newIlst));
    else
        out = spliced(moov, end, end, box("udta", metaBox(newIlst)));

    const auto delta = static_cast<std::int64_t>(out.size()) - end;
    if (path.udta) grow(out, path.udta->boxStart, delta);
    if (path.meta) grow(out, path.meta->boxStart, delta);
    grow(out, 0, delta);
    return out;
}

Plan plan(const std::filesystem::path& file, const Bytes& newIlst) {
    Plan plan;
    plan.layout = layout(file);
    const Layout& layout = plan.layout;
    const bool front = layout.kind == Layout::Kind::front;
    if (!front) requireWholeFile(file, layout);
    plan.offset = front ? layout.gapStart : layout.moovPos;
    plan.oldRegion = readRegion(
        file, plan.offset,
        front ? layout.mdatPos - layout.gapStart : layout.moovSize + layout.trailingFree);

    Bytes moov;
    {
        // The index is taken from the region, so that both are of one reading.
        const auto start = static_cast<std::int64_t>(layout.moovPos - plan.offset);
        const auto size = static_cast<std::int64_t>(layout.moovSize);
        const ByteView old = slice(plan.oldRegion, start, start + size);
        moov = replaceIlst(Bytes(old.begin(), old.end()), newIlst);
    }
    plan.newMoovSize = moov.size();
    plan.region = front ? frontRegion(layout, plan.oldRegion, moov)
                        : lastRegion(layout, plan.oldRegion, moov);
    plan.newTotal = front ? layout.total : plan.offset + plan.region.size();
    return plan;
}

Plan Plan::undo() const {
    Plan undo;
    undo.offset = offset;
    undo.region = oldRegion;
    undo.oldRegion = region;
    undo.newTotal = layout.total;
    undo.layout = layout;
    undo.newMoovSize = layout.moovSize;
    return undo;
}

void apply(const Plan& plan, const std::filesystem::path& file) {
    const FileHandle handle =
        FileHandle::open(file, O_WRONLY, "cannot open the file to write the tags");
    const ssize_t written =
        Sys::pwrite(handle.get(), plan.region.data(), plan.region.size(), plan.offset);
    if (written < 0 || static_cast<std::size_t>(written) != plan.region.size())
        throw MFError("short write of the tag region");
    if (plan.layout.kind == Layout::Kind::last && Sys::ftruncate(handle.get(), plan.newTotal) != 0)
        throw MFError("cannot set the final size");
    // A failing flush isn't told: what is read back afterwards decides.
    Sys::fsync(handle.get());
}

}  // namespace marlet::IlstEditor
