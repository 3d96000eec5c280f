// Counting forced pictures, without the pictures.

#include <algorithm>
#include <optional>
#include <set>

#include "convert/pgs_parser.h"
#include "convert/pgs_segments.h"

namespace marlet::PGSParser {

namespace {

using PGSSegments::headSize;

/// Up to the count of objects in a composition that begins a frame.
constexpr std::size_t countEnd = 14;
/// Enough for two objects, and discs never show more.
constexpr std::size_t fewBytes = countEnd + 2 * std::size_t{16};

/// The beginning of a frame when that is a composition with objects; nothing otherwise.
std::optional<Bytes> compositionOf(const MKVFile& mkv, const MKVBlock& block,
                                   const MKVBlock::Frame& frame) {
    Bytes bytes = mkv.head(block, frame, fewBytes);
    if (bytes.size() < countEnd || bytes[countEnd - 1] == 0) return std::nullopt;
    if (static_cast<PGSSegments::Type>(bytes[0]) != PGSSegments::Type::Composition)
        return std::nullopt;
    const std::size_t whole =
        headSize + std::min<std::size_t>(BigEndian::u16(bytes, 1), PGSSegments::longestComposition);
    if (whole > bytes.size() && bytes.size() == fewBytes) bytes = mkv.head(block, frame, whole);
    bytes.resize(std::min(whole, bytes.size()));
    return bytes;
}

bool isForced(ByteView composition) {
    const auto read = PGSSegments::readComposition(composition.subspan(headSize));
    return read && std::any_of(read->objects.begin(), read->objects.end(),
                               [](const Obj& object) { return object.forced; });
}

}  // namespace

std::map<int, ForcedStats> forcedStats(const MKVFile& mkv, const std::set<int>& tracks,
                                       const MKVFile::WalkProgress& progress) {
    std::map<int, ForcedStats> all;
    for (const int track : tracks) all[track] = {};
    mkv.forEachBlock(tracks, progress, [&](const MKVBlock& block) {
        ForcedStats& stats = all[block.track];
        for (const MKVBlock::Frame& frame : block.frames) {
            const auto composition = compositionOf(mkv, block, frame);
            if (!composition) continue;
            stats.events++;
            if (isForced(*composition)) stats.forced++;
        }
        return true;
    });
    return all;
}

ForcedStats forcedStats(const MKVFile& mkv, const MKVTrack& track,
                        const MKVFile::WalkProgress& progress) {
    return forcedStats(mkv, std::set{track.number}, progress)[track.number];
}

}  // namespace marlet::PGSParser
