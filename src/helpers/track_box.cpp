#include "helpers/track_box.h"

#include <algorithm>
#include <limits>

#include "helpers/boxes.h"
#include "helpers/sample_entries.h"

namespace marlet::TrackBoxes {

namespace {

__extension__ using Wide = __int128;
using Boxes::u16s;
using Boxes::u32s;

constexpr std::uint64_t most32 = std::numeric_limits<std::uint32_t>::max();

Bytes wide(std::uint64_t value) {
    Bytes bytes;
    BigEndian::put64(bytes, value);
    return bytes;
}

/// A number in as many bytes as the version has for it.
Bytes sized(std::uint64_t value, std::uint8_t version) {
    return version == 1 ? wide(value) : u32s({static_cast<std::uint32_t>(value)});
}

Bytes trackHeader(const TrackMedia& media, const TrackRequest& request, const TrackPlace& place,
                  std::uint64_t length) {
    // Bits: enabled, in the movie, in its preview (8.3.2).
    const std::uint32_t flags = request.disabled ? 6 : 7;
    const std::uint8_t version = length > most32 ? 1 : 0;
    const std::uint32_t volume = media.handler == boxCode("soun") ? 0x0100 : 0;
    return Boxes::full(
        boxCode("tkhd"), version, flags,
        {sized(0, version), sized(0, version), u32s({place.id, 0}), sized(length, version),
         u32s({0, 0}), u16s({0, request.group.value_or(0), volume, 0}),
         Boxes::turned(media.quarterTurns, media.width, media.height),
         u32s({media.width << 16, media.height << 16})});
}

/// Equal neighbours as one row (8.6.1).
template <typename Values>
Bytes runs(const Values& values) {
    Bytes rows;
    std::uint32_t count = 0;
    for (std::size_t i = 0; i < values.size();) {
        std::size_t end = i + 1;
        while (end < values.size() && values[end] == values[i]) end++;
        BigEndian::put32(rows, static_cast<std::uint32_t>(end - i));
        BigEndian::put32(rows, values[i]);
        i = end;
        count++;
    }
    Bytes table = u32s({count});
    append(table, rows);
    return table;
}

Bytes list(const std::vector<std::uint32_t>& values) {
    Bytes table;
    table.reserve(4 + values.size() * 4);
    BigEndian::put32(table, static_cast<std::uint32_t>(values.size()));
    for (const std::uint32_t value : values) BigEndian::put32(table, value);
    return table;
}

Bytes offsetTable(const std::vector<std::uint64_t>& offsets) {
    const bool isWide = std::ranges::any_of(offsets, [](std::uint64_t at) { return at > most32; });
    Bytes table;
    table.reserve(4 + offsets.size() * 8);
    BigEndian::put32(table, static_cast<std::uint32_t>(offsets.size()));
    for (const std::uint64_t at : offsets) {
        if (isWide)
            BigEndian::put64(table, at);
        else
            BigEndian::put32(table, static_cast<std::uint32_t>(at));
    }
    return Boxes::full(isWide ? boxCode("co64") : boxCode("stco"), 0, 0, {table});
}

Bytes sampleTables(const TrackMedia& media) {
    const auto samples = static_cast<std::uint32_t>(media.frames.sizes.size());
    const Bytes toChunk = samples == 0 ? u32s({0}) : u32s({1, 1, 1, 1});
    Bytes tables = SampleEntries::description(media.entry);
    append(tables, Boxes::full(boxCode("stts"), 0, 0, {runs(media.times.durations)}));
    if (!media.times.offsets.empty())
        append(tables, Boxes::full(boxCode("ctts"), 0, 0, {runs(media.times.offsets)}));
    if (!media.allSync) append(tables, Boxes::full(boxCode("stss"), 0, 0, {list(media.sync)}));
    append(tables, Boxes::full(boxCode("stsc"), 0, 0, {toChunk}));
    append(tables, Boxes::full(boxCode("stsz"), 0, 0, {u32s({0}), list(media.frames.sizes)}));
    append(tables, offsetTable(media.frames.offsets));
    return Boxes::box(boxCode("stbl"), {tables});
}

/// 8.4: the media's length is the sum of its durations.
Bytes mediaBox(const TrackMedia& media, const TrackRequest& request) {
    std::uint64_t length = 0;
    for (const std::uint32_t duration : media.times.durations) length += duration;
    const std::uint8_t version = length > most32 ? 1 : 0;
    const std::uint32_t language = Boxes::packedLanguage(request.language.value_or("und"));
    const Bytes header =
        Boxes::full(boxCode("mdhd"), version, 0,
                    {sized(0, version), sized(0, version), u32s({media.times.timescale}),
                     sized(length, version), u16s({language, 0})});
    const Bytes here = Boxes::full(boxCode("url "), 0, 1, {});
    const Bytes references =
        Boxes::box(boxCode("dinf"), {Boxes::full(boxCode("dref"), 0, 0, {u32s({1}), here})});
    const Bytes information =
        Boxes::box(boxCode("minf"), {media.mediaHeader, references, sampleTables(media)});
    return Boxes::box(
        boxCode("mdia"),
        {header, Boxes::handler(media.handler, request.name.value_or("")), information});
}

}  // namespace

Bytes edits(const Edits& edits) {
    if (edits.wait == 0 && edits.mediaStart == 0) return {};
    const bool isLong = edits.wait > most32 || edits.length > most32 ||
                        edits.mediaStart > std::numeric_limits<std::int32_t>::max();
    const std::uint8_t version = isLong ? 1 : 0;
    constexpr std::uint32_t normalRate = 0x10000;
    Bytes rows = u32s({edits.wait > 0 ? 2U : 1U});
    if (edits.wait > 0) {
        append(rows, sized(edits.wait, version));
        append(rows, sized(std::numeric_limits<std::uint64_t>::max(), version));
        append(rows, u32s({normalRate}));
    }
    append(rows, sized(edits.length, version));
    append(rows, sized(edits.mediaStart, version));
    append(rows, u32s({normalRate}));
    return Boxes::box(boxCode("edts"), {Boxes::full(boxCode("elst"), version, 0, {rows})});
}

Bytes chapterReference(std::uint32_t track) {
    if (track == 0) return {};
    return Boxes::box(boxCode("tref"), {Boxes::box(boxCode("chap"), {u32s({track})})});
}

TrackBox make(const TrackMedia& media, const TrackRequest& request, const TrackPlace& place) {
    const auto length = static_cast<std::uint64_t>(
        (Wide{media.times.length} * place.movieScale + media.times.timescale / 2) /
        media.times.timescale);
    const std::uint64_t wait = std::uint64_t{request.delayMs} * place.movieScale / 1000;
    TrackBox track;
    track.seconds = static_cast<double>(wait + length) / place.movieScale;
    track.bytes = Boxes::box(
        boxCode("trak"),
        {trackHeader(media, request, place, wait + length), chapterReference(place.chapterTrack),
         edits({wait, media.times.mediaStart, length}), mediaBox(media, request)});
    return track;
}

}  // namespace marlet::TrackBoxes
