#include "verify/conversion_checks.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <map>

#include "foundation/languages.h"
#include "foundation/text.h"
#include "verify/sample_entries.h"

namespace marlet::ConvertVerify {

namespace {

constexpr std::uint32_t enabledFlag = 1;
constexpr std::uint32_t forcedFlag = 0x40000000;

bool isSound(const Track& track) {
    return track.handler == "soun";
}
bool isAAC(const Track& track) {
    const std::string codec = Text::lower(track.codec);
    return isSound(track) && (Text::contains(codec, "mp4a") || Text::contains(codec, "aac"));
}
bool isAC3(const Track& track) {
    const std::string codec = Text::lower(track.codec);
    return isSound(track) && (Text::contains(codec, "ac-3") || Text::contains(codec, "ac3"));
}

void checkChannels(const Pairing& pair, std::string_view codec, int wanted, Report& into) {
    const auto channels = pair.detail.channels;
    if (!channels || *channels == wanted) return;
    into.reasons.push_back(std::string(codec) + " track " + std::to_string(pair.number) + " has " +
                           std::to_string(*channels) + " channels, expected " +
                           std::to_string(wanted));
}

void checkVideo(const Pairing& pair, Report& into) {
    if ((pair.track.tkhdFlags & enabledFlag) == 0)
        into.reasons.push_back("video: the track is disabled");
}
void checkAAC(const Pairing& pair, Report& into) {
    checkChannels(pair, "AAC", pair.expected.channels, into);
}
void checkAC3(const Pairing& pair, Report& into) {
    constexpr int surround51 = 6;
    checkChannels(pair, "AC3", surround51, into);
}
void checkForced(const Pairing& pair, Report& into) {
    const bool isForced = (pair.detail.displayFlags.value_or(0) & forcedFlag) != 0;
    if (isForced == pair.expected.forced) return;
    into.reasons.push_back("subtitle track " + std::to_string(pair.number) + ": forced flag is " +
                           (isForced ? "set" : "missing"));
}

struct KindCheck {
    Expected::Kind kind;
    bool (*is)(const Track&);
    std::string_view shouldBe;
    void (*further)(const Pairing&, Report&);
};

constexpr std::array kindChecks = {
    KindCheck{Expected::Kind::video, [](const Track& track) { return track.handler == "vide"; },
              "the video", checkVideo},
    KindCheck{Expected::Kind::audioCopy, isSound, "sound", nullptr},
    KindCheck{Expected::Kind::audioAAC, isAAC, "AAC", checkAAC},
    KindCheck{Expected::Kind::audioAC3, isAC3, "AC3", checkAC3},
    KindCheck{Expected::Kind::sub, [](const Track& track) { return track.handler == "sbtl"; },
              "a subtitle", checkForced},
};

/// What the tag begins with, in three letters where there are any: "eng" of "en-GB".
std::string threeLetters(const std::string& language) {
    const std::string part = Lang::firstPart(language);
    return packed(part) != 0 ? part : Lang::code(part).value_or("und");
}

double secondsOf(std::uint64_t units, std::uint32_t timescale) {
    return static_cast<double>(units) / timescale;
}

/// The first and the end of all that the samples show, in seconds of the media.
struct MediaRange {
    double start = 0;
    double end = 0;
};
std::optional<MediaRange> mediaRange(const Track& track) {
    if (track.sizes.empty()) return std::nullopt;
    std::int64_t time = 0;
    std::int64_t first = std::numeric_limits<std::int64_t>::max();
    std::int64_t end = std::numeric_limits<std::int64_t>::min();
    for (std::size_t i = 0; i < track.sizes.size(); i++) {
        const std::int64_t length = i < track.durations.size() ? track.durations[i] : 0;
        const std::int64_t shown = time + (i < track.ctts.size() ? track.ctts[i] : 0);
        first = std::min(first, shown);
        end = std::max(end, shown + length);
        time += length;
    }
    return MediaRange{static_cast<double>(first) / track.timescale,
                      static_cast<double>(end) / track.timescale};
}

void checkEdits(const Pairing& pair, const std::string& label, Report& into) {
    constexpr double tolerance = 0.01;
    constexpr double toleranceAtEnd = 0.5;  // s: programs round an edit to the end as they like
    const auto range = mediaRange(pair.track);
    if (!range || pair.detail.realEdits == 0) return;
    if (pair.detail.realEdits > 1)
        into.reasons.push_back(label + ": its edit list plays the track in several parts");
    const double delay =
        pair.source == nullptr ? 0 : static_cast<double>(pair.source->codecDelayNs) / 1e9;
    const double from = static_cast<double>(pair.detail.editStart) / pair.track.timescale;
    if (from > range->start + delay + tolerance)
        into.reasons.push_back(label + ": its edit list leaves out the first " +
                               Text::fixed(from - range->start, 3) + " s");
    const double length = secondsOf(pair.detail.editLength, pair.movieTimescale);
    if (length > 0 && from + length < range->end - toleranceAtEnd)
        into.reasons.push_back(label + ": its edit list leaves out the last " +
                               Text::fixed(range->end - from - length, 3) + " s");
}

}  // namespace

std::string Pairing::label() const {
    return expected.kind == Expected::Kind::video ? "video"
                                                  : "sound track " + std::to_string(number);
}

double Pairing::seconds() const {
    const std::uint64_t waits = std::min(detail.leadIn, detail.duration);
    return secondsOf(detail.duration - waits, movieTimescale);
}

std::optional<double> Pairing::start() const {
    const auto range = mediaRange(track);
    if (!range) return std::nullopt;
    const double waits = secondsOf(detail.leadIn, movieTimescale);
    const double first =
        waits + range->start - static_cast<double>(detail.editStart) / track.timescale;
    // An encoder's run-in is cut off by the edit.
    return isConverted() ? std::max(first, waits) : first;
}

std::optional<double> Pairing::sourceStart() const {
    if (frames == nullptr || !frames->times.start()) return std::nullopt;
    return static_cast<double>(*frames->times.start()) / 1e9;
}

bool checkKind(const Pairing& pair, Report& into) {
    const auto* const check = std::ranges::find(kindChecks, pair.expected.kind, &KindCheck::kind);
    if (!check->is(pair.track)) {
        into.reasons.push_back("track " + std::to_string(pair.number) + " should be " +
                               std::string(check->shouldBe));
        return false;
    }
    if (check->further != nullptr) check->further(pair, into);
    return true;
}

void checkLength(const Pairing& pair, Report& into) {
    constexpr double tolerance = 0.15;
    const double source = pair.frames == nullptr ? 0 : pair.frames->times.spanSeconds();
    const std::string ours = Text::fixed(pair.seconds(), 2);
    const std::string theirs = Text::fixed(source, 2);
    if (std::abs(pair.seconds() - source) > tolerance)
        into.reasons.push_back("converted sound is " + ours + " s, its source is " + theirs + " s");
    else
        into.notes.push_back("converted sound " + ours + " s vs source " + theirs + " s");
}

void checkLanguage(const Pairing& pair, Report& into) {
    const auto& language = pair.expected.language;
    if (!language || language->empty() || pair.track.langRaw == 0) return;
    const std::string wanted = threeLetters(*language);
    // A language has one code in bibliographies and another elsewhere ("fre", "fra").
    if (packed(wanted) == pair.track.langRaw || Lang::same(wanted, pair.track.language)) return;
    into.reasons.push_back("track " + std::to_string(pair.number) + ": language is not " +
                           *language);
}

void checkPlayback(const Pairing& pair, Report& into) {
    const std::string label = pair.label();
    if (pair.source != nullptr && !canHold(pair.source->codecID, pair.track.codec))
        into.reasons.push_back(label + ": the new file calls it " + pair.track.codec +
                               ", the original " + pair.source->codecID);
    if (pair.source != nullptr && !isSameAAC(pair.source->codecPrivate, pair.track.stsd))
        into.reasons.push_back(label + ": the decoder configuration isn't the original's");
    if (!pair.playback.isSelfContained)
        into.reasons.push_back(label + ": media data is said to lie outside the file");
    checkEdits(pair, label, into);
}

void checkSync(const std::vector<Pairing>& pairs, Report& into) {
    const auto picture = std::ranges::find_if(
        pairs, [](const Pairing& pair) { return pair.expected.kind == Expected::Kind::video; });
    if (picture == pairs.end() || !picture->start() || !picture->sourceStart()) return;
    constexpr double toleranceOfCopies = 0.002;
    constexpr double toleranceOfConverted = 0.040;
    constexpr double roundingOfSums = 1e-6;
    for (const Pairing& pair : pairs) {
        const auto start = pair.start();
        const auto sourceStart = pair.sourceStart();
        if (!isSound(pair.track) || !start || !sourceStart) continue;
        const double ours = *start - *picture->start();
        const double theirs = *sourceStart - *picture->sourceStart();
        // Its times may be told with the decoder's delay, or without it (RFC 9559, 5.1.4.1.25).
        const double delay = static_cast<double>(pair.source->codecDelayNs) / 1e9;
        const double off = std::min(std::abs(ours - theirs), std::abs(ours - theirs + delay));
        if (off > (pair.isConverted() ? toleranceOfConverted : toleranceOfCopies) + roundingOfSums)
            into.reasons.push_back("track " + std::to_string(pair.number) + ": starts " +
                                   Text::fixed(ours, 3) + " s from the picture, in the source " +
                                   Text::fixed(theirs, 3) + " s");
    }
}

void checkAlternateGroups(const std::vector<const Track*>& tracks, Report& into) {
    struct Group {
        int enabled = 0;
        bool isOfSound = false;
    };
    std::map<int, Group> groups;
    for (const Track* track : tracks) {
        if (track->altGroup == 0) continue;
        Group& group = groups[track->altGroup];
        group.isOfSound = group.isOfSound || isSound(*track);
        if ((track->tkhdFlags & enabledFlag) != 0) group.enabled++;
    }
    for (const auto& [number, group] : groups)
        if (group.enabled > 1 || (group.isOfSound && group.enabled == 0))
            into.reasons.push_back("alternate group " + std::to_string(number) + " has " +
                                   std::to_string(group.enabled) + " enabled tracks");
    // Sound outside of groups follows no rule but this one.
    std::vector<const Track*> sound;
    std::ranges::copy_if(tracks, std::back_inserter(sound),
                         [](const Track* track) { return isSound(*track); });
    const auto isSilent = [](const Track* track) {
        return track->altGroup == 0 && (track->tkhdFlags & enabledFlag) == 0;
    };
    if (!sound.empty() && std::ranges::all_of(sound, isSilent))
        into.reasons.push_back("no sound track is enabled");
}

}  // namespace marlet::ConvertVerify
