#include "verify/conversion_reading.h"

#include "verify/sample_entries.h"
#include "verify/side_by_side.h"

namespace marlet::ConvertVerify {

void setReading(SourceFrames& frames, const MKVTrack& track, NALFilter skip,
                std::size_t lengthSize) {
    frames.isCopied = true;
    frames.reading = {skip, {nalCodec(track.codecID), lengthSize}};
}

BuiltFrames builtCopy(const SourceFrames& source, const Track& track) {
    BuiltFrames built;
    built.track = &track;
    built.reading = source.reading;
    NALFormat& format = built.reading.format;
    if (format.lengthSize == 0) return built;
    if (const std::size_t own = builtLengthSize(format.codec, track.stsd)) format.lengthSize = own;
    return built;
}

void readBoth(const MKVFile& mkv, SourceTracks& sources, int fd, std::vector<BuiltFrames>& copies,
              RunControl& control, const StepProgress& progress) {
    std::uint64_t bytes = 0;
    for (const BuiltFrames& copy : copies)
        for (const std::uint32_t size : copy.track->sizes) bytes += size;
    // Of what is copied as much is read from the source.
    ReadShare share(2 * bytes, 0.7, 0.16, progress);
    share.tell();
    if (bytes >= worthAThread) {
        sideBySide([&](const auto& done) { readSource(mkv, sources, control, done); },
                   [&](const auto& done) { readBuilt(fd, copies, control, done); }, share);
    } else {
        const auto done = [&](std::uint64_t more) {
            share.add(more);
            share.tell();
        };
        readSource(mkv, sources, control, done);
        readBuilt(fd, copies, control, done);
    }
    share.tell();
}

void compare(const MKVFile& mkv, const MKVTrack& track, const Track& mp4Track, int fd,
             NALFilter nalSkip, std::size_t lengthSize, const std::string& label,
             RunControl& control, Report& into) {
    SourceTracks sources;
    SourceFrames& source = sources.try_emplace(track.number, track).first->second;
    setReading(source, track, nalSkip, lengthSize);
    source.mostKept = mp4Track.sizes.size();
    std::vector<BuiltFrames> copies{builtCopy(source, mp4Track)};
    readBoth(mkv, sources, fd, copies, control, {});
    judgeFrames(source, copies.front(), label, control, into);
}

double mkvSpan(const MKVFile& mkv, int track) {
    const MKVTrack* const found = mkv.track(track);
    BlockTimes times(found == nullptr ? std::nullopt : found->defaultDurationNs);
    mkv.forEachBlock(std::set<int>{track}, {}, [&](const MKVBlock& block) {
        times.add(block, nullptr);
        return true;
    });
    return times.spanSeconds();
}

}  // namespace marlet::ConvertVerify
