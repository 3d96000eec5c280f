#pragma once

#include <optional>
#include <string>
#include <vector>

#include "foundation/bytes.h"
#include "mp4/box.h"

namespace marlet {

struct Chapter {
    std::int64_t ms = 0;  ///< milliseconds from the start
    std::string title;
    bool operator==(const Chapter&) const = default;
};

/// One item of an iTunes-style tag block.
struct TagItem {
    std::string key;    ///< the item's type, or "----:mean:name"
    std::string label;  ///< words for people
    Bytes raw;          ///< the whole item box
    bool operator==(const TagItem&) const = default;
};

std::vector<TagItem> tagItems(ByteView data, const Box& ilst);

/// The tag blocks of an index: `udta`/`meta` first, then `meta`, each as a full box and, failing
/// that, as a plain one (QuickTime).
std::vector<Box> tagBlocks(ByteView moov);

/// The `udta`/`chpl` chapter list; at most 255.
std::vector<Chapter> chapterList(ByteView moov);

}  // namespace marlet
