// What frames alone don't tell: where decoding may begin, and with which parameter sets.

#include <algorithm>
#include <vector>

#include "mp4/box_cursor.h"
#include "mp4/sample_entry.h"
#include "verify/conversion_frames.h"
#include "verify/sample_entries.h"

namespace marlet::ConvertVerify {

namespace {

std::vector<bool> syncSamples(const Track& track, bool hasSyncTable) {
    std::vector<bool> isSync(track.sizes.size(), !hasSyncTable);
    for (const std::uint32_t number : track.sync)
        if (number >= 1 && number <= isSync.size()) isSync[number - 1] = true;
    return isSync;
}

/// Frames lie in both files in the order of decoding, so positions meet.
void judgeKeyframes(const SourceFrames& source, const Track& track, bool hasSyncTable,
                    const std::string& label, Report& into) {
    constexpr std::uint8_t both = SourceFrames::keyframe | SourceFrames::refresh;
    const std::vector<bool> isSync = syncSamples(track, hasSyncTable);
    std::size_t unmarked = 0;
    bool hasOthers = false;
    for (std::size_t i = 0; i < isSync.size() && i < source.marks.size(); i++) {
        if (source.marks[i] == both && !isSync[i]) unmarked++;
        if (source.marks[i] == 0) hasOthers = true;
    }
    if (unmarked > 0)
        into.reasons.push_back(label + ": " + std::to_string(unmarked) +
                               " keyframes aren't marked as such");
    if (hasOthers && !isSync.empty() && std::ranges::find(isSync, false) == isSync.end())
        into.reasons.push_back(label + ": every frame is marked as a keyframe");
}

bool holdsAll(const ParameterSets& whole, const ParameterSets& part) {
    return std::ranges::includes(whole, part);
}

void judgeParameterSets(const SourceFrames& source, ByteView codecPrivate, const BuiltFrames& built,
                        const std::string& label, Report& into) {
    const auto codec = source.reading.format.codec;
    auto wanted = parameterSetsOf(codec, codecPrivate);
    auto configured = builtParameterSets(codec, built.track->stsd);
    if (!wanted) return;
    if (!configured) {
        into.reasons.push_back(label + ": the new file has no decoder configuration");
        return;
    }
    ParameterSets known = *wanted;
    known.insert(source.parameterSets.begin(), source.parameterSets.end());
    if (!holdsAll(known, *configured))
        into.reasons.push_back(label + ": the decoder configuration isn't the original's");
    configured->insert(built.parameterSets.begin(), built.parameterSets.end());
    if (!holdsAll(*configured, known))
        into.reasons.push_back(label + ": a parameter set of the original is missing");
}

}  // namespace

void judgePictures(const SourceFrames& source, ByteView codecPrivate, const BuiltFrames& built,
                   bool hasSyncTable, const std::string& label, Report& into) {
    if (source.reading.format.lengthSize == 0) return;
    judgeKeyframes(source, *built.track, hasSyncTable, label, into);
    judgeParameterSets(source, codecPrivate, built, label, into);
}

}  // namespace marlet::ConvertVerify
