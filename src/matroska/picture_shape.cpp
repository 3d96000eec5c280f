#include "matroska/picture_shape.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>

namespace marlet::PictureShape {

namespace {

Size visible(const MKVTrack& track) {
    return cropped(track).value_or(Size{track.pixelWidth, track.pixelHeight});
}

}  // namespace

std::optional<Size> cropped(const MKVTrack& track) {
    const MKVPicture::Crop& crop = track.picture.crop;
    const std::int64_t width = std::int64_t{track.pixelWidth} - crop.left - crop.right;
    const std::int64_t height = std::int64_t{track.pixelHeight} - crop.top - crop.bottom;
    if (width < 1 || height < 1) return std::nullopt;
    return Size{static_cast<int>(width), static_cast<int>(height)};
}

/// The size that is shown counts what is left of a cropped
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

Size shown(const MKVTrack& track) {
    constexpr int largest = 0x7FFF;
    const Size size = visible(track);
    double width = size.width;
    if (const auto aspect = pixelAspect(track)) width = width * aspect->width / aspect->height;
    return {static_cast<int>(std::clamp(std::round(width), 0.0, static_cast<double>(largest))),
            std::clamp(size.height, 0, largest)};
}

}  // namespace marlet::PictureShape
