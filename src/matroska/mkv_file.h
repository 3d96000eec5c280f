#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "foundation/bytes.h"
#include "foundation/syscalls.h"
#include "matroska/content_encoding.h"
#include "matroska/mkv_picture.h"

namespace marlet {

/// A track as its TrackEntry tells it (RFC 9559, 5.1.4). `number` is its identity in lists.
struct MKVTrack {
    int number = 0;
    std::uint64_t uid = 0;
    int type = 0;  ///< 1 video, 2 audio, 17 subtitles
    std::string codecID;
    std::string language = "eng";
    std::optional<std::string> name;
    bool isDefault = true;
    bool isForced = false;
    bool isEnabled = true;
    Bytes codecPrivate;
    int pixelWidth = 0;
    int pixelHeight = 0;
    std::optional<int> bitsPerChannel;
    bool hasHDRColour = false;
    int channels = 0;
    double sampleRate = 0;  ///< Hz
    std::optional<int> bitDepth;
    std::optional<std::uint64_t> defaultDurationNs;
    bool hasDolbyVisionConfig = false;
    std::uint64_t codecDelayNs = 0;
    std::uint64_t seekPreRollNs = 0;
    MKVPicture picture;
    bool operator==(const MKVTrack&) const = default;
};

struct MKVChapter {
    std::uint64_t startNs = 0;
    std::string title;
    std::optional<std::string> language;
    bool operator==(const MKVChapter&) const = default;
};

/// One block: where its frames lie in the file.
struct MKVBlock {
    struct Frame {
        std::uint64_t offset = 0;
        std::int64_t size = 0;
        bool operator==(const Frame&) const = default;
    };
    int track = 0;
    std::int64_t timeNs = 0;  ///< absolute presentation time
    std::optional<std::uint64_t> durationNs;
    bool isKeyframe = false;
    std::vector<Frame> frames;
};

/// A Matroska file open for reading: what it holds, and where its frames lie. Parsed when made and
/// the same afterwards; no cluster is ever loaded. Bad structure ends the walk that meets it and
/// keeps what was read.
class MKVFile {
public:
    /// Nothing when the file can't be opened or is no Matroska file with a track.
    static std::unique_ptr<MKVFile> open(const std::filesystem::path& url);

    struct Stats {
        std::int64_t count = 0;   ///< frames
        std::uint64_t bytes = 0;  ///< of all frames
        bool operator==(const Stats&) const = default;
    };
    /// False stops the walk.
    using WalkProgress = std::function<bool(double)>;
    using BlockBody = std::function<bool(const MKVBlock&)>;

    /// One byte array a frame, as it really is: content encodings are undone (RFC
    /// 9559, 5.1.4.1.31).
    std::vector<Bytes> data(const MKVBlock& block) const;
    /// The first bytes of one of the block's frames, as it really is, at most so many. Reads as
    /// much as that, of a compressed frame a few hundred bytes more.
    Bytes head(const MKVBlock& block, const MKVBlock::Frame& frame, std::size_t most) const;
    /// In file order; `tracks` nothing: all.
    void forEachBlock(const std::optional<std::set<int>>& tracks, const WalkProgress& progress,
                      const BlockBody& body) const;
    /// By track number; stopped early it holds what was counted so far.
    std::map<int, Stats> blockStats(const WalkProgress& progress = {}) const;

    const std::filesystem::path& url() const { return url_; }
    std::uint64_t size() const { return size_; }
    std::uint64_t segmentStart() const { return segmentStart_; }
    std::uint64_t segmentEnd() const { return segmentEnd_; }
    std::uint64_t timecodeScale() const { return timecodeScale_; }  ///< nanoseconds a tick
    const std::optional<double>& durationSeconds() const { return durationSeconds_; }
    const std::optional<std::string>& title() const { return title_; }
    const std::vector<MKVTrack>& tracks() const { return tracks_; }        ///< in file order
    const std::vector<MKVChapter>& chapters() const { return chapters_; }  ///< by start
    const std::optional<std::uint64_t>& firstClusterOffset() const { return firstClusterOffset_; }
    const MKVTrack* track(int number) const;
    /// Why a track's frames can't be read (an encryption, an unknown compression); nothing else.
    std::optional<std::string> unreadable(int track) const;
    /// What was done to a track's frames before they were stored; empty for most.
    const ContentEncodings& encodings(int track) const;

private:
    struct Header;

    MKVFile() = default;
    bool parseHeader();
    Bytes stored(const MKVBlock::Frame& frame, std::size_t most) const;

    std::filesystem::path url_;
    FileHandle file_;
    std::uint64_t size_ = 0;
    std::uint64_t segmentStart_ = 0;
    std::uint64_t segmentEnd_ = 0;
    std::uint64_t timecodeScale_ = 1'000'000;
    std::optional<double> durationSeconds_;
    std::optional<std::string> title_;
    std::vector<MKVTrack> tracks_;
    std::map<int, ContentEncodings> encodings_;  // by track number
    std::vector<MKVChapter> chapters_;
    std::optional<std::uint64_t> firstClusterOffset_;
};

}  // namespace marlet
