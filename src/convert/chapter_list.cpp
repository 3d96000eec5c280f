#include "convert/chapter_list.h"

namespace marlet::ChapterList {

void remove(BuiltIndex& index) {
    constexpr std::int64_t sizeField = 4;
    const ByteView moov = index.moov();
    for (const Box& udta : children(moov, 0, static_cast<std::int64_t>(moov.size()))) {
        if (udta.type != "udta") continue;
        for (const Box& box : children(moov, udta.start, udta.end)) {
            if (box.type != "chpl") continue;
            index.put(box.boxStart + sizeField, viewOf("free"),
                      "cannot open the new file to remove its chapters");
        }
    }
}

}  // namespace marlet::ChapterList
