#include "helpers/picture_boxes.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <optional>

#include "helpers/boxes.h"

namespace marlet::PictureBoxes {

namespace {

using Boxes::u16s;
using Boxes::u32s;

/// A signed field of 32 bits in a box.
constexpr int largestSize = 0x7FFF;

struct Size {
    int width = 0;
    int height = 0;
};

/// What is left of the coded picture; nothing when a crop that makes no sense leaves nothing.
std::optional<Size> cropped(const MKVTrack& track) {
    const MKVPicture::Crop& crop = track.picture.crop;
    const std::int64_t width = std::int64_t{track.pixelWidth} - crop.left - crop.right;
    const std::int64_t height = std::int64_t{track.pixelHeight} - crop.top - crop.bottom;
    if (width < 1 || height < 1) return std::nullopt;
    return Size{static_cast<int>(width), static_cast<int>(height)};
}

Size visible(const MKVTrack& track) {
    return cropped(track).value_or(Size{track.pixelWidth, track.pixelHeight});
}

/// The shape of a pixel, its width to its height.
struct Aspect {
    std::uint32_t width = 1;
    std::uint32_t height = 1;
};

/// Nothing when the source doesn't tell it. The size that is shown counts what is left of a cropped
/// picture (RFC 9559, 5.1.4.1.28.12); all units but the unknown one tell a ratio.
std::optional<Aspect> pixelAspect(const MKVTrack& track) {
    const MKVPicture& picture = track.picture;
    const Size size = visible(track);
    if (size.width < 1 || size.height < 1 || picture.displayUnit == MKVPicture::Unit::Unknown)
        return std::nullopt;
    // Pixels that the source doesn't tell are those of the picture.
    const bool isInPixels = picture.displayUnit == MKVPicture::Unit::Pixels;
    if (!picture.displayWidth && !picture.displayHeight) return std::nullopt;
    const std::int64_t shownWidth = picture.displayWidth.value_or(isInPixels ? size.width : 0);
    const std::int64_t shownHeight = picture.displayHeight.value_or(isInPixels ? size.height : 0);
    if (shownWidth < 1 || shownHeight < 1) return std::nullopt;
    // Some programs leave the coded size there when they crop: squares all the same.
    if (isInPixels && shownWidth == track.pixelWidth && shownHeight == track.pixelHeight)
        return Aspect{};
    std::int64_t width = shownWidth * size.height;
    std::int64_t height = shownHeight * size.width;
    const std::int64_t common = std::gcd(width, height);
    width /= common;
    height /= common;
    constexpr std::int64_t most = std::numeric_limits<std::int32_t>::max();
    while (width > most || height > most) {
        width = std::max<std::int64_t>(width / 2, 1);
        height = std::max<std::int64_t>(height / 2, 1);
    }
    return Aspect{static_cast<std::uint32_t>(width), static_cast<std::uint32_t>(height)};
}

Bytes pixelAspectBox(const MKVTrack& track) {
    const auto aspect = pixelAspect(track);
    if (!aspect) return {};
    return Boxes::box(boxCode("pasp"), {u32s({aspect->width, aspect->height})});
}

/// Fractions: the size, and how far its middle lies from that of the coded picture.
Bytes cleanApertureBox(const MKVTrack& track) {
    const MKVPicture::Crop& crop = track.picture.crop;
    const auto size = cropped(track);
    if (!size || crop == MKVPicture::Crop{}) return {};
    const auto half = [](int twice) { return static_cast<std::uint32_t>(twice); };
    return Boxes::box(
        boxCode("clap"),
        {u32s({static_cast<std::uint32_t>(size->width), 1, static_cast<std::uint32_t>(size->height),
               1, half(crop.left - crop.right), 2, half(crop.top - crop.bottom), 2})});
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
    const PictureColour& colour = track.picture.colour;
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

ShownSize shownSize(const MKVTrack& track) {
    const Size size = visible(track);
    double width = size.width;
    if (const auto aspect = pixelAspect(track)) width = width * aspect->width / aspect->height;
    return {static_cast<std::uint32_t>(
                std::clamp(std::lround(std::min(width, 1e6)), 0L, static_cast<long>(largestSize))),
            static_cast<std::uint32_t>(std::clamp(size.height, 0, largestSize))};
}

int quarterTurns(const MKVTrack& track) {
    const double turns = -track.picture.roll / 90;
    const double whole = std::round(turns);
    // A picture can be turned to any angle there, but no film is.
    if (std::abs(turns - whole) > 0.01 || std::abs(whole) > 1000) return 0;
    return (static_cast<int>(whole) % 4 + 4) % 4;
}

}  // namespace marlet::PictureBoxes
