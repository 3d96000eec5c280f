#include "helpers/picture_boxes.h"

#include <algorithm>
#include <cmath>
#include <optional>

#include "helpers/boxes.h"
#include "helpers/stream_colour.h"
#include "matroska/picture_shape.h"

namespace marlet::PictureBoxes {

namespace {

using Boxes::u16s;
using Boxes::u32s;

Bytes pixelAspectBox(const MKVTrack& track) {
    const auto aspect = PictureShape::pixelAspect(track);
    if (!aspect) return {};
    return Boxes::box(boxCode("pasp"), {u32s({aspect->width, aspect->height})});
}

/// Fractions: the size, and how far its middle lies from that of the coded picture.
Bytes cleanApertureBox(const MKVTrack& track) {
    const MKVPicture::Crop& crop = track.picture.crop;
    const auto size = PictureShape::cropped(track);
    if (!size || crop == MKVPicture::Crop{}) return {};
    const auto half = [](int twice) { return static_cast<std::uint32_t>(twice); };
    return Boxes::box(
        boxCode("clap"),
        {u32s({static_cast<std::uint32_t>(size->width), 1, static_cast<std::uint32_t>(size->height),
               1, half(crop.left - crop.right), 2, half(crop.top - crop.bottom), 2})});
}

/// What the container tells, and where it is silent what the pictures' stream does. Pictures of
/// 4:2:0, and only those are copied, are never RGB (matrix 0).
PictureColour colourOf(const MKVTrack& track) {
    constexpr int none = PictureColour::notTold;
    const PictureColour stream = StreamColour::of(track);
    PictureColour colour = track.picture.colour;
    if (colour.primaries == none) colour.primaries = stream.primaries;
    if (colour.transfer == none) colour.transfer = stream.transfer;
    if (colour.matrix == none || colour.matrix == 0) colour.matrix = stream.matrix;
    if (colour.matrix == 0) colour.matrix = none;
    if (colour.range == PictureColour::Range::NotTold) colour.range = stream.range;
    return colour;
}

Bytes colourBox(const PictureColour& colour) {
    constexpr int none = PictureColour::notTold;
    const bool isFull = colour.range == PictureColour::Range::Full;
    const bool isTold =
        colour.primaries != none || colour.transfer != none || colour.matrix != none || isFull;
    if (!isTold) return {};
    const auto number = [](int value) { return static_cast<std::uint32_t>(std::min(value, 255)); };
    return Boxes::box(
        boxCode("colr"),
        {viewOf("nclx"),
         u16s({number(colour.primaries), number(colour.transfer), number(colour.matrix)}),
         Bytes{static_cast<std::uint8_t>(isFull ? 0x80 : 0)}});
}

/// In steps of so many units; what has no place in a field is its greatest.
std::uint32_t scaled(double value, double stepsPerUnit, std::uint32_t most) {
    const double steps = std::round(value * stepsPerUnit);
    return static_cast<std::uint32_t>(std::clamp(steps, 0.0, static_cast<double>(most)));
}

Bytes masteringBox(const MasteringDisplay& display) {
    if (!display.isComplete()) return {};
    Bytes points;
    for (const MasteringDisplay::Point& point :
         {display.green(), display.blue(), display.red(), display.white()})
        append(points, u16s({scaled(point.x, 50'000, 0xFFFF), scaled(point.y, 50'000, 0xFFFF)}));
    return Boxes::box(boxCode("mdcv"),
                      {points, u32s({scaled(*display.highest, 10'000, 0xFFFFFFFF),
                                     scaled(*display.lowest, 10'000, 0xFFFFFFFF)})});
}

Bytes lightBox(const PictureColour& colour) {
    // 0 is "not told", too (ISO/IEC 23008-2, D.3.35).
    const auto level = [](const std::optional<int>& told) {
        return static_cast<std::uint32_t>(std::clamp(told.value_or(0), 0, 0xFFFF));
    };
    if (level(colour.highestLight) == 0 && level(colour.highestFrameMean) == 0) return {};
    return Boxes::box(boxCode("clli"),
                      {u16s({level(colour.highestLight), level(colour.highestFrameMean)})});
}

/// Two versions, seven bits of profile, six of level, three flags, four bits that tell what an
/// ordinary decoder makes of the pictures, and zeros.
constexpr std::size_t dolbyRecordLength = 24;

bool isDolbyRecord(const MKVPicture& picture) {
    constexpr std::size_t shortest = 5;
    return picture.dolbyVision && picture.dolbyVision->record.size() >= shortest &&
           picture.dolbyVision->record.size() <= dolbyRecordLength;
}

Bytes dolbyVisionBox(const MKVPicture& picture) {
    if (!isDolbyRecord(picture)) return {};
    Bytes record = picture.dolbyVision->record;
    record.resize(dolbyRecordLength);
    return Boxes::box(picture.dolbyVision->type, {record});
}

}  // namespace

Bytes make(const MKVTrack& track) {
    const PictureColour colour = colourOf(track);
    Bytes boxes = colourBox(colour);
    append(boxes, masteringBox(colour.mastering));
    append(boxes, lightBox(colour));
    append(boxes, cleanApertureBox(track));
    append(boxes, pixelAspectBox(track));
    append(boxes, dolbyVisionBox(track.picture));
    return boxes;
}

bool needsDolbyVision(const MKVTrack& track) {
    constexpr std::size_t compatibilityAt = 4;
    return isDolbyRecord(track.picture) &&
           track.picture.dolbyVision->record[compatibilityAt] >> 4 == 0;
}

int quarterTurns(const MKVTrack& track) {
    const double turns = -track.picture.roll / 90;
    const double whole = std::round(turns);
    // A picture can be turned to any angle there, but no film is.
    if (std::abs(turns - whole) > 0.01 || std::abs(whole) > 1000) return 0;
    return (static_cast<int>(whole) % 4 + 4) % 4;
}

}  // namespace marlet::PictureBoxes
