#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "write/outcome_wording.h"

/// The sentences of a conversion. They are promises to the person, and an interface: other code
/// recognises phrases in them.
namespace marlet::ConvertWording {

// The same sentences as those of a rebuild.
using Wording::noOutputSpace;
using Wording::noToolOutput;
using Wording::slicesUsed;
using Wording::verificationFailed;

inline constexpr const char* noTool = "the media tool (MP4Box) is missing from this copy of Marlet";
inline constexpr const char* unreadable = "this file isn't a Matroska file Marlet can read yet";
inline constexpr const char* noPlan = "no plan for this file";
inline constexpr const char* surroundChannels = "surround conversion needs 6 or 8 channels";
inline constexpr const char* building = "Building the new file";
inline constexpr const char* toolStays =
    "MP4Box still has the new file open for writing; nothing was saved";
inline constexpr const char* otherTags = "the details were not written exactly; nothing was saved";
inline constexpr const char* cancelled = "cancelled; the original was not touched";

// Of the copy of a QuickTime film.
inline constexpr const char* noWorkSpaceForCopy =
    "Not enough free space on the internal disk for the temporary files.";
inline constexpr const char* extraTracks =
    "this .mov has extra tracks (timecode or similar); they can't be carried over yet";
inline constexpr const char* noTracks = "this .mov has no picture or sound that could be copied";
std::string otherPicture(const std::string& codec);
std::string otherSound(const std::string& codec);
/// Lists in other languages: a film keeps one.
std::string chaptersLeftOut(std::size_t lists);
std::string newCopy(const std::string& name);

std::string noWorkSpace(std::int64_t need);
std::string noSuchSound(int track);
std::string otherKind(int track, const std::string& type);
std::string mixLowered(double gain);
std::string noLines(const std::string& subtitle);
std::string finerSlices(int milliseconds);
/// Even the finest slices are too long.
std::string notFixable(double layout);
std::string overLimit(double layout);
std::string convertedTo(const std::string& name);
std::string newFile(const std::string& name, const std::vector<std::string>& notes);

}  // namespace marlet::ConvertWording
