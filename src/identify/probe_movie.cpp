#include "identify/probe_movie.h"

#include <algorithm>
#include <array>
#include <limits>
#include <string_view>

#include "identify/probe.h"
#include "mp4/box_cursor.h"
#include "mp4/track_parser.h"

namespace marlet::Probe {

namespace {

struct HandlerKind {
    BoxCode handler;
    TrackInfo::Kind kind;
};

constexpr std::array<HandlerKind, 6> handlerKinds = {{
    {boxCode("vide"), TrackInfo::Kind::video},
    {boxCode("soun"), TrackInfo::Kind::audio},
    {boxCode("sbtl"), TrackInfo::Kind::subtitle},
    {boxCode("subt"), TrackInfo::Kind::subtitle},
    {boxCode("text"), TrackInfo::Kind::subtitle},
    {boxCode("clcp"), TrackInfo::Kind::subtitle},
}};

TrackInfo::Kind kindOf(ByteView moov, const BoxSpan& trak) {
    const auto hdlr = findSpan(moov, trak, {boxCode("mdia"), boxCode("hdlr")});
    if (!hdlr) return TrackInfo::Kind::other;
    const BoxCode handler = BigEndian::u32(moov, hdlr->start + 8);
    const auto row = std::find_if(handlerKinds.begin(), handlerKinds.end(),
                                  [&](const HandlerKind& one) { return one.handler == handler; });
    return row == handlerKinds.end() ? TrackInfo::Kind::other : row->kind;
}

std::string codecOf(ByteView moov, const BoxSpan& trak) {
    const auto stsd =
        findSpan(moov, trak, {boxCode("mdia"), boxCode("minf"), boxCode("stbl"), boxCode("stsd")});
    // Version and flags, the number of entries, the first entry's size and type.
    const bool hasEntry =
        stsd && stsd->end - stsd->start >= 16 && BigEndian::u32(moov, stsd->start + 4) > 0;
    return hasEntry ? fourCC(BigEndian::u32(moov, stsd->start + 12)) : "?";
}

/// QuickTime's numbers for languages, in their order from 0 (QuickTime File Format, "Language Code
/// Values"). 0 is English there, but what writers store who know nothing.
constexpr std::array<std::string_view, 41> macLanguages = {
    "",    "fra", "deu", "ita", "nld", "swe", "spa", "dan", "por", "nor", "heb",
    "jpn", "ara", "fin", "ell", "isl", "mlt", "tur", "hrv", "zho", "urd", "hin",
    "tha", "kor", "lit", "pol", "hun", "est", "lav", "sme", "fao", "fas", "rus",
    "zho", "nld", "gle", "sqi", "ron", "ces", "slk", "slv"};

/// Numbers below this are QuickTime's, others three packed letters (ISO/IEC 14496-12, 8.4.2).
constexpr std::uint16_t firstPackedLanguage = 0x400;

std::optional<std::string> languageOf(ByteView moov, const BoxSpan& trak) {
    const auto mdhd = findSpan(moov, trak, {boxCode("mdia"), boxCode("mdhd")});
    if (!mdhd) return std::nullopt;
    const std::uint16_t code =
        BigEndian::u16(moov, mdhd->start + (boxVersion(moov, *mdhd) == 1 ? 32 : 20));
    std::string language;
    if (code < firstPackedLanguage) {
        if (code < macLanguages.size()) language = macLanguages[code];
    } else {
        for (const int shift : {10, 5, 0})
            language.push_back(static_cast<char>(0x60 + ((code >> shift) & 0x1F)));
        const auto isLetter = [](char c) { return c >= 'a' && c <= 'z'; };
        if (!std::all_of(language.begin(), language.end(), isLetter)) return std::nullopt;
    }
    if (language.empty() || language == "und") return std::nullopt;
    return language;
}

std::optional<double> durationOf(ByteView moov) {
    const auto mvhd = findSpan(moov, 0, static_cast<std::int64_t>(moov.size()), boxCode("mvhd"));
    if (!mvhd) return std::nullopt;
    const MediaClock clock = mediaClock(moov, *mvhd);
    // All ones: the writer did not know (ISO/IEC 14496-12, 8.2.2).
    const bool unknown = boxVersion(moov, *mvhd) == 1
                             ? clock.duration == std::numeric_limits<std::uint64_t>::max()
                             : clock.duration == std::numeric_limits<std::uint32_t>::max();
    if (unknown || clock.duration == 0) return std::nullopt;
    return clock.seconds();
}

}  // namespace

void readMovie(ByteView moov, ScannedFile& into) {
    into.duration = durationOf(moov);
    BoxCursor cursor(moov, 0, static_cast<std::int64_t>(moov.size()));
    while (const auto box = cursor.next()) {
        if (box->code != boxCode("trak")) continue;
        into.tracks.push_back(
            {kindOf(moov, *box), codecOf(moov, *box), languageOf(moov, *box), std::nullopt});
    }
    into.tags = movieTags(moov);
}

}  // namespace marlet::Probe
