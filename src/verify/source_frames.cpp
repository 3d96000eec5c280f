#include <set>

#include "verify/conversion_frames.h"

namespace marlet::ConvertVerify {

namespace {

/// A stream that changes its sets more often than this is made to fill the memory.
constexpr std::size_t mostParameterSets = 4096;

class SourceReader {
public:
    SourceReader(const MKVFile& mkv, SourceTracks& tracks, RunControl& control,
                 const BytesDone& done)
        : mkv_(mkv), tracks_(tracks), control_(control), done_(done) {}

    bool take(const MKVBlock& block) {
        step();
        const auto found = tracks_.find(block.track);
        if (found == tracks_.end()) return true;
        SourceFrames& track = found->second;
        track.count += block.frames.size();
        const bool isKept = track.isCopied && track.count <= track.mostKept;
        track.times.add(block, isKept ? &track.when : nullptr);
        if (isKept) keep(block, track);
        return true;
    }

    void finish() {
        for (auto& [number, track] : tracks_)
            track.times.finish(track.isCopied && track.count <= track.mostKept ? &track.when
                                                                               : nullptr);
        if (done_) done_(bytes_);
    }

private:
    void step() {
        constexpr std::uint64_t between = 500;
        if (++blocks_ % between != 0) return;
        control_.checkpoint();
        if (done_) done_(bytes_);
        bytes_ = 0;
    }

    void keep(const MKVBlock& block, SourceFrames& track) {
        for (const Bytes& frame : mkv_.data(block)) {
            bytes_ += frame.size();
            track.keys.push_back(
                keyOf(frameDigest(frame, track.reading.skip, track.reading.format.lengthSize)));
            track.marks.push_back(marksOf(frame, block.isKeyframe, track));
        }
    }

    static std::uint8_t marksOf(ByteView frame, bool isKeyframe, SourceFrames& track) {
        const NALFormat& format = track.reading.format;
        int marks = isKeyframe ? SourceFrames::keyframe : 0;
        if (format.lengthSize == 0) return static_cast<std::uint8_t>(marks);
        NALWalk walk(frame, format.lengthSize);
        while (const auto unit = walk.next()) {
            const std::uint8_t first = (*unit)[0];
            if (format.isRefresh(first)) marks |= SourceFrames::refresh;
            if (format.isParameterSet(first) && track.parameterSets.size() < mostParameterSets)
                track.parameterSets.insert(parameterSetKey(*unit));
        }
        return static_cast<std::uint8_t>(marks);
    }

    const MKVFile& mkv_;
    SourceTracks& tracks_;
    RunControl& control_;
    const BytesDone& done_;
    std::uint64_t blocks_ = 0;
    std::uint64_t bytes_ = 0;
};

}  // namespace

void readSource(const MKVFile& mkv, SourceTracks& tracks, RunControl& control,
                const BytesDone& done) {
    std::set<int> numbers;
    for (const auto& [number, track] : tracks) numbers.insert(number);
    SourceReader reader(mkv, tracks, control, done);
    const auto cluster = [&](double) {
        control.checkpoint();
        return true;
    };
    mkv.forEachBlock(numbers, cluster, [&](const MKVBlock& block) { return reader.take(block); });
    reader.finish();
}

}  // namespace marlet::ConvertVerify
