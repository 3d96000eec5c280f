#pragma once

#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "convert/plan.h"
#include "matroska/mkv_file.h"

namespace marlet {

/// Frames of each track by its number; empty when nobody counted yet.
using TrackStats = std::map<int, MKVFile::Stats>;

/// All that a plan is made from.
struct PlanInput {
    std::filesystem::path source;
    std::optional<double> duration;  ///< seconds
    std::vector<MKVTrack> tracks;    ///< in file order
    std::vector<MKVChapter> chapters;
    std::map<int, std::string> unreadable;  ///< why a track's frames can't be read
    std::vector<std::string> keepLanguages;
    std::vector<std::filesystem::path> sidecars;
    TrackStats stats;
};

/// Works out which tracks go into the new file and what happens to each. Reads no media and never
/// fails: a file that can't be converted has a plan that says why.
namespace PlanBuilder {

ConvertPlan make(const std::filesystem::path& source, const MKVFile& mkv,
                 const std::vector<std::string>& keepLanguages,
                 const std::vector<std::filesystem::path>& sidecars, const TrackStats& stats);
ConvertPlan make(const PlanInput& input);

/// Works out again what becomes of each sound track; after every change of a `keep`.
void refresh(ConvertPlan& plan);

/// Finds foreign parts among the picture subtitles of a plan just made: whole tracks of them, and
/// tracks that hold some. Walks the file once for all of them, and not at all when there are none.
/// When the progress ends the walk, the plan stays as it was.
void applyPGS(ConvertPlan& plan, const MKVFile& mkv, const MKVFile::WalkProgress& progress = {});

/// Carries what a person chose over to a plan made anew.
void merge(const ConvertPlan& touched, ConvertPlan& into);

/// The .srt files that belong to a source, by their names, in the order of these.
std::vector<std::filesystem::path> findSidecars(const std::filesystem::path& source);

struct SidecarInfo {
    std::string lang;
    bool forced = false;
    bool operator==(const SidecarInfo&) const = default;
};
/// What a sidecar's name says behind `base`, the source's name without extension; a name without a
/// language is taken for the sound's.
SidecarInfo sidecarInfo(const std::filesystem::path& sidecar, const std::string& base,
                        const std::string& audioLang);

/// "TrueHD" for "A_TRUEHD"; the codec id itself when it has no short name.
std::string codecName(const std::string& codecID);

}  // namespace PlanBuilder
}  // namespace marlet
