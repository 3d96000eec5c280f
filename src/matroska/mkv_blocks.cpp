// The walk from block to block (RFC 9559, 5.1.3 and 10). It reads the heads of elements and blocks
// and no frames.

#include <algorithm>
#include <array>
#include <limits>

#include "matroska/ebml.h"
#include "matroska/element_ids.h"
#include "matroska/element_walk.h"
#include "matroska/lacing.h"
#include "matroska/mkv_file.h"

namespace marlet {

namespace {

using Ticks = std::uint64_t;

/// Cluster time and relative time in nanoseconds, held at the ends of what a number can hold.
std::int64_t timeInNs(Ticks cluster, std::int16_t relative, std::uint64_t scale) {
    constexpr std::int64_t most = std::numeric_limits<std::int64_t>::max();
    const auto held = [](std::uint64_t value) {
        return static_cast<std::int64_t>(std::min<std::uint64_t>(value, most));
    };
    std::int64_t time = 0;
    if (__builtin_add_overflow(held(cluster), relative, &time)) time = most;
    std::int64_t nanoseconds = 0;
    if (__builtin_mul_overflow(time, held(scale), &nanoseconds))
        return time < 0 ? std::numeric_limits<std::int64_t>::min() : most;
    return nanoseconds;
}

std::uint64_t durationInNs(Ticks ticks, std::uint64_t scale) {
    std::uint64_t nanoseconds = 0;
    if (__builtin_mul_overflow(ticks, scale, &nanoseconds))
        return std::numeric_limits<std::uint64_t>::max();
    return nanoseconds;
}

/// What can't be inside a cluster, and so ends one of unknown size.
bool endsACluster(std::uint32_t id) {
    constexpr std::array<std::uint32_t, 6> ids = {ElementID::cluster,     ElementID::cues,
                                                  ElementID::attachments, ElementID::chapters,
                                                  ElementID::seekHead,    ElementID::tags};
    return std::find(ids.begin(), ids.end(), id) != ids.end();
}

class ClusterReader {
public:
    ClusterReader(ByteWindow& window, std::uint64_t scale,
                  const std::optional<std::set<int>>& tracks, const MKVFile::BlockBody& body)
        : window_(window), scale_(scale), tracks_(tracks), body_(body) {}

    struct End {
        bool goesOn = true;                 ///< the body did not stop the walk
        std::optional<std::uint64_t> next;  ///< the element that ended a cluster of unknown size
    };

    End read(const Element& cluster, std::uint64_t end) {
        Ticks time = 0;
        ElementWalk walk(window_, cluster.payload, end);
        while (const auto child = walk.next()) {
            if (cluster.isUnknown && endsACluster(child->id)) return {true, child->start};
            if (child->isUnknown) break;
            if (child->id == ElementID::timestamp) time = numberIn(window_, *child);
            const bool goesOn = child->id == ElementID::simpleBlock  ? simpleBlock(*child, time)
                                : child->id == ElementID::blockGroup ? blockGroup(*child, time)
                                                                     : true;
            if (!goesOn) return {false, std::nullopt};
        }
        return {};
    }

private:
    bool simpleBlock(const Element& element, Ticks time) {
        const auto flags = readBlock(element, time);
        if (!flags) return true;
        block_.isKeyframe = (*flags & 0x80) != 0;
        block_.durationNs.reset();
        return body_(block_);
    }

    bool blockGroup(const Element& group, Ticks time) {
        std::optional<Element> block;
        std::optional<Ticks> duration;
        ElementWalk walk(window_, group);
        while (const auto child = walk.next()) {
            if (child->isUnknown) break;
            if (child->id == ElementID::block) block = child;
            if (child->id == ElementID::blockDuration) duration = numberIn(window_, *child);
        }
        if (!block || !readBlock(*block, time)) return true;
        block_.isKeyframe = true;
        block_.durationNs.reset();
        if (duration) block_.durationNs = durationInNs(*duration, scale_);
        return body_(block_);
    }

    /// Fills track, time and frames, and gives the flags. Nothing for a block without a whole
    /// head or of a track that nobody asked for.
    std::optional<std::uint8_t> readBlock(const Element& element, Ticks time) {
        constexpr std::uint64_t longestHead = 16;
        const ByteView head = window_.at(
            element.payload, static_cast<std::size_t>(std::min(element.size, longestHead)));
        const auto track = EBML::readSize(head, 0);
        if (!track || head.size() < track->width + 3) return std::nullopt;
        constexpr std::uint64_t greatest = std::numeric_limits<int>::max();
        block_.track = static_cast<int>(std::min(track->value, greatest));
        if (tracks_ && !tracks_->contains(block_.track)) return std::nullopt;

        const auto at = static_cast<std::int64_t>(track->width);
        const auto relative = static_cast<std::int16_t>(BigEndian::u16(head, at));
        const std::uint8_t flags = head[track->width + 2];
        block_.timeNs = timeInNs(time, relative, scale_);
        const std::uint64_t headSize = track->width + 3;
        readFrames(static_cast<Lacing::Kind>(flags >> 1 & 3), element.payload + headSize,
                   element.size - headSize);
        return flags;
    }

    void readFrames(Lacing::Kind lacing, std::uint64_t offset, std::uint64_t size) {
        block_.frames.clear();
        if (lacing == Lacing::Kind::None) {
            block_.frames.push_back({offset, static_cast<std::int64_t>(size)});
            return;
        }
        const ByteView first = window_.at(offset, std::min<std::uint64_t>(size, 1));
        if (first.empty()) return;
        const std::size_t length = Lacing::headLength(lacing, first[0], size);
        const ByteView head = window_.at(offset, std::min<std::uint64_t>(size, length));
        block_.frames = Lacing::frames(lacing, head, offset, size);
    }

    ByteWindow& window_;
    std::uint64_t scale_;
    const std::optional<std::set<int>>& tracks_;
    const MKVFile::BlockBody& body_;
    MKVBlock block_;
};

}  // namespace

void MKVFile::forEachBlock(const std::optional<std::set<int>>& tracks, const WalkProgress& progress,
                           const BlockBody& body) const {
    if (!firstClusterOffset_) return;
    ByteWindow window(file_.get(), size_, ByteWindow::blocks);
    ClusterReader clusters(window, timecodeScale_, tracks, body);
    const double whole = segmentEnd_ == 0 ? 1 : static_cast<double>(segmentEnd_);
    std::uint64_t from = *firstClusterOffset_;
    while (true) {
        const auto element = ElementWalk(window, from, segmentEnd_).next();
        if (!element) return;
        if (progress && !progress(static_cast<double>(from) / whole)) return;
        if (element->id != ElementID::cluster) {
            if (element->isUnknown) return;
            from = element->payload + element->size;
            continue;
        }
        const auto end = clusters.read(*element, element->isUnknown ? segmentEnd_ : element->end);
        if (!end.goesOn) return;
        if (element->isUnknown && !end.next) return;
        from = element->isUnknown ? *end.next : element->payload + element->size;
    }
}

std::map<int, MKVFile::Stats> MKVFile::blockStats(const WalkProgress& progress) const {
    // A file could name a track in every few bytes.
    constexpr std::size_t mostTracks = 65'536;
    std::map<int, Stats> stats;
    forEachBlock(std::nullopt, progress, [&](const MKVBlock& block) {
        if (stats.size() >= mostTracks && !stats.contains(block.track)) return true;
        Stats& track = stats[block.track];
        track.count += static_cast<std::int64_t>(block.frames.size());
        for (const MKVBlock::Frame& frame : block.frames)
            track.bytes += static_cast<std::uint64_t>(frame.size);
        return true;
    });
    return stats;
}

}  // namespace marlet
