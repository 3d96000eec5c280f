#include "mp4/tag_values.h"

#include <algorithm>
#include <vector>

#include "foundation/text.h"
#include "mp4/box_cursor.h"
#include "mp4/image_info.h"

namespace marlet {

namespace {

/// Well-known type of `data` (QuickTime File Format, "Well-Known Types").
constexpr std::uint32_t typeUtf8 = 1;
/// Type and locale.
constexpr std::int64_t valueHeader = 8;

std::string textValue(ByteView bytes) {
    constexpr std::size_t longestText = 60;  // characters
    // Far more than so many characters of any script take; a longer value isn't read to its end.
    constexpr std::size_t longestRead = 16'384;
    const std::string text = Text::repairUtf8(bytes.first(std::min(bytes.size(), longestRead)));
    const bool isCut = bytes.size() > longestRead || Text::characterCount(text) > longestText;
    return "\"" + (isCut ? Text::firstCharacters(text, longestText) + "…" : text) + "\"";
}

std::string otherValue(std::uint32_t type, ByteView bytes) {
    constexpr std::size_t longestShown = 16;
    const bool isCut = bytes.size() > longestShown;
    return "type " + std::to_string(type) + " 0x" +
           toHex(bytes.first(std::min(bytes.size(), longestShown))) + (isCut ? "…" : "");
}

}  // namespace

std::string describe(ByteView raw, bool isCover) {
    // A line for people: an item of thousands of values is not told to its end.
    constexpr std::size_t mostValues = 64;
    std::vector<std::string> values;
    BoxCursor items(raw, 0, static_cast<std::int64_t>(raw.size()));
    const auto item = items.next();
    if (!item) return {};
    BoxCursor boxes(raw, item->start, item->end);
    while (const auto box = boxes.next()) {
        if (box->code != boxCode("data")) continue;
        if (values.size() == mostValues) {
            values.emplace_back("…");
            break;
        }
        const ByteView bytes = slice(raw, box->start + valueHeader, box->end);
        const std::uint32_t type = BigEndian::u32(raw, box->start);
        if (isCover)
            values.push_back(imageInfo(bytes));
        else
            values.push_back(type == typeUtf8 ? textValue(bytes) : otherValue(type, bytes));
    }
    return Text::join(values, " + ");
}

}  // namespace marlet
