#include "matroska/mkv_file.h"

#include <fcntl.h>

#include <algorithm>
#include <cmath>

#include "matroska/element_ids.h"
#include "matroska/mkv_headers.h"

namespace marlet {

namespace {

/// No file has so many; each takes memory.
constexpr std::size_t mostTracks = 65'536;
/// Of one block, as it is stored and again when its encodings are undone. A picture of 8K without
/// any compression is smaller.
constexpr std::size_t mostBlockBytes = std::size_t{128} << 20;

std::optional<Element> findSegment(HeaderReader& reader, std::uint64_t size) {
    ElementWalk walk = reader.walk(0, size);
    while (const auto element = walk.next())
        if (element->id == ElementID::segment) return element;
    return std::nullopt;
}

}  // namespace

/// Walks the children of the Segment once: what stands behind the clusters is reached by stepping
/// over them.
struct MKVFile::Header {
    MKVFile& file;
    HeaderReader reader;
    std::optional<double> rawDuration;

    bool parse() {
        const auto segment = findSegment(reader, file.size_);
        if (!segment) return false;
        file.segmentStart_ = segment->payload;
        file.segmentEnd_ = segment->isUnknown ? file.size_ : segment->end;
        ElementWalk walk = reader.walk(file.segmentStart_, file.segmentEnd_);
        while (const auto element = walk.next()) take(*element);
        // Only now: the scale may stand behind the duration.
        if (rawDuration)
            file.durationSeconds_ = *rawDuration * static_cast<double>(file.timecodeScale_) / 1e9;
        return !file.tracks_.empty();
    }

    void take(const Element& element) {
        if (element.isMaster(ElementID::info)) takeInfo(element);
        if (element.isMaster(ElementID::tracks)) takeTracks(element);
        if (element.isMaster(ElementID::chapters) && file.chapters_.empty())
            file.chapters_ = MKVHeaders::readChapters(reader, element);
        if (element.id == ElementID::cluster && !file.firstClusterOffset_)
            file.firstClusterOffset_ = element.start;
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

std::unique_ptr<MKVFile> MKVFile::open(const std::filesystem::path& url) {
    // O_NONBLOCK: a pipe that is named like a film must not hold up the reader.
    FileHandle handle(Sys::open(url, O_RDONLY | O_NONBLOCK));
    if (!handle.isOpen()) return nullptr;
    const auto attributes = Sys::fstat(handle.get());
    if (!attributes || !attributes->isRegular || attributes->size == 0) return nullptr;

    std::unique_ptr<MKVFile> file(new MKVFile);
    file->url_ = url;
    file->size_ = attributes->size;
    file->file_ = std::move(handle);
    const ByteWindow window(file->file_.get(), file->size_, ByteWindow::headers);
    Header header{*file, HeaderReader(window), std::nullopt};
    if (!header.parse()) return nullptr;
    return file;
}

std::vector<Bytes> MKVFile::data(const MKVBlock& block) const {
    const auto encodings = encodings_.find(block.track);
    std::vector<Bytes> result;
    result.reserve(block.frames.size());
    std::size_t left = mostBlockBytes;
    for (const MKVBlock::Frame& frame : block.frames) {
        Bytes bytes = stored(frame, left);
        if (encodings != encodings_.end())
            bytes = ContentDecoder::undo(encodings->second, ContentEncoding::frames,
                                         std::move(bytes), left)
                        .value_or(Bytes());
        left -= std::min(left, bytes.size());
        result.push_back(std::move(bytes));
    }
    return result;
}

/// Less than the frame's size at the end of the file; nothing of a frame larger than `most`.
Bytes MKVFile::stored(const MKVBlock::Frame& frame, std::size_t most) const {
    if (frame.size <= 0 || frame.offset >= size_) return {};
    const std::uint64_t length =
        std::min(static_cast<std::uint64_t>(frame.size), size_ - frame.offset);
    if (length > most) return {};
    Bytes bytes(static_cast<std::size_t>(length));
    bytes.resize(readWhatIsThere(file_.get(), frame.offset, bytes));
    return bytes;
}

const MKVTrack* MKVFile::track(int number) const {
    const auto found = std::find_if(tracks_.begin(), tracks_.end(),
                                    [&](const MKVTrack& one) { return one.number == number; });
    return found == tracks_.end() ? nullptr : &*found;
}

std::optional<std::string> MKVFile::unreadable(int track) const {
    const auto encodings = encodings_.find(track);
    if (encodings == encodings_.end()) return std::nullopt;
    return ContentDecoder::obstacle(encodings->second);
}

}  // namespace marlet
