#pragma once

/// TrackType of RFC 9559, 5.1.4.1.3.
namespace marlet::TrackType {

inline constexpr int video = 1;
inline constexpr int audio = 2;
inline constexpr int subtitle = 17;

}  // namespace marlet::TrackType
