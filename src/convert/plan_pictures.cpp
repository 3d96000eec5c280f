// What the pictures of Blu-ray subtitles tell a plan: which tracks, or which lines of them, are
// shown without being asked for.

#include <algorithm>
#include <iterator>

#include "convert/plan_builder.h"
#include "convert/plan_parts.h"
#include "foundation/text.h"

namespace marlet {

namespace {

/// A whole track of pictures that can be read; not the lines cut out of one.
bool isPictureTrack(const SubChoice& choice) {
    return choice.kind == SubKind::picture && choice.track && !choice.splitForced &&
           !choice.unsupportedReason;
}

void becomeForced(SubChoice& choice, bool isHeard) {
    choice.isForced = true;
    if (!Text::contains(choice.label, "Foreign")) choice.label += PlanParts::foreignPartsOnly;
    choice.keep = choice.keep || isHeard;
}

SubChoice forcedLinesOf(const SubChoice& whole, bool isHeard) {
    return {.id = "pgsforced" + std::to_string(whole.track->number),
            .track = whole.track,
            .kind = SubKind::picture,
            .language = whole.language,
            .keep = isHeard,
            .isForced = true,
            .label = PlanParts::forcedLabel(whole.language),
            .note = "Made from the forced lines of the picture subtitles (read as text)",
            .splitForced = true};
}

}  // namespace

namespace PlanParts {

std::set<int> pictureTracks(const ConvertPlan& plan) {
    std::set<int> tracks;
    for (const SubChoice& choice : plan.subs)
        if (isPictureTrack(choice)) tracks.insert(choice.track->number);
    return tracks;
}

void applyForcedCounts(ConvertPlan& plan, const ForcedCounts& counts) {
    const Languages kept = keptSoundLanguages(plan.audio);
    std::vector<SubChoice> gathered;
    for (SubChoice& choice : plan.subs) {
        if (!isPictureTrack(choice)) continue;
        const auto found = counts.find(choice.track->number);
        if (found == counts.end() || found->second.forced < 1) continue;
        const bool isHeard = kept.contains(choice.language);
        if (found->second.forced >= found->second.events)
            becomeForced(choice, isHeard);
        else
            gathered.push_back(forcedLinesOf(choice, isHeard));
    }
    std::ranges::move(gathered, std::back_inserter(plan.subs));
}

}  // namespace PlanParts

void PlanBuilder::applyPGS(ConvertPlan& plan, const MKVFile& mkv,
                           const MKVFile::WalkProgress& progress) {
    const std::set<int> tracks = PlanParts::pictureTracks(plan);
    if (tracks.empty()) return;
    bool isStopped = false;
    const auto follow = [&](double fraction) {
        isStopped = progress && !progress(fraction);
        return !isStopped;
    };
    const PlanParts::ForcedCounts counts = PGSParser::forcedStats(mkv, tracks, follow);
    // Half a count could take the rest of a track for what it isn't.
    if (!isStopped) PlanParts::applyForcedCounts(plan, counts);
}

}  // namespace marlet
