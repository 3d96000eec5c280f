#include "helpers/movie_track.h"

#include <algorithm>

#include "foundation/errors.h"
#include "helpers/boxes.h"
#include "helpers/sound_entry.h"
#include "mp4/track_parser.h"

namespace marlet::MovieTracks {

namespace {

__extension__ using Wide = __int128;
using Boxes::u32s;

BoxSpan spanOf(const RawBox& box) {
    return {box.code, true, static_cast<std::int64_t>(box.at), static_cast<std::int64_t>(box.start),
            static_cast<std::int64_t>(box.end)};
}

ByteView payload(ByteView moov, const RawBox& box) {
    return moov.subspan(box.start, box.end - box.start);
}

Bytes whole(ByteView moov, const RawBox& box) {
    const ByteView bytes = moov.subspan(box.at, box.end - box.at);
    return {bytes.begin(), bytes.end()};
}

void store(Bytes& bytes, std::size_t at, ByteView value) {
    if (at + value.size() > bytes.size()) throw MFError("a box of the index is too short");
    std::copy(value.begin(), value.end(), bytes.begin() + static_cast<std::ptrdiff_t>(at));
}

RawBox needed(ByteView moov, const RawBox& parent, BoxCode type) {
    const auto box = RawBoxes::only(moov, parent, type);
    if (!box) throw MFError("the index lacks a \"" + RawBoxes::name(type) + "\" box");
    return *box;
}

std::uint64_t rescaled(std::uint64_t units, std::uint32_t from, std::uint32_t to) {
    return from == to ? units
                      : static_cast<std::uint64_t>(
                            (Wide{static_cast<std::int64_t>(units)} * to + from / 2) / from);
}

/// The edits in the new movie's units, behind the wait.
struct EditList {
    Bytes box;
    std::uint64_t length = 0;  ///< of all, wait included
};

EditList editList(ByteView moov, const RawBox& trak, std::uint32_t from, std::uint32_t to,
                  std::uint64_t wait) {
    const auto elst = RawBoxes::only(moov, trak, {boxCode("edts"), boxCode("elst")});
    if (!elst) return {};
    const ByteView data = payload(moov, *elst);
    const bool isWide = boxVersion(moov, spanOf(*elst)) == 1;
    const std::size_t width = isWide ? 20 : 12;
    const std::uint32_t count = BigEndian::u32(data, 4);
    if (data.size() < 8 || count > (data.size() - 8) / width)
        throw MFError("an edit list (elst) doesn't fit into its box");
    EditList list;
    Bytes rows;
    const auto put = [&](std::uint64_t length, std::int64_t start, std::uint32_t rate) {
        BigEndian::put64(rows, length);
        BigEndian::put64(rows, static_cast<std::uint64_t>(start));
        BigEndian::put32(rows, rate);
        list.length += length;
    };
    if (wait > 0) put(wait, -1, 0x10000);
    for (std::uint32_t i = 0; i < count; i++) {
        const auto at = static_cast<std::int64_t>(8 + i * width);
        const std::uint64_t length = isWide ? BigEndian::u64(data, at) : BigEndian::u32(data, at);
        const std::int64_t start = isWide ? static_cast<std::int64_t>(BigEndian::u64(data, at + 8))
                                          : static_cast<std::int32_t>(BigEndian::u32(data, at + 4));
        put(rescaled(length, from, to), start, BigEndian::u32(data, at + (isWide ? 16 : 8)));
    }
    const std::uint32_t rowCount = count + (wait > 0 ? 1 : 0);
    list.box =
        Boxes::box(boxCode("edts"), {Boxes::full(boxCode("elst"), 1, 0, {u32s({rowCount}), rows})});
    // The same list as the source has it where nothing of it changed.
    if (wait == 0 && from == to) {
        const auto edts = RawBoxes::only(moov, trak, boxCode("edts"));
        list.box = whole(moov, *edts);
    }
    return list;
}

Bytes trackHeader(ByteView moov, const RawBox& tkhd, const TrackRequest& request,
                  const TrackPlace& place, std::uint64_t length) {
    const bool isWide = boxVersion(moov, spanOf(tkhd)) == 1;
    Bytes box = whole(moov, tkhd);
    const std::size_t body = tkhd.start - tkhd.at;
    const bool isAsked = request.group || request.disabled;
    if (isAsked) {
        const std::uint8_t enabled = 1;
        const std::uint8_t old = box[body + 3];
        box[body + 3] = request.disabled ? old & ~enabled : old | enabled;
    }
    store(box, body + (isWide ? 20 : 12), u32s({place.id}));
    Bytes duration;
    BigEndian::put64(duration, length);
    const ByteView field = ByteView(duration).subspan(isWide ? 0 : 4);
    if (!isWide && length > 0xFFFFFFFFU) throw MFError("a track is too long for its header");
    store(box, body + (isWide ? 28 : 20), field);
    if (request.group) store(box, body + (isWide ? 46 : 34), Boxes::u16s({*request.group}));
    return box;
}

Bytes mediaHeader(ByteView moov, const RawBox& mdhd, const TrackRequest& request) {
    Bytes box = whole(moov, mdhd);
    const bool isWide = boxVersion(moov, spanOf(mdhd)) == 1;
    if (request.language)
        store(box, mdhd.start - mdhd.at + (isWide ? 32 : 20),
              Boxes::u16s({Boxes::packedLanguage(*request.language)}));
    return box;
}

/// QuickTime names the component type and counts the name's letters in front.
Bytes handler(ByteView moov, const RawBox& hdlr, const TrackRequest& request) {
    const ByteView data = payload(moov, hdlr);
    const BoxCode type =
        request.handler ? BigEndian::u32(viewOf(*request.handler), 0) : BigEndian::u32(data, 8);
    constexpr std::size_t nameAt = 24;
    std::string name = data.size() > nameAt ? textOf(data.subspan(nameAt)) : "";
    const bool isQuickTime = BigEndian::u32(data, 4) != 0;
    if (isQuickTime && !name.empty()) name = name.substr(1, static_cast<std::uint8_t>(name[0]));
    name = name.substr(0, name.find('\0'));
    return Boxes::handler(type, request.name.value_or(name));
}

/// The sample tables, each as it is but for what only QuickTime writes.
Bytes sampleTables(ByteView moov, const RawBox& stbl, const TrackRequest& request) {
    Bytes tables;
    StrictBoxes boxes(moov, stbl);
    while (const auto box = boxes.next())
        append(tables, box->code == boxCode("stsd")
                           ? SoundEntry::rewritten(moov, *box, request.textFlags)
                           : whole(moov, *box));
    return Boxes::box(boxCode("stbl"), {tables});
}

bool isMediaHeader(BoxCode code) {
    return code == boxCode("vmhd") || code == boxCode("smhd") || code == boxCode("nmhd") ||
           code == boxCode("gmhd") || code == boxCode("sthd") || code == boxCode("hmhd");
}

Bytes mediaBox(ByteView moov, const RawBox& mdia, const TrackRequest& request) {
    const RawBox minf = needed(moov, mdia, boxCode("minf"));
    const Bytes here = Boxes::full(boxCode("url "), 0, 1, {});
    Bytes information;
    StrictBoxes boxes(moov, minf);
    while (const auto box = boxes.next())
        if (isMediaHeader(box->code)) append(information, whole(moov, *box));
    append(information,
           Boxes::box(boxCode("dinf"), {Boxes::full(boxCode("dref"), 0, 0, {u32s({1}), here})}));
    append(information, sampleTables(moov, needed(moov, minf, boxCode("stbl")), request));
    return Boxes::box(boxCode("mdia"),
                      {mediaHeader(moov, needed(moov, mdia, boxCode("mdhd")), request),
                       handler(moov, needed(moov, mdia, boxCode("hdlr")), request),
                       Boxes::box(boxCode("minf"), {information})});
}

}  // namespace

std::uint32_t movieScale(const SourceFile& file, const MovieMap& map) {
    return mediaClock(file.moov, spanOf(needed(file.moov, map.root, boxCode("mvhd")))).timescale;
}

std::uint32_t chosen(const SourceFile& file, const MovieMap& map,
                     std::optional<std::uint32_t> wanted) {
    if (!wanted && map.tracks.size() != 1)
        throw MFError("\"" + file.path.filename().string() +
                      "\" has several tracks, and none was chosen");
    std::uint32_t id = wanted.value_or(map.tracks.front().id);
    if (std::ranges::none_of(map.tracks, [id](const MappedTrack& t) { return t.id == id; }))
        throw MFError("the file has no track with the number " + std::to_string(id));
    return id;
}

TrackBox make(const SourceFile& file, const MappedTrack& track, const TrackRequest& request,
              const TrackPlace& place) {
    const ByteView moov = file.moov;
    if (!track.stbl) throw MFError("a chosen track has no media");
    const RawBox mvhd = needed(moov, *StrictBoxes(moov, 0, moov.size()).next(), boxCode("mvhd"));
    const std::uint32_t scale = mediaClock(moov, spanOf(mvhd)).timescale;
    const RawBox mdia = needed(moov, track.trak, boxCode("mdia"));
    const MediaClock clock = mediaClock(moov, spanOf(needed(moov, mdia, boxCode("mdhd"))));
    const std::uint64_t wait = std::uint64_t{request.delayMs} * place.movieScale / 1000;
    EditList edits = editList(moov, track.trak, scale, place.movieScale, wait);
    if (edits.box.empty()) {
        const std::uint64_t length = rescaled(clock.duration, clock.timescale, place.movieScale);
        edits = {TrackBoxes::edits({wait, 0, length}), wait + length};
    }
    TrackBox result;
    result.seconds = static_cast<double>(edits.length) / place.movieScale;
    const RawBox tkhd = needed(moov, track.trak, boxCode("tkhd"));
    result.bytes =
        Boxes::box(boxCode("trak"), {trackHeader(moov, tkhd, request, place, edits.length),
                                     TrackBoxes::chapterReference(place.chapterTrack), edits.box,
                                     mediaBox(moov, mdia, request)});
    return result;
}

}  // namespace marlet::MovieTracks
