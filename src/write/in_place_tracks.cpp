#include "write/in_place_tracks.h"

#include <fcntl.h>

#include <algorithm>
#include <array>
#include <set>

#include "foundation/errors.h"
#include "foundation/syscalls.h"
#include "foundation/text.h"
#include "mp4/box_cursor.h"
#include "mp4/summary.h"
#include "write/index_in_file.h"
#include "write/media_language.h"
#include "write/sound_channels.h"

namespace marlet::InPlaceTracks {

namespace fs = std::filesystem;

namespace {

using Kind = InPlaceTrack::Kind;

std::optional<Kind> kindOf(const std::string& handler) {
    constexpr std::array<std::string_view, 4> subtitles = {"sbtl", "text", "subt", "clcp"};
    if (handler == "soun") return Kind::audio;
    if (std::ranges::find(subtitles, handler) != subtitles.end()) return Kind::subtitle;
    return std::nullopt;
}

/// QuickTime counts a name's bytes ahead of it instead of ending it with a zero.
ByteView withoutCount(ByteView name) {
    constexpr std::uint8_t firstPrintable = 0x20;
    const bool isCounted = !name.empty() && name[0] < firstPrintable && name[0] == name.size() - 1;
    return isCounted ? name.subspan(1) : name;
}

/// The name in `hdlr` (ISO/IEC 14496-12, 8.4.3); the names that programs give every track of a
/// kind are none.
std::string nameIn(ByteView moov, const BoxSpan& trak) {
    constexpr std::int64_t nameAt = 24;
    const auto hdlr = findSpan(moov, trak, {boxCode("mdia"), boxCode("hdlr")});
    if (!hdlr) return {};
    ByteView name = slice(moov, hdlr->start + nameAt, hdlr->end);
    name = name.first(static_cast<std::size_t>(std::ranges::find(name, 0) - name.begin()));
    std::string text = Text::repairUtf8(withoutCount(name));
    return Text::endsWith(Text::lower(text), "handler") ? std::string() : text;
}

/// By Track::index.
std::vector<std::string> trackNames(ByteView moov) {
    std::vector<std::string> names;
    BoxCursor cursor(moov, 0, static_cast<std::int64_t>(moov.size()));
    while (const auto box = cursor.next())
        if (box->code == boxCode("trak")) names.push_back(nameIn(moov, *box));
    return names;
}

std::set<std::uint32_t> chapterTracks(const MP4Summary& summary) {
    std::set<std::uint32_t> ids;
    for (const Track& track : summary.tracks)
        ids.insert(track.chapRefs.begin(), track.chapRefs.end());
    return ids;
}

InPlaceTrack describe(const Track& track, Kind kind, std::string name) {
    InPlaceTrack found;
    found.id = track.id;
    found.index = track.index;
    found.kind = kind;
    found.language = knownLanguage(track.language);
    found.name = std::move(name);
    found.codec = track.codec;
    found.channels = kind == Kind::audio ? soundChannels(track.stsd) : 0;
    found.enabled = (track.tkhdFlags & 1) != 0;
    found.altGroup = track.altGroup;
    return found;
}

std::string counted(std::ptrdiff_t count, const std::string& what) {
    return std::to_string(count) + " " + what + (count == 1 ? "" : "s");
}

/// Where the `tkhd` payload of the nth track stands in the payload of `moov`.
std::optional<std::int64_t> headerPlace(ByteView moov, int wanted) {
    int index = 0;
    BoxCursor cursor(moov, 0, static_cast<std::int64_t>(moov.size()));
    while (const auto box = cursor.next()) {
        if (box->code != boxCode("trak") || index++ != wanted) continue;
        const auto tkhd = findSpan(moov, *box, {boxCode("tkhd")});
        constexpr std::int64_t versionAndFlags = 4;
        if (!tkhd || tkhd->end - tkhd->start < versionAndFlags) return std::nullopt;
        return tkhd->start;
    }
    return std::nullopt;
}

}  // namespace

std::vector<InPlaceTrack> tracksIn(ByteView moov) {
    const MP4Summary summary = parseSummary(moov, Detail::Yes);
    const std::vector<std::string> names = trackNames(moov);
    const std::set<std::uint32_t> chapters = chapterTracks(summary);
    std::vector<InPlaceTrack> tracks;
    for (const Track& track : summary.tracks) {
        const auto kind = kindOf(track.handler);
        if (!kind || chapters.contains(track.id)) continue;
        tracks.push_back(describe(track, *kind, names[static_cast<std::size_t>(track.index)]));
    }
    return tracks;
}

std::vector<InPlaceTrack> read(const fs::path& file) {
    try {
        return tracksIn(loadMoov(file));
    } catch (const std::exception&) {
        return {};
    }
}

std::string summary(const std::vector<InPlaceTrack>& tracks) {
    const auto kept = [&](Kind kind) {
        return std::ranges::count_if(
            tracks, [&](const InPlaceTrack& track) { return track.keep && track.kind == kind; });
    };
    std::vector<std::string> parts = {counted(kept(Kind::audio), "sound"),
                                      counted(kept(Kind::subtitle), "subtitle")};
    const auto removed = std::ranges::count(tracks, false, &InPlaceTrack::keep);
    if (removed > 0) parts.push_back(std::to_string(removed) + " removed");
    return Text::join(parts, ", ");
}

void enable(const std::vector<int>& indices, const fs::path& file) {
    if (indices.empty()) return;
    const auto index = readIndex(file);
    if (!index) throw MFError("no index in the rebuilt file");
    const FileHandle handle =
        FileHandle::open(file, O_WRONLY, "cannot open the rebuilt file to set the sound track");
    for (const int wanted : indices) {
        const auto header = headerPlace(index->payload, wanted);
        if (!header) throw MFError("track " + std::to_string(wanted) + " has no header");
        constexpr std::int64_t lastFlags = 3;
        const std::int64_t at = *header + lastFlags;
        const auto enabled =
            static_cast<std::uint8_t>(index->payload[static_cast<std::size_t>(at)] | 1);
        if (Sys::pwrite(handle.get(), &enabled, 1, index->fileOffset(at)) != 1)
            throw MFError("could not enable track " + std::to_string(wanted));
    }
    if (Sys::fsync(handle.get()) != 0) failWithErrno("could not set the sound track");
}

}  // namespace marlet::InPlaceTracks
