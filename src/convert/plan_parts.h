#pragma once

#include <map>
#include <set>
#include <string>
#include <vector>

#include "convert/pgs_parser.h"
#include "convert/plan_builder.h"

/// The steps of a plan.
namespace marlet::PlanParts {

using Languages = std::set<std::string>;

/// One choice for each sound track, in file order, none kept.
std::vector<AudioChoice> soundChoices(const PlanInput& input);
/// Keeps the best surround and the best stereo of each wanted language, or of the file's own
/// language when it has none of these.
void pickSound(std::vector<AudioChoice>& choices, const std::vector<std::string>& keepLanguages);
/// Codes of the languages whose sound is kept.
Languages keptSoundLanguages(const std::vector<AudioChoice>& choices);

/// Subtitle tracks of the file, in file order.
std::vector<SubChoice> embeddedSubtitles(const PlanInput& input, const Languages& kept);
/// Subtitle files beside the source, in the order given.
std::vector<SubChoice> sidecarSubtitles(const PlanInput& input,
                                        const std::vector<AudioChoice>& sound,
                                        const Languages& kept);

/// By track number: what is shown, and what of it without being asked for.
using ForcedCounts = std::map<int, PGSParser::ForcedStats>;
/// Numbers of the tracks of pictures that can be read as text.
std::set<int> pictureTracks(const ConvertPlan& plan);
/// A track with nothing but forced pictures is foreign parts only; one with some gets a second
/// choice behind all others, for these alone.
void applyForcedCounts(ConvertPlan& plan, const ForcedCounts& counts);

/// Whether a language is among those that the person wants.
bool isWanted(const std::string& language, const std::vector<std::string>& keepLanguages);
/// What a label ends in whose lines are shown without being asked for.
inline constexpr const char* foreignPartsOnly = " · Foreign parts only";
/// "English · Foreign parts only".
std::string forcedLabel(const std::string& language);

}  // namespace marlet::PlanParts
