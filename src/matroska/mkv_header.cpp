// The Segment's children but its clusters (RFC 9559, 5.1).

#include <algorithm>
#include <map>

#include "matroska/element_ids.h"
#include "matroska/mkv_file.h"
#include "matroska/mkv_headers.h"

namespace marlet {

namespace {

/// No file has so many; each takes memory.
constexpr std::size_t mostTracks = 65'536;
/// A SeekHead tells of each of these elements once.
constexpr std::size_t mostTold = 64;

std::optional<Element> findSegment(HeaderReader& reader, std::uint64_t size) {
    ElementWalk walk = reader.walk(0, size);
    while (const auto element = walk.next())
        if (element->id == ElementID::segment) return element;
    return std::nullopt;
}

/// The greatest cluster position of a Cues element; 0 when there is none.
std::uint64_t lastPosition(HeaderReader& reader, const Element& cues) {
    std::uint64_t last = 0;
    ElementWalk points = reader.children(cues);
    while (const auto point = points.next()) {
        if (!point->isMaster(ElementID::cuePoint)) continue;
        ElementWalk positions = reader.children(*point);
        while (const auto position = positions.next()) {
            if (!position->isMaster(ElementID::cueTrackPositions)) continue;
            ElementWalk walk = reader.children(*position);
            while (const auto child = walk.next())
                if (child->id == ElementID::cueClusterPosition)
                    last = std::max(last, reader.number(*child));
        }
    }
    return last;
}

}  // namespace

/// Walks the children of the Segment once: what stands behind the clusters is reached by stepping
/// over them. Each step is a read from the disk, thousands in a film: where Cues tell where the
/// last clusters are, the steps up to there are one leap. What the SeekHead tells of in between is
/// read on the way.
struct MKVFile::Header {
    MKVFile& file;
    HeaderReader reader;
    std::optional<double> rawDuration = {};
    std::optional<std::uint64_t> cuesPosition = {};    // from the Segment's payload
    std::map<std::uint64_t, std::uint32_t> told = {};  // what else the SeekHead tells of, by place

    bool parse() {
        const auto segment = findSegment(reader, file.size_);
        if (!segment) return false;
        file.segmentStart_ = segment->payload;
        file.segmentEnd_ = segment->isUnknown ? file.size_ : segment->end;
        walkSegment();
        // Only now: the scale may stand behind the duration.
        if (rawDuration)
            file.durationSeconds_ = *rawDuration * static_cast<double>(file.timecodeScale_) / 1e9;
        return !file.tracks_.empty();
    }

    void walkSegment() {
        const auto cluster = takeUpToCluster(file.segmentStart_);
        if (!cluster) return;
        file.firstClusterOffset_ = cluster->start;
        if (cluster->isUnknown) return;
        const std::uint64_t landing = lastCluster(*cluster);
        takeTold(cluster->start, landing);
        ElementWalk walk = reader.walk(landing, file.segmentEnd_);
        while (const auto element = walk.next()) take(*element);
    }

    void takeTold(std::uint64_t from, std::uint64_t to) {
        for (const auto& [position, id] : told) {
            const auto element = elementAt(position, id);
            if (element && element->start > from && element->start < to) take(*element);
        }
    }

    std::optional<Element> takeUpToCluster(std::uint64_t from) {
        ElementWalk walk = reader.walk(from, file.segmentEnd_);
        while (const auto element = walk.next()) {
            if (element->id == ElementID::cluster) return element;
            take(*element);
        }
        return std::nullopt;
    }

    /// Where the last cluster begins that Cues tell of; the first one's place without any.
    std::uint64_t lastCluster(const Element& first) {
        const auto cues = elementAt(cuesPosition, ElementID::cues);
        if (!cues) return first.start;
        const auto last = elementAt(lastPosition(reader, *cues), ElementID::cluster);
        return last ? std::max(first.start, last->start) : first.start;
    }

    /// Of known size; nothing when another or none stands there.
    std::optional<Element> elementAt(std::optional<std::uint64_t> position, std::uint32_t id) {
        if (!position || *position >= file.segmentEnd_ - file.segmentStart_) return std::nullopt;
        auto element = reader.walk(file.segmentStart_ + *position, file.segmentEnd_).next();
        if (!element || !element->isMaster(id)) return std::nullopt;
        return element;
    }

    void take(const Element& element) {
        if (element.isMaster(ElementID::seekHead)) takeSeekHead(element);
        if (element.isMaster(ElementID::info)) takeInfo(element);
        if (element.isMaster(ElementID::tracks)) takeTracks(element);
        if (element.isMaster(ElementID::chapters) && file.chapters_.empty())
            file.chapters_ = MKVHeaders::readChapters(reader, element);
    }

    void takeSeekHead(const Element& seekHead) {
        ElementWalk seeks = reader.children(seekHead);
        while (const auto seek = seeks.next()) {
            if (!seek->isMaster(ElementID::seek)) continue;
            std::uint64_t id = 0, position = 0;
            ElementWalk walk = reader.children(*seek);
            while (const auto child = walk.next()) {
                if (child->id == ElementID::seekID) id = reader.number(*child);
                if (child->id == ElementID::seekPosition) position = reader.number(*child);
            }
            if (id == ElementID::cues) cuesPosition = position;
            const bool isWanted =
                id == ElementID::info || id == ElementID::tracks || id == ElementID::chapters;
            if (isWanted && told.size() < mostTold)
                told.try_emplace(position, static_cast<std::uint32_t>(id));
        }
    }

    void takeInfo(const Element& info) {
        ElementWalk walk = reader.children(info);
        while (const auto child = walk.next()) {
            if (child->id == ElementID::duration) rawDuration = reader.real(*child);
            if (child->id == ElementID::title) file.title_ = reader.text(*child);
            if (child->id == ElementID::timestampScale) file.timecodeScale_ = reader.number(*child);
        }
    }

    void takeTracks(const Element& tracks) {
        ElementWalk walk = reader.children(tracks);
        while (const auto child = walk.next()) {
            if (!child->isMaster(ElementID::trackEntry) || file.tracks_.size() >= mostTracks)
                continue;
            MKVHeaders::TrackEntry entry = MKVHeaders::readTrack(reader, *child);
            if (!entry.encodings.empty())
                file.encodings_.emplace(entry.track.number, std::move(entry.encodings));
            file.tracks_.push_back(std::move(entry.track));
        }
    }
};

bool MKVFile::parseHeader() {
    const ByteWindow window(file_.get(), size_, ByteWindow::headers);
    return Header{*this, HeaderReader(window)}.parse();
}

}  // namespace marlet
