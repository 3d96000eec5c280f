#include "helpers/removed_tracks.h"

#include <algorithm>
#include <cmath>

#include "mp4/track_parser.h"

namespace marlet::RemovedTracks {

namespace {

BoxSpan spanOf(const RawBox& box) {
    return {box.code, true, static_cast<std::int64_t>(box.at), static_cast<std::int64_t>(box.start),
            static_cast<std::int64_t>(box.end)};
}

std::uint32_t idOf(ByteView moov, const RawBox& trak) {
    const auto tkhd = RawBoxes::only(moov, trak, boxCode("tkhd"));
    if (!tkhd) return 0;
    const BoxSpan span = spanOf(*tkhd);
    return BigEndian::u32(moov, span.start + (boxVersion(moov, span) == 1 ? 20 : 12));
}

void appendWithout(ByteView moov, const RawBox& kind, const std::set<std::uint32_t>& gone,
                   Bytes& out) {
    Bytes kept;
    bool hit = false;
    for (std::size_t at = kind.start; at + 4 <= kind.end; at += 4) {
        const std::uint32_t id = BigEndian::u32(moov, static_cast<std::int64_t>(at));
        if (gone.contains(id))
            hit = true;
        else
            BigEndian::put32(kept, id);
    }
    if (!hit) return append(out, moov.subspan(kind.at, kind.end - kind.at));
    if (kept.empty()) return;
    BigEndian::put32(out, static_cast<std::uint32_t>(kept.size() + 8));
    BigEndian::put32(out, kind.code);
    append(out, kept);
}

/// The presented length of a track in seconds: its edit list, or all of its media.
double lengthOf(ByteView moov, const RawBox& trak, std::uint32_t movieScale) {
    const auto mdhd = RawBoxes::only(moov, trak, {boxCode("mdia"), boxCode("mdhd")});
    const MediaClock clock = mdhd ? mediaClock(moov, spanOf(*mdhd)) : MediaClock{};
    const BoxSpan span = spanOf(trak);
    const auto times = editTimes(moov, span.start, span.end, movieScale, clock.timescale);
    return times ? times->length : clock.seconds();
}

void putDuration(Bytes& out, std::size_t at, bool wide, std::uint64_t value) {
    Bytes field;
    if (wide)
        BigEndian::put64(field, value);
    else
        BigEndian::put32(field, static_cast<std::uint32_t>(value));
    std::copy(field.begin(), field.end(), out.begin() + static_cast<std::ptrdiff_t>(at));
}

}  // namespace

std::set<std::uint32_t> ids(ByteView moov, const MovieMap& map) {
    std::set<std::uint32_t> gone;
    for (const RawBox& trak : map.removedTracks) gone.insert(idOf(moov, trak));
    return gone;
}

Bytes withoutReferences(ByteView moov, const RawBox& tref, const std::set<std::uint32_t>& gone) {
    Bytes kinds;
    StrictBoxes boxes(moov, tref);
    while (const auto kind = boxes.next()) appendWithout(moov, *kind, gone, kinds);
    Bytes out;
    if (kinds.empty() && tref.end > tref.start) return out;
    BigEndian::put32(out, static_cast<std::uint32_t>(kinds.size() + 8));
    BigEndian::put32(out, tref.code);
    append(out, kinds);
    return out;
}

void shortenMovie(ByteView moov, const MovieMap& map, Bytes& out, std::size_t mvhdAt) {
    const auto mvhd = RawBoxes::only(moov, map.root, boxCode("mvhd"));
    if (!mvhd) return;
    const BoxSpan span = spanOf(*mvhd);
    const bool wide = boxVersion(moov, span) == 1;
    const MediaClock clock = mediaClock(moov, span);
    double staying = 0;
    for (const MappedTrack& track : map.tracks)
        staying = std::max(staying, lengthOf(moov, track.trak, clock.timescale));
    double going = 0;
    for (const RawBox& trak : map.removedTracks)
        going = std::max(going, lengthOf(moov, trak, clock.timescale));
    const double duration = std::ceil(staying * clock.timescale);
    if (going <= staying || staying <= 0 || duration >= static_cast<double>(clock.duration)) return;
    const std::size_t field = (mvhd->start - mvhd->at) + (wide ? 24 : 16);
    if (mvhd->at + field + (wide ? 8 : 4) > mvhd->end) return;
    putDuration(out, mvhdAt + field, wide, static_cast<std::uint64_t>(duration));
}

}  // namespace marlet::RemovedTracks
