#include <algorithm>

#include "convert/plan_language.h"
#include "convert/plan_parts.h"
#include "convert/sound_tables.h"
#include "convert/track_types.h"
#include "foundation/text.h"

namespace marlet::PlanParts {

namespace {

using Choices = std::vector<AudioChoice>;

bool namesCommentary(const MKVTrack& track) {
    const std::string name = Text::lower(track.name.value_or(""));
    return Text::contains(name, "commentary") || Text::contains(name, "description");
}

AudioChoice soundChoice(const MKVTrack& track) {
    AudioChoice choice{.track = track,
                       .codec = SoundTables::codecName(track.codecID),
                       .format = SoundTables::channelWords(track.channels),
                       .name = track.name,
                       .isCommentary = namesCommentary(track),
                       .canCopy = SoundTables::canCopy(track.codecID)};
    choice.label = PlanLanguage::name(track.language) + " · " + choice.format;
    if (choice.isCommentary) {
        if (const auto words = Lang::descriptor(track.name, track.language))
            choice.label += " · " + *words;
    }
    return choice;
}

bool isSurround(const AudioChoice& choice) {
    return SoundTables::channels(choice.track) >= SoundTables::surroundFrom;
}

bool isBetterSurround(const MKVTrack& a, const MKVTrack& b) {
    return SoundTables::quality(a) > SoundTables::quality(b);
}

bool isBetterStereo(const MKVTrack& a, const MKVTrack& b) {
    if (a.isDefault != b.isDefault) return a.isDefault;
    return SoundTables::quality(a) > SoundTables::quality(b);
}

/// Keeps the best surround and the best stereo of one language; whether there was one.
bool pick(Choices& choices, const std::string& language) {
    AudioChoice* surround = nullptr;
    AudioChoice* stereo = nullptr;
    for (AudioChoice& choice : choices) {
        if (choice.isCommentary || choice.unsupportedReason ||
            !PlanLanguage::same(choice.track.language, language))
            continue;
        AudioChoice*& best = isSurround(choice) ? surround : stereo;
        const auto isBetter = isSurround(choice) ? isBetterSurround : isBetterStereo;
        if (best == nullptr || isBetter(choice.track, best->track)) best = &choice;
    }
    if (surround != nullptr) surround->keep = true;
    if (stereo != nullptr) stereo->keep = true;
    return surround != nullptr || stereo != nullptr;
}

/// The language of the track that a player would choose; nothing without a track that can be read.
std::optional<std::string> ownLanguage(const Choices& choices) {
    std::optional<std::string> first;
    for (const AudioChoice& choice : choices) {
        if (choice.unsupportedReason) continue;
        if (choice.track.isDefault) return choice.track.language;
        if (!first) first = choice.track.language;
    }
    return first;
}

}  // namespace

std::vector<AudioChoice> soundChoices(const PlanInput& input) {
    Choices choices;
    for (const MKVTrack& track : input.tracks) {
        if (track.type != TrackType::audio) continue;
        choices.push_back(soundChoice(track));
        const auto reason = input.unreadable.find(track.number);
        if (reason != input.unreadable.end()) choices.back().unsupportedReason = reason->second;
    }
    return choices;
}

void pickSound(Choices& choices, const std::vector<std::string>& keepLanguages) {
    bool found = false;
    for (const std::string& language : keepLanguages) found |= pick(choices, language);
    if (found) return;
    if (const auto language = ownLanguage(choices)) pick(choices, *language);
}

Languages keptSoundLanguages(const Choices& choices) {
    Languages languages;
    for (const AudioChoice& choice : choices)
        if (choice.keep) languages.insert(PlanLanguage::code(choice.track.language));
    return languages;
}

bool isWanted(const std::string& language, const std::vector<std::string>& keepLanguages) {
    return std::ranges::any_of(keepLanguages, [&](const std::string& wanted) {
        return PlanLanguage::same(language, wanted);
    });
}

}  // namespace marlet::PlanParts
