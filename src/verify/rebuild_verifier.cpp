#include "verify/rebuild_verifier.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <unordered_set>

#include "foundation/errors.h"
#include "foundation/text.h"
#include "mp4/sound_layout.h"
#include "verify/chapter_track.h"
#include "verify/sample_comparison.h"
#include "verify/sample_order.h"
#include "verify/track_comparison.h"

namespace marlet {

namespace fs = std::filesystem;

namespace {

using Keep = std::optional<std::vector<int>>;

/// Both files' tables have to lie in memory side by side; no film's come near this.
constexpr std::uint64_t mostTableBytes = 192ULL << 20;

std::uint64_t tableBytes(const MP4Summary& summary) {
    std::uint64_t bytes = 0;
    for (const Track& track : summary.tracks)
        bytes += 4 * (track.sizes.size() + track.durations.size() + track.sync.size()) +
                 sizeof(std::int64_t) * track.ctts.size() + sizeof(Chunk) * track.chunks.size();
    return bytes;
}

/// The tracks of these indices, in their order; false when one isn't there, or is named twice.
bool cutDown(std::vector<Track>& tracks, const std::vector<int>& keep) {
    std::vector<bool> isTaken(tracks.size());
    std::vector<Track> kept;
    for (const int index : keep) {
        const auto found = std::ranges::lower_bound(tracks, index, {}, &Track::index);
        if (found == tracks.end() || found->index != index) return false;
        const auto place = static_cast<std::size_t>(found - tracks.begin());
        if (isTaken[place]) return false;
        isTaken[place] = true;
        kept.push_back(std::move(*found));
    }
    tracks = std::move(kept);
    return true;
}

/// References and players tell tracks apart by their number.
bool idsAreDistinct(const std::vector<Track>& tracks) {
    std::unordered_set<std::uint32_t> ids;
    return std::ranges::all_of(
        tracks, [&](const Track& track) { return track.id != 0 && ids.insert(track.id).second; });
}

/// A file with all its tracks, and what is to be compared of it.
struct Side : VerifiedSide {
    std::vector<Track> chapterTracks;  ///< of a file whose chapters were made anew
    bool hasDistinctIDs = true;
};

/// Nothing when a track to keep isn't there.
std::optional<Side> readSide(const fs::path& file, const Keep& keep, bool hasNewChapters) {
    const Bytes moov = loadMoov(file);
    Side side;
    side.summary = parseSummary(moov, file, Detail::Yes);
    if (tableBytes(side.summary) > mostTableBytes)
        throw MFError("the index is too large to be proved");
    if (keep && !cutDown(side.summary.tracks, *keep)) return std::nullopt;
    side.hasDistinctIDs = idsAreDistinct(side.summary.tracks);
    if (hasNewChapters) {
        std::vector<Track>& tracks = side.summary.tracks;
        const std::set<std::size_t> positions = chapterTracks(tracks);
        for (auto i = positions.rbegin(); i != positions.rend(); ++i) {
            const auto at = tracks.begin() + static_cast<std::ptrdiff_t>(*i);
            side.chapterTracks.push_back(std::move(*at));
            tracks.erase(at);
        }
    }
    side.playback = readPlayback(moov, side.summary);
    side.playback.brand = mainBrand(file);
    return side;
}

/// The sound tracks alone are measured. They are lent for it, because their tables are large.
double soundLayout(MP4Summary& summary) {
    MP4Summary sound;
    sound.videoEnd = summary.videoEnd;
    std::vector<std::size_t> places;
    for (std::size_t i = 0; i < summary.tracks.size(); i++) {
        if (summary.tracks[i].handler != "soun") continue;
        places.push_back(i);
        sound.tracks.push_back(std::move(summary.tracks[i]));
    }
    const double seconds = measure(sound);
    for (std::size_t i = 0; i < places.size(); i++)
        summary.tracks[places[i]] = std::move(sound.tracks[i]);
    return seconds;
}

bool durationFits(const MP4Summary& original, const MP4Summary& rebuilt, bool tracksLeftOut) {
    constexpr double tolerance = 0.1;
    if (!tracksLeftOut) return std::abs(original.duration - rebuilt.duration) <= tolerance;
    // Without its longest sound a film may end with its picture.
    return rebuilt.duration <= original.duration + tolerance &&
           (!original.videoEnd || rebuilt.duration >= *original.videoEnd - tolerance);
}

/// What no comparison of tracks sees.
void compareMovies(const VerifiedSide& original, const VerifiedSide& rebuilt,
                   const RebuildTerms& terms, VerifyReport& report) {
    if (original.playback.isFragmented || rebuilt.playback.isFragmented)
        report.reasons.push_back("the file is in fragments, whose samples can't be compared");
    if (original.playback.isWellFormed && !rebuilt.playback.isWellFormed)
        report.reasons.push_back("the index of the rebuilt file isn't well formed");
    if (terms.lenientSampleEntries) return;
    if (original.playback.brand != rebuilt.playback.brand)
        report.reasons.push_back("kind of file (ftyp) differs (" + original.playback.brand +
                                 " vs " + rebuilt.playback.brand + ")");
    if (!original.playback.tagHandlers.empty() && !rebuilt.playback.tagHandlers.empty() &&
        original.playback.tagHandlers != rebuilt.playback.tagHandlers)
        report.reasons.push_back("handler of the iTunes metadata differs");
    if (original.playback.presentation != rebuilt.playback.presentation)
        report.reasons.push_back("movie header rate, volume or matrix differ");
}

/// Whether all samples lie in `mdat` boxes, where players look for them.
bool liesInMediaData(const fs::path& file, const MP4Summary& summary) {
    std::map<std::uint64_t, std::uint64_t> ends;  // by start
    for (const TagRestore::Top& box : TagRestore::topLevel(file))
        if (box.type == "mdat") ends[box.offset] = box.offset + box.size;
    const auto lies = [&](std::uint64_t from, std::uint64_t bytes) {
        const auto next = ends.upper_bound(from);
        if (next == ends.begin()) return false;
        const std::uint64_t end = std::prev(next)->second;
        return from <= end && bytes <= end - from;
    };
    for (const Track& track : summary.tracks)
        for (const Chunk& chunk : track.chunks)
            if (const std::uint64_t bytes = chunkBytes(track, chunk);
                bytes > 0 && !lies(chunk.offset, bytes))
                return false;
    return true;
}

void compareChapters(const fs::path& originalFile, const VerifiedSide& original,
                     const fs::path& rebuiltFile, const VerifiedSide& rebuilt,
                     const std::set<std::size_t>& positions, VerifyReport& report) {
    if (!chaptersMatch(original.summary.chpl, rebuilt.summary.chpl))
        report.reasons.push_back("chapter list (chpl) differs");
    for (const std::size_t i : positions) {
        const Track& track = original.summary.tracks[i];
        if (!chaptersMatch(chaptersInTrack(originalFile, track),
                           chaptersInTrack(rebuiltFile, rebuilt.summary.tracks[i])))
            report.reasons.push_back("chapter titles or times differ in track " +
                                     std::to_string(track.id));
    }
}

void compareNewChapters(const std::vector<Chapter>& wanted, const fs::path& file, const Side& side,
                        VerifyReport& report) {
    ChapterPlaces places{file, side.summary.chpl, {}};
    for (const Track& track : side.chapterTracks) places.tracks.push_back(&track);
    if (places.areNone())
        report.reasons.emplace_back(chaptersLost);
    else if (!tellChapters(places, wanted))
        report.reasons.emplace_back(chaptersDiffer);
}

void compareTagBlocks(const MP4Summary& original, const MP4Summary& rebuilt, VerifyReport& report) {
    if (original.tags == rebuilt.tags) return;
    std::vector<std::string> lines = compareTags(original.tags, rebuilt.tags);
    if (lines.empty()) lines.push_back("iTunes metadata differs in its order or structure");
    std::ranges::move(lines, std::back_inserter(report.reasons));
}

}  // namespace

VerifyReport verifyRebuild(const fs::path& original, const fs::path& rebuilt,
                           const RebuildTerms& terms, RunControl& control,
                           const StepProgress& progress) {
    VerifyReport report;
    auto before = readSide(original, terms.keepIndices, false);
    auto after = readSide(rebuilt, std::nullopt, terms.newChapters.has_value());
    if (!before) {
        report.reasons.push_back("a track to keep isn't in the file");
        return report;
    }
    MP4Summary& a = before->summary;
    MP4Summary& b = after->summary;

    report.before = soundLayout(a);
    if (!durationFits(a, b, terms.keepIndices.has_value()))
        report.reasons.push_back("duration differs (" + Text::fixed(a.duration, 2) + " s vs " +
                                 Text::fixed(b.duration, 2) + " s)");
    if (a.tracks.size() != b.tracks.size()) {
        report.reasons.push_back("track count differs (" + std::to_string(a.tracks.size()) +
                                 " vs " + std::to_string(b.tracks.size()) + ")");
        return report;
    }
    compareMovies(*before, *after, terms, report);
    const std::set<std::size_t> chapters = chapterTracks(a.tracks);
    if (terms.newChapters)
        compareNewChapters(*terms.newChapters, rebuilt, *after, report);
    else
        compareChapters(original, *before, rebuilt, *after, chapters, report);
    for (std::size_t i = 0; i < a.tracks.size(); i++)
        compareTracks(*before, *after, i, chapters.contains(i), terms, report);
    if (before->hasDistinctIDs && !after->hasDistinctIDs)
        report.reasons.push_back("a track's number is missing or used twice");
    if (!terms.allowTagChange) compareTagBlocks(a, b, report);
    if (!report.reasons.empty()) return report;

    compareSamples(original, a, rebuilt, b, chapters, control, progress, report);
    if (liesInMediaData(original, a) && !liesInMediaData(rebuilt, b))
        report.reasons.push_back("samples lie outside the media data (mdat)");
    report.after = soundLayout(b);
    if (report.after > terms.maxAfter)
        report.reasons.push_back("rebuilt file still measures " + Text::fixed(report.after, 2) +
                                 " s (limit " + Text::fixed(terms.maxAfter, 1) + " s)");
    return report;
}

}  // namespace marlet
