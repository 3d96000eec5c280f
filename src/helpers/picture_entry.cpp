#include "helpers/picture_entry.h"

#include <algorithm>
#include <array>

#include "helpers/boxes.h"

namespace marlet::PictureEntry {

namespace {

constexpr std::array copied = {boxCode("avc1"), boxCode("avc3"), boxCode("hvc1"), boxCode("hev1")};
constexpr std::size_t fieldsEnd = 78;

/// QuickTime's three numbers as they are; ISO/IEC 14496-12, 12.1.5 has a flag behind them, for
/// levels that use all their values. QuickTime's never do.
Bytes colour(ByteView moov, const RawBox& box) {
    constexpr std::size_t numbers = 6;
    const ByteView data = moov.subspan(box.start, box.end - box.start);
    const bool isQuickTime =
        data.size() == 4 + numbers && BigEndian::u32(data, 0) == boxCode("nclc");
    if (!isQuickTime) {
        const ByteView whole = moov.subspan(box.at, box.end - box.at);
        return {whole.begin(), whole.end()};
    }
    const Bytes limited(1);
    return Boxes::box(boxCode("colr"), {viewOf("nclx"), data.subspan(4), limited});
}

/// Version, revision, vendor and the two qualities (QuickTime File Format, "Video Sample
/// Description").
void clearQuickTimeFields(Bytes& fields) {
    constexpr std::size_t from = 8;
    constexpr std::size_t to = 24;
    std::fill(fields.begin() + from, fields.begin() + to, std::uint8_t{0});
}

}  // namespace

bool isCopied(BoxCode type) {
    return std::ranges::find(copied, type) != copied.end();
}

Bytes rewritten(ByteView moov, const RawBox& entry) {
    const ByteView whole = moov.subspan(entry.at, entry.end - entry.at);
    if (entry.end - entry.start < fieldsEnd) return {whole.begin(), whole.end()};
    const ByteView head = moov.subspan(entry.start, fieldsEnd);
    Bytes fields(head.begin(), head.end());
    clearQuickTimeFields(fields);
    Bytes inside;
    StrictBoxes boxes(moov, entry.start + fieldsEnd, entry.end);
    while (const auto box = boxes.next())
        append(inside, box->code == boxCode("colr")
                           ? colour(moov, *box)
                           : Bytes(moov.begin() + box->at, moov.begin() + box->end));
    return Boxes::box(entry.code, {fields, inside});
}

}  // namespace marlet::PictureEntry
