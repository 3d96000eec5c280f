#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "foundation/bytes.h"

namespace marlet {

/// A sound or subtitle track of an MP4 that a person may leave out.
struct InPlaceTrack {
    enum class Kind { audio, subtitle };

    std::uint32_t id = 0;  ///< `tkhd` track ID
    int index = 0;         ///< Track::index
    Kind kind = Kind::audio;
    std::string language;  ///< three letters; an unset one is "und"
    std::string name;      ///< empty if it has none of its own
    std::string codec;
    int channels = 0;  ///< 0 if unknown
    bool enabled = false;
    int altGroup = 0;
    bool keep = true;  ///< the person's tick
    bool operator==(const InPlaceTrack&) const = default;

    /// "Mono", "Stereo", "Surround 5.1", ...
    std::string layout() const;
    /// The line shown for the track.
    std::string label() const;
};

namespace InPlaceTracks {

/// In file order, without chapter tracks; empty when the file can't be read.
std::vector<InPlaceTrack> read(const std::filesystem::path& file);
/// The same from the payload of an index; fails like parseSummary.
std::vector<InPlaceTrack> tracksIn(ByteView moov);
/// "2 sounds, 1 subtitle, 1 removed": what stays, and how many don't.
std::string summary(const std::vector<InPlaceTrack>& tracks);
/// Sets the enabled flag of the tracks at these `trak` positions of a finished candidate.
void enable(const std::vector<int>& indices, const std::filesystem::path& file);

}  // namespace InPlaceTracks
}  // namespace marlet
