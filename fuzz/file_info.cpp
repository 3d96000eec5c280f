// What is told of an index of any bytes: its tags with their values, the account of the file, and
// the lines for the support log.
#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "mp4/dumps.h"
#include "mp4/file_info.h"
#include "mp4/image_info.h"
#include "mp4/tag_values.h"
#include "mp4/tags.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace marlet;
    constexpr std::size_t mostLines = 4096;
    const ByteView moov(data, size);
    const FileTags tags = parseTags(moov);
    describe("/Show/Season 1/01 Name (HD).mp4", tags).displayName();
    describe("/films/Name/" + tags.title, FileTags{}).displayName();
    if (stsdDump(moov).size() > mostLines || ilstDump(moov).size() > mostLines ||
        moovTree(moov).size() > mostLines)
        std::abort();
    for (const Box& block : tagBlocks(moov))
        for (const TagItem& item : tagItems(moov, block)) describe(item.raw, item.key == "covr");
    describe(moov, true);
    imageInfo(moov);
    return 0;
}
