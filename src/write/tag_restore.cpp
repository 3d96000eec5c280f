#include "write/tag_restore.h"

#include <fcntl.h>

#include <algorithm>

#include "foundation/errors.h"
#include "foundation/file_ops.h"
#include "foundation/syscalls.h"
#include "mp4/tags.h"
#include "verify/rebuild_verifier.h"
#include "write/index_edit.h"

namespace marlet::TagRestore {

namespace fs = std::filesystem;

namespace {

constexpr std::uint64_t pieceSize = 0x800000;  // 8 MiB

struct Tags {
    Bytes block;
    std::vector<TagItem> items;
};

std::optional<Tags> tagsOf(ByteView moov) {
    const auto block = IndexEdit::tagBlock(moov);
    if (!block) return std::nullopt;
    return Tags{IndexEdit::blockBytes(moov, block->ilst), tagItems(moov, block->ilst)};
}

/// Writes the new file front to back: stretches of the rebuilt one, and bytes from memory.
class Assembly {
public:
    Assembly(const fs::path& rebuilt, const fs::path& output, std::uint64_t total,
             RunControl& control, const Progress& progress)
        : source_(FileHandle::open(rebuilt, O_RDONLY, "cannot open rebuilt file")),
          target_(FileHandle::open(output, O_WRONLY | O_CREAT | O_EXCL,
                                   "cannot create " + output.filename().string(), 0644)),
          total_(total),
          control_(control),
          progress_(progress) {}

    void copy(std::uint64_t from, std::uint64_t to) {
        if (from < to) piece_.resize(pieceSize);
        while (from < to) {
            control_.checkpoint();
            const auto wanted = static_cast<std::size_t>(std::min(pieceSize, to - from));
            const ssize_t got = Sys::pread(source_.get(), piece_.data(), wanted, from);
            if (got < 1) throw MFError("read failed while restoring tags");
            write(ByteView(piece_).first(static_cast<std::size_t>(got)));
            from += static_cast<std::uint64_t>(got);
            if (progress_) progress_(static_cast<double>(at_) / static_cast<double>(total_));
        }
    }

    void write(ByteView bytes) {
        FileOps::writeAll(target_.get(), bytes, at_);
        at_ += bytes.size();
    }

    void finish() const {
        if (Sys::fsync(target_.get()) != 0) failWithErrno("write failed");
        if (progress_) progress_(1);
    }

private:
    const FileHandle source_;
    const FileHandle target_;
    const std::uint64_t total_;
    RunControl& control_;
    const Progress& progress_;
    Bytes piece_;
    std::uint64_t at_ = 0;
};

/// The rebuilt file's index with what goes into it.
struct Correction {
    Top place;
    Bytes moov;  ///< its payload, made to fit the other block
    Bytes header;
    Box oldBlock;
    Bytes block;

    std::uint64_t size() const {
        return header.size() + moov.size() -
               static_cast<std::size_t>(oldBlock.end - oldBlock.boxStart) + block.size();
    }
    ByteView ahead() const { return slice(moov, 0, oldBlock.boxStart); }
    ByteView behind() const {
        return slice(moov, oldBlock.end, static_cast<std::int64_t>(moov.size()));
    }
};

void fit(Correction& correction, const IndexEdit::TagBlock& old) {
    const Top& place = correction.place;
    const std::int64_t delta =
        static_cast<std::int64_t>(correction.block.size()) - (old.ilst.end - old.ilst.boxStart);
    if (delta != 0) {
        IndexEdit::shiftOffsets(correction.moov, place.offset + place.size, delta);
        IndexEdit::resizeAround(correction.moov, old, delta);
    }
    correction.header = Bytes(static_cast<std::size_t>(place.header));
    correction.header = IndexEdit::moovHeader(correction.size(), place.header);
}

/// Nothing when there is nothing to put right.
std::optional<Correction> correctionFor(const fs::path& original, const fs::path& rebuilt) {
    // The original's index is let go of before the other one comes into memory.
    auto wanted = tagsOf(loadMoov(original));
    Bytes moov = loadMoov(rebuilt);
    const auto old = IndexEdit::tagBlock(moov);
    if (!wanted || !old) return std::nullopt;
    if (compareTags(std::move(wanted->items), tagItems(moov, old->ilst)).empty())
        return std::nullopt;
    const auto boxes = topLevel(rebuilt);
    const auto place = std::ranges::find(boxes, "moov", &Top::type);
    if (place == boxes.end()) return std::nullopt;

    Correction correction{*place, std::move(moov), {}, old->ilst, std::move(wanted->block)};
    fit(correction, *old);
    return correction;
}

}  // namespace

bool restore(const fs::path& original, const fs::path& rebuilt, const fs::path& output,
             RunControl& control, const Progress& progress) {
    const auto correction = correctionFor(original, rebuilt);
    if (!correction) return false;
    const Top& place = correction->place;
    const std::uint64_t end = FileOps::size(rebuilt);
    Assembly assembly(rebuilt, output, end - place.size + correction->size(), control, progress);
    assembly.copy(0, place.offset);
    assembly.write(correction->header);
    assembly.write(correction->ahead());
    assembly.write(correction->block);
    assembly.write(correction->behind());
    assembly.copy(place.offset + place.size, end);
    assembly.finish();
    return true;
}

}  // namespace marlet::TagRestore
