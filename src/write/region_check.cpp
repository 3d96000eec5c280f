#include <fcntl.h>

#include <algorithm>
#include <cstring>

#include "foundation/aligned_buffer.h"
#include "foundation/bulk_read.h"
#include "foundation/digest.h"
#include "foundation/file_ops.h"
#include "foundation/syscalls.h"
#include "write/guards.h"
#include "write/index_check.h"

namespace marlet::TagWriter {

namespace fs = std::filesystem;

namespace {

constexpr std::size_t pieceSize = 8 * 1024 * 1024;
constexpr const char* cannotOpen = "cannot open file to compare";

/// A stretch of the file. One with a reason must hold the same bytes in both files.
struct Stretch {
    std::uint64_t from = 0;
    std::uint64_t to = 0;
    const char* reason = nullptr;
};

std::vector<Stretch> stretchesOf(const IlstEditor::Plan& plan) {
    const IlstEditor::Layout& layout = plan.layout;
    if (layout.kind == IlstEditor::Layout::Kind::last)
        return {{0, layout.moovPos, "bytes before the index box differ"},
                {layout.moovPos, plan.newTotal}};
    return {{0, layout.gapStart, "the file header differs"},
            {layout.gapStart, layout.mdatPos},
            {layout.mdatPos, layout.total, "media data differs"}};
}

/// A file read past the cache, so that what is compared is what the disk holds.
struct Side {
    FileHandle handle;
    AlignedBuffer buffer{pieceSize};

    explicit Side(const fs::path& file) : handle(FileHandle::open(file, O_RDONLY, cannotOpen)) {
        Sys::flushAndDropCache(handle.get(), 0, 0);
    }
    BulkReader readerFrom(std::uint64_t at) const {
        return {handle.get(), BulkReader::Behind::Drop, at};
    }
};

/// Reads the candidate once, from its first byte to its last: what has to be equal is compared
/// with the original, and everything is hashed.
class OnePass {
public:
    OnePass(const fs::path& original, const fs::path& candidate, RunControl& control)
        : original_(original), candidate_(candidate), control_(control) {}

    /// False when a byte that has to be the same is not there or differs.
    bool pass(const Stretch& stretch) {
        BulkReader reader = candidate_.readerFrom(stretch.from);
        BulkReader other = original_.readerFrom(stretch.from);
        bool isSame = true;
        for (std::uint64_t at = stretch.from; at < stretch.to; at = reader.at()) {
            control_.checkpoint();
            const std::size_t count = std::min<std::uint64_t>(pieceSize, stretch.to - at);
            const auto bytes = candidate_.buffer.bytes().first(count);
            const std::size_t got = reader.read(bytes);
            digest_.update(bytes.first(got));
            if (got < count) return false;
            if (stretch.reason != nullptr && isSame) isSame = matches(other, bytes);
        }
        return isSame;
    }

    std::string digest() { return digest_.hex(); }

private:
    bool matches(BulkReader& other, std::span<const std::uint8_t> bytes) {
        const auto theirs = original_.buffer.bytes().first(bytes.size());
        return other.read(theirs) == bytes.size() &&
               std::memcmp(bytes.data(), theirs.data(), bytes.size()) == 0;
    }

    Side original_;
    Side candidate_;
    RunControl& control_;
    Sha256 digest_;
};

}  // namespace

Bytes readRange(const fs::path& file, std::uint64_t offset, std::uint64_t count) {
    const FileHandle handle = FileHandle::open(file, O_RDONLY, "cannot open the file to read it");
    const auto found = Sys::fstat(handle.get());
    // What the file can't hold is not made room for.
    if (!found || offset > found->size || count > found->size - offset)
        throw MFError("the file is shorter than it was");
    Bytes bytes(count);
    if (FileOps::readFull(handle.get(), bytes, offset) != count)
        throw MFError("the file is shorter than it was");
    return bytes;
}

bool sameRange(const fs::path& a, const fs::path& b, std::uint64_t from, std::uint64_t count,
               RunControl& control) {
    const FileHandle first = FileHandle::open(a, O_RDONLY, cannotOpen);
    const FileHandle second = FileHandle::open(b, O_RDONLY, cannotOpen);
    const AlignedBuffer buffer(pieceSize);
    const AlignedBuffer other(pieceSize);
    while (count > 0) {
        control.checkpoint();
        const std::size_t piece = std::min<std::uint64_t>(pieceSize, count);
        const auto bytes = buffer.bytes().first(piece);
        const auto theirs = other.bytes().first(piece);
        if (FileOps::readFull(first.get(), bytes, from) < piece ||
            FileOps::readFull(second.get(), theirs, from) < piece ||
            std::memcmp(bytes.data(), theirs.data(), piece) != 0)
            return false;
        from += piece;
        count -= piece;
    }
    return true;
}

RegionProof proveRegionEdit(const fs::path& original, const fs::path& candidate,
                            const IlstEditor::Plan& plan, const std::vector<Atom>& target,
                            RunControl& control) {
    RegionProof proof;
    if (const std::uint64_t size = FileOps::size(candidate); size != plan.newTotal) {
        proof.reasons = {"new size " + std::to_string(size) + " is not the expected " +
                         std::to_string(plan.newTotal)};
        return proof;
    }
    OnePass pass(original, candidate, control);
    for (const Stretch& stretch : stretchesOf(plan))
        if (!pass.pass(stretch) && stretch.reason != nullptr)
            proof.reasons.emplace_back(stretch.reason);
    proof.candidateDigest = pass.digest();

    const Bytes before = IlstEditor::readMoov(original, IlstEditor::layout(original));
    const Bytes after = IlstEditor::readMoov(candidate, IlstEditor::layout(candidate));
    for (std::string& reason : compareIndexes(before, after, target))
        proof.reasons.push_back(std::move(reason));
    return proof;
}

std::vector<std::string> verifyRegionEdit(const fs::path& original, const fs::path& candidate,
                                          const IlstEditor::Plan& plan,
                                          const std::vector<Atom>& target, RunControl& control) {
    return proveRegionEdit(original, candidate, plan, target, control).reasons;
}

}  // namespace marlet::TagWriter
