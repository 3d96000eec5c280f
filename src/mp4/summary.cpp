#include "mp4/summary.h"

#include <algorithm>

#include "foundation/digest.h"
#include "foundation/syscalls.h"
#include "mp4/box_cursor.h"
#include "mp4/track_parser.h"

namespace marlet {

namespace {

bool isEnabled(ByteView data, const BoxSpan& trak) {
    const auto tkhd = findSpan(data, trak, {boxCode("tkhd")});
    return tkhd && (BigEndian::u32(data, tkhd->start) & 1) != 0;
}

/// Cover art that is stored as a track of one picture.
bool isStill(ByteView data, const BoxSpan& stsd) {
    const std::string entry = BigEndian::fourCC(data, stsd.start + 12);
    return entry == "jpeg" || entry == "png ";
}

/// Where the picture of this track ends, in seconds; nothing for a track that shows no moving one.
std::optional<double> pictureEnd(ByteView data, const BoxSpan& trak, std::uint32_t movieScale) {
    const auto hdlr = findSpan(data, trak, {boxCode("mdia"), boxCode("hdlr")});
    if (!hdlr || BigEndian::fourCC(data, hdlr->start + 8) != "vide") return std::nullopt;
    const auto mdhd = findSpan(data, trak, {boxCode("mdia"), boxCode("mdhd")});
    const auto stsd =
        findSpan(data, trak, {boxCode("mdia"), boxCode("minf"), boxCode("stbl"), boxCode("stsd")});
    if (!mdhd || !stsd || !isEnabled(data, trak) || isStill(data, *stsd)) return std::nullopt;

    const MediaClock clock = mediaClock(data, *mdhd);
    const auto edits = editTimes(data, trak.start, trak.end, movieScale, clock.timescale);
    return edits ? edits->length : clock.seconds();
}

void readTagBlocks(ByteView moov, MP4Summary& summary) {
    for (const Box& block : tagBlocks(moov)) {
        for (TagItem& item : tagItems(moov, block)) {
            summary.ilst.push_back(sha256Hex(item.raw));
            summary.tags.push_back(std::move(item));
        }
    }
    std::sort(summary.ilst.begin(), summary.ilst.end());
}

}  // namespace

MP4Summary parseSummary(ByteView moov, Detail detail) {
    const auto end = static_cast<std::int64_t>(moov.size());
    MP4Summary summary;
    const MediaClock movie = movieClock(moov);
    summary.duration = movie.seconds();

    SampleTables::Budget budget;
    int index = 0;
    BoxCursor cursor(moov, 0, end);
    while (const auto box = cursor.next()) {
        if (box->code != boxCode("trak")) continue;
        auto track = parseTrack(moov, box->start, box->end, detail, movie.timescale, budget);
        if (track) {
            track->index = index;
            summary.tracks.push_back(std::move(*track));
        }
        index++;
        if (const auto seconds = pictureEnd(moov, *box, movie.timescale))
            summary.videoEnd = std::max(summary.videoEnd.value_or(*seconds), *seconds);
    }
    if (detail == Detail::Yes) {
        readTagBlocks(moov, summary);
        summary.chpl = chapterList(moov);
    }
    return summary;
}

MP4Summary parseSummary(ByteView moov, const std::filesystem::path& url, Detail detail) {
    const auto attributes = Sys::stat(url);
    if (!attributes) failWithErrno("cannot read the file's attributes");
    MP4Summary summary = parseSummary(moov, detail);
    summary.fileSize = attributes->size;
    return summary;
}

}  // namespace marlet
