#include "convert/built_index.h"

#include <fcntl.h>

#include <algorithm>
#include <utility>

#include "foundation/file_ops.h"

namespace marlet {

BuiltIndex::BuiltIndex(std::filesystem::path file)
    : file_(std::move(file)), index_(readIndex(file_)) {}

void BuiltIndex::put(std::int64_t at, ByteView bytes, const char* failure) {
    const ByteView now = slice(moov(), at, at + static_cast<std::int64_t>(bytes.size()));
    if (std::ranges::equal(bytes, now)) return;
    if (!handle_.isOpen()) handle_ = FileHandle::open(file_, O_WRONLY, failure);
    FileOps::writeAll(handle_.get(), bytes, index_->fileOffset(at));
    std::ranges::copy(bytes, index_->payload.begin() + at);
}

}  // namespace marlet
