#include "helpers/movie_map.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <string>

#include "foundation/errors.h"
#include "helpers/file_offsets.h"
#include "mp4/sample_tables.h"
#include "mp4/summary.h"
#include "mp4/track_parser.h"

namespace marlet::MovieMaps {

namespace {

/// Of all tracks together; a film that the reader takes has no more.
constexpr std::uint64_t mostSamples = 2 * SampleTables::Budget::mostSamples;
/// A hundred times what any film has; each costs a cursor.
constexpr std::size_t mostTracks = 65'536;
/// Presentation times stay far from where sums of 64 bits would wrap.
constexpr double farthest = 1e18;

/// Sample entries whose bytes are encrypted: ISO/IEC 14496-12, 8.12, and those of iTunes.
constexpr std::array encrypted = {boxCode("encv"), boxCode("enca"), boxCode("encs"),
                                  boxCode("enct"), boxCode("encm"), boxCode("encf"),
                                  boxCode("encu"), boxCode("drms"), boxCode("drmi")};

BoxSpan spanOf(const RawBox& box) {
    return {box.code, true, static_cast<std::int64_t>(box.at), static_cast<std::int64_t>(box.start),
            static_cast<std::int64_t>(box.end)};
}

void refuseEncrypted(ByteView moov, const RawBox& stbl) {
    const auto stsd = RawBoxes::only(moov, stbl, boxCode("stsd"));
    if (!stsd) return;
    BoxCursor entries(moov, static_cast<std::int64_t>(stsd->start) + 8,
                      static_cast<std::int64_t>(stsd->end));
    while (const auto entry = entries.next()) {
        if (std::find(encrypted.begin(), encrypted.end(), entry->code) != encrypted.end())
            throw MFError("the file is encrypted (" + RawBoxes::name(entry->code) +
                          "), so it can't be laid out anew");
    }
}

/// Flag bit 0 of an entry says that the media lies in this file (8.7.2).
void refuseOutsideMedia(ByteView moov, const RawBox& minf) {
    const auto dref = RawBoxes::only(moov, minf, {boxCode("dinf"), boxCode("dref")});
    if (!dref) return;
    BoxCursor entries(moov, static_cast<std::int64_t>(dref->start) + 8,
                      static_cast<std::int64_t>(dref->end));
    while (const auto entry = entries.next()) {
        if ((BigEndian::u32(moov, entry->start) & 1) == 0)
            throw MFError("media of the file lies in another file (dref)");
    }
}

void refuseForms(ByteView moov, const RawBox& root) {
    StrictBoxes boxes(moov, root);
    while (const auto box = boxes.next()) {
        if (box->code == boxCode("mvex"))
            throw MFError("the file is fragmented (mvex), which can't be laid out anew");
        if (box->code == boxCode("cmov"))
            throw MFError("the file's index is compressed (cmov), which isn't read");
        if (box->code == boxCode("rmra"))
            throw MFError("media of the file lies in another file (rmra)");
    }
    FileOffsets::refuseInIndex(moov, root);
}

std::uint32_t trackID(ByteView moov, const RawBox& trak) {
    const auto tkhd = RawBoxes::only(moov, trak, boxCode("tkhd"));
    if (!tkhd) return 0;
    const BoxSpan span = spanOf(*tkhd);
    return BigEndian::u32(moov, span.start + (boxVersion(moov, span) == 1 ? 20 : 12));
}

/// Movie time units a second.
std::uint32_t movieScale(ByteView moov, const RawBox& root) {
    const auto mvhd = RawBoxes::only(moov, root, boxCode("mvhd"));
    return mvhd ? mediaClock(moov, spanOf(*mvhd)).timescale : 1;
}

void readClock(ByteView moov, const RawBox& mdia, std::uint32_t scale, MappedTrack& track) {
    const auto mdhd = RawBoxes::only(moov, mdia, boxCode("mdhd"));
    if (mdhd) track.timescale = mediaClock(moov, spanOf(*mdhd)).timescale;
    const auto hdlr = RawBoxes::only(moov, mdia, boxCode("hdlr"));
    const auto handler = hdlr ? static_cast<std::int64_t>(hdlr->start) + 8 : 0;
    track.isSound = hdlr && BigEndian::u32(moov, handler) == boxCode("soun");
    const BoxSpan trak = spanOf(track.trak);
    if (const auto times = editTimes(moov, trak.start, trak.end, scale, track.timescale))
        track.start = static_cast<std::int64_t>(
            std::clamp(std::round(times->offset * track.timescale), -farthest, farthest));
}

MappedTrack mapTrack(ByteView moov, const RawBox& trak, std::uint32_t id, std::uint32_t scale) {
    MappedTrack track;
    track.trak = trak;
    track.id = id;
    const auto mdia = RawBoxes::only(moov, trak, boxCode("mdia"));
    if (!mdia) return track;
    readClock(moov, *mdia, scale, track);
    const auto minf = RawBoxes::only(moov, *mdia, boxCode("minf"));
    if (!minf) return track;
    track.stbl = RawBoxes::only(moov, *minf, boxCode("stbl"));
    if (!track.stbl) return track;
    refuseEncrypted(moov, *track.stbl);
    refuseOutsideMedia(moov, *minf);
    track.tables = trackTables(moov, *track.stbl);
    return track;
}

void checkRemoved(std::set<std::uint32_t> wanted, const std::vector<std::uint32_t>& found) {
    for (const std::uint32_t id : found) {
        if (wanted.erase(id) == 0)
            throw MFError("two tracks of the file have the number " + std::to_string(id));
    }
    if (!wanted.empty())
        throw MFError("the file has no track with the number " + std::to_string(*wanted.begin()));
}

}  // namespace

MovieMap read(ByteView moov, const std::set<std::uint32_t>& removed) {
    const auto root = StrictBoxes(moov, 0, moov.size()).next();
    if (!root || root->code != boxCode("moov")) throw MFError("the file has no index (moov)");
    refuseForms(moov, *root);
    MovieMap map{*root, {}, {}};
    const std::uint32_t scale = movieScale(moov, *root);
    std::vector<std::uint32_t> removedIDs;
    std::uint64_t samples = 0;
    StrictBoxes boxes(moov, *root);
    while (const auto box = boxes.next()) {
        if (box->code != boxCode("trak")) continue;
        const std::uint32_t id = trackID(moov, *box);
        if (removed.contains(id)) {
            removedIDs.push_back(id);
            map.removedTracks.push_back(*box);
            continue;
        }
        if (map.tracks.size() == mostTracks) throw MFError("the file has too many tracks");
        map.tracks.push_back(mapTrack(moov, *box, id, scale));
        samples += map.tracks.back().tables.samples;
        if (samples > mostSamples)
            throw MFError("the file claims more samples than a film can have");
    }
    checkRemoved(removed, removedIDs);
    if (map.tracks.empty()) throw MFError("the file has no track that could stay");
    return map;
}

}  // namespace marlet::MovieMaps
