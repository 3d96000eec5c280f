#include "mp4/dumps.h"

#include <algorithm>
#include <array>
#include <optional>

#include "mp4/box_cursor.h"
#include "mp4/sample_entry.h"
#include "mp4/tag_values.h"
#include "mp4/tags.h"

namespace marlet {

namespace {

/// Lines up to a length that a log can bear; the last one then tells that there was more.
class Lines {
public:
    static constexpr std::size_t most = 4096;

    /// False once nothing more is taken.
    bool add(std::string line) {
        if (isFull()) return false;
        lines_.push_back(lines_.size() + 1 == most ? "…" : std::move(line));
        return !isFull();
    }
    bool isFull() const { return lines_.size() == most; }
    std::vector<std::string> take() && { return std::move(lines_); }

private:
    std::vector<std::string> lines_;
};

std::string indent(int depth) {
    return std::string(static_cast<std::size_t>(2 * depth), ' ');
}

std::string sizeText(const BoxSpan& box) {
    return std::to_string(box.end - box.boxStart) + " bytes";
}

std::string typeText(ByteView data, const BoxSpan& box) {
    return "'" + BigEndian::fourCC(data, box.boxStart + 4) + "'";
}

std::string hexText(ByteView bytes) {
    constexpr std::size_t longestShown = 64;
    const bool isCut = bytes.size() > longestShown;
    return toHex(bytes.first(std::min(bytes.size(), longestShown))) + (isCut ? "…" : "");
}

bool addEntry(ByteView stsd, int version, const BoxSpan& entry, Lines& lines) {
    const auto fields = fixedFieldsLength(stsd, version, entry);
    const std::int64_t boxes = entry.start + fields.value_or(entry.end - entry.start);
    if (!lines.add(indent(1) + typeText(stsd, entry) + ", " + sizeText(entry) + ": " +
                   hexText(slice(stsd, entry.start, boxes))))
        return false;
    BoxCursor cursor(stsd, boxes, entry.end);
    while (const auto box = cursor.next())
        if (!lines.add(indent(2) + typeText(stsd, *box) + ", " + sizeText(*box) + ": " +
                       hexText(slice(stsd, box->start, box->end))))
            return false;
    return true;
}

bool addTrack(ByteView moov, const BoxSpan& trak, int number, Lines& lines) {
    const auto hdlr = findSpan(moov, trak, {boxCode("mdia"), boxCode("hdlr")});
    const auto stsd =
        findSpan(moov, trak, {boxCode("mdia"), boxCode("minf"), boxCode("stbl"), boxCode("stsd")});
    const std::string handler = hdlr ? BigEndian::fourCC(moov, hdlr->start + 8) : "no handler";
    if (!lines.add("track " + std::to_string(number) + " (" + handler + ")" +
                   (stsd ? "" : ": no sample description")))
        return false;
    if (!stsd) return true;
    const ByteView payload = slice(moov, stsd->start, stsd->end);
    const SampleEntries parts = sampleEntries(payload);
    return std::ranges::all_of(parts.entries, [&](const BoxSpan& entry) {
        return addEntry(payload, parts.version(), entry, lines);
    });
}

/// Boxes whose content is boxes, and how much stands before those.
struct Container {
    BoxCode type;
    std::int64_t ahead;
};

constexpr std::array<Container, 14> containers = {{
    {boxCode("trak"), 0},
    {boxCode("mdia"), 0},
    {boxCode("minf"), 0},
    {boxCode("stbl"), 0},
    {boxCode("dinf"), 0},
    {boxCode("dref"), 8},
    {boxCode("stsd"), 8},
    {boxCode("edts"), 0},
    {boxCode("tref"), 0},
    {boxCode("udta"), 0},
    {boxCode("ilst"), 0},
    {boxCode("mvex"), 0},
    {boxCode("gmhd"), 0},
    {boxCode("tapt"), 0},
}};

/// `meta` is a full box in MP4 and a plain one in QuickTime: there its first box is `hdlr`.
std::int64_t aheadInMeta(ByteView moov, const BoxSpan& meta) {
    constexpr std::int64_t versionAndFlags = 4;
    return BigEndian::fourCC(moov, meta.start + 4) == "hdlr" ? 0 : versionAndFlags;
}

std::optional<std::int64_t> contentStart(ByteView moov, const BoxSpan& box) {
    if (box.code == boxCode("meta")) return box.start + aheadInMeta(moov, box);
    const auto* const row = std::ranges::find(containers, box.code, &Container::type);
    if (row == containers.end()) return std::nullopt;
    return box.start + row->ahead;
}

void addTree(ByteView moov, std::int64_t from, std::int64_t to, int depth, Lines& lines) {
    constexpr int deepest = 16;  // real files have some eight
    BoxCursor cursor(moov, from, to);
    while (const auto box = cursor.next()) {
        if (!lines.add(indent(depth) + typeText(moov, *box) + " " + sizeText(*box))) return;
        const auto content = contentStart(moov, *box);
        if (content && depth < deepest) addTree(moov, *content, box->end, depth + 1, lines);
    }
}

}  // namespace

std::vector<std::string> stsdDump(ByteView moov) {
    Lines lines;
    int number = 0;
    BoxCursor cursor(moov, 0, static_cast<std::int64_t>(moov.size()));
    while (const auto box = cursor.next()) {
        if (box->code != boxCode("trak")) continue;
        if (!addTrack(moov, *box, ++number, lines)) break;
    }
    return std::move(lines).take();
}

std::vector<std::string> ilstDump(ByteView moov) {
    Lines lines;
    for (const Box& block : tagBlocks(moov)) {
        BoxCursor cursor(moov, block.start, block.end);
        while (const auto box = cursor.next()) {
            if (lines.isFull()) break;
            // One item at a time: a copy of a whole block would be as large as the index.
            const Box item{"ilst", box->boxStart, box->boxStart, box->end};
            for (const TagItem& tag : tagItems(moov, item))
                lines.add(tag.key + " (" + tag.label +
                          "): " + describe(tag.raw, tag.key == "covr"));
        }
    }
    return std::move(lines).take();
}

std::vector<std::string> moovTree(ByteView moov) {
    Lines lines;
    addTree(moov, 0, static_cast<std::int64_t>(moov.size()), 0, lines);
    return std::move(lines).take();
}

}  // namespace marlet
