#include "verify/playback_details.h"

#include <fcntl.h>

#include <algorithm>
#include <numeric>
#include <unordered_map>

#include "foundation/digest.h"
#include "foundation/errors.h"
#include "foundation/file_ops.h"
#include "mp4/box_cursor.h"
#include "mp4/sample_tables.h"
#include "mp4/track_parser.h"
#include "verify/index_shape.h"

namespace marlet {

namespace {

using Positions = std::unordered_map<std::uint32_t, std::uint32_t>;  // by track ID

/// Runs of equal values into a digest, however the table divides them.
class RunDigest {
public:
    void add(std::uint64_t count, std::uint32_t value) {
        if (count == 0) return;
        if (count_ > 0 && value != value_) flush();
        value_ = value;
        count_ += count;
    }
    std::string hex() {
        flush();
        return digest_.hex();
    }

private:
    void flush() {
        Bytes run;
        BigEndian::put64(run, count_);
        BigEndian::put32(run, value_);
        digest_.update(run);
        count_ = 0;
    }

    Sha256 digest_;
    std::uint64_t count_ = 0;
    std::uint32_t value_ = 0;
};

/// The rows that the track's chunks were made from, read once more for their last word.
std::string descriptionUse(ByteView data, const SampleTables::Boxes& boxes) {
    const BoxSpan& offsets = boxes.co64 ? *boxes.co64 : *boxes.stco;
    const std::uint64_t chunkCount = BigEndian::u32(data, offsets.start + 4);
    const std::uint32_t rows = BigEndian::u32(data, boxes.stsc->start + 4);
    RunDigest digest;
    for (std::uint32_t row = 0; row < rows; row++) {
        const std::int64_t at = boxes.stsc->start + 8 + 12 * std::int64_t{row};
        const std::uint64_t begin = std::max(BigEndian::u32(data, at), 1U);
        const std::uint64_t next = row + 1 < rows ? BigEndian::u32(data, at + 12) : chunkCount + 1;
        const std::uint64_t end = std::min(next, chunkCount + 1);
        if (end > begin)
            digest.add((end - begin) * BigEndian::u32(data, at + 4), BigEndian::u32(data, at + 8));
    }
    return digest.hex();
}

/// Flag bit 0 of each entry says that the media lies in this very file.
bool isSelfContained(ByteView data, const BoxSpan& minf) {
    const auto dref = findSpan(data, minf, {boxCode("dinf"), boxCode("dref")});
    if (!dref) return false;
    BoxCursor entries(data, dref->start + 8, dref->end);
    int count = 0;
    for (; const auto entry = entries.next(); count++)
        if ((BigEndian::u32(data, entry->start) & 1) == 0) return false;
    return count > 0;
}

BoxCode mediaHeader(ByteView data, const BoxSpan& minf) {
    for (const BoxCode type : {boxCode("vmhd"), boxCode("smhd"), boxCode("hmhd"), boxCode("sthd"),
                               boxCode("nmhd"), boxCode("gmhd")})
        if (findSpan(data, minf, {type})) return type;
    return 0;
}

/// Players look for tags only in a `meta` of the right handler.
std::vector<std::string> tagHandlers(ByteView moov) {
    const auto end = static_cast<std::int64_t>(moov.size());
    std::vector<std::string> handlers;
    for (const auto& meta : {findSpan(moov, 0, end, {boxCode("udta"), boxCode("meta")}),
                             findSpan(moov, 0, end, boxCode("meta"))}) {
        if (!meta) continue;
        for (const std::int64_t children : {meta->start + 4, meta->start}) {
            if (!findSpan(moov, children, meta->end, boxCode("ilst"))) continue;
            const auto hdlr = findSpan(moov, children, meta->end, boxCode("hdlr"));
            handlers.push_back(hdlr ? BigEndian::fourCC(moov, hdlr->start + 8) : std::string());
            break;
        }
    }
    return handlers;
}

struct Reference {
    BoxCode type = 0;
    std::uint32_t position = 0;
    auto operator<=>(const Reference&) const = default;
};

/// Those to tracks that are not there, or were left out on purpose, lead nowhere in either file.
std::string references(ByteView data, const BoxSpan& trak, const Positions& positions) {
    constexpr std::size_t most = 65'536;
    std::vector<Reference> found;
    const auto tref = findSpan(data, trak, {boxCode("tref")});
    if (!tref) return {};
    BoxCursor types(data, tref->start, tref->end);
    while (const auto type = types.next()) {
        for (std::int64_t at = type->start; at + 4 <= type->end; at += 4) {
            const auto to = positions.find(BigEndian::u32(data, at));
            if (to != positions.end()) found.push_back({type->code, to->second});
            if (found.size() > most) throw MFError("too many track references");
        }
    }
    if (found.empty()) return {};
    // The order counts within a type only.
    std::ranges::stable_sort(found, {}, &Reference::type);
    Bytes bytes;
    for (const Reference& reference : found) {
        BigEndian::put32(bytes, reference.type);
        BigEndian::put32(bytes, reference.position);
    }
    return sha256Hex(bytes);
}

double shownSeconds(ByteView data, const BoxSpan& trak, std::uint32_t movieScale) {
    const auto tkhd = findSpan(data, trak, {boxCode("tkhd")});
    if (!tkhd) return 0;
    const std::uint64_t units = boxVersion(data, *tkhd) == 1
                                    ? BigEndian::u64(data, tkhd->start + 28)
                                    : BigEndian::u32(data, tkhd->start + 20);
    return static_cast<double>(units) / movieScale;
}

/// `track` was made from this box, so that its tables are there.
TrackPlayback readTrack(ByteView data, const BoxSpan& trak, const Track& track,
                        std::uint32_t movieScale, const Positions& positions) {
    const auto mdia = findSpan(data, trak, {boxCode("mdia")});
    const auto minf = findSpan(data, *mdia, {boxCode("minf")});
    const auto stbl = findSpan(data, *minf, {boxCode("stbl")});
    const SampleTables::Boxes boxes = SampleTables::boxes(data, *stbl);

    TrackPlayback playback;
    playback.descriptionUse = descriptionUse(data, boxes);
    playback.hasSyncTable = boxes.stss.has_value();
    playback.hasAuxiliaryData = findSpan(data, *stbl, {boxCode("saio")}).has_value();
    playback.isSelfContained = isSelfContained(data, *minf);
    playback.mediaHeader = mediaHeader(data, *minf);
    playback.shownSeconds = shownSeconds(data, trak, movieScale);
    playback.mediaSeconds = mediaClock(data, *findSpan(data, *mdia, {boxCode("mdhd")})).seconds();
    playback.tableSeconds = static_cast<double>(std::accumulate(
                                track.durations.begin(), track.durations.end(), std::uint64_t{0})) /
                            track.timescale;
    if (const auto edits = editTimes(data, trak.start, trak.end, movieScale, track.timescale))
        playback.editSeconds = edits->length;
    playback.references = references(data, trak, positions);
    return playback;
}

Bytes presentationOf(ByteView data, const BoxSpan& mvhd) {
    const std::int64_t rate = mvhd.start + (boxVersion(data, mvhd) == 1 ? 32 : 20);
    constexpr std::int64_t endOfMatrix = 4 + 2 + 10 + 36;
    const ByteView part = slice(data, rate, std::min(rate + endOfMatrix, mvhd.end));
    return {part.begin(), part.end()};
}

std::vector<BoxSpan> trackBoxes(ByteView moov) {
    std::vector<BoxSpan> found;
    BoxCursor cursor(moov, 0, static_cast<std::int64_t>(moov.size()));
    while (const auto box = cursor.next())
        if (box->code == boxCode("trak")) found.push_back(*box);
    return found;
}

}  // namespace

std::string mainBrand(const std::filesystem::path& file) {
    const auto top = TagRestore::topLevel(file);
    if (top.empty() || top.front().type != "ftyp") return {};
    const FileHandle handle = FileHandle::open(file, O_RDONLY, "cannot open the file");
    Bytes brand(4);
    brand.resize(
        FileOps::readFull(handle.get(), brand, static_cast<std::uint64_t>(top.front().header)));
    return latin1ToUtf8(brand);
}

MoviePlayback readPlayback(ByteView moov, const MP4Summary& summary) {
    const auto end = static_cast<std::int64_t>(moov.size());
    MoviePlayback movie;
    movie.isWellFormed = isWellFormed(moov);
    movie.tagHandlers = tagHandlers(moov);
    movie.isFragmented = findSpan(moov, 0, end, boxCode("mvex")).has_value();
    if (const auto mvhd = findSpan(moov, 0, end, boxCode("mvhd"))) {
        movie.timescale = mediaClock(moov, *mvhd).timescale;
        movie.presentation = presentationOf(moov, *mvhd);
    }
    Positions positions;
    for (std::uint32_t i = 0; i < summary.tracks.size(); i++)
        positions.emplace(summary.tracks[i].id, i);
    const std::vector<BoxSpan> boxes = trackBoxes(moov);
    for (const Track& track : summary.tracks)
        movie.tracks.push_back(readTrack(moov, boxes.at(static_cast<std::size_t>(track.index)),
                                         track, movie.timescale, positions));
    return movie;
}

}  // namespace marlet
