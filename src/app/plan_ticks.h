#pragma once

#include <map>
#include <string>

namespace marlet {

/// The tracks of one conversion that a person ticked (true) or unticked.
struct PlanTicks {
    std::map<int, bool> sounds;             ///< by MKVTrack::number
    std::map<std::string, bool> subtitles;  ///< by SubChoice::id
    bool empty() const { return sounds.empty() && subtitles.empty(); }
    bool operator==(const PlanTicks&) const = default;
};

}  // namespace marlet
