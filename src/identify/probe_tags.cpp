// The five tags of an MP4 or QuickTime file that help to identify it.

#include <array>
#include <limits>
#include <string_view>

#include "foundation/text.h"
#include "identify/probe.h"
#include "identify/probe_movie.h"
#include "mp4/box_cursor.h"
#include "mp4/tags.h"

namespace marlet::Probe {

namespace {

/// Well-known types of `data` (QuickTime File Format, "Well-Known Types").
constexpr std::uint32_t typeUtf8 = 1;
constexpr std::uint32_t typeMask = 0xFFFFFF;

struct Value {
    std::uint32_t type = 0;
    ByteView bytes;

    std::string text() const { return Text::repairUtf8(bytes); }
    /// Of a big-endian integer of any width, or of a text that is one.
    std::optional<int> number() const {
        if (type == typeUtf8) return Text::integer(Text::trim(text()));
        if (bytes.empty() || bytes.size() > 8) return std::nullopt;
        // Starts with the sign, so that narrow negative numbers stay negative.
        std::int64_t value = (bytes[0] & 0x80) != 0 ? -1 : 0;
        for (const std::uint8_t byte : bytes)
            value = static_cast<std::int64_t>(static_cast<std::uint64_t>(value) << 8 | byte);
        if (value < std::numeric_limits<int>::min() || value > std::numeric_limits<int>::max())
            return std::nullopt;
        return static_cast<int>(value);
    }
};

void setYear(ExistingTags& tags, const std::string& date) {
    const std::string first = Text::firstCharacters(date, 4);
    if (Text::characterCount(first) < 4) return;
    if (const auto year = Text::integer(first)) tags.year = year;
}

struct Row {
    std::string_view key;
    void (*take)(ExistingTags&, const Value&);
};

constexpr std::array<Row, 5> rows = {{
    {"©nam", [](ExistingTags& tags, const Value& value) { tags.title = value.text(); }},
    {"tvsh", [](ExistingTags& tags, const Value& value) { tags.show = value.text(); }},
    {"tvsn",
     [](ExistingTags& tags, const Value& value) {
         if (const auto number = value.number()) tags.season = number;
     }},
    {"tves",
     [](ExistingTags& tags, const Value& value) {
         if (const auto number = value.number()) tags.episode = number;
     }},
    {"©day", [](ExistingTags& tags, const Value& value) { setYear(tags, value.text()); }},
}};

void take(ExistingTags& tags, BoxCode type, const Value& value) {
    const std::string key = fourCC(type);
    for (const Row& row : rows)
        if (row.key == key) row.take(tags, value);
}

/// Texts that QuickTime writers put straight into `udta`: a length, a language, the text.
void takeUserTexts(ByteView moov, ExistingTags& tags) {
    const auto udta = findSpan(moov, 0, static_cast<std::int64_t>(moov.size()), boxCode("udta"));
    if (!udta) return;
    BoxCursor cursor(moov, udta->start, udta->end);
    while (const auto item = cursor.next()) {
        constexpr BoxCode copyrightSign = 0xA9;
        const std::int64_t text = item->start + 4;
        const std::int64_t length = BigEndian::u16(moov, item->start);
        if (item->code >> 24 != copyrightSign || text + length > item->end) continue;
        take(tags, item->code, {typeUtf8, slice(moov, text, text + length)});
    }
}

void takeItems(ByteView moov, const Box& block, ExistingTags& tags) {
    BoxCursor cursor(moov, block.start, block.end);
    while (const auto item = cursor.next()) {
        const auto data = findSpan(moov, *item, {boxCode("data")});
        if (!data || data->end - data->start < 8) continue;
        take(tags, item->code,
             {BigEndian::u32(moov, data->start) & typeMask,
              slice(moov, data->start + 8, data->end)});
    }
}

}  // namespace

ExistingTags movieTags(ByteView moov) {
    ExistingTags tags;
    takeUserTexts(moov, tags);
    for (const Box& block : tagBlocks(moov)) takeItems(moov, block, tags);
    return tags;
}

}  // namespace marlet::Probe
