#include "convert/plan_builder.h"

#include <algorithm>

#include "convert/plan_parts.h"
#include "convert/sound_tables.h"
#include "convert/track_types.h"

namespace marlet::PlanBuilder {

namespace {

const MKVTrack* videoTrack(const std::vector<MKVTrack>& tracks) {
    const MKVTrack* first = nullptr;
    for (const MKVTrack& track : tracks) {
        if (track.type != TrackType::video) continue;
        if (track.isEnabled) return &track;
        if (first == nullptr) first = &track;
    }
    return first;
}

VideoVerdict verdict(const PlanInput& input, const MKVTrack& video) {
    const auto unreadable = input.unreadable.find(video.number);
    return unreadable == input.unreadable.end() ? VideoPolicy::check(video)
                                                : VideoVerdict::unsupported(unreadable->second);
}

}  // namespace

ConvertPlan make(const PlanInput& input) {
    ConvertPlan plan{.source = input.source,
                     .duration = input.duration,
                     .audio = PlanParts::soundChoices(input),
                     .chapters = input.chapters,
                     .keepLanguages = input.keepLanguages};
    if (const MKVTrack* const video = videoTrack(input.tracks)) {
        plan.video = *video;
        plan.videoVerdict = verdict(input, *video);
    }
    PlanParts::pickSound(plan.audio, input.keepLanguages);
    refresh(plan);
    const PlanParts::Languages kept = PlanParts::keptSoundLanguages(plan.audio);
    plan.subs = PlanParts::embeddedSubtitles(input, kept);
    std::ranges::move(PlanParts::sidecarSubtitles(input, plan.audio, kept),
                      std::back_inserter(plan.subs));
    return plan;
}

ConvertPlan make(const std::filesystem::path& source, const MKVFile& mkv,
                 const std::vector<std::string>& keepLanguages,
                 const std::vector<std::filesystem::path>& sidecars, const TrackStats& stats) {
    PlanInput input{.source = source,
                    .duration = mkv.durationSeconds(),
                    .tracks = mkv.tracks(),
                    .chapters = mkv.chapters(),
                    .keepLanguages = keepLanguages,
                    .sidecars = sidecars,
                    .stats = stats};
    for (const MKVTrack& track : input.tracks)
        if (auto reason = mkv.unreadable(track.number))
            input.unreadable.emplace(track.number, *std::move(reason));
    return make(input);
}

void merge(const ConvertPlan& touched, ConvertPlan& into) {
    const auto carry = [](const auto& from, auto& to, auto identity) {
        for (const auto& old : from) {
            if (!old.touched) continue;
            for (auto& choice : to) {
                if (identity(choice) != identity(old)) continue;
                choice.keep = old.keep;
                choice.touched = true;
            }
        }
    };
    carry(touched.audio, into.audio, [](const AudioChoice& choice) { return choice.track.number; });
    carry(touched.subs, into.subs, [](const SubChoice& choice) { return choice.id; });
    refresh(into);
}

std::string codecName(const std::string& codecID) {
    return SoundTables::codecName(codecID);
}

}  // namespace marlet::PlanBuilder
