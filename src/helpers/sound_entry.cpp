#include "helpers/sound_entry.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>

#include "foundation/errors.h"
#include "helpers/boxes.h"
#include "helpers/picture_entry.h"
#include "helpers/sample_entries.h"

namespace marlet::SoundEntry {

namespace {

constexpr std::array soundCodes = {boxCode("mp4a"), boxCode("ac-3"), boxCode("ec-3")};
constexpr std::array configurations = {boxCode("esds"), boxCode("dac3"), boxCode("dec3")};

template <typename Codes>
bool isOneOf(const Codes& codes, BoxCode code) {
    return std::ranges::find(codes, code) != codes.end();
}

/// The boxes of a range, and of `wave` what configures a decoder.
Bytes boxesOf(ByteView moov, std::size_t from, std::size_t to) {
    Bytes kept;
    StrictBoxes boxes(moov, from, to);
    while (const auto box = boxes.next()) {
        if (box->code == boxCode("wave")) {
            StrictBoxes inner(moov, *box);
            while (const auto part = inner.next())
                if (isOneOf(configurations, part->code))
                    append(kept, moov.subspan(part->at, part->end - part->at));
        } else {
            append(kept, moov.subspan(box->at, box->end - box->at));
        }
    }
    return kept;
}

bool hasBox(ByteView moov, std::size_t from, std::size_t to, BoxCode code) {
    return findSpan(moov, static_cast<std::int64_t>(from), static_cast<std::int64_t>(to), code)
        .has_value();
}

Bytes soundEntry(ByteView moov, const RawBox& entry) {
    // Fields of all versions, then those of version 1 or 2 (QuickTime File Format, "Sound Sample
    // Description").
    constexpr std::size_t shortest = 28;
    constexpr std::array<std::size_t, 3> childrenAt = {28, 44, 64};
    const ByteView data = moov.subspan(entry.start, entry.end - entry.start);
    const std::uint16_t version = BigEndian::u16(data, 8);
    if (version >= childrenAt.size() || data.size() < childrenAt[version] ||
        (version == 0 && !hasBox(moov, entry.start + shortest, entry.end, boxCode("wave"))))
        return {moov.begin() + static_cast<std::ptrdiff_t>(entry.at),
                moov.begin() + static_cast<std::ptrdiff_t>(entry.end)};
    std::uint32_t channels = BigEndian::u16(data, 16);
    std::uint32_t rate = BigEndian::u32(data, 24) >> 16;
    if (version == 2) {
        const double exact = std::bit_cast<double>(BigEndian::u64(data, 32));
        rate = exact >= 1 && exact < 1e6 ? static_cast<std::uint32_t>(std::lround(exact)) : 0;
        channels = BigEndian::u32(data, 40);
    }
    return SampleEntries::sound(entry.code, channels, rate,
                                boxesOf(moov, entry.start + childrenAt[version], entry.end));
}

Bytes entryOf(ByteView moov, const RawBox& entry, std::optional<std::uint32_t> textFlags) {
    if (isOneOf(soundCodes, entry.code) && entry.end - entry.start >= 28)
        return soundEntry(moov, entry);
    if (PictureEntry::isCopied(entry.code)) return PictureEntry::rewritten(moov, entry);
    const ByteView whole = moov.subspan(entry.at, entry.end - entry.at);
    Bytes bytes(whole.begin(), whole.end());
    constexpr std::size_t flagsAt = 16;
    if (entry.code == boxCode("tx3g") && textFlags && bytes.size() >= flagsAt + 4) {
        const Bytes flags = Boxes::u32s({*textFlags});
        std::ranges::copy(flags, bytes.begin() + flagsAt);
    }
    return bytes;
}

/// The new file has one data reference (8.5.2.2); a source may have had several to itself.
void pointAtOnlyReference(Bytes& entry) {
    constexpr std::size_t field = 14;
    if (entry.size() < field + 2) return;
    entry[field] = 0;
    entry[field + 1] = 1;
}

}  // namespace

Bytes rewritten(ByteView moov, const RawBox& stsd, std::optional<std::uint32_t> textFlags) {
    if (stsd.end - stsd.start < 8) throw MFError("a box of the index is too short");
    Bytes entries;
    StrictBoxes boxes(moov, stsd.start + 8, stsd.end);
    while (const auto entry = boxes.next()) {
        Bytes bytes = entryOf(moov, *entry, textFlags);
        pointAtOnlyReference(bytes);
        append(entries, bytes);
    }
    return Boxes::box(stsd.code, {moov.subspan(stsd.start, 8), entries});
}

}  // namespace marlet::SoundEntry
