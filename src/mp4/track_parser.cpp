#include "mp4/track_parser.h"

#include "foundation/digest.h"
#include "foundation/errors.h"

namespace marlet {

namespace {

Bytes copyOf(ByteView data, std::int64_t from, std::int64_t to) {
    const ByteView part = slice(data, from, to);
    return {part.begin(), part.end()};
}

/// Creation and modification, both 32 or both 64 bits wide, from payload offset 4.
struct Dates {
    std::uint64_t created = 0;
    std::uint64_t modified = 0;
};

Dates headerDates(ByteView data, const BoxSpan& header) {
    const std::int64_t at = header.start + 4;
    if (boxVersion(data, header) == 1)
        return {BigEndian::u64(data, at), BigEndian::u64(data, at + 8)};
    return {BigEndian::u32(data, at), BigEndian::u32(data, at + 4)};
}

/// Three letters of five bits each, counted from 0x60 (ISO/IEC 14496-12, 8.4.2).
std::string languageText(std::uint16_t packed) {
    std::string text;
    for (const int shift : {10, 5, 0}) {
        const int bits = shift == 10 ? packed >> 10 : (packed >> shift) & 0x1F;
        text.push_back(static_cast<char>(bits | 0x60));
    }
    return text;
}

void readMediaHeader(ByteView data, const BoxSpan& mdhd, Track& track) {
    const std::int64_t language = mdhd.start + (boxVersion(data, mdhd) == 1 ? 32 : 20);
    const Dates dates = headerDates(data, mdhd);
    track.mdhdCreated = dates.created;
    track.mdhdModified = dates.modified;
    track.timescale = mediaClock(data, mdhd).timescale;
    track.langRaw = BigEndian::u16(data, language);
    track.mdhdPredefined = BigEndian::u16(data, language + 2);
    track.language = languageText(static_cast<std::uint16_t>(track.langRaw));
}

void readTrackHeader(ByteView data, const BoxSpan& tkhd, Track& track) {
    const bool wide = boxVersion(data, tkhd) == 1;
    const Dates dates = headerDates(data, tkhd);
    track.tkhdFlags = BigEndian::u32(data, tkhd.start) & 0xFFFFFF;
    track.tkhdCreated = dates.created;
    track.tkhdModified = dates.modified;
    track.id = BigEndian::u32(data, tkhd.start + (wide ? 20 : 12));
    track.altGroup = BigEndian::u16(data, tkhd.start + (wide ? 46 : 34));
    track.tkhdRest = copyOf(data, tkhd.start + (wide ? 44 : 32), tkhd.end);
}

void readSampleDescription(ByteView data, const BoxSpan& stsd, Track& track) {
    track.stsd = copyOf(data, stsd.start, stsd.end);
    track.stsdDigest = sha256Hex(track.stsd);
    track.codec = BigEndian::fourCC(data, stsd.start + 12);
}

std::vector<std::uint32_t> chapterReferences(ByteView data, const BoxSpan& trak) {
    std::vector<std::uint32_t> ids;
    const auto chap = findSpan(data, trak, {boxCode("tref"), boxCode("chap")});
    if (!chap) return ids;
    for (std::int64_t at = chap->start; at + 4 <= chap->end; at += 4)
        ids.push_back(BigEndian::u32(data, at));
    return ids;
}

void readDetail(ByteView data, const BoxSpan& trak, const SampleTables::Boxes& tables, Track& track,
                SampleTables::Budget& budget) {
    if (tables.stsd) readSampleDescription(data, *tables.stsd, track);
    if (tables.ctts)
        track.ctts =
            SampleTables::compositionOffsets(data, *tables.ctts, track.sizes.size(), budget);
    if (tables.stss) track.sync = SampleTables::syncSamples(data, *tables.stss, budget);
    if (const auto elst = findSpan(data, trak, {boxCode("edts"), boxCode("elst")}))
        track.elstDigest = sha256Hex(slice(data, elst->start, elst->end));
    track.chapRefs = chapterReferences(data, trak);
}

}  // namespace

std::uint8_t boxVersion(ByteView data, const BoxSpan& box) {
    const ByteView first = slice(data, box.start, box.start + 1);
    return first.empty() ? 0 : first[0];
}

MediaClock mediaClock(ByteView data, const BoxSpan& header) {
    const bool wide = boxVersion(data, header) == 1;
    const std::int64_t at = header.start + (wide ? 20 : 12);
    const std::uint32_t timescale = BigEndian::u32(data, at);
    return {timescale == 0 ? 1 : timescale,
            wide ? BigEndian::u64(data, at + 4) : BigEndian::u32(data, at + 4)};
}

MediaClock movieClock(ByteView moov) {
    const auto mvhd = findSpan(moov, 0, static_cast<std::int64_t>(moov.size()), boxCode("mvhd"));
    return mvhd ? mediaClock(moov, *mvhd) : MediaClock();
}

std::optional<Track> parseTrack(ByteView data, std::int64_t from, std::int64_t to, Detail detail,
                                std::uint32_t movieScale, SampleTables::Budget& budget) {
    const BoxSpan trak{boxCode("trak"), true, from, from, to};
    const auto mdia = findSpan(data, trak, {boxCode("mdia")});
    if (!mdia) return std::nullopt;
    const auto hdlr = findSpan(data, *mdia, {boxCode("hdlr")});
    if (!hdlr) return std::nullopt;

    Track track;
    track.handler = BigEndian::fourCC(data, hdlr->start + 8);
    if (detail == Detail::No && track.handler != "soun") return std::nullopt;
    const auto mdhd = findSpan(data, *mdia, {boxCode("mdhd")});
    if (!mdhd) return std::nullopt;

    readMediaHeader(data, *mdhd, track);
    if (const auto times = editTimes(data, from, to, movieScale, track.timescale))
        track.presOffset = times->offset;
    if (const auto tkhd = findSpan(data, trak, {boxCode("tkhd")}))
        readTrackHeader(data, *tkhd, track);

    const auto stbl = findSpan(data, *mdia, {boxCode("minf"), boxCode("stbl")});
    if (!stbl) throw MFError("track without sample table");
    const SampleTables::Boxes tables = SampleTables::boxes(data, *stbl);
    if (!tables.complete()) throw MFError("incomplete sample table");

    // A track costs its record as well as its tables: an index could hold nothing but tracks.
    budget.spendBytes(2 * sizeof(Track), "bad stsz");
    track.sizes = SampleTables::sizes(data, *tables.stsz, budget);
    track.durations = SampleTables::durations(data, *tables.stts, track.sizes.size(), budget);
    track.chunks = SampleTables::chunks(data, tables, track.sizes.size(), budget);
    if (detail == Detail::Yes) readDetail(data, trak, tables, track, budget);
    return track;
}

std::optional<Track> parseTrack(ByteView data, std::int64_t from, std::int64_t to, Detail detail,
                                std::uint32_t movieScale) {
    SampleTables::Budget budget;
    return parseTrack(data, from, to, detail, movieScale, budget);
}

}  // namespace marlet
