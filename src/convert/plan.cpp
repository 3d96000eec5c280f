#include "convert/plan.h"

#include "convert/sound_tables.h"
#include "foundation/languages.h"

namespace marlet {

namespace {

ConvertPlanSnapshot::Audio frozen(const AudioChoice& choice) {
    return {.track = choice.track.number,
            .language = Lang::code(Lang::firstPart(choice.track.language)).value_or("und"),
            .name = choice.label,
            .copy = choice.copyOriginal,
            .makeSurround = choice.makeSurround,
            .makeStereo = choice.makeStereo,
            .channels = SoundTables::channels(choice.track),
            .rate = choice.track.sampleRate,
            .isDefault = choice.isDefault};
}

ConvertPlanSnapshot::Sub frozen(const SubChoice& choice) {
    ConvertPlanSnapshot::Sub sub{.id = choice.id,
                                 .sidecar = choice.sidecar,
                                 .kind = static_cast<int>(choice.kind),
                                 .language = choice.language,
                                 .name = choice.label,
                                 .forced = choice.isForced,
                                 .splitForced = choice.splitForced};
    if (choice.track) sub.track = choice.track->number;
    return sub;
}

}  // namespace

std::optional<ConvertPlanSnapshot> ConvertPlan::snapshot() const {
    if (!video || !videoVerdict.isCopy()) return std::nullopt;
    ConvertPlanSnapshot snapshot{.video = video->number,
                                 .videoCodec = video->codecID,
                                 .duration = duration,
                                 .hasChapters = !chapters.empty()};
    for (const AudioChoice& choice : audio)
        if (choice.keep && !choice.unsupportedReason) snapshot.audio.push_back(frozen(choice));
    for (const SubChoice& choice : subs)
        if (choice.keep && !choice.unsupportedReason) snapshot.subs.push_back(frozen(choice));
    return snapshot;
}

}  // namespace marlet
