#include "matroska/mkv_writer.h"

#include <fcntl.h>

#include <algorithm>
#include <bit>
#include <limits>

#include "foundation/errors.h"
#include "foundation/file_ops.h"
#include "matroska/element_ids.h"

namespace marlet::MKVWriter {

namespace {

constexpr std::uint8_t onlyTrack = 1;
constexpr std::int64_t nanosecondsATick = 1'000'000;
/// Behind the start of its cluster; relative times have 16 bits.
constexpr std::int64_t longestCluster = 5000;
/// Sound of 5 seconds is far smaller: this is for files whose times stand still.
constexpr std::size_t largestCluster = std::size_t{64} << 20;

Bytes shortest(std::uint64_t value) {
    Bytes bytes;
    BigEndian::put64(bytes, value);
    const auto first =
        std::find_if(bytes.begin(), bytes.end() - 1, [](std::uint8_t byte) { return byte != 0; });
    bytes.erase(bytes.begin(), first);
    return bytes;
}

Bytes idBytes(std::uint32_t id) {
    return shortest(id);
}

Bytes joined(std::initializer_list<Bytes> parts) {
    Bytes all;
    for (const Bytes& part : parts) append(all, part);
    return all;
}

Bytes header() {
    return element(
        ElementID::ebml,
        joined({number(ElementID::ebmlVersion, 1), number(ElementID::ebmlReadVersion, 1),
                number(ElementID::ebmlMaxIDLength, 4), number(ElementID::ebmlMaxSizeLength, 8),
                text(ElementID::docType, "matroska"), number(ElementID::docTypeVersion, 4),
                number(ElementID::docTypeReadVersion, 2)}));
}

/// Its size is not known before the last frame has come.
Bytes segmentHead() {
    return joined({idBytes(ElementID::segment), Bytes{0x01, 255, 255, 255, 255, 255, 255, 255}});
}

Bytes info() {
    return element(ElementID::info, joined({number(ElementID::timestampScale, nanosecondsATick),
                                            text(ElementID::muxingApp, "Marlet"),
                                            text(ElementID::writingApp, "Marlet")}));
}

Bytes audio(const MKVTrack& track) {
    constexpr double usualRate = 48000;
    Bytes content = joined(
        {real(ElementID::samplingFrequency, track.sampleRate > 0 ? track.sampleRate : usualRate),
         number(ElementID::channels, static_cast<std::uint64_t>(std::max(track.channels, 1)))});
    if (track.bitDepth)
        append(content, number(ElementID::bitDepth, static_cast<std::uint64_t>(*track.bitDepth)));
    return element(ElementID::audio, content);
}

Bytes tracks(const MKVTrack& track) {
    constexpr std::uint64_t sound = 2;
    Bytes entry =
        joined({number(ElementID::trackNumber, onlyTrack), number(ElementID::trackUID, 1),
                number(ElementID::trackType, sound), text(ElementID::codecID, track.codecID)});
    if (!track.codecPrivate.empty())
        append(entry, element(ElementID::codecPrivate, track.codecPrivate));
    if (track.codecDelayNs != 0) append(entry, number(ElementID::codecDelay, track.codecDelayNs));
    if (track.seekPreRollNs != 0)
        append(entry, number(ElementID::seekPreRoll, track.seekPreRollNs));
    append(entry, audio(track));
    return element(ElementID::tracks, element(ElementID::trackEntry, entry));
}

void appendBlock(Bytes& body, std::int64_t relative, ByteView frame) {
    constexpr std::uint8_t keyframe = 0x80;
    constexpr std::size_t headSize = 4;
    const auto held = static_cast<std::int16_t>(
        std::clamp<std::int64_t>(relative, std::numeric_limits<std::int16_t>::min(),
                                 std::numeric_limits<std::int16_t>::max()));
    append(body, idBytes(ElementID::simpleBlock));
    append(body, size(headSize + frame.size()));
    body.push_back(0x80 | onlyTrack);
    BigEndian::put16(body, static_cast<std::uint16_t>(held));
    body.push_back(keyframe);
    append(body, frame);
}

}  // namespace

Bytes size(std::uint64_t value) {
    constexpr std::size_t widest = 8;
    std::size_t width = 1;
    while (width < widest && value >= (std::uint64_t{1} << (7 * width)) - 1) width++;
    const std::uint64_t allOnes = (std::uint64_t{1} << (7 * width)) - 1;
    Bytes bytes;
    BigEndian::put64(bytes, std::min(value, allOnes) | std::uint64_t{1} << (7 * width));
    bytes.erase(bytes.begin(), bytes.end() - static_cast<std::ptrdiff_t>(width));
    return bytes;
}

Bytes element(std::uint32_t id, ByteView payload) {
    Bytes bytes = joined({idBytes(id), size(payload.size())});
    append(bytes, payload);
    return bytes;
}

Bytes number(std::uint32_t id, std::uint64_t value) {
    return element(id, shortest(value));
}

Bytes real(std::uint32_t id, double value) {
    Bytes payload;
    BigEndian::put64(payload, std::bit_cast<std::uint64_t>(value));
    return element(id, payload);
}

Bytes text(std::uint32_t id, std::string_view value) {
    return element(id, viewOf(value));
}

Bytes front(const MKVTrack& track) {
    return joined({header(), segmentHead(), info(), tracks(track)});
}

SoundFile::SoundFile(const std::filesystem::path& file, const MKVTrack& track)
    : file_(FileHandle::open(file, O_WRONLY | O_CREAT | O_TRUNC, "write failed", 0600)) {
    write(front(track));
}

void SoundFile::add(std::int64_t timeNs, const std::vector<Bytes>& frames) {
    const std::int64_t time = std::max<std::int64_t>(timeNs / nanosecondsATick, 0);
    if (isOpen_ && (time - start_ > longestCluster || body_.size() > largestCluster))
        closeCluster();
    if (!isOpen_) {
        isOpen_ = true;
        start_ = time;
    }
    std::int64_t relative = time - start_;
    for (const Bytes& frame : frames) appendBlock(body_, relative++, frame);
}

void SoundFile::finish() {
    if (!isOpen_) throw MFError("the sound track has no frames");
    closeCluster();
}

void SoundFile::closeCluster() {
    const Bytes time = number(ElementID::timestamp, static_cast<std::uint64_t>(start_));
    Bytes head = joined({idBytes(ElementID::cluster), size(time.size() + body_.size()), time});
    write(head);
    write(body_);
    body_.clear();
    isOpen_ = false;
}

void SoundFile::write(ByteView bytes) {
    FileOps::writeAll(file_.get(), bytes, at_);
    at_ += bytes.size();
}

}  // namespace marlet::MKVWriter
