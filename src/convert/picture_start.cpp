#include "convert/picture_start.h"

#include <fcntl.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <vector>

#include "foundation/errors.h"
#include "foundation/file_ops.h"
#include "mp4/summary.h"
#include "write/index_in_file.h"

namespace marlet::PictureStart {

namespace {

/// One entry of an edit list, and where its two times stand.
struct Edit {
    std::int64_t durationAt = 0;
    std::int64_t timeAt = 0;
    std::uint64_t duration = 0;  ///< movie units
    std::int64_t time = 0;       ///< media units; negative: an empty edit
    int width = 4;               ///< bytes of each field
};

std::vector<Edit> editsOf(ByteView data, const Box& elst) {
    const bool isWide = elst.start < elst.end && data[static_cast<std::size_t>(elst.start)] == 1;
    const int width = isWide ? 8 : 4;
    const std::uint32_t count = BigEndian::u32(data, elst.start + 4);
    std::vector<Edit> edits;
    std::int64_t at = elst.start + 8;
    for (std::uint32_t i = 0; i < count && at + 2 * width + 4 <= elst.end; i++) {
        Edit edit{at, at + width, 0, 0, width};
        edit.duration = isWide ? BigEndian::u64(data, at) : BigEndian::u32(data, at);
        edit.time = isWide ? static_cast<std::int64_t>(BigEndian::u64(data, at + width))
                           : static_cast<std::int32_t>(BigEndian::u32(data, at + width));
        edits.push_back(edit);
        at += 2 * width + 4;
    }
    return edits;
}

/// The time of the frame that is shown first, in media units.
std::int64_t firstShown(const Track& track) {
    std::int64_t decoded = 0;
    std::int64_t first = INT64_MAX;
    const std::size_t count = std::min(track.durations.size(), track.ctts.size());
    for (std::size_t i = 0; i < count; i++) {
        first = std::min(first, decoded + track.ctts[i]);
        decoded += track.durations[i];
    }
    return count == 0 ? 0 : first;
}

Bytes bigEndian(std::uint64_t value, int width) {
    Bytes bytes;
    for (int i = width - 1; i >= 0; i--)
        bytes.push_back(static_cast<std::uint8_t>(value >> (8 * i)));
    return bytes;
}

/// What the edit list of converted sound hides, in seconds.
double runIn(const std::filesystem::path& m4a) {
    const auto index = readIndex(m4a);
    if (!index) return 0;
    const std::vector<Track> tracks = parseSummary(index->payload, Detail::No).tracks;
    return tracks.empty() ? 0 : std::max(0.0, -tracks.front().presOffset);
}

/// The media time that is to be seen or heard first, in media units.
std::int64_t firstPlayed(const Track& track, const std::vector<MuxTrack>& asked) {
    if (track.handler == "vide") return firstShown(track);
    const auto place = static_cast<std::size_t>(track.index);
    if (track.handler != "soun" || place >= asked.size() || asked[place].file.extension() != ".m4a")
        return 0;
    return std::llround(runIn(asked[place].file) * track.timescale);
}

std::uint32_t movieScale(ByteView moov) {
    const auto mvhd = find(moov, 0, static_cast<std::int64_t>(moov.size()), {"mvhd"});
    if (!mvhd) return 0;
    const bool isWide = moov[static_cast<std::size_t>(mvhd->start)] == 1;
    return BigEndian::u32(moov, mvhd->start + (isWide ? 20 : 12));
}

}  // namespace

void restore(const std::filesystem::path& built, const std::vector<MuxTrack>& tracksAsked) {
    const auto index = readIndex(built);
    if (!index) return;
    const ByteView moov = index->payload;
    const std::vector<Track> tracks = parseSummary(moov, Detail::Yes).tracks;
    const std::uint32_t scale = movieScale(moov);
    FileHandle handle;
    int number = -1;
    for (const Box& trak : children(moov, 0, static_cast<std::int64_t>(moov.size()))) {
        if (trak.type != "trak") continue;
        number++;
        const auto track = std::ranges::find(tracks, number, &Track::index);
        const auto elst = find(moov, trak.start, trak.end, {"edts", "elst"});
        if (track == tracks.end() || !elst) continue;
        const std::vector<Edit> edits = editsOf(moov, *elst);
        const bool isDelay = edits.size() == 2 && edits[0].time < 0 && edits[1].time == 0;
        if (!isDelay) continue;
        const std::int64_t shown = firstPlayed(*track, tracksAsked);
        if (shown <= 0) continue;

        const auto hidden = static_cast<std::uint64_t>(std::llround(
            static_cast<double>(shown) * static_cast<double>(scale) / track->timescale));
        const Edit& edit = edits[1];
        if (!handle.isOpen())
            handle = FileHandle::open(built, O_WRONLY, "cannot open the new file to set its start");
        FileOps::writeAll(handle.get(), bigEndian(static_cast<std::uint64_t>(shown), edit.width),
                          index->fileOffset(edit.timeAt));
        FileOps::writeAll(handle.get(),
                          bigEndian(edit.duration - std::min(edit.duration, hidden), edit.width),
                          index->fileOffset(edit.durationAt));
    }
}

}  // namespace marlet::PictureStart
