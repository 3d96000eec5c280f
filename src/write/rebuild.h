#pragma once

/// Laying a file out anew needs the media tool, which this copy of the program doesn't carry: what
/// can't do without it ends with one of these sentences, and the file stays as it is.
namespace marlet::Rebuild {

inline constexpr const char* missingForFix =
    "the media tool (MP4Box) is missing from this copy of Marlet, so the Apple TV fix can't run";
inline constexpr const char* missingForTracks =
    "the media tool (MP4Box) is missing from this copy of Marlet, so tracks can't be removed";
inline constexpr const char* missingForConversion =
    "the media tool (MP4Box) is missing from this copy of Marlet";

}  // namespace marlet::Rebuild
