#include <algorithm>

#include "mp4/box_cursor.h"
#include "mp4/edit_list.h"
#include "mp4/sample_entry.h"
#include "mp4/track_parser.h"
#include "verify/conversion_parts.h"
#include "verify/sample_entries.h"

namespace marlet::ConvertVerify {

namespace {

void readHeader(ByteView moov, const BoxSpan& trak, TrakDetail& detail) {
    const auto tkhd = findSpan(moov, trak, {boxCode("tkhd")});
    if (!tkhd) return;
    const bool wide = boxVersion(moov, *tkhd) == 1;
    detail.id = BigEndian::u32(moov, tkhd->start + (wide ? 20 : 12));
    detail.duration =
        wide ? BigEndian::u64(moov, tkhd->start + 28) : BigEndian::u32(moov, tkhd->start + 20);
}

void readEntry(ByteView moov, const BoxSpan& trak, TrakDetail& detail) {
    const auto mdia = findSpan(moov, trak, {boxCode("mdia")});
    if (!mdia) return;
    const auto hdlr = findSpan(moov, *mdia, {boxCode("hdlr")});
    const auto stsd = findSpan(moov, *mdia, {boxCode("minf"), boxCode("stbl"), boxCode("stsd")});
    if (!hdlr || !stsd) return;
    const ByteView payload = slice(moov, stsd->start, stsd->end);
    const SampleEntries entries = sampleEntries(payload);
    if (entries.entries.empty()) return;
    const BoxSpan& entry = entries.entries.front();
    constexpr std::int64_t commonFields = 8;
    if (entry.code == boxCode("tx3g") && entry.end - entry.start >= commonFields + 4)
        detail.displayFlags = BigEndian::u32(payload, entry.start + commonFields);
    if (BigEndian::fourCC(moov, hdlr->start + 8) == "soun")
        detail.channels = builtChannels(payload);
}

void takeEdit(const Edit& edit, TrakDetail& detail) {
    if (edit.mediaTime < 0) {
        if (detail.realEdits == 0 && detail.leadIn + edit.duration >= edit.duration)
            detail.leadIn += edit.duration;
        return;
    }
    if (detail.realEdits++ > 0) return;
    detail.editStart = edit.mediaTime;
    detail.editLength = edit.duration;
}

}  // namespace

std::vector<TrakDetail> trakDetails(ByteView moov) {
    std::vector<TrakDetail> all;
    BoxCursor cursor(moov, 0, static_cast<std::int64_t>(moov.size()));
    while (const auto box = cursor.next()) {
        if (box->code != boxCode("trak")) continue;
        TrakDetail detail;
        readHeader(moov, *box, detail);
        readEntry(moov, *box, detail);
        EditCursor edits(moov, *box);
        while (const auto edit = edits.next()) takeEdit(*edit, detail);
        all.push_back(detail);
    }
    return all;
}

int packed(std::string_view language) {
    constexpr std::size_t letters = 3;
    constexpr int base = 0x60;
    if (language.size() != letters) return 0;
    int value = 0;
    for (const char letter : language) {
        if (letter < 'a' || letter > 'z') return 0;
        value = value << 5 | (letter - base);
    }
    return value;
}

}  // namespace marlet::ConvertVerify
