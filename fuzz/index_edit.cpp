// Any bytes as an index that gets another tag block: the edit stays within the bytes, undoes
// itself, or ends in a sentence.
#include <cstdlib>

#include "foundation/errors.h"
#include "write/index_edit.h"

namespace {

using namespace marlet;

void check(bool holds) {
    if (!holds) std::abort();
}

/// What was raised stands at `from + delta` or behind it, and nothing else does.
void shiftThereAndBack(const Bytes& moov, std::uint64_t from, std::int64_t delta) {
    Bytes moved = moov;
    try {
        IndexEdit::shiftOffsets(moved, from, delta);
    } catch (const MFError&) {
        return;
    }
    check(moved.size() == moov.size());
    IndexEdit::shiftOffsets(moved, from + static_cast<std::uint64_t>(delta), -delta);
    check(moved == moov);
}

void shiftDown(Bytes moov) {
    try {
        IndexEdit::shiftOffsets(moov, 0, -4096);
    } catch (const MFError&) {
    }
}

void editBlock(const Bytes& moov, std::int64_t delta) {
    const auto block = IndexEdit::tagBlock(moov);
    if (!block) return;
    const Bytes bytes = IndexEdit::blockBytes(moov, block->ilst);
    check(bytes.size() == static_cast<std::size_t>(block->ilst.end - block->ilst.boxStart));
    Bytes resized = moov;
    IndexEdit::resizeAround(resized, *block, delta);
    check(resized.size() == moov.size());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const ByteView bytes(data, size);
    const Bytes moov(bytes.begin(), bytes.end());
    for (const std::uint64_t from : {0, 4096})
        for (const std::int64_t delta : {1, 4096}) shiftThereAndBack(moov, from, delta);
    shiftDown(moov);
    for (const std::int64_t delta : {-1, 4096}) editBlock(moov, delta);
    return 0;
}
