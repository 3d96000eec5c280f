// A light reader of the front of a Matroska file: elements by RFC 8794, their meaning by RFC 9559.

#include <fcntl.h>

#include <algorithm>
#include <bit>
#include <cmath>

#include "foundation/syscalls.h"
#include "foundation/text.h"
#include "identify/probe.h"
#include "matroska/ebml.h"

namespace marlet::EBML {

namespace {

constexpr std::size_t frontSize = 4'194'304;
/// No file has so many tracks; four million bytes could hold two million empty ones.
constexpr std::size_t mostTracks = 65'536;

enum : std::uint32_t {
    idSegment = 0x18538067,
    idInfo = 0x1549A966,
    idTimecodeScale = 0x2AD7B1,
    idDuration = 0x4489,
    idTitle = 0x7BA9,
    idTracks = 0x1654AE6B,
    idTrackEntry = 0xAE,
    idTrackType = 0x83,
    idCodecID = 0x86,
    idLanguage = 0x22B59C,
    idName = 0x536E,
};

struct Element {
    std::uint32_t id = 0;
    bool unknownSize = false;
    bool whole = true;  ///< all of it lies in the bytes
    ByteView content;   ///< what lies in the bytes
};

/// Walks the elements of a range one by one.
class Cursor {
public:
    explicit Cursor(ByteView bytes) : rest_(bytes) {}

    /// Nothing at the end, and where no element can be read.
    std::optional<Element> next() {
        const auto id = readID(rest_, 0);
        if (!id) return std::nullopt;
        const auto size = readSize(rest_, id->width);
        if (!size) return std::nullopt;
        rest_ = rest_.subspan(id->width + size->width);
        Element element;
        element.id = id->value;
        element.unknownSize = size->isUnknown;
        element.whole = size->isUnknown || size->value <= rest_.size();
        const std::size_t length = size->isUnknown || !element.whole
                                       ? rest_.size()
                                       : static_cast<std::size_t>(size->value);
        element.content = rest_.first(length);
        rest_ = rest_.subspan(length);
        return element;
    }

private:
    ByteView rest_;
};

std::uint64_t unsignedOf(ByteView bytes) {
    std::uint64_t value = 0;
    for (const std::uint8_t byte : bytes) value = value << 8 | byte;
    return value;
}

/// Absent for any length but 4 and 8, and for what is no number.
std::optional<double> floatOf(ByteView bytes) {
    double value = 0;
    if (bytes.size() == 8)
        value = std::bit_cast<double>(unsignedOf(bytes));
    else if (bytes.size() == 4)
        value = std::bit_cast<float>(static_cast<std::uint32_t>(unsignedOf(bytes)));
    else
        return std::nullopt;
    if (!std::isfinite(value)) return std::nullopt;
    return value;
}

/// A text may be padded with zeros (RFC 8794, 7.4).
std::string textOf(ByteView bytes) {
    const auto end = std::find(bytes.begin(), bytes.end(), std::uint8_t{0});
    return Text::repairUtf8(bytes.first(static_cast<std::size_t>(end - bytes.begin())));
}

struct Clock {
    std::uint64_t scale = 1'000'000;  ///< nanoseconds a unit
    std::optional<double> duration;   ///< units

    std::optional<double> seconds() const {
        if (!duration) return std::nullopt;
        return *duration * static_cast<double>(scale) / 1e9;
    }
};

void readInfo(ByteView content, Clock& clock, Info& info) {
    Cursor cursor(content);
    while (const auto element = cursor.next()) {
        if (!element->whole) return;
        const ByteView value = element->content;
        if (element->id == idTimecodeScale && !value.empty() && value.size() <= 8)
            clock.scale = unsignedOf(value);
        if (element->id == idDuration) clock.duration = floatOf(value);
        if (element->id == idTitle) info.title = textOf(value);
    }
}

TrackInfo::Kind kindOf(std::uint64_t type) {
    switch (type) {
        case 1:
            return TrackInfo::Kind::video;
        case 2:
            return TrackInfo::Kind::audio;
        case 17:
            return TrackInfo::Kind::subtitle;
        default:
            return TrackInfo::Kind::other;
    }
}

TrackInfo readEntry(ByteView content) {
    TrackInfo track;
    track.codec = "?";
    Cursor cursor(content);
    while (const auto element = cursor.next()) {
        if (!element->whole) break;
        const ByteView value = element->content;
        if (element->id == idTrackType) track.kind = kindOf(unsignedOf(value));
        if (element->id == idCodecID) track.codec = textOf(value);
        if (element->id == idLanguage) track.language = textOf(value);
        if (element->id == idName) track.name = textOf(value);
    }
    return track;
}

void readTracks(ByteView content, Info& info) {
    Cursor cursor(content);
    while (const auto element = cursor.next())
        if (element->id == idTrackEntry && info.tracks.size() < mostTracks)
            info.tracks.push_back(readEntry(element->content));
}

void readSegment(ByteView content, Info& info) {
    Clock clock;
    Cursor cursor(content);
    while (const auto element = cursor.next()) {
        if (element->id == idInfo)
            readInfo(element->content, clock, info);
        else if (element->id == idTracks)
            readTracks(element->content, info);
        else if (element->unknownSize)
            break;
    }
    info.duration = clock.seconds();
}

}  // namespace

std::optional<Info> parse(ByteView bytes) {
    Info info;
    Cursor cursor(bytes);
    while (const auto element = cursor.next()) {
        if (element->id != idSegment) continue;
        readSegment(element->content, info);
        if (info.duration) break;
    }
    if (!info.duration && info.tracks.empty()) return std::nullopt;
    return info;
}

std::optional<Info> read(const std::filesystem::path& file) {
    // O_NONBLOCK: a pipe that is named like a film must not hold up the reader.
    const FileHandle handle(Sys::open(file, O_RDONLY | O_NONBLOCK));
    if (!handle.isOpen()) return std::nullopt;
    Bytes front(frontSize);
    std::size_t done = 0;
    while (done < front.size()) {
        const ssize_t got =
            Sys::pread(handle.get(), front.data() + done, front.size() - done, done);
        if (got < 0) return std::nullopt;
        if (got == 0) break;
        done += static_cast<std::size_t>(got);
    }
    if (done <= 16) return std::nullopt;
    return parse(ByteView(front).first(done));
}

}  // namespace marlet::EBML
