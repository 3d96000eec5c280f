#include "mp4/tags.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "foundation/text.h"
#include "mp4/box_cursor.h"

namespace marlet {

namespace {

struct Name {
    std::string_view key;
    std::string_view label;
};

constexpr std::array<Name, 29> tagNames = {{
    {"©nam", "title"},
    {"©ART", "artist"},
    {"©alb", "album"},
    {"©gen", "genre"},
    {"©day", "release date"},
    {"desc", "description"},
    {"ldes", "long description"},
    {"stik", "media kind"},
    {"hdvd", "HD video flag"},
    {"tvsh", "TV show"},
    {"tven", "TV episode ID"},
    {"tvnn", "TV network"},
    {"covr", "cover art"},
    {"©cmt", "comment"},
    {"cprt", "copyright"},
    {"©wrt", "writer"},
    {"©too", "encoding tool"},
    {"trkn", "track number"},
    {"disk", "disc number"},
    {"tvsn", "TV season"},
    {"aART", "album artist"},
    {"pgap", "gapless"},
    {"cpil", "compilation"},
    {"rtng", "content rating"},
    {"©grp", "grouping"},
    {"sosn", "sort show"},
    {"sonm", "sort name"},
    {"purd", "purchase date"},
    {"tves", "TV episode"},
}};

std::string labelOf(const std::string& type) {
    const auto row = std::find_if(tagNames.begin(), tagNames.end(),
                                  [&](const Name& name) { return name.key == type; });
    return row == tagNames.end() ? "item '" + type + "'" : std::string(row->label);
}

/// The text of a `mean` or `name` box behind its version and flags; empty when missing.
std::string freeformText(ByteView data, const BoxSpan& item, BoxCode type) {
    const auto box = findSpan(data, item, {type});
    if (!box) return {};
    return Text::repairUtf8(slice(data, box->start + 4, box->end));
}

void nameFreeform(ByteView data, const BoxSpan& item, TagItem& tag) {
    const std::string mean = freeformText(data, item, boxCode("mean"));
    const std::string name = freeformText(data, item, boxCode("name"));
    tag.key = "----:" + mean + ":" + name;
    tag.label = "custom item '" + name + "'";
    if (mean != "com.apple.iTunes") tag.label += " (" + mean + ")";
}

std::optional<BoxSpan> tagBlockIn(ByteView moov, const BoxSpan& meta) {
    const auto inFullBox = findSpan(moov, meta.start + 4, meta.end, boxCode("ilst"));
    // QuickTime writes `meta` without version and flags.
    return inFullBox ? inFullBox : findSpan(moov, meta.start, meta.end, boxCode("ilst"));
}

}  // namespace

std::vector<TagItem> tagItems(ByteView data, const Box& ilst) {
    std::vector<TagItem> items;
    BoxCursor cursor(data, ilst.start, ilst.end);
    while (const auto box = cursor.next()) {
        TagItem item;
        if (box->hasType && box->code == boxCode("----")) {
            nameFreeform(data, *box, item);
        } else {
            item.key = BigEndian::fourCC(data, box->boxStart + 4);
            item.label = labelOf(item.key);
        }
        const ByteView raw = slice(data, box->boxStart, box->end);
        item.raw.assign(raw.begin(), raw.end());
        items.push_back(std::move(item));
    }
    return items;
}

std::vector<Box> tagBlocks(ByteView moov) {
    const auto end = static_cast<std::int64_t>(moov.size());
    std::vector<Box> blocks;
    for (const auto& meta : {findSpan(moov, 0, end, {boxCode("udta"), boxCode("meta")}),
                             findSpan(moov, 0, end, boxCode("meta"))}) {
        if (!meta) continue;
        if (const auto ilst = tagBlockIn(moov, *meta)) blocks.push_back(toBox(moov, *ilst));
    }
    return blocks;
}

std::vector<Chapter> chapterList(ByteView moov) {
    const auto end = static_cast<std::int64_t>(moov.size());
    std::vector<Chapter> chapters;
    const auto chpl = findSpan(moov, 0, end, {boxCode("udta"), boxCode("chpl")});
    if (!chpl) return chapters;

    const auto byteAt = [&](std::int64_t at) {
        const ByteView one = slice(moov, at, at + 1);
        return one.empty() ? 0 : one[0];
    };
    std::int64_t at = chpl->start + (byteAt(chpl->start) == 1 ? 8 : 4);
    int left = byteAt(at++);
    for (; left > 0 && at + 9 <= chpl->end; left--) {
        const std::int64_t title = at + 9;
        const std::int64_t next = title + byteAt(at + 8);
        if (next > chpl->end) break;
        // Units of 100 ns.
        chapters.push_back({static_cast<std::int64_t>(BigEndian::u64(moov, at) / 10'000),
                            Text::repairUtf8(slice(moov, title, next))});
        at = next;
    }
    return chapters;
}

}  // namespace marlet
