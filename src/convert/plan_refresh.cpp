#include <algorithm>
#include <tuple>

#include "convert/plan_builder.h"
#include "convert/plan_language.h"
#include "convert/sound_tables.h"

namespace marlet::PlanBuilder {

namespace {

using SoundTables::surroundFrom;

bool isStereoPartner(const AudioChoice& other, const AudioChoice& choice) {
    return other.keep && other.track.number != choice.track.number &&
           SoundTables::channels(other.track) < surroundFrom &&
           PlanLanguage::same(other.track.language, choice.track.language);
}

void copy(AudioChoice& choice, bool withStereo) {
    choice.copyOriginal = true;
    choice.makeStereo = withStereo;
    choice.becomes = withStereo ? "Kept as it is, plus an AAC stereo track" : "Kept as it is";
}

/// Surround is made of 5.1 and 7.1 alone: no other count has a layout to trust.
void convert(AudioChoice& choice, bool hasPartner) {
    const int channels = SoundTables::channels(choice.track);
    choice.makeSurround = channels == 6 || channels == 8;
    choice.makeStereo = !choice.makeSurround || !hasPartner;
    const char* const kinds = !choice.makeSurround ? "AAC stereo"
                              : choice.makeStereo  ? "AC3 5.1 and AAC stereo"
                                                   : "AC3 5.1";
    choice.becomes = std::string("Will be converted so Apple TV can play it (") + kinds + ")";
}

void workOut(AudioChoice& choice, const std::vector<AudioChoice>& all) {
    choice.copyOriginal = choice.makeSurround = choice.makeStereo = choice.isDefault = false;
    if (choice.unsupportedReason) {
        choice.keep = false;
        choice.becomes = "Left out: " + *choice.unsupportedReason;
        return;
    }
    if (!choice.keep) {
        choice.becomes = "Left out";
        return;
    }
    const bool hasPartner = std::ranges::any_of(
        all, [&](const AudioChoice& other) { return isStereoPartner(other, choice); });
    const bool isSurround = SoundTables::channels(choice.track) >= surroundFrom;
    if (choice.canCopy)
        copy(choice, isSurround && !hasPartner);
    else
        convert(choice, hasPartner);
}

/// The less, the sooner a choice is the default.
auto defaultOrder(const AudioChoice& choice, const std::vector<std::string>& keepLanguages) {
    constexpr std::ptrdiff_t unwanted = 99;
    const auto place = std::ranges::find_if(keepLanguages, [&](const std::string& wanted) {
        return PlanLanguage::same(choice.track.language, wanted);
    });
    return std::tuple(place == keepLanguages.end() ? unwanted : place - keepLanguages.begin(),
                      SoundTables::channels(choice.track) < surroundFrom, !choice.track.isDefault);
}

}  // namespace

void refresh(ConvertPlan& plan) {
    // First of all, since what can't be kept is nobody's partner.
    for (AudioChoice& choice : plan.audio)
        if (choice.unsupportedReason) choice.keep = false;
    AudioChoice* first = nullptr;
    for (AudioChoice& choice : plan.audio) {
        workOut(choice, plan.audio);
        if (!choice.keep) continue;
        if (first == nullptr ||
            defaultOrder(choice, plan.keepLanguages) < defaultOrder(*first, plan.keepLanguages))
            first = &choice;
    }
    if (first != nullptr) first->isDefault = true;
}

}  // namespace marlet::PlanBuilder
