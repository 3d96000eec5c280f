// The Video element (RFC 9559, 5.1.4.1.28) and the mappings of block additions (5.1.4.1.17).

#include <algorithm>
#include <array>

#include "matroska/element_ids.h"
#include "matroska/mkv_headers.h"

namespace marlet {

bool MasteringDisplay::isComplete() const {
    const auto isTold = [](const std::optional<double>& value) { return value.has_value(); };
    return std::ranges::all_of(chromaticities, isTold) && highest && *highest > 0 && lowest;
}

namespace MKVHeaders {

namespace {

constexpr std::uint64_t fourCharacters(const char (&text)[5]) {
    std::uint64_t code = 0;
    for (int i = 0; i < 4; i++) code = code << 8 | static_cast<std::uint8_t>(text[i]);
    return code;
}

/// Of a number that has a name for each value up to this one; what is beyond has none.
template <typename Name>
Name nameOf(int value, Name last, Name otherwise) {
    return value <= static_cast<int>(last) ? static_cast<Name>(value) : otherwise;
}

void readMastering(HeaderReader& reader, const Element& parent, MasteringDisplay& display) {
    ElementWalk walk = reader.children(parent);
    while (const auto child = walk.next()) {
        const std::uint32_t number = child->id - ElementID::primaryRChromaticityX;
        if (child->id >= ElementID::primaryRChromaticityX && number < display.chromaticities.size())
            display.chromaticities[number] = reader.real(*child);
        if (child->id == ElementID::luminanceMax) display.highest = reader.real(*child);
        if (child->id == ElementID::luminanceMin) display.lowest = reader.real(*child);
    }
}

void readColour(HeaderReader& reader, const Element& parent, MKVTrack& track) {
    // Transfer functions of HDR pictures (ITU-T H.273): PQ and HLG.
    constexpr int pq = 16, hlg = 18;
    using Range = PictureColour::Range;
    PictureColour& colour = track.picture.colour;
    ElementWalk walk = reader.children(parent);
    while (const auto child = walk.next()) {
        if (child->id == ElementID::bitsPerChannel) track.bitsPerChannel = reader.integer(*child);
        if (child->id == ElementID::primaries) colour.primaries = reader.integer(*child);
        if (child->id == ElementID::matrixCoefficients) colour.matrix = reader.integer(*child);
        if (child->id == ElementID::range)
            colour.range = nameOf(reader.integer(*child), Range::ByMatrix, Range::NotTold);
        if (child->id == ElementID::maxCLL) colour.highestLight = reader.integer(*child);
        if (child->id == ElementID::maxFALL) colour.highestFrameMean = reader.integer(*child);
        if (child->id == ElementID::masteringMetadata) track.hasHDRColour = true;
        if (child->isMaster(ElementID::masteringMetadata))
            readMastering(reader, *child, colour.mastering);
        if (child->id != ElementID::transferCharacteristics) continue;
        colour.transfer = reader.integer(*child);
        if (colour.transfer == pq || colour.transfer == hlg) track.hasHDRColour = true;
    }
}

/// Only a flat picture is turned; the other projections are of scenes around the viewer.
void readProjection(HeaderReader& reader, const Element& parent, MKVPicture& picture) {
    constexpr std::uint64_t rectangular = 0;
    std::uint64_t type = rectangular;
    double roll = 0;
    ElementWalk walk = reader.children(parent);
    while (const auto child = walk.next()) {
        if (child->id == ElementID::projectionType) type = reader.number(*child);
        if (child->id == ElementID::projectionPoseRoll) roll = reader.real(*child);
    }
    if (type == rectangular) picture.roll = roll;
}

struct NumberRow {
    std::uint32_t id;
    void (*take)(int, MKVTrack&);
};

#define TAKE(expression) [](int n, MKVTrack& t) { expression; }
constexpr std::array<NumberRow, 9> numbers = {{
    {ElementID::pixelWidth, TAKE(t.pixelWidth = n)},
    {ElementID::pixelHeight, TAKE(t.pixelHeight = n)},
    {ElementID::displayWidth, TAKE(t.picture.displayWidth = n)},
    {ElementID::displayHeight, TAKE(t.picture.displayHeight = n)},
    {ElementID::displayUnit,
     TAKE(t.picture.displayUnit = nameOf(n, MKVPicture::Unit::Unknown, MKVPicture::Unit::Unknown))},
    {ElementID::pixelCropLeft, TAKE(t.picture.crop.left = n)},
    {ElementID::pixelCropTop, TAKE(t.picture.crop.top = n)},
    {ElementID::pixelCropRight, TAKE(t.picture.crop.right = n)},
    {ElementID::pixelCropBottom, TAKE(t.picture.crop.bottom = n)},
}};
#undef TAKE

}  // namespace

void readVideo(HeaderReader& reader, const Element& parent, MKVTrack& track) {
    ElementWalk walk = reader.children(parent);
    while (const auto child = walk.next()) {
        for (const NumberRow& row : numbers)
            if (child->id == row.id) row.take(reader.integer(*child), track);
        if (child->isMaster(ElementID::colour)) readColour(reader, *child, track);
        if (child->isMaster(ElementID::projection)) readProjection(reader, *child, track.picture);
    }
}

void readBlockAddition(HeaderReader& reader, const Element& parent, MKVTrack& track) {
    std::uint64_t type = 0;
    Bytes record;
    ElementWalk walk = reader.children(parent);
    while (const auto child = walk.next()) {
        if (child->id == ElementID::blockAddIDType) type = reader.number(*child);
        if (child->id == ElementID::blockAddIDExtraData) record = reader.bytes(*child);
    }
    if (type != fourCharacters("dvcC") && type != fourCharacters("dvvC")) return;
    track.hasDolbyVisionConfig = true;
    if (!record.empty())
        track.picture.dolbyVision = {static_cast<std::uint32_t>(type), std::move(record)};
}

}  // namespace MKVHeaders
}  // namespace marlet
