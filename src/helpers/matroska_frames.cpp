#include "helpers/matroska_frames.h"

#include <algorithm>
#include <memory>

#include "foundation/errors.h"

namespace marlet::MatroskaFramesReader {

namespace {

/// Twelve tracks of ten hours; what is kept of each takes 40 bytes.
constexpr std::size_t mostFrames = 12'000'000;
/// Of one frame, which the new tables can hold and a player can load.
constexpr std::uint64_t longestFrame = 0x7FFFFFFF;

class Reader {
public:
    Reader(const MKVFile& file, const std::filesystem::path& scratch)
        : file_(file), scratchPath_(scratch) {}

    void begin(int number) {
        const MKVTrack* const track = file_.track(number);
        if (track == nullptr)
            throw MFError("the file has no track with the number " + std::to_string(number));
        if (const auto obstacle = file_.unreadable(number))
            throw MFError("track " + std::to_string(number) + " can't be read: " + *obstacle);
        const ContentEncodings& encodings = file_.encodings(number);
        MatroskaFrames& frames = tracks_[number];
        // The encoding of the highest order was put on last, and so comes off first.
        ContentEncodings applied = encodings;
        std::erase_if(applied, [](const ContentEncoding& encoding) {
            return (encoding.scope & ContentEncoding::frames) == 0;
        });
        std::ranges::stable_sort(applied, {}, &ContentEncoding::order);
        for (const ContentEncoding& encoding : applied) {
            if (encoding.compression == ContentEncoding::Compression::HeaderStripping)
                append(frames.prefix, encoding.settings);
            else
                frames.inScratch = true;
        }
        if (frames.inScratch) frames.prefix.clear();
    }

    void add(const MKVBlock& block) {
        MatroskaFrames& track = tracks_.at(block.track);
        count_ += block.frames.size();
        if (count_ > mostFrames) throw MFError("the file has more frames than a film can have");
        const std::size_t before = track.frames.sizes.size();
        if (track.inScratch)
            unpack(block, track);
        else
            for (const MKVBlock::Frame& frame : block.frames)
                put(track, frame.offset,
                    static_cast<std::uint64_t>(frame.size) + track.prefix.size());
        if (track.frames.sizes.size() == before) return;
        track.timesNs.push_back(block.timeNs);
        track.timesNs.resize(track.frames.sizes.size());
        if (block.isKeyframe) track.keyframes.push_back(static_cast<std::uint32_t>(before + 1));
    }

    std::map<int, MatroskaFrames> finish() {
        if (scratch_) scratch_->finish();
        return std::move(tracks_);
    }

private:
    static void put(MatroskaFrames& track, std::uint64_t at, std::uint64_t size) {
        if (size > longestFrame) throw MFError("a frame of the file is too long");
        track.frames.offsets.push_back(at);
        track.frames.sizes.push_back(static_cast<std::uint32_t>(size));
    }

    void unpack(const MKVBlock& block, MatroskaFrames& track) {
        if (!scratch_) scratch_ = std::make_unique<NewFile>(scratchPath_);
        for (const Bytes& frame : file_.data(block)) {
            put(track, scratch_->size(), frame.size());
            scratch_->append(frame);
        }
    }

    const MKVFile& file_;
    std::filesystem::path scratchPath_;
    std::unique_ptr<NewFile> scratch_;
    std::map<int, MatroskaFrames> tracks_;
    std::size_t count_ = 0;
};

}  // namespace

std::map<int, MatroskaFrames> read(const MKVFile& file, const std::set<int>& tracks,
                                   const std::filesystem::path& scratch) {
    Reader reader(file, scratch);
    for (const int track : tracks) reader.begin(track);
    file.forEachBlock(tracks, {}, [&reader](const MKVBlock& block) {
        reader.add(block);
        return true;
    });
    return reader.finish();
}

}  // namespace marlet::MatroskaFramesReader
