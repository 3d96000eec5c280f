#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace marlet {

/// What a player can do with a file, tried by FFmpeg's `ffprobe` and `ffmpeg`. They run confined,
/// as every media tool does, and decode into a folder of their own.
namespace Playable {

/// "playable true, duration 12.0 s, tracks 3", then a line for a picture and one for the next ten
/// seconds of sound at 2, 25, 50, 75 and 95 % of the duration, for what the file has of them:
///   frame at 0.2 s: 1920 x 1080
///   sound at 0.2 s: decoded 1764000 bytes of the next 10 s ok
/// "FAILED" stands where nothing could be decoded. Without those programs one line that says so.
/// Blocking.
std::string account(const std::filesystem::path& file);

/// What `ffprobe` tells of a file, in lines of "name=value".
struct Probed {
    double duration = 0;  ///< seconds; 0 when unknown
    int tracks = 0;       ///< cover pictures are none
    bool hasPicture = false;
    bool hasSound = false;
    bool isPlayable() const { return duration > 0 && (hasPicture || hasSound); }
};
Probed parseProbe(const std::string& text);

}  // namespace Playable
}  // namespace marlet
