#pragma once

#include <cstdint>
#include <optional>

#include "matroska/mkv_file.h"

// How large a track's pictures are to be shown (RFC 9559, 5.1.4.1.28).
namespace marlet::PictureShape {

struct Size {
    int width = 0;
    int height = 0;
    bool operator==(const Size&) const = default;
};
/// What a crop leaves of the coded picture; nothing when it makes no sense and leaves nothing.
std::optional<Size> cropped(const MKVTrack& track);

/// A pixel's width to its height, in lowest terms.
struct Aspect {
    std::uint32_t width = 1;
    std::uint32_t height = 1;
    bool operator==(const Aspect&) const = default;
};
/// Nothing when the source doesn't tell it.
std::optional<Aspect> pixelAspect(const MKVTrack& track);

/// In square pixels, without what is cropped, at most 32767 each.
Size shown(const MKVTrack& track);

}  // namespace marlet::PictureShape
