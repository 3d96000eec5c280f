#include "verify/conversion_reading.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <future>

#include "verify/sample_entries.h"

namespace marlet::ConvertVerify {

namespace {

/// Below this a second thread costs more than it saves.
constexpr std::uint64_t worthAThread = std::uint64_t{32} << 20;

/// Counts for both threads, and tells the job's thread alone.
class Share {
public:
    Share(std::uint64_t total, const StepProgress& progress)
        : total_(std::max<std::uint64_t>(total, 1)), progress_(progress) {}

    void add(std::uint64_t bytes) { bytes_ += bytes; }
    void tell() const {
        constexpr double start = 0.7;
        constexpr double length = 0.16;
        const double done = static_cast<double>(bytes_.load()) / static_cast<double>(total_);
        if (progress_) progress_("Verifying", start + length * std::min(done, 1.0));
    }

private:
    std::uint64_t total_;
    std::atomic<std::uint64_t> bytes_ = 0;
    const StepProgress& progress_;
};

/// Ends the work on one file when the other one has failed.
struct Abandoned {};

void sideBySide(const MKVFile& mkv, SourceTracks& sources, int fd, std::vector<BuiltFrames>& copies,
                RunControl& control, Share& share) {
    std::atomic<bool> hasFailed = false;
    auto other = std::async(std::launch::async, [&] {
        try {
            readSource(mkv, sources, control, [&](std::uint64_t bytes) {
                share.add(bytes);
                if (hasFailed) throw Abandoned();
            });
        } catch (...) {
            hasFailed = true;
            throw;
        }
    });
    try {
        readBuilt(fd, copies, control, [&](std::uint64_t bytes) {
            share.add(bytes);
            share.tell();
            if (hasFailed) throw Abandoned();
        });
        constexpr std::chrono::milliseconds betweenReports{200};
        while (other.wait_for(betweenReports) != std::future_status::ready) share.tell();
    } catch (const Abandoned&) {
        other.get();  // throws what went wrong
    } catch (...) {
        hasFailed = true;  // the future waits for its thread
        throw;
    }
    other.get();
}

}  // namespace

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
    Share share(2 * bytes, progress);
    share.tell();
    if (bytes >= worthAThread) {
        sideBySide(mkv, sources, fd, copies, control, share);
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
