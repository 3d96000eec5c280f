#include <algorithm>
#include <array>
#include <string_view>

#include "convert/plan_language.h"
#include "convert/plan_parts.h"
#include "convert/track_types.h"
#include "foundation/text.h"

namespace marlet::PlanParts {

namespace {

struct Format {
    std::string_view codec;
    SubKind kind;
    const char* refusal = nullptr;
};

constexpr std::array formats{
    Format{"S_TEXT/UTF8", SubKind::text},
    Format{"S_TEXT/ASCII", SubKind::text},
    Format{"S_TEXT/ASS", SubKind::text},
    Format{"S_TEXT/SSA", SubKind::text},
    Format{"S_ASS", SubKind::text},
    Format{"S_SSA", SubKind::text},
    Format{"S_TEXT/WEBVTT", SubKind::text},
    Format{"S_HDMV/PGS", SubKind::picture},
    Format{"S_VOBSUB", SubKind::picture,
           "picture subtitles of this kind (VobSub) can't be read yet"},
};

void setKind(SubChoice& choice, const std::string& codecID) {
    const auto* const format = std::ranges::find(formats, codecID, &Format::codec);
    if (format == formats.end()) {
        choice.unsupportedReason = codecID + " subtitles can't be converted";
        return;
    }
    choice.kind = format->kind;
    if (format->refusal != nullptr) choice.unsupportedReason = format->refusal;
}

std::int64_t frames(const TrackStats& stats, int track) {
    const auto found = stats.find(track);
    return found == stats.end() ? 0 : found->second.count;
}

/// Frames of the longest other subtitle of the language; nothing when there is no other.
std::optional<std::int64_t> longestPeer(const PlanInput& input, const MKVTrack& track,
                                        const std::string& language) {
    std::optional<std::int64_t> longest;
    for (const MKVTrack& peer : input.tracks) {
        if (peer.type != TrackType::subtitle || peer.number == track.number ||
            PlanLanguage::code(peer.language) != language)
            continue;
        longest = std::max(longest.value_or(0), frames(input.stats, peer.number));
    }
    return longest;
}

/// Far fewer lines than another of its language, and of a language that is heard: what it says
/// can't be the whole film.
bool hasFewLines(const PlanInput& input, const MKVTrack& track, const SubChoice& choice,
                 const Languages& kept) {
    constexpr std::int64_t fewestOfFull = 20;
    constexpr std::int64_t times = 5;
    if (!kept.contains(choice.language)) return false;
    const std::int64_t own = frames(input.stats, track.number);
    if (own < 1) return false;
    const std::int64_t full = longestPeer(input, track, choice.language).value_or(0);
    return full >= fewestOfFull && own * times < full;
}

bool saysForced(const MKVTrack& track) {
    const std::string name = Text::lower(track.name.value_or(""));
    return track.isForced || Text::contains(name, "forced") || Text::contains(name, "foreign");
}

void judgeForced(SubChoice& choice, const PlanInput& input, const Languages& kept) {
    if (saysForced(*choice.track)) {
        choice.isForced = true;
    } else if (hasFewLines(input, *choice.track, choice, kept)) {
        choice.isForced = true;
        choice.note = "Looks like foreign parts only (far fewer lines than the full " +
                      Lang::name(choice.language) + " subtitles)";
    }
}

std::string label(const SubChoice& choice) {
    if (choice.isForced) return forcedLabel(choice.language);
    const auto words = Lang::descriptor(choice.track->name, choice.language);
    return Lang::name(choice.language) + (words ? " · " + *words : "");
}

void addNote(SubChoice& choice, const std::string& text) {
    choice.note = choice.note ? *choice.note + ". " + text : text;
}

SubChoice embedded(const MKVTrack& track, const PlanInput& input, const Languages& kept) {
    SubChoice choice{.id = "mkv" + std::to_string(track.number),
                     .track = track,
                     .language = PlanLanguage::code(track.language)};
    setKind(choice, track.codecID);
    const auto unreadable = input.unreadable.find(track.number);
    if (!choice.unsupportedReason && unreadable != input.unreadable.end())
        choice.unsupportedReason = unreadable->second;

    judgeForced(choice, input, kept);
    choice.label = label(choice);
    const bool isHeard = choice.isForced && kept.contains(choice.language);
    choice.keep =
        !choice.unsupportedReason && (isHeard || isWanted(choice.language, input.keepLanguages));
    if (choice.kind == SubKind::picture && !choice.unsupportedReason)
        addNote(choice, "Picture subtitles: read as text (OCR)");
    return choice;
}

}  // namespace

std::vector<SubChoice> embeddedSubtitles(const PlanInput& input, const Languages& kept) {
    std::vector<SubChoice> choices;
    for (const MKVTrack& track : input.tracks)
        if (track.type == TrackType::subtitle) choices.push_back(embedded(track, input, kept));
    return choices;
}

std::string forcedLabel(const std::string& language) {
    return Lang::name(language) + foreignPartsOnly;
}

}  // namespace marlet::PlanParts
