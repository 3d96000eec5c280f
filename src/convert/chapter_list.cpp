#include "convert/chapter_list.h"

#include <fcntl.h>

#include "foundation/file_ops.h"
#include "foundation/syscalls.h"
#include "write/index_in_file.h"

namespace marlet::ChapterList {

void remove(const std::filesystem::path& built) {
    constexpr std::int64_t sizeField = 4;
    const auto index = readIndex(built);
    if (!index) return;
    const ByteView moov = index->payload;
    FileHandle handle;
    for (const Box& udta : children(moov, 0, static_cast<std::int64_t>(moov.size()))) {
        if (udta.type != "udta") continue;
        for (const Box& box : children(moov, udta.start, udta.end)) {
            if (box.type != "chpl") continue;
            if (!handle.isOpen())
                handle = FileHandle::open(built, O_WRONLY,
                                          "cannot open the new file to remove its chapters");
            FileOps::writeAll(handle.get(), viewOf("free"),
                              index->fileOffset(box.boxStart + sizeField));
        }
    }
}

}  // namespace marlet::ChapterList
