#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <vector>

#include "foundation/run_control.h"
#include "matroska/mkv_file.h"
#include "mp4/summary.h"
#include "verify/block_times.h"
#include "verify/nal_units.h"

// What is kept of frames: a digest and a time, never the frame.
namespace marlet::ConvertVerify {

/// How the frames of a track go into digests, and what they carry beside their pictures.
struct FrameReading {
    NALFilter skip = nullptr;
    NALFormat format;
};

/// A track of the source.
struct SourceFrames {
    explicit SourceFrames(const MKVTrack& track) : times(track.defaultDurationNs) {}

    enum Mark : std::uint8_t { keyframe = 1, refresh = 2 };
    FrameReading reading;
    bool isCopied = false;     ///< its frames are compared; otherwise only their times are wanted
    std::size_t mostKept = 0;  ///< what comes behind these is counted only
    std::uint64_t count = 0;
    std::vector<FrameKey> keys;      ///< one a frame, in block order
    std::vector<std::int64_t> when;  ///< ns, as many
    std::vector<std::uint8_t> marks;
    ParameterSets parameterSets;  ///< those within the frames
    BlockTimes times;
};
using SourceTracks = std::map<int, SourceFrames>;  ///< by number

/// Told how many bytes of media were read since.
using BytesDone = std::function<void(std::uint64_t)>;

/// One walk over the source for all of these tracks.
void readSource(const MKVFile& mkv, SourceTracks& tracks, RunControl& control,
                const BytesDone& done);

/// A track of the new file.
struct BuiltFrames {
    const Track* track = nullptr;
    FrameReading reading;
    std::vector<FrameKey> keys;  ///< one a sample, up to the first that can't be read
    ParameterSets parameterSets;
};

/// One way through the file for all of these tracks, as far as they run forward. Throws MFError
/// when they claim far more than the file holds.
void readBuilt(int fd, std::vector<BuiltFrames>& tracks, RunControl& control,
               const BytesDone& done);

/// Walks the samples of a track in the order of its tables.
class SampleCursor {
public:
    explicit SampleCursor(const Track& track) : track_(&track) { settle(); }
    bool atEnd() const { return chunk_ >= track_->chunks.size(); }
    std::size_t number() const { return number_; }  ///< from 0
    std::uint64_t offset() const { return offset_; }
    std::uint32_t size() const { return track_->sizes[number_]; }
    void advance();

private:
    void settle();

    const Track* track_;
    std::size_t chunk_ = 0;
    std::size_t number_ = 0;
    std::uint64_t offset_ = 0;
};

/// Adds what differs between the frames of the two.
void judgeFrames(const SourceFrames& source, const BuiltFrames& built, const std::string& label,
                 RunControl& control, Report& into);
/// Adds what differs in the marks of keyframes, and in the parameter sets. `codecPrivate` is the
/// source's, and the frames of the two are the same.
void judgePictures(const SourceFrames& source, ByteView codecPrivate, const BuiltFrames& built,
                   bool hasSyncTable, const std::string& label, Report& into);

}  // namespace marlet::ConvertVerify
