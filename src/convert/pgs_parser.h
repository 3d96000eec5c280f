#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <map>
#include <set>
#include <span>
#include <vector>

#include "foundation/bytes.h"
#include "foundation/run_control.h"
#include "matroska/mkv_file.h"

/// Reads the Presentation Graphic Stream of Blu-ray subtitles, as Matroska tracks with the codec id
/// "S_HDMV/PGS" carry it: pictures with a palette, shown from one moment to another. Bad segments
/// are passed over and what could be read stays.
namespace marlet::PGSParser {

/// Of all bitmaps of an event, and of what run lengths are decoded to: a screen of 7680 by 4320.
/// Sizes that lie reach 65535 by 65535 and are cut to what was sent, at most to this.
constexpr std::size_t mostPixels = std::size_t{7680} * 4320;

/// A picture's place on the video plane, in pixels.
struct Obj {
    int id = 0;
    int x = 0;
    int y = 0;
    bool forced = false;
    bool operator==(const Obj&) const = default;
};

/// Rows of palette indices, top first, without padding.
struct Bitmap {
    int w = 0;
    int h = 0;
    Bytes idx;  ///< w * h, never empty in an event
    bool operator==(const Bitmap&) const = default;
};

/// What stands on the screen from `startMs` to `endMs`.
struct Event {
    std::int64_t startMs = 0;
    std::int64_t endMs = 0;
    bool forced = false;  ///< any object of it is
    std::vector<Obj> objects;
    std::array<std::uint32_t, 256> palette{};  ///< 0xAABBGGRR
    std::map<int, Bitmap> bitmaps;             ///< by object id; only those of `objects`
};

struct ForcedStats {
    std::int64_t events = 0;
    std::int64_t forced = 0;
    bool operator==(const ForcedStats&) const = default;
};

/// Hands out each event as soon as it has ended, in file order; what no composition ends is none.
/// Holds no more than what is on the screen and the run lengths of an epoch, within bounds. Throws
/// CancelError, and whatever the body throws.
void forEachEvent(const MKVFile& mkv, const MKVTrack& track, RunControl& control,
                  const std::function<void(Event)>& body);

/// All events of a track; for tests and short tracks, since a film's pictures fill memory. Throws
/// CancelError.
std::vector<Event> events(const MKVFile& mkv, const MKVTrack& track, RunControl& control);

/// Counts frames that begin with a composition of objects, and those with a forced one. Reads heads
/// of blocks and a few bytes of each frame, no picture. The progress may end the walk; then it is
/// what was counted so far.
ForcedStats forcedStats(const MKVFile& mkv, const MKVTrack& track,
                        const MKVFile::WalkProgress& progress = {});
/// The same of many tracks by number, in one walk.
std::map<int, ForcedStats> forcedStats(const MKVFile& mkv, const std::set<int>& tracks,
                                       const MKVFile::WalkProgress& progress = {});

/// Run lengths to width * height palette indices; what is missing stays 0, what is too much is
/// dropped. Nothing for a size of no pixels, or of more than `mostPixels`.
Bytes decodeRLE(std::span<const std::uint8_t> rle, int width, int height);

}  // namespace marlet::PGSParser
