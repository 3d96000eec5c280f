#include "helpers/source_file.h"

#include <fcntl.h>

#include <algorithm>
#include <array>

#include "foundation/errors.h"
#include "foundation/file_ops.h"
#include "helpers/file_offsets.h"
#include "helpers/raw_box.h"

namespace marlet::SourceFiles {

namespace {

/// An index of this size or more is not believed; the reader that proves the result stops there
/// too.
constexpr std::uint64_t largestIndex = 0x40000000;
/// Real files have a dozen; a hostile one could have a box every eight bytes.
constexpr int mostTopBoxes = 65'536;
/// A metadata box is searched for item locations; pictures inside make it this large at most.
constexpr std::uint64_t largestMeta = std::uint64_t{16} << 20;

struct TopBox {
    BoxCode code = 0;
    FilePart whole;
    std::uint64_t header = 8;
};

TopBox boxAt(const SourceFile& file, std::uint64_t at) {
    std::array<std::uint8_t, 16> bytes{};
    const std::size_t got = FileOps::readFull(file.handle.get(), bytes, at);
    TopBox box{BigEndian::u32(bytes, 4), {at, BigEndian::u32(bytes, 0)}, 8};
    if (box.whole.size == 0) box.whole.size = file.size - at;
    if (box.whole.size == 1 && got == bytes.size()) {
        box.header = 16;
        box.whole.size = BigEndian::u64(bytes, 8);
    }
    if (got < 8 || box.whole.size < box.header || box.whole.size > file.size - at)
        throw MFError("the file ends inside a box, or a box of it tells a wrong size");
    return box;
}

Bytes readPart(const SourceFile& file, const FilePart& part) {
    Bytes bytes(static_cast<std::size_t>(part.size));
    if (FileOps::readFull(file.handle.get(), bytes, part.at) != bytes.size())
        throw MFError("the file became shorter while it was read");
    return bytes;
}

void keep(SourceFile& file, const FilePart& part) {
    if (!file.others.empty() && file.others.back().end() == part.at)
        file.others.back().size += part.size;
    else
        file.others.push_back(part);
}

void takeIndex(SourceFile& file, const TopBox& box) {
    if (!file.moov.empty()) throw MFError("the file has two indexes (moov)");
    if (box.whole.size - box.header >= largestIndex) throw MFError("moov box has an odd size");
    file.moov = readPart(file, box.whole);
}

void checkMeta(const SourceFile& file, const TopBox& box) {
    if (box.whole.size > largestMeta) throw MFError("the file has a metadata box of an odd size");
    FileOffsets::refuseInMeta(readPart(file, box.whole));
}

void take(SourceFile& file, const TopBox& box) {
    switch (box.code) {
        case boxCode("moov"):
            return takeIndex(file, box);
        case boxCode("mdat"):
            file.wideMedia = file.wideMedia || box.header == 16;
            return file.media.push_back({box.whole.at + box.header, box.whole.size - box.header});
        case boxCode("free"):
        case boxCode("skip"):
        case boxCode("wide"):
            return;
        case boxCode("moof"):
        case boxCode("mfra"):
        case boxCode("sidx"):
        case boxCode("ssix"):
            throw MFError("the file is fragmented (" + RawBoxes::name(box.code) +
                          "), which can't be laid out anew");
        case boxCode("meta"):
            checkMeta(file, box);
            break;
        case boxCode("ftyp"):
            if (file.ftyp) break;
            file.ftyp = box.whole;
            return;
        default:
            break;
    }
    keep(file, box.whole);
}

}  // namespace

SourceFile open(const std::filesystem::path& path) {
    SourceFile file;
    file.path = path;
    // O_NONBLOCK: a pipe that is named like a film must not hold up the tool.
    file.handle = FileHandle::open(path, O_RDONLY | O_NONBLOCK, "cannot open the input");
    const auto stat = Sys::fstat(file.handle.get());
    if (!stat) failWithErrno("cannot open the input");
    if (!stat->isRegular) throw MFError("the input is not a file");
    file.size = stat->size;
    std::uint64_t at = 0;
    for (int count = 0; file.size - at >= 8; count++) {
        if (count == mostTopBoxes) throw MFError("the file has too many boxes");
        const TopBox box = boxAt(file, at);
        take(file, box);
        at = box.whole.end();
    }
    if (file.size > at) keep(file, {at, file.size - at});
    if (file.moov.empty()) throw MFError("the file has no index (moov)");
    return file;
}

}  // namespace marlet::SourceFiles
