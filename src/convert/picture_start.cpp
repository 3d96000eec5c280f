#include "convert/picture_start.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <optional>

#include "mp4/edit_list.h"
#include "mp4/summary.h"
#include "mp4/track_parser.h"

namespace marlet::PictureStart {

namespace {

/// The second entry of a list of two, where the first only waits and the media begins at 0.
std::optional<Edit> playedFromItsStart(ByteView moov, const BoxSpan& trak) {
    EditCursor edits(moov, trak);
    const auto waits = edits.next();
    const auto plays = edits.next();
    if (!plays || edits.next() || waits->mediaTime >= 0 || plays->mediaTime != 0)
        return std::nullopt;
    return plays;
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

/// The two times of an entry as they stand in the list.
Bytes timesOf(const Edit& edit) {
    Bytes bytes;
    const auto mediaTime = static_cast<std::uint64_t>(edit.mediaTime);
    if (edit.width == 8) {
        BigEndian::put64(bytes, edit.duration);
        BigEndian::put64(bytes, mediaTime);
    } else {
        BigEndian::put32(bytes, static_cast<std::uint32_t>(edit.duration));
        BigEndian::put32(bytes, static_cast<std::uint32_t>(mediaTime));
    }
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

}  // namespace

void restore(BuiltIndex& index, const std::vector<MuxTrack>& tracksAsked) {
    const ByteView moov = index.moov();
    const std::vector<Track> tracks = parseSummary(moov, Detail::Yes).tracks;
    const std::uint32_t scale = movieTimescale(moov);
    int number = -1;
    BoxCursor boxes(moov, 0, static_cast<std::int64_t>(moov.size()));
    while (const auto trak = boxes.next()) {
        if (trak->code != boxCode("trak")) continue;
        number++;
        const auto track = std::ranges::find(tracks, number, &Track::index);
        if (track == tracks.end()) continue;
        auto edit = playedFromItsStart(moov, *trak);
        if (!edit) continue;
        const std::int64_t shown = firstPlayed(*track, tracksAsked);
        if (shown <= 0) continue;

        const auto hidden = static_cast<std::uint64_t>(std::llround(
            static_cast<double>(shown) * static_cast<double>(scale) / track->timescale));
        edit->duration -= std::min(edit->duration, hidden);
        edit->mediaTime = shown;
        index.put(edit->at, timesOf(*edit), "cannot open the new file to set its start");
    }
}

}  // namespace marlet::PictureStart
