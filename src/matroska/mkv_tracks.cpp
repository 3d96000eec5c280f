// TrackEntry and its children (RFC 9559, 5.1.4.1).

#include <algorithm>
#include <array>

#include "matroska/element_ids.h"
#include "matroska/mkv_headers.h"

namespace marlet::MKVHeaders {

namespace {

/// A CodecPrivate that grows beyond this when it is undone is no CodecPrivate.
constexpr std::size_t longestCodecPrivate = std::size_t{32} << 20;

void readAudio(HeaderReader& reader, const Element& parent, MKVTrack& track) {
    ElementWalk walk = reader.children(parent);
    while (const auto child = walk.next()) {
        if (child->id == ElementID::channels) track.channels = reader.integer(*child);
        if (child->id == ElementID::samplingFrequency) track.sampleRate = reader.real(*child);
        if (child->id == ElementID::bitDepth) track.bitDepth = reader.integer(*child);
    }
}

/// The newer element only where the older one has not told another language.
void readLanguage(HeaderReader& reader, const Element& element, MKVTrack& track) {
    if (element.id == ElementID::language || track.language == "eng" || track.language.empty())
        track.language = reader.text(element);
}

using Handler = void (*)(HeaderReader&, const Element&, MKVTrack&);
struct Row {
    std::uint32_t id;
    Handler handle;
};

#define TAKE(expression) [](HeaderReader& r, const Element& e, MKVTrack& t) { expression; }
constexpr std::array<Row, 14> valueRows = {{
    {ElementID::trackNumber, TAKE(t.number = r.integer(e))},
    {ElementID::trackUID, TAKE(t.uid = r.number(e))},
    {ElementID::trackType, TAKE(t.type = r.integer(e))},
    {ElementID::codecDelay, TAKE(t.codecDelayNs = r.number(e))},
    {ElementID::seekPreRoll, TAKE(t.seekPreRollNs = r.number(e))},
    {ElementID::defaultDuration, TAKE(t.defaultDurationNs = r.number(e))},
    {ElementID::flagDefault, TAKE(t.isDefault = r.flag(e))},
    {ElementID::flagForced, TAKE(t.isForced = r.flag(e))},
    {ElementID::flagEnabled, TAKE(t.isEnabled = r.flag(e))},
    {ElementID::codecID, TAKE(t.codecID = r.text(e))},
    {ElementID::name, TAKE(t.name = r.text(e))},
    {ElementID::codecPrivate, TAKE(t.codecPrivate = r.bytes(e))},
    {ElementID::language, readLanguage},
    {ElementID::languageBCP47, readLanguage},
}};
#undef TAKE
constexpr std::array<Row, 3> masterRows = {{
    {ElementID::video, readVideo},
    {ElementID::audio, readAudio},
    {ElementID::blockAdditionMapping, readBlockAddition},
}};

/// What can't be undone stays as it is stored: the track's data can't be read either.
void undoCodecPrivate(TrackEntry& entry) {
    if (entry.encodings.empty()) return;
    auto undone = ContentDecoder::undo(entry.encodings, ContentEncoding::codecPrivate,
                                       entry.track.codecPrivate, longestCodecPrivate);
    if (undone) entry.track.codecPrivate = std::move(*undone);
}

}  // namespace

TrackEntry readTrack(HeaderReader& reader, const Element& entry) {
    TrackEntry result;
    ElementWalk walk = reader.children(entry);
    while (const auto child = walk.next()) {
        for (const Row& row : valueRows)
            if (child->id == row.id) row.handle(reader, *child, result.track);
        for (const Row& row : masterRows)
            if (child->isMaster(row.id)) row.handle(reader, *child, result.track);
        if (child->isMaster(ElementID::contentEncodings))
            result.encodings = readEncodings(reader, *child);
    }
    undoCodecPrivate(result);
    return result;
}

}  // namespace marlet::MKVHeaders
