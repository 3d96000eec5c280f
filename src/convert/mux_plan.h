#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace marlet {

/// One track of the new file: where it comes from, and what it is called there.
struct MuxTrack {
    /// Alternate groups of a track header (ISO/IEC 14496-12, 8.3.2): one track of each plays.
    enum class Group { none = 0, sound = 1, subtitles = 2 };

    std::filesystem::path file;
    std::optional<int> number;        ///< of the track in the file; nothing: the file has just one
    std::string language;             ///< three letters; empty: none is told
    std::optional<std::string> name;  ///< cleaned; nothing: the source's own
    std::int64_t delayMs = 0;         ///< from the start of the film to the first frame
    Group group = Group::none;
    bool isEnabled = true;
    bool isForced = false;  ///< of a subtitle: each of its lines is to be shown
    bool operator==(const MuxTrack&) const = default;
};

/// A new file as the media tool is asked for it.
struct MuxPlan {
    std::filesystem::path scratch;  ///< folder
    std::vector<MuxTrack> tracks;   ///< in the order of the new file
    std::optional<std::filesystem::path> chapters;
    int slice = 500;      ///< length of a slice of sound, milliseconds
    std::size_t pad = 0;  ///< bytes kept free behind the index
    std::filesystem::path output;

    /// The arguments of `MP4Box`.
    std::vector<std::string> arguments() const;
    /// All files that the tool has to read.
    std::vector<std::filesystem::path> inputs() const;
    bool operator==(const MuxPlan&) const = default;
};

/// A track's name as it can stand among the tool's options: they are divided by ":", and what is
/// behind a "+" is taken for another track.
std::string muxName(std::string name);

}  // namespace marlet
